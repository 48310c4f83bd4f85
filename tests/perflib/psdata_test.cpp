#include "psdata.h"

#include <cstdio>
#include <cstring>

#include "unit.h"

namespace {

std::uintptr_t address(const void* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

std::vector<void*> liveBlocks() {
    std::vector<void*> blocks;
    for (void* p = psMallocFirst(nullptr, nullptr); p; p = psMallocNext(nullptr, nullptr))
        blocks.push_back(p);
    return blocks;
}

struct CountingObject : psObject {
    int reserveCopy() override { return ++reserved; }
    int setReservedCopy() override {
        psFree(toFree);
        return ++reset;
    }
    void* self() { return static_cast<psObject*>(this); }
    int reserved = 0, reset = 0;
    void* toFree = nullptr;
};

TEST(PsData, PlacesBlocksByShiftAndOffset) {
    const int cases[][3] = {{0, 0, 0},   {3, 0, 3},   {67, 0, 3}, {63, 0, 63}, {0, 512, 512},
                            {5, 64, 69}, {3, 10, 65}, {0, 1, 64}, {-64, 0, 0}, {3, 1024, 1027}};
    for (const auto& [shift, offset, low] : cases) {
        void* p = psMalloc(100, shift, offset, nullptr);
        std::memset(p, 0xA5, 100);  // under the address sanitizer: the slack suffices
        // The lowest boundary that the raw block allows is not visible, so the
        // base is found through the trace text.
        MessageCapture messages(static_cast<int>(MessageLevel::MALLOC));
        psFree(p);
        unsigned long long base = 0;
        ASSERT_EQ(std::sscanf(messages.text().c_str(), " - psFree: size:100  address:%llx", &base),
                  1);
        EXPECT_EQ(base % 64, 0u);
        EXPECT_EQ(address(p) - base, static_cast<unsigned>(low)) << shift << " " << offset;
    }
}

TEST(PsData, RefusedSizesGiveOneMessageAndNull) {
    MessageCapture messages(showErrors);
    for (int size : {INT_MAX, INT_MAX - 300, -1000}) {
        void* p = &size;
        EXPECT_TRUE(psMalloc(p, size, 0, 0) == nullptr && p == nullptr);
        EXPECT_EQ(messages.take(),
                  "-- Memory fault: can't allocate " + std::to_string(size) + " bytes\n");
    }
    EXPECT_TRUE(liveBlocks().empty());
}

TEST(PsData, RegistryListsInOrderAndSurvivesReleaseInTheWalk) {
    CountingObject object;
    void* a = psMalloc(10, 0, 0, nullptr);
    void* b = psMalloc(20, 0, 0, object.self());
    void* c = psMalloc(30, 0, 0, psBufferOwner());
    EXPECT_EQ(liveBlocks(), (std::vector<void*>{a, b, c}));
    EXPECT_EQ(psMallocTotal(), 60);

    int size = 0;
    void* owner = nullptr;
    EXPECT_TRUE(psMallocInfo(b, &size, &owner) && size == 20 && owner == object.self());
    EXPECT_FALSE(psMallocInfo(&size, &size, &owner));

    EXPECT_EQ(psMallocFirst(nullptr, nullptr), a);
    psFree(b);
    EXPECT_EQ(psMallocNext(&size, &owner), c);
    EXPECT_TRUE(size == 30 && psIsBuffer(owner) && !psUntaggedOwner(owner));
    EXPECT_EQ(psMallocNext(nullptr, nullptr), nullptr);
    psFree(a);
    psFree(c);
}

TEST(PsData, FreeAllForgetsWithoutReleasing) {
    auto* p = static_cast<char*>(psMalloc(8, 0, 0, nullptr));
    EXPECT_EQ(psFreeAll(), 0);
    EXPECT_TRUE(liveBlocks().empty() && psMallocTotal() == 0);
    MessageCapture messages(static_cast<int>(MessageLevel::MALLOC));
    std::memset(p, 1, 8);
    psFree(p);
    EXPECT_TRUE(messages.text().empty() && p[7] == 1);
}

TEST(PsData, OnlyOwnersThatStandForThemselvesAreVisited) {
    CountingObject plain, parent, buffered;
    void* blocks[] = {psMalloc(8, 0, 0, nullptr), psMalloc(8, 0, 0, psBufferOwner(buffered.self())),
                      psMalloc(8, 0, 0, psSubObjectOwner(parent.self())),
                      psMalloc(8, 0, 0, plain.self()), psMalloc(8, 0, 0, parent.self())};
    psReserveAllVectors();
    plain.toFree = blocks[3];  // the block that the walk stands on
    psResetAllVectors();
    EXPECT_TRUE(plain.reserved == 1 && plain.reset == 1);
    EXPECT_TRUE(parent.reserved == 1 && parent.reset == 1);
    EXPECT_EQ(buffered.reserved + buffered.reset, 0);
    for (void* p : blocks) psFree(p);
}

TEST(PsData, ALargerBoundaryHoldsForLaterBlocks) {
    psSetAlignMax(4096);
    void* p = psMalloc(8, 100, 0, nullptr);
    EXPECT_EQ(address(p) % 4096, 100u);
    psSetAlignMax(PS_ALIGN_DEF);
    psFree(p);
}

}  // namespace
