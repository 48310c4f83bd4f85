// The session's own settings and the common parameters: from -d, the ini-file,
// or the questions of -A.
#include <algorithm>
#include <climits>

#include "ps.h"
#include "psdata.h"
#include "psdefault.h"
#include "psinterrupt.h"
#include "psistream.h"
#include "pstool.h"

using enum MessageLevel;

namespace {

// Reads the parameters of one group. The console is attached only when the
// group is to be asked for; its title stands before the first question.
class Dialogue {
  public:
    Dialogue(bool ask, const char* title) : m_title(title) {
        g_istrm.setIStream(ask ? &c_in : nullptr);
        g_istrm.setIniSection("Perf System");
    }
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;
    ~Dialogue() { g_istrm.setIStream(nullptr); }

    void read(psParameter& parm) {
        if (willAsk(parm)) {
            if (!m_asked) g_ostrm << ERR << psSession::getEnterTitle(m_title) << END;
            m_asked = true;
        }
        parm.fromIStream();
    }
    bool asked() const { return m_asked; }

  private:
    static bool willAsk(const psParameter& parm) {
        if (!g_istrm.hasConsole() || psInterrupted()) return false;
        if (!parm.isInput() || parm.name().empty()) return false;
        if (g_istrm.dataList().find(parm.name())) return false;
        return !g_istrm.hasIniFile() ||
               g_istrm.iniFile().read(g_istrm.iniSection(), parm.name()).empty();
    }

    const char* m_title;
    bool m_asked = false;
};

template <class T>
T readAtLeast(Dialogue& dialogue, T least, const T& value, const char* name, const char* title) {
    psAtLeast<T> parm(least, value, name, title);
    dialogue.read(parm);
    return parm.value();
}

// The values that the method has in a new engine.
void readManual(Dialogue& dialogue, psTool& tool) {
    int loops = 0;
    psTool defaults;
    defaults.setMethod(psTool::MANUAL);
    defaults.getMethodLoop(loops);
    tool.setMethodLoop(readAtLeast(dialogue, 1, loops, "NumLoops", "Number of loops"));
}

void readStatistic(Dialogue& dialogue, psTool& tool) {
    int calls = 0;
    long long clocks = 0;
    psTool defaults;
    defaults.setMethod(psTool::STATISTIC);
    defaults.getMethodStat(calls, clocks);
    calls = readAtLeast(dialogue, 1, calls, "NumCalls", "Minimal number of function calls");
    clocks = readAtLeast(dialogue, 0LL, clocks, "TotalCpuClocks", "Total number of CPU clocks");
    tool.setMethodStat(calls, clocks);
}

void readIterative(Dialogue& dialogue, psTool& tool) {
    int start = 0;
    int stop = 0;
    long long clocks = 0;
    psTool::getAutoParameters(start, stop, clocks);
    start = readAtLeast(dialogue, 1, start, "StartNumLoops", "Number of loops to start with");
    // The engine goes through at least eight times the loops that it starts with.
    const int least = start > INT_MAX / 8 ? INT_MAX : 8 * start;
    stop = readAtLeast(dialogue, least, std::max(least, stop), "StopNumLoops",
                       "Number of loops to stop at");
    clocks = readAtLeast(dialogue, 0LL, clocks, "MinCpuClocks", "Minimal number of CPU clocks");
    tool.setMethodBest(start, stop, clocks);
}

}  // namespace

bool psSession::readTimingMethod() {
    Dialogue dialogue((g_settings.asked() & psSettings::askTiming) != 0,
                      "Specify timing method, please");
    psTool& tool = psGlobalTool();
    psMapDefault<int> method("Method", "Timing method",
                             {{psTool::AUTO, "Auto"},
                              {psTool::MANUAL, "Manual"},
                              {psTool::STATISTIC, "Statistic"},
                              {psTool::ITERATIVE, "Iterative"}},
                             tool.method());
    dialogue.read(method);
    switch (method.value()) {
        case psTool::MANUAL:
            readManual(dialogue, tool);
            break;
        case psTool::STATISTIC:
            readStatistic(dialogue, tool);
            break;
        case psTool::ITERATIVE:
            readIterative(dialogue, tool);
            break;
        default:
            tool.setMethodAuto();
    }
    const bool iterates = method.value() == psTool::AUTO || method.value() == psTool::ITERATIVE;
    const double percent =
        readAtLeast(dialogue, 0.0, iterates ? 5.0 : 100.0, "Accuracy, %", "Accuracy, %");
    tool.setAccuracyLimit(percent / 100.0);
    if (initTimingMethod) initTimingMethod(tool);
    return dialogue.asked();
}

bool psSession::readTestParameters() {
    Dialogue dialogue((g_settings.asked() & psSettings::askParams) != 0,
                      "Specify common parameters of all tests, please");
    if (!g_pParmList) return false;
    for (psParameter* parm : *g_pParmList) dialogue.read(*parm);
    return dialogue.asked();
}

bool psSession::readDataOffset() {
    Dialogue dialogue((g_settings.asked() & psSettings::askMisalign) != 0,
                      "Specify vectors alignment, please");
    psMapDefault<bool> by("AlignVectorsBy", "Align vectors by",
                          {{false, "element"}, {true, "byte"}}, psGetAlignByByte());
    dialogue.read(by);
    psSetAlignByByte(by.value());

    const psString unit = by.value() ? "Byte" : "Element";
    DefaultAlign align(psGetVectorAlign(), "VectorAlign",
                       "VectorAlign by " + unit + ", 0.." + (PS_ALIGN_MAX - 1));
    dialogue.read(align);
    psSetVectorAlign(align.value());

    psMapDefault<bool> first("MisalignFirstVectorOnly", "Misalign first vector only",
                             {{true, "yes"}, {false, "no"}}, psGetAlignSrc());
    dialogue.read(first);
    psSetAlignSrc(first.value());

    DefaultShift shift(psGetVectorShift(), "MutualVectorShift",
                       psString("MutualVectorShift in Bytes, divisible by ") + PS_ALIGN_MAX);
    dialogue.read(shift);
    psSetVectorShift(shift.value());
    return dialogue.asked();
}

void psSession::readCommonData() {
    bool asked = readTimingMethod();
    asked = readTestParameters() || asked;
    asked = readDataOffset() || asked;
    if (asked) g_ostrm << ERR << getEnterTitle("End of common specifications") << END;
}

psString psSession::getEnterTitle(const psString& text) {
    constexpr int width = 80;
    const auto blanks = [](int count) {
        psString filler;
        filler.resize(std::max(0, count));
        return filler;
    };
    psString stars;
    stars.resize(width - 2, '*');
    const psString frame = " " + stars + "\n";
    const int half = (width - text.length()) / 2;
    return frame + " *" + blanks(half - 2) + text + blanks(width - 2 - (half + text.length())) +
           "*\n" + frame;
}
