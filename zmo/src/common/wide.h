// Sums of 16-bit squares over more than 2^32 pixels do not fit 64 bits.
#pragma once

namespace zmo {

__extension__ typedef unsigned __int128 uint128;

}  // namespace zmo
