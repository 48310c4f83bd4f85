#include "pscore.h"

#include <sched.h>

namespace {

cpu_set_t allowedCores() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (sched_getaffinity(0, sizeof cores, &cores) != 0) CPU_ZERO(&cores);
    return cores;
}

bool contains(const cpu_set_t& cores, int core) {
    return core >= 0 && core < CPU_SETSIZE && CPU_ISSET(core, &cores);
}

}  // namespace

bool psCoreAllowed(int core) {
    return contains(allowedCores(), core);
}

psString psAllowedCores() {
    const cpu_set_t cores = allowedCores();
    psString text;
    for (int first = 0; first < CPU_SETSIZE; ++first) {
        if (!contains(cores, first)) continue;
        int last = first;
        while (contains(cores, last + 1)) ++last;
        text += (text.empty() ? "" : ",") + psText(first);
        if (last > first) text += "-" + psText(last);
        first = last;
    }
    return text;
}

bool psBindToCore(int core) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    return sched_setaffinity(0, sizeof cores, &cores) == 0;
}
