#include "ppfunc.h"

#include <array>

#include "unit.h"

namespace {

TEST(PpFunc, SplitsNames) {
    using Parts = std::array<const char*, 5>;
    const Parts cases[] = {
        {"zmoiNormDiff_Inf_8u_C3CMR", "zmoi", "NormDiff_Inf", "8u", "C3CMR"},
        {"zmoiFastN2DToVec_8u", "zmoi", "FastN2DToVec", "8u", ""},
        {"zmoiSrhPSpectr_8u32f_C1IR_Copy", "zmoi", "SrhPSpectr", "8u32f", "C1IR_Copy"},
        {"zmoiMalloc_L", "zmoi", "Malloc_L", "", ""},
        {"Filter_32fc_AC4R", "", "Filter", "32fc", "AC4R"},
        {"_16s_", "", "", "16s", ""},
        {"zmo_12", "", "zmo_12", "", ""},
        {"", "", "", "", ""}};
    for (const auto& [name, prefix, base, types, descr] : cases) {
        const ppFunc f(name);
        EXPECT_STREQ(f.prefix().c_str(), prefix) << name;
        EXPECT_STREQ(f.baseName().c_str(), base) << name;
        EXPECT_STREQ(f.typeName().c_str(), types) << name;
        EXPECT_STREQ(f.descrName().c_str(), descr) << name;
    }
}

TEST(PpFunc, FindsArgumentTypes) {
    const std::pair<const char*, std::array<ppType, 4>> cases[] = {
        // src, src2, dst, dst2
        {"zmoiCanny_16s8u_C1R", {pp16s, pp16s, pp8u, pp8u}},
        {"zmoiApplyHaarClassifier_32s_C1RSfs", {pp32s, pp32s, pp32s, pp32s}},
        {"zmoiSqrIntegral_8u32s64f_C1R", {pp8u, pp32s, pp64f, pp64f}},
        {"zmoiMalloc", {}},
        {"zmoiThreshold_1u8u_C1R", {pp8u, pp8u, pp8u, pp8u}},
        {"zmoiX_24u_C1R", {}},
        // Corrections of signal functions
        {"zmosMagnitude_32fc", {pp32fc, pp32fc, pp32f, pp32f}},
        {"zmosPolarToCart_32fc", {pp32f, pp32f, pp32fc, pp32fc}},
        {"zmosDotProd_32f32fc", {pp32f, pp32fc, pp32fc, pp32fc}},
        {"zmosGoertzTwo_32f", {pp32f, pp32f, pp32fc, pp32fc}},
        // Corrections of image functions
        {"zmoiMean_8u_C1R", {pp8u, pp8u, pp64f, pp64f}},
        {"zmoiMean_StdDev_8u_C1R", {pp8u, pp8u, pp8u, pp8u}},
        {"zmoiCopy_16s_C1MR", {pp16s, pp8u, pp16s, pp16s}},
        {"zmoiCompareEqualEps_32f_C1R", {pp32f, pp32f, pp8u, pp8u}}};
    for (const auto& [name, types] : cases) {
        const ppFunc f(name);
        EXPECT_EQ((std::array{f.srcType(), f.src2Type(), f.dstType(), f.dst2Type()}), types)
            << name;
    }
}

TEST(PpFunc, FindsChannelsAndFlags) {
    // Names, numbers and codes of the channels, of source and destination.
    const std::pair<const char*, const char*> channels[] = {
        {"C1R", "C1 C1 1 1 1 1"},      {"C3C1R", "C3 C1 3 1 3 1"},
        {"AC4R", "AC4 AC4 4 4 9 9"},   {"C3P3R", "C3 P3 3 3 3 6"},
        {"AP4C4R", "AP4 C4 4 4 11 4"}, {"A0C4R", "C4 C4 4 4 4 4"},
        {"C3CMR", "C3 C3 3 3 3 3"},    {"", "  0 0 0 0"},
        {"IR", "  0 0 0 0"},           {"C5R", "  0 0 0 0"},
        {"C3RP", "P3 P3 3 3 6 6"},     {"AC1R", "AC1 AC1 1 1 8 8"},
        {"C2P2R", "C2 P2 2 2 2 5"}};
    for (const auto& [descr, expected] : channels) {
        const ppFunc f(psString("zmoiX_8u_") + descr);
        psString text = f.srcChannelsName() + " " + f.dstChannelsName();
        for (const int number :
             {f.srcChannels(), f.channels(ppArgDst2), f.zmoChannels(1), f.zmoChannels(2)})
            text += " " + psText(number);
        EXPECT_STREQ(text.c_str(), expected) << descr;
        EXPECT_EQ(f.channels(3), 1) << descr;
    }

    // I in place, M mask, S scaled, R region, c channel of interest; planes and
    // alpha channels: p, a of the source, P, A of the destination.
    const std::pair<const char*, const char*> flags[] = {
        {"C1R", "R"}, {"C1IMR", "IMR"}, {"C1R_Sfs", "SR"}, {"C1IR_Copy", "IRc"}, {"C3CMR", "MRc"},
        {"C3C", "c"}, {"C3P3R", "RP"},  {"P3C3R", "Rp"},   {"AC4R", "RaA"},      {"AC4C3R", "Ra"}};
    for (const auto& [descr, expected] : flags) {
        const ppFunc f(psString("zmoiX_8u_") + descr);
        bool p, P, a, A;
        f.getPlanes(p, P);
        f.getAlpha(a, A);
        const bool found[] = {f.inplace(), f.mask(), f.scale(), f.roi(), f.coi(), p, P, a, A};
        std::string text;
        for (std::size_t i = 0; i < std::size(found); ++i)
            if (found[i]) text += "IMSRcpPaA"[i];
        EXPECT_EQ(text, expected) << descr;
    }
}

TEST(PpFunc, NamesTheTypesOfTheTable) {
    for (const ppTypeInfo& info : ppTypes) {
        EXPECT_EQ(ppFunc::stringToType(info.name), info.code);
        EXPECT_STREQ(ppFunc::typeToString(info.code).c_str(), info.name);
    }
    EXPECT_STREQ(ppFunc::typeToString(24).c_str(), "undef");
}

TEST(PpFunc, SortsByNameTypesAndDescriptor) {
    const char* const sorted[] = {"zmoiAdd_8u_C1R",        "zmoiAdd_8u_C3R",    "zmoiAdd_8u_AC4R",
                                  "zmoiAdd_8u_C1IR",       "zmoiAdd_8u32f_C1R", "zmoiAdd_16u_C1R",
                                  "zmoiAdd_16s_C1R",       "zmoiAdd_32f_C1R",   "zmoiAdd_32fc_C1R",
                                  "zmoiAddProduct_8u_C1R", "zmosAdd_8u"};
    for (const char* a : sorted) {
        for (const char* b : sorted) {
            const auto rank = [&](const char* name) { return std::ranges::find(sorted, name); };
            const int order = ppFunc(a).compare(ppFunc(b));
            EXPECT_EQ(order < 0, rank(a) < rank(b)) << a << " " << b;
            EXPECT_EQ(order == 0, a == b) << a << " " << b;
        }
    }
    EXPECT_LT(ppFunc::compareTypes("", "8u"), 0);
    EXPECT_EQ(ppFunc::compareTypes("8u8u8u16s", "8u8u8u32f"), 0);  // three tokens count
}

}  // namespace
