#include "zmoi/mask.h"

#include "common/mask.h"

namespace zmo::ZMO_LEVEL {
namespace {

using Vert = Mask<Weights::first, Weights::smooth>;
using Horiz = Mask<Weights::smooth, Weights::first>;
using Cross = Mask<Weights::first, Weights::first>;
using Laplacian = Mask<Weights::second, Weights::smooth, true>;
using Lowpass = Mask<Weights::smooth, Weights::smooth>;

// Divides by 16 or 256.
template <ptrdiff_t radius>
struct MeanOfBytes {
    static uint8_t of(uint16_t sum) {
        constexpr int shift = 4 * radius;
        constexpr int half = 1 << (shift - 1);
        const uint16_t whole = static_cast<uint16_t>(sum >> shift);
        const uint16_t rest = sum & ((1 << shift) - 1);
        const uint16_t odd = whole & 1;
        return static_cast<uint8_t>(whole + (rest + odd > half));
    }
};
template <ptrdiff_t radius>
struct MeanOfFloats {
    static float of(float sum) { return sum * (radius == 1 ? 1.0F / 16 : 1.0F / 256); }
};

template <class M, ptrdiff_t radius>
constexpr MaskKernel bytes = filterByMask<uint8_t, int16_t, int16_t, radius, M, Unchanged<int16_t>>;
template <class M, ptrdiff_t radius>
constexpr MaskKernel floats = filterByMask<float, float, float, radius, M, Unchanged<float>>;
template <ptrdiff_t radius>
constexpr MaskKernel meanOfBytes =
    filterByMask<uint8_t, uint16_t, uint8_t, radius, Lowpass, MeanOfBytes<radius>>;
template <ptrdiff_t radius>
constexpr MaskKernel meanOfFloats =
    filterByMask<float, float, float, radius, Lowpass, MeanOfFloats<radius>>;

}  // namespace

const MaskKernels maskKernels = {{bytes<Vert, 1>, bytes<Vert, 2>},
                                 {bytes<Horiz, 1>, bytes<Horiz, 2>},
                                 {floats<Vert, 1>, floats<Vert, 2>},
                                 {floats<Horiz, 1>, floats<Horiz, 2>},
                                 {floats<Cross, 1>, floats<Cross, 2>},
                                 {bytes<Laplacian, 1>, bytes<Laplacian, 2>},
                                 {floats<Laplacian, 1>, floats<Laplacian, 2>},
                                 {meanOfBytes<1>, meanOfBytes<2>},
                                 {meanOfFloats<1>, meanOfFloats<2>}};

}  // namespace zmo::ZMO_LEVEL
