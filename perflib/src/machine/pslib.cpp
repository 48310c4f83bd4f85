#include "pslib.h"

#include <cpuid.h>

#include <algorithm>
#include <cstring>

#include "psfaults.h"
#include "psstream.h"

using enum MessageLevel;

namespace {

constexpr ZmoStatus unavailable = -2;

ZmoStatus s_zmoGetCpuFeatures(Zmo64u*, Zmo32u, Zmo32u*) {
    return unavailable;
}
Zmo64u s_zmoGetEnabledCpuFeatures() {
    return 0;
}
ZmoStatus s_zmoGetMaxCacheSizeB(int* size) {
    *size = 0;
    return unavailable;
}
const char* s_zmoGetStatusString(ZmoStatus status) {
    return status == 0 ? "OK" : status > 0 ? "Note" : "Fail";
}
ZmoStatus s_zmoInit() {
    return unavailable;
}
ZmoStatus s_zmoSetCpuFeatures(Zmo64u) {
    return unavailable;
}
ZmoStatus s_zmoSetNumThreads(int) {
    return unavailable;
}
ZmoStatus s_zmoGetNumThreads(int*) {
    return unavailable;
}

template <class Function>
void fallback(Function*& pointer, Function* stub) {
    if (!pointer) pointer = stub;
}

}  // namespace

decltype(&zmoGetCpuFeatures) zmo_GetCpuFeatures = s_zmoGetCpuFeatures;
decltype(&zmoGetEnabledCpuFeatures) zmo_GetEnabledCpuFeatures = s_zmoGetEnabledCpuFeatures;
decltype(&zmoGetMaxCacheSizeB) zmo_GetMaxCacheSizeB = s_zmoGetMaxCacheSizeB;
decltype(&zmoGetStatusString) zmo_GetStatusString = s_zmoGetStatusString;
decltype(&zmoInit) zmo_Init = s_zmoInit;
decltype(&zmoSetCpuFeatures) zmo_SetCpuFeatures = s_zmoSetCpuFeatures;
decltype(&zmoSetNumThreads) zmo_SetNumThreads = s_zmoSetNumThreads;
decltype(&zmoGetNumThreads) zmo_GetNumThreads = s_zmoGetNumThreads;

psZmoEnvironment zmoEnvironment = nullptr;
psList<psZmoVersion>* zmoVersionList = nullptr;

bool psRegZmoEnvironment(psZmoEnvironment set) {
    zmoEnvironment = set;
    return true;
}

bool psRegZmoVersion(psZmoVersion version) {
    // Lives until exit: modules register before main and nobody owns the list.
    if (!zmoVersionList) zmoVersionList = new psList<psZmoVersion>;
    zmoVersionList->push_back(version);
    return true;
}

namespace {

// The core functions that the library lacks.
psStringList missingCore(int& numCore) {
    psStringList names;
    numCore = 0;
    const auto look = [&](const char* name, auto* pointer, auto* stub) {
        ++numCore;
        if (!pointer || pointer == stub) names.push_back(name);
    };
    look("zmoGetCpuFeatures", zmo_GetCpuFeatures, s_zmoGetCpuFeatures);
    look("zmoGetEnabledCpuFeatures", zmo_GetEnabledCpuFeatures, s_zmoGetEnabledCpuFeatures);
    look("zmoGetMaxCacheSizeB", zmo_GetMaxCacheSizeB, s_zmoGetMaxCacheSizeB);
    look("zmoGetStatusString", zmo_GetStatusString, s_zmoGetStatusString);
    look("zmoInit", zmo_Init, s_zmoInit);
    look("zmoSetCpuFeatures", zmo_SetCpuFeatures, s_zmoSetCpuFeatures);
    look("zmoSetNumThreads", zmo_SetNumThreads, s_zmoSetNumThreads);
    look("zmoGetNumThreads", zmo_GetNumThreads, s_zmoGetNumThreads);
    return names;
}

psString joined(const psStringList& words) {
    psString text;
    for (const psString& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

void reportIntegration() {
    int numCore = 0;
    const psStringList missing = missingCore(numCore);
    if (missing.size() == numCore) return;
    g_ostrm << PERF << "Morva ZMO core functions have been integrated into PS\n";
    if (!missing.empty()) g_ostrm << "-- but not " << joined(missing) << ": the library has none\n";
    g_ostrm << END;
}

}  // namespace

void setZmoEnvironment() {
    if (zmoEnvironment) {
        zmoEnvironment();
        reportIntegration();
    }
    fallback(zmo_GetCpuFeatures, s_zmoGetCpuFeatures);
    fallback(zmo_GetEnabledCpuFeatures, s_zmoGetEnabledCpuFeatures);
    fallback(zmo_GetMaxCacheSizeB, s_zmoGetMaxCacheSizeB);
    fallback(zmo_GetStatusString, s_zmoGetStatusString);
    fallback(zmo_Init, s_zmoInit);
    fallback(zmo_SetCpuFeatures, s_zmoSetCpuFeatures);
    fallback(zmo_SetNumThreads, s_zmoSetNumThreads);
    fallback(zmo_GetNumThreads, s_zmoGetNumThreads);
}

namespace {

void reportStatus(ZmoStatus status) {
    g_ostrm << (status < 0 ? "--ZMO FAIL. " : "--ZMO NOTE. ") << "status = " << status << ": "
            << zmo_GetStatusString(status) << "\n";
}

void selectCodePath(Zmo64u mask) {
    g_ostrm << ERR << "\n--calling zmoSetCpuFeatures( zmoCpuFeatures = "
            << psFormat("%#8llx", static_cast<unsigned long long>(mask)) << " )\n";
    const ZmoStatus status = zmo_SetCpuFeatures(mask);
    if (status != 0)
        reportStatus(status);
    else
        g_ostrm << "--status = zmoStsNoErr\n";
    if (status < 0) {
        psFaults::count(psFault::input);
        g_ostrm << "--calling zmoInit()\n";
        const ZmoStatus initStatus = zmo_Init();
        if (initStatus != 0) reportStatus(initStatus);
        g_ostrm << psCpuFeatures::processorText(mask);
    }
    g_ostrm << END;
}

}  // namespace

void psZmoCpuSetup(bool haveMask, Zmo64u mask) {
    if (zmoEnvironment) {
        if (haveMask)
            selectCodePath(mask);
        else
            zmo_Init();
    }
    setZmoEnvironment();
}

namespace {

std::array<Zmo32u, 4> cpuidDirect(Zmo32u leaf) {
    std::array<Zmo32u, 4> regs{};
    const Zmo32u range = leaf & 0x80000000;
    if (leaf <= static_cast<Zmo32u>(__get_cpuid_max(range, nullptr)))
        __cpuid_count(leaf, 0, regs[0], regs[1], regs[2], regs[3]);
    return regs;
}

}  // namespace

std::array<Zmo32u, 4> psCpuid(Zmo32u leaf) {
    Zmo64u features = 0;
    std::array<Zmo32u, 4> regs{};
    return zmo_GetCpuFeatures(&features, leaf, regs.data()) >= 0 ? regs : cpuidDirect(leaf);
}

// False when the library does not report them.
static bool readFeatures(Zmo64u& features) {
    return zmo_GetCpuFeatures(&features, 0, nullptr) >= 0;
}

Zmo64u psProcessorFeatures() {
    // Every processor that runs this code has MMX, SSE and SSE2.
    constexpr Zmo64u baseline = 0x7;
    Zmo64u features = 0;
    return readFeatures(features) ? features : baseline;
}

psString psProcessorName() {
    constexpr Zmo32u firstLeaf = 0x80000002;
    std::array<char, 3 * 16 + 1> text{};
    for (Zmo32u i = 0; i < 3; ++i) {
        const auto regs = psCpuid(firstLeaf + i);
        std::memcpy(text.data() + i * sizeof regs, regs.data(), sizeof regs);
    }
    return psString(text.data()).trim();
}

int psMaxCacheSize() {
    int size = 0;
    return zmo_GetMaxCacheSizeB(&size) == 0 && size > 0 ? size : 0;
}

namespace {

// Instruction sets first (masks of the older ones are cumulative), then the
// library's code paths, then generations. A code path that has the label of an
// instruction set has its mask, too, so that the label has one meaning.
constexpr std::array<psCpuFeatures::Row, 44> cpuFeatureArray{{
    {"MMX", 0x1, "64-bit integer vectors", false},
    {"SSE", 0x3, "Streaming vectors of four floats", false},
    {"SSE2", 0x7, "128-bit vectors of integers and doubles", false},
    {"SSE3", 0xf, "Horizontal additions and complex arithmetic", false},
    {"SSSE3", 0x1f, "Byte shuffles and signed absolute values", false},
    {"MOVBE", 0x3f, "Moves that swap bytes", false},
    {"SSE41", 0x5f, "Packed conversions, blends and rounding", false},
    {"SSE42", 0xdf, "String comparison and checksums", false},
    {"AVX", 0x1df, "256-bit vectors of floats", false},
    {"AES", 0x400, "Encryption rounds", false},
    {"CLMUL", 0x800, "Carry-less multiplication", false},
    {"RDRAND", 0x2000, "Random numbers from hardware", false},
    {"F16C", 0x4000, "Conversion of half-precision floats", false},
    {"AVX2", 0x81df, "256-bit vectors of integers", false},
    {"ADCOX", 0x10000, "Additions with two carry chains", false},
    {"RDSEED", 0x20000, "Seeds of random numbers from hardware", false},
    {"PREFETCHW", 0x40000, "Prefetch for writing", false},
    {"SHA", 0x80000, "Secure hash rounds", false},
    {"AVX512F", 0x100000, "512-bit vectors, foundation", false},
    {"AVX512CD", 0x200000, "512-bit conflict detection", false},
    {"AVX512ER", 0x400000, "512-bit exponential and reciprocal", false},
    {"AVX512PF", 0x800000, "512-bit prefetch", false},
    {"AVX512BW", 0x1000000, "512-bit vectors of bytes and words", false},
    {"AVX512DQ", 0x2000000, "512-bit vectors of 32- and 64-bit integers", false},
    {"AVX512VL", 0x4000000, "The 512-bit instructions on shorter vectors", false},
    {"AVX512VBMI", 0x8000000, "512-bit byte permutations", false},
    {"MPX", 0x10000000, "Memory bounds checks", false},
    {"AVX512_4FMADDPS", 0x20000000, "512-bit blocks of four multiply-adds", false},
    {"AVX512_4VNNIW", 0x40000000, "512-bit blocks of four word products", false},
    {"AVX512IFMA", 0x100000000, "512-bit 52-bit integer multiply-add", false},
    {"AVX512VPOPCNTDQ", 0x400000000, "512-bit bit counts", false},
    {"AVX512_BITALG", 0x800000000, "512-bit bit algorithms on bytes and words", false},
    {"AVX512_FP16", 0x1000000000, "512-bit vectors of half-precision floats", false},
    {"AVX_VNNI", 0x2000000000, "256-bit byte and word dot products", false},
    {"AVX_VNNI_INT8", 0x4000000000, "256-bit dot products of signed bytes", false},
    {"AVX_VNNI_INT16", 0x8000000000, "256-bit dot products of words", false},
    {"AVX10_256", 0x10000000000, "Converged vectors up to 256 bits", false},
    {"AVX10_512", 0x20000000000, "Converged vectors up to 512 bits", false},
    {"SSE2", 0x7, "128-bit vector Technology, baseline of x86-64", true},
    {"SSE42", 0xdf, "128-bit vector Technology with SSE4.2", true},
    {"AVX2", 0x81df, "256-bit integer and float vector Technology", true},
    {"AVX512", 0x73081df, "512-bit vector Technology with masks", true},
    {"GEN_V3", 0xeddf, "x86-64 processor with AVX2, F16C and AES", false},
    {"GEN_V4", 0x737eddf, "x86-64 processor with AVX-512 and RDSEED", false},
}};

// Says that a code path is meant, and may be left out.
constexpr std::string_view codePathPrefix = "P_";

const psCpuFeatures::Row* findRow(Zmo64u mask) {
    const auto* row = std::ranges::find(cpuFeatureArray, mask, &psCpuFeatures::Row::mask);
    return row == cpuFeatureArray.end() ? nullptr : row;
}

bool isCalled(const psCpuFeatures::Row& row, const psString& word) {
    std::string_view name = word.view();
    if (row.isCodePath && name.starts_with(codePathPrefix))
        name.remove_prefix(codePathPrefix.size());
    return name == std::string_view(row.label);
}

bool isKnown(const psString& word) {
    return std::ranges::any_of(cpuFeatureArray,
                               [&](const psCpuFeatures::Row& row) { return isCalled(row, word); });
}

psStringList wordsOf(const psString& list) {
    psString text = list;
    for (int i = 0; i < text.length(); ++i)
        if (text[i] == '|') text[i] = ',';
    int count = 0;
    psCpuFeatures::split(nullptr, text, ',', count);
    const auto split = std::make_unique<psString[]>(static_cast<std::size_t>(count));
    psCpuFeatures::split(split.get(), text, ',', count);
    psStringList words;
    for (int i = 0; i < count; ++i) {
        const psString& word = split[static_cast<std::size_t>(i)];
        if (!word.empty()) words.push_back(word);
    }
    return words;
}

// The label that differs from the word by its case only, in the form of a question.
psString suggestion(const psString& word) {
    psString upper = word;
    for (int i = 0; i < upper.length(); ++i)
        if (upper[i] >= 'a' && upper[i] <= 'z') upper[i] = static_cast<char>(upper[i] - 'a' + 'A');
    return isKnown(upper) ? " (" + upper + "?)" : psString();
}

template <class Fits>
psString labelsOf(Fits fits) {
    psStringList labels;
    for (const psCpuFeatures::Row& row : cpuFeatureArray)
        if (fits(row)) labels.push_back(row.label);
    return joined(labels);
}

}  // namespace

std::span<const psCpuFeatures::Row> psCpuFeatures::rows() {
    return cpuFeatureArray;
}

void psCpuFeatures::split(psString* words, const psString& text, char separator, int& count) {
    psParse parser(text, psString(separator));
    psString word;
    for (count = 0; parser.nextWord(word); ++count)
        if (words) words[count] = word.trim();
}

Zmo64u psCpuFeatures::cpuFeatures(const psString& list) {
    Zmo64u mask = 0;
    for (const psString& word : wordsOf(list))
        for (const Row& row : cpuFeatureArray)
            if (isCalled(row, word)) mask |= row.mask;
    return mask;
}

psString psCpuFeatures::unknownText(const psString& list) {
    const psStringList words = wordsOf(list);
    if (words.empty()) return "-- -T names no processor feature\n";
    psStringList unknown;
    for (const psString& word : words) {
        if (!isKnown(word)) unknown.push_back(word + suggestion(word));
    }
    return unknown.empty() ? psString()
                           : "-- -T knows no processor feature " + joined(unknown) + "\n";
}

psString psCpuFeatures::processorText(Zmo64u wanted) {
    Zmo64u has = 0;
    if (!readFeatures(has)) return "-- The library does not tell what the processor has\n";
    const psString lacking = labelsOf([&](const Row& row) {
        return !row.isCodePath && (row.mask & ~wanted) == 0 && (row.mask & ~has) != 0;
    });
    const auto present = [has](bool codePath) {
        return labelsOf(
            [=](const Row& row) { return row.isCodePath == codePath && (row.mask & ~has) == 0; });
    };
    return (lacking.empty() ? "" : "-- The processor lacks " + lacking + "\n") +
           ("-- The processor has " + present(false) +
            "\n-- Code paths that it runs: " + present(true) + "\n");
}

psString psCpuFeatures::codePathText(Zmo64u mask) {
    psString number = psFormat("%#llx", static_cast<unsigned long long>(mask));
    const auto* path = std::ranges::find_if(
        cpuFeatureArray, [mask](const Row& row) { return row.isCodePath && row.mask == mask; });
    const Row* row = path == cpuFeatureArray.end() ? findRow(mask) : path;
    if (!row) return number;
    return psString(row->label) + ", " + row->description + " (" + number + ")";
}

psString psCpuFeatures::cpuLabel(Zmo64u mask) {
    const Row* row = findRow(mask);
    return row ? row->label : "Undefined";
}

psString psCpuFeatures::cpuName(Zmo64u mask) {
    const Row* row = findRow(mask);
    return row ? row->description : "Unknown processor";
}

psString psCpuFeatures::optimizedList() {
    psString text;
    for (const Row& row : cpuFeatureArray)
        if (row.isCodePath)
            text += psFormat("%-9s: optimized for %s\n", row.label, row.description);
    return text;
}
