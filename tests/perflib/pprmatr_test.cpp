#include "pprmatr.h"

#include "psdata.h"
#include "psstream.h"
#include "unit.h"

namespace {

TEST(PprMatrice, RowsLieAtTheStep) {
    const std::tuple<ppType, int, int, int, int> cases[] = {
        {pp32f, 3, 5, 0, 32}, {pp8u, 2, 16, 0, 16}, {pp8u, 2, 17, 0, 32}, {pp64fc, 4, 2, 48, 48}};
    for (const auto& [type, rows, columns, asked, step] : cases) {
        pprMatrice m(type);
        ASSERT_TRUE(m.createMatrice(rows, columns, asked, 3));
        EXPECT_EQ(m.step(), step);
        const auto* base = static_cast<char*>(m.data());
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(base) % 64, 3u);
        EXPECT_EQ(m.rowPtrs()[rows - 1], base + (rows - 1) * step);
        EXPECT_EQ(m.getPointerAt(rows - 1, columns - 1),
                  base + (rows - 1) * step + (columns - 1) * ppItem(type));
        EXPECT_TRUE(!m.getPointerAt(rows, 0) && !m.getPointerAt(0, columns));
    }
}

TEST(PprMatrice, RefusesSizesAndReleasesAllBlocks) {
    {
        pprMatrice m(pp16s);
        ASSERT_TRUE(m.createMatrice(3, 3));
        psOutLevelGuard quiet(0);
        EXPECT_FALSE(m.createMatrice(0, 3) || m.createMatrice(3, 3, 4));
        EXPECT_FALSE(m.createMatrice(INT_MAX, INT_MAX) || m.createMatrice(INT_MAX / 2, 1, 2));
        EXPECT_EQ(psMallocFirst(nullptr, nullptr), nullptr);
        ASSERT_TRUE(m.createMatrice(3, 3));
    }
    EXPECT_EQ(psMallocFirst(nullptr, nullptr), nullptr);
}

TEST(PprMatrice, FillsAndReadsElements) {
    pprMatrice m(pp32fc);
    ASSERT_TRUE(m.createMatrice(2, 3, SET_SEQUENCE, 1, 7));
    EXPECT_TRUE(m.getMatriceAt(1, 2) == 5 && m.getIndex(5) == 5);  // a row each: 1, 3, 5
    double re = 0, im = 0;
    EXPECT_TRUE(m.setMatriceAt(1, 0, -1, 4) && m.getMatriceAt(1, 0, re, im));
    EXPECT_TRUE(re == -1 && im == 4) << re << im;
    EXPECT_FALSE(m.setMatriceAt(2, 0, 1));
    EXPECT_STREQ(m.objectInfo().c_str(), "rMatrix 32fc rows=2 columns=3");
    pprMatrice small(pp8u);
    ASSERT_TRUE(small.createMatrice(2, 2) && small.setJaehne());
    EXPECT_STREQ(small.getString().c_str(), " 127 217\n 127 217");  // sin(pi/4)
}

}  // namespace
