// Allocator of test data: blocks at a controlled address, a registry of every
// live block, and the alignment settings of the session.
#pragma once

#include "pslist.h"
#include "psstring.h"

// The boundary that data is aligned to unless the session changes it, in bytes.
inline constexpr int PS_ALIGN_DEF = 64;

// The current boundary in bytes, a power of two; change it by psSetAlignMax.
extern int PS_ALIGN_MAX;

void psSetAlignMax(int n);

// The placing of vectors: the mutual shift between the vectors of one test in
// bytes; the misalignment, counted in bytes or (AlignByByte off) in elements;
// and whether the first vector alone is misaligned.
int psGetVectorShift();
void psSetVectorShift(int bytes);
int psGetVectorAlign();
// Stores the remainder of PS_ALIGN_MAX and returns the quotient.
int psSetVectorAlign(int misalignment);
bool psGetAlignSrc();
void psSetAlignSrc(bool firstOnly);
bool psGetAlignByByte();
void psSetAlignByByte(bool bytes);

// An owner is a psObject* as void*, or null, with two tag bits: a sub-object is
// reached through its owner and is not visited by itself; a plain buffer holds
// bytes that no object describes.
void* psSubObjectOwner(void* owner);
void* psBufferOwner(void* owner = nullptr);
bool psIsSubObject(const void* owner);
bool psIsBuffer(const void* owner);
void* psUntaggedOwner(void* owner);

// Allocates `size` bytes at a boundary plus `offset` plus the remainder of
// `shift`; `offset` is not negative. Null, after a message, when there is no
// memory. The block is not zeroed.
void* psMalloc(int size, int shift, int offset, void* owner);
void* psMalloc(void*& p, int size, int shift, int offset);
// Blocks that are not (or no longer) registered stay as they are, so objects
// may be destroyed after psFreeAll.
void psFree(void* p);

bool psMallocInfo(void* p, int* size, void** owner);
// The walk over all live blocks; null at its end. There is one cursor, and it
// survives the release of any block.
void* psMallocFirst(int* size, void** owner);
void* psMallocNext(int* size, void** owner);
// The bytes asked for of all live blocks together.
long long psMallocTotal();
// True when some live block belongs to a data object (buffers do not count).
bool psMallocHasData();
// Forgets all blocks without releasing their memory, which objects still refer
// to. Returns 0.
int psFreeAll();

// Each visits the owner of every live block that is neither sub-object nor
// plain buffer; they use the cursor of the walk.
void psReserveAllVectors();
void psResetAllVectors();

struct Address {
    void* base = nullptr;     // the boundary inside the raw block
    void* pointer = nullptr;  // what the caller got
    int size = 0;             // what the caller asked for
    void* owner = nullptr;
};

// The live blocks in the order of their allocation. A test has few of them, so
// they are searched one by one.
class AddressList : public psList<Address> {
  public:
    iterator findBlock(const void* p);
    psString memInfo(const void* p);  // empty for an unknown block

    // A walk that goes on behind the block it stands on when that is erased; null
    // at the end.
    const Address* first();
    const Address* next();
    void erase(iterator block);

  private:
    iterator m_next = end();
};
