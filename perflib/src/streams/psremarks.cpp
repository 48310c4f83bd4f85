#include "psremarks.h"

#include <utility>

#include "pslist.h"
#include "psstream.h"

namespace {

psStringList& remarks() {
    static psStringList list;
    return list;
}

}  // namespace

void psRemarks::add(const psString& line) {
    if (!remarks().contains(line)) remarks().push_back(line);
}

// Writing them may add another one, when an output fails only now.
void psRemarks::print() {
    while (!remarks().empty()) {
        psStringList lines;
        lines.swap(remarks());
        for (const psString& line : lines) psAnnounce(line + "\n");
        g_ostrm.flush();
    }
}
