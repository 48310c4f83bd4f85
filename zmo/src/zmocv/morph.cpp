#include "zmocv/morph.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <optional>

#include "common/check.h"
#include "common/wide.h"
#include "zmocv/morphrows.h"
#include "zmocv/morphstate.h"
#include "zmocv_morph.h"

namespace zmo {
namespace {

enum class MorphOperation { erode, dilate, open, close, gradient, tophat, blackhat };

// pValue may be null unless the border is constant.
struct MorphCall {
    MorphOperation operation;
    ZmoDataType type;
    int channels;
    MorphImage src;
    MorphImage dst;
    ZmoiSizeL roi;
    Border border;
    const ZmoiMorphState* pState;
    void* pBuffer;
    bool sizesAreInt;
};

// Index of a type's kernels; -1: not a type of flat morphology.
int indexOf(ZmoDataType type) {
    switch (type) {
        case zmo8u:
            return morph8u;
        case zmo16u:
            return morph16u;
        case zmo16s:
            return morph16s;
        case zmo32f:
            return morph32f;
        case zmo1u:
            return morph1u;
        default:
            return -1;
    }
}

bool hasChannels(ZmoDataType type, int channels) {
    if (channels == 1) return true;
    return (channels == 3 || channels == 4) && (type == zmo8u || type == zmo32f);
}

PixelFormat formatOf(ZmoDataType type, int channels) {
    constexpr ptrdiff_t bytes[] = {1, 2, 2, 4, 0};
    return {bytes[indexOf(type)] * channels, channels};
}

// What a stage takes off the work buffer, in rows; its window is `height` rows high.
int64_t rowsOfStage(int64_t height) {
    return 3 * height + 1 + height + 6;
}

// Two stages, their results, a source row, the taps and the alignment of all.
uint128 bufferSize(PixelFormat format, ZmoiSizeL roi, ZmoiSizeL mask) {
    const uint128 pitch = static_cast<uint128>(
        bytesOfExtendedRow(format, std::min(roi.width, INT64_MAX / 128) + mask.width, mask.width));
    const int64_t rows = 2 * rowsOfStage(mask.height) + 2 * mask.height + 1;
    const int64_t taps = mask.width * mask.height * static_cast<int64_t>(sizeof(MorphTap)) + 64;
    return pitch * static_cast<uint128>(rows) + static_cast<uint128>(taps) + 64;
}

struct RowSpan {
    char* data;
    ptrdiff_t step;
    char* at(ptrdiff_t i) const { return data + i * step; }
};

// What all stages of a call have in common. The taps are one array, since a stage needs them only
// while it makes a row.
struct StageSetting {
    PixelFormat format;
    Border border;
    MorphState state;
    const ZmoiMorphState* pState;
    MorphTap* taps;
};

// One erosion or dilation. It pulls rows out of the stage before it, or out of the image, and makes
// up to as many rows at a time as its window is high: with the extrema of the window's rows from
// each one to the last, and a running extremum of the rows behind them, a row of the result costs
// less than three comparisons a pixel down the columns (van Herk; Gil and Werman).
class MorphStage {
  public:
    enum class Reads { image, stage };

    // rows: those of another stage that reads the same window; null: rows of its own.
    MorphStage(const StageSetting& setting, const MorphKernels& kernels, bool dilates,
               Region region, Reads reads, RowCarver& carver, ExtendedRows* rows = nullptr)
        : m_setting(setting),
          m_dilates(dilates),
          m_loops((dilates ? kernels.max
                           : kernels.min)[indexOf(static_cast<ZmoDataType>(setting.state.type))]),
          m_window(dilates ? setting.state.window().reflected() : setting.state.window()),
          m_region(region),
          m_pitch(carver.pitch()),
          m_input(rows != nullptr
                      ? *rows
                      : m_ownInput.emplace(setting.format, region, m_window, setting.border,
                                           m_window.height, reads == Reads::image ? 2 : 3, carver)),
          m_suffixes(workRows(carver, m_window.height)),
          m_column(workRows(carver, 1)),
          m_running(workRows(carver, 2)),
          m_scratch(workRows(carver, 3)) {}

    ExtendedRows& input() const { return m_input; }
    void readImage(const MorphImage& image, ptrdiff_t originX, ptrdiff_t originY) {
        m_image = image;
        m_originX = originX;
        m_originY = originY;
    }
    void readStage(MorphStage& before) { m_before = &before; }

    // y is a multiple of the window's height, which is also the most that count can be.
    void make(ptrdiff_t y, ptrdiff_t count, RowSpan out) {
        feed(m_input.lastNeeded(y + count - 1));
        if (m_setting.state.isRectangle()) {
            makeRectangle(y, count, out);
        } else {
            makeScattered(y, count, out);
        }
    }

  private:
    char* workRows(RowCarver& carver, ptrdiff_t count) const {
        return carver.rows(count, m_input.usedBytes());
    }

    // Elements or words of a result row.
    ptrdiff_t resultLength() const {
        return m_setting.format.bits() ? (m_region.width + 63) / 64
                                       : m_region.width * m_setting.format.channels;
    }

    void feed(ptrdiff_t last) {
        const Region content = m_input.content();
        while (m_input.loadedCount() <= last) {
            const ptrdiff_t y = m_input.loadedCount();
            if (m_before != nullptr) {
                const ptrdiff_t count = std::min(m_window.height, content.height - y);
                m_before->make(y, count, {m_input.place(y), m_pitch});
                m_input.finishRows(count);
            } else {
                loadPixels(m_setting.format, m_image, -m_originX, y - m_originY, content.width,
                           m_input.place(y));
                m_input.finishRows(1);
            }
        }
    }

    // Extrema along the row of what was found down the columns.
    void finish(const void* column, char* dst) const {
        m_loops.window(column, dst, resultLength(), m_input.firstBit(), m_setting.format.channels,
                       m_window.width, m_scratch, m_pitch);
    }

    void makeRectangle(ptrdiff_t y, ptrdiff_t count, RowSpan out) const {
        const bool wide = m_window.width > 1;
        const auto target = [&](ptrdiff_t i) { return wide ? m_column : out.at(i); };
        const auto finishRow = [&](ptrdiff_t i) {
            if (wide) finish(m_column, out.at(i));
        };
        const auto row = [&](ptrdiff_t i) { return m_input.row(y - m_window.top + i); };
        const ptrdiff_t length = wide ? m_input.paddedElements() : m_input.elements();
        const ptrdiff_t height = m_window.height;
        if (height == 1) return makeFlatRectangle(y, count, out);

        const auto suffix = [&](ptrdiff_t i) {
            return i == height - 1 ? row(i) : m_suffixes + i * m_pitch;
        };
        for (ptrdiff_t i = height - 2; i > 0; --i) {
            m_loops.combine(row(i), suffix(i + 1), m_suffixes + i * m_pitch, length);
        }
        m_loops.combine(row(0), suffix(1), target(0), length);
        finishRow(0);
        if (count == 1) return;
        const char* running = row(height);
        m_loops.combine(suffix(1), running, target(1), length);
        finishRow(1);
        for (ptrdiff_t i = 2; i < count; ++i) {
            char* const next = m_running + i % 2 * m_pitch;
            m_loops.sweep(running, row(height - 1 + i), suffix(i), next, target(i), length);
            running = next;
            finishRow(i);
        }
    }

    void makeFlatRectangle(ptrdiff_t y, ptrdiff_t count, RowSpan out) const {
        for (ptrdiff_t i = 0; i < count; ++i) {
            const char* const row = m_input.row(y + i);
            if (m_window.width > 1) {
                finish(row, out.at(i));
            } else {
                const ptrdiff_t bytes = m_setting.format.bits()
                                            ? resultLength() * 8
                                            : m_region.width * m_setting.format.bytes;
                std::memcpy(out.at(i), row, static_cast<size_t>(bytes));
            }
        }
    }

    void makeScattered(ptrdiff_t y, ptrdiff_t count, RowSpan out) const {
        const MorphState& state = m_setting.state;
        for (ptrdiff_t i = 0; i < count; ++i) {
            for (ptrdiff_t k = 0; k < state.pointCount; ++k) {
                const MorphPoint point = pointOf(m_setting.pState, k);
                const ptrdiff_t right = m_dilates ? state.width - 1 - point.x : point.x;
                const ptrdiff_t down = m_dilates ? state.height - 1 - point.y : point.y;
                m_setting.taps[k] = tapAt(m_input.row(y + i - m_window.top + down), right);
            }
            m_loops.points(m_setting.taps, state.pointCount, out.at(i), resultLength());
        }
    }

    // The pixel `right` pixels behind the first one of a row's window.
    MorphTap tapAt(const char* row, ptrdiff_t right) const {
        if (!m_setting.format.bits()) return {row + right * m_setting.format.bytes, 0, 0};
        const ptrdiff_t bit = m_input.firstBit() + right;
        return {row + bit / 64 * 8, static_cast<int>(bit % 64), 0};
    }

    const StageSetting& m_setting;
    bool m_dilates;
    MorphLoops m_loops;
    Window m_window;
    Region m_region;
    ptrdiff_t m_pitch;
    std::optional<ExtendedRows> m_ownInput;
    ExtendedRows& m_input;
    char* m_suffixes;
    char* m_column;
    char* m_running;
    char* m_scratch;
    MorphStage* m_before = nullptr;
    MorphImage m_image = {};
    ptrdiff_t m_originX = 0;
    ptrdiff_t m_originY = 0;
};

// Runs the stages of a call over the image once, a block of rows at a time.
class MorphRun {
  public:
    MorphRun(const MorphCall& call, const MorphState& state)
        : m_call(call),
          m_region{static_cast<ptrdiff_t>(call.roi.width), static_cast<ptrdiff_t>(call.roi.height)},
          m_kernels(kernelsInUse(morphKernelsByLevel)),
          m_setting{formatOf(call.type, call.channels), call.border, state, call.pState, nullptr},
          m_carver(call.pBuffer, static_cast<ptrdiff_t>(bytesOfExtendedRow(
                                     m_setting.format, call.roi.width + state.width, state.width))),
          m_block(state.height) {
        m_setting.taps = m_carver.array<MorphTap>(state.pointCount);
        build();
    }

    void run() {
        for (ptrdiff_t y = 0; y < m_region.height; y += m_block) {
            makeRows(y, std::min(m_block, m_region.height - y));
        }
    }

  private:
    using Op = MorphOperation;

    bool isOne(Op a, Op b) const { return m_call.operation == a || m_call.operation == b; }
    bool isGradient() const { return m_call.operation == Op::gradient; }
    bool subtracts() const { return isGradient() || isOne(Op::tophat, Op::blackhat); }
    bool isBits() const { return m_setting.format.bits(); }

    void build() {
        const bool dilatesLast = isOne(Op::dilate, Op::gradient) || isOne(Op::open, Op::tophat);
        const bool isSingle = isOne(Op::erode, Op::dilate) || isGradient();
        m_last.emplace(m_setting, m_kernels, dilatesLast, m_region,
                       isSingle ? MorphStage::Reads::image : MorphStage::Reads::stage, m_carver);
        if (isGradient()) {
            const Window window = m_setting.state.window();
            const bool same = window.left == window.right() && window.top == window.bottom();
            m_other.emplace(m_setting, m_kernels, false, m_region, MorphStage::Reads::image,
                            m_carver, same ? &m_last->input() : nullptr);
            readImage(*m_other, 0, 0);
        }
        if (isSingle) {
            readImage(*m_last, 0, 0);
        } else {
            const ExtendedRows& rows = m_last->input();
            m_other.emplace(m_setting, m_kernels, !dilatesLast, rows.content(),
                            MorphStage::Reads::image, m_carver);
            readImage(*m_other, rows.originX(), rows.originY());
            m_last->readStage(*m_other);
        }
        m_results = m_carver.rows(2 * m_block, resultBytes());
        m_source = m_carver.rows(1, resultBytes());
    }

    void readImage(MorphStage& stage, ptrdiff_t originX, ptrdiff_t originY) const {
        stage.readImage(m_call.src, originX + stage.input().originX(),
                        originY + stage.input().originY());
    }

    ptrdiff_t resultBytes() const { return m_region.width * m_setting.format.bytes; }
    char* dstRow(ptrdiff_t y) const { return m_call.dst.data + y * m_call.dst.step; }

    // The row itself; of bits, a copy that is spread into words.
    const char* sourceRow(ptrdiff_t y) const {
        if (!isBits()) return m_call.src.data + y * m_call.src.step;
        loadPixels(m_setting.format, m_call.src, 0, y, m_region.width, m_source);
        return m_source;
    }

    void makeRows(ptrdiff_t y, ptrdiff_t count) {
        if (!subtracts() && !isBits()) {
            return m_last->make(y, count, {dstRow(y), m_call.dst.step});
        }
        const RowSpan made{m_results, m_carver.pitch()};
        const RowSpan other{m_results + m_block * m_carver.pitch(), m_carver.pitch()};
        m_last->make(y, count, made);
        if (isGradient()) m_other->make(y, count, other);
        for (ptrdiff_t i = 0; i < count; ++i) {
            if (subtracts()) subtract(y + i, made.at(i), other.at(i));
            if (isBits())
                storeBits(subtracts() ? other.at(i) : made.at(i), m_call.dst, y + i,
                          m_region.width);
        }
    }

    // Words of the difference go to `other`.
    void subtract(ptrdiff_t y, const char* made, char* other) const {
        const auto difference = m_kernels.difference[indexOf(m_call.type)];
        char* const dst = isBits() ? other : dstRow(y);
        const ptrdiff_t count =
            isBits() ? (m_region.width + 63) / 64 : m_region.width * m_call.channels;
        switch (m_call.operation) {
            case Op::gradient:
                return difference(made, other, dst, count);
            case Op::tophat:
                return difference(sourceRow(y), made, dst, count);
            default:
                return difference(made, sourceRow(y), dst, count);
        }
    }

    const MorphCall& m_call;
    Region m_region;
    const MorphKernels& m_kernels;
    StageSetting m_setting;
    RowCarver m_carver;
    ptrdiff_t m_block;
    std::optional<MorphStage> m_last;
    std::optional<MorphStage> m_other;
    char* m_results = nullptr;
    char* m_source = nullptr;
};

void clear(const MorphCall& call) {
    const PixelFormat format = formatOf(call.type, call.channels);
    const uint64_t zeros[2] = {};
    for (int64_t y = 0; y < call.roi.height; ++y) {
        if (!format.bits()) {
            std::memset(call.dst.data + y * call.dst.step, 0,
                        static_cast<size_t>(call.roi.width * format.bytes));
            continue;
        }
        for (int64_t x = 0; x < call.roi.width; x += 64) {
            MorphImage part = call.dst;
            part.data += x / 8;
            storeBits(reinterpret_cast<const char*>(zeros), part, y,
                      std::min<int64_t>(64, call.roi.width - x));
        }
    }
}

bool badStepOf(const MorphCall& call, const MorphImage& image) {
    const PixelFormat format = formatOf(call.type, call.channels);
    if (format.bits()) {
        const int64_t offset = image.firstBit >= 0 && image.firstBit < 8 ? image.firstBit : 0;
        const int64_t last = call.roi.width - 1;
        return image.step < last / 8 + (last % 8 + offset) / 8 + 1;
    }
    const ptrdiff_t element = format.bytes / format.channels;
    return image.step < 1 || image.step % element != 0 ||
           image.step / format.bytes < call.roi.width;
}

ZmoStatus morph(const MorphCall& call) {
    if (anyNull(call.src.data, call.dst.data, call.pState, call.pBuffer)) return zmoStsNullPtrErr;
    if (call.border.type == zmoiBorderConst && call.border.value == nullptr)
        return zmoStsNullPtrErr;
    if (isEmpty(call.roi)) return zmoStsSizeErr;
    if (badStepOf(call, call.src) || badStepOf(call, call.dst)) return zmoStsStepErr;
    for (const MorphImage& image : {call.src, call.dst}) {
        if (image.firstBit < 0 || image.firstBit > 7) return zmoStsRangeErr;
    }
    if (!isKnown(call.border.type)) return zmoStsBorderErr;
    const MorphState state = stateOf(call.pState);
    if (state.kind != flatState || state.type != call.type || state.channels != call.channels) {
        return zmoStsStateErr;
    }
    const uint128 most = call.sizesAreInt ? INT_MAX : INT64_MAX;
    if (bufferSize(formatOf(call.type, call.channels), call.roi, {state.width, state.height}) >
        most) {
        return zmoStsTooLargeErr;
    }
    if (state.pointCount == 0) {
        clear(call);
        return zmoStsEmptyMask;
    }
    MorphRun(call, state).run();
    return zmoStsNoErr;
}

template <class T>
MorphImage imageOf(const T* data, int64_t step, int64_t firstBit = 0) {
    return {const_cast<char*>(reinterpret_cast<const char*>(data)), static_cast<ptrdiff_t>(step),
            firstBit};
}

ZmoiSizeL large(ZmoiSize size) {
    return {size.width, size.height};
}

template <class Size>
ZmoStatus morphGetSize(ZmoiSizeL roi, ZmoDataType type, int channels, ZmoiSizeL mask,
                       Size* pStateSize, Size* pBufferSize) {
    if (anyNull(pStateSize, pBufferSize)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (indexOf(type) < 0) return zmoStsDataTypeErr;
    if (!hasChannels(type, channels)) return zmoStsChannelsErr;
    if (badMask(mask)) return zmoStsMaskSizeErr;
    const uint128 buffer = bufferSize(formatOf(type, channels), roi, mask);
    const int64_t state = stateSize(mask);
    const uint128 most = static_cast<uint128>(std::numeric_limits<Size>::max());
    if (buffer > most || static_cast<uint128>(state) > most) return zmoStsTooLargeErr;
    *pStateSize = static_cast<Size>(state < 64 ? 64 : state);
    *pBufferSize = static_cast<Size>(buffer);
    return zmoStsNoErr;
}

ZmoStatus morphInit(ZmoDataType type, int channels, const Zmo8u* pMask, ZmoiSizeL mask,
                    ZmoiPoint anchor, ZmoiMorphState* pState) {
    if (anyNull(pMask, pState)) return zmoStsNullPtrErr;
    if (indexOf(type) < 0) return zmoStsDataTypeErr;
    if (!hasChannels(type, channels)) return zmoStsChannelsErr;
    if (badMask(mask)) return zmoStsMaskSizeErr;
    if (badAnchor(anchor, mask)) return zmoStsAnchorErr;
    MorphState state{flatState,
                     type,
                     channels,
                     static_cast<int32_t>(mask.width),
                     static_cast<int32_t>(mask.height),
                     anchor.x,
                     anchor.y,
                     0};
    for (int32_t y = 0; y < state.height; ++y) {
        for (int32_t x = 0; x < state.width; ++x) {
            if (pMask[int64_t{y} * state.width + x] == 0) continue;
            storePoint({x, y, 0}, state.pointCount, pState);
            ++state.pointCount;
        }
    }
    storeState(state, pState);
    return state.pointCount == 0 ? zmoStsEmptyMask : zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiMorphGetSize(ZmoiSize roi, ZmoDataType type, int channels, ZmoiSize maskSize,
                           int* pStateSize, int* pBufferSize) {
    return zmo::morphGetSize(zmo::large(roi), type, channels, zmo::large(maskSize), pStateSize,
                             pBufferSize);
}

ZmoStatus zmoiMorphGetSize_L(ZmoiSizeL roi, ZmoDataType type, int channels, ZmoiSizeL maskSize,
                             int64_t* pStateSize, int64_t* pBufferSize) {
    return zmo::morphGetSize(roi, type, channels, maskSize, pStateSize, pBufferSize);
}

ZmoStatus zmoiMorphInit(ZmoDataType type, int channels, const Zmo8u* pMask, ZmoiSize maskSize,
                        ZmoiPoint anchor, ZmoiMorphState* pState) {
    return zmo::morphInit(type, channels, pMask, zmo::large(maskSize), anchor, pState);
}

ZmoStatus zmoiMorphInit_L(ZmoDataType type, int channels, const Zmo8u* pMask, ZmoiSizeL maskSize,
                          ZmoiPoint anchor, ZmoiMorphState* pState) {
    return zmo::morphInit(type, channels, pMask, maskSize, anchor, pState);
}

// The functions: seven operations of nine types and channels, each with int and 64-bit sizes.
#define ZMO_MORPH(operation, name, T, type, channels)                                          \
    ZmoStatus zmoi##name##Border_##type##_C##channels##R(                                      \
        const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi, ZmoiBorderType border, \
        const T* pBorderValue, const ZmoiMorphState* pState, Zmo8u* pBuffer) {                 \
        return zmo::morph({zmo::MorphOperation::operation,                                     \
                           zmo##type,                                                          \
                           channels,                                                           \
                           zmo::imageOf(pSrc, srcStep),                                        \
                           zmo::imageOf(pDst, dstStep),                                        \
                           zmo::large(roi),                                                    \
                           {border, pBorderValue},                                             \
                           pState,                                                             \
                           pBuffer,                                                            \
                           true});                                                             \
    }                                                                                          \
    ZmoStatus zmoi##name##_##type##_C##channels##R_L(                                          \
        const T* pSrc, int64_t srcStep, T* pDst, int64_t dstStep, ZmoiSizeL roi,               \
        ZmoiBorderType border, const T* pBorderValue, const ZmoiMorphState* pState,            \
        Zmo8u* pBuffer) {                                                                      \
        return zmo::morph({zmo::MorphOperation::operation,                                     \
                           zmo##type,                                                          \
                           channels,                                                           \
                           zmo::imageOf(pSrc, srcStep),                                        \
                           zmo::imageOf(pDst, dstStep),                                        \
                           roi,                                                                \
                           {border, pBorderValue},                                             \
                           pState,                                                             \
                           pBuffer,                                                            \
                           false});                                                            \
    }
#define ZMO_MORPH_BITS(operation, name)                                                            \
    ZmoStatus zmoi##name##Border_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,          \
                                        Zmo8u* pDst, int dstStep, int dstBitOffset, ZmoiSize roi,  \
                                        ZmoiBorderType border, const Zmo8u* pBorderValue,          \
                                        const ZmoiMorphState* pState, Zmo8u* pBuffer) {            \
        return zmo::morph({zmo::MorphOperation::operation,                                         \
                           zmo1u,                                                                  \
                           1,                                                                      \
                           zmo::imageOf(pSrc, srcStep, srcBitOffset),                              \
                           zmo::imageOf(pDst, dstStep, dstBitOffset),                              \
                           zmo::large(roi),                                                        \
                           {border, pBorderValue},                                                 \
                           pState,                                                                 \
                           pBuffer,                                                                \
                           true});                                                                 \
    }                                                                                              \
    ZmoStatus zmoi##name##_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,          \
                                    Zmo8u* pDst, int64_t dstStep, int dstBitOffset, ZmoiSizeL roi, \
                                    ZmoiBorderType border, const Zmo8u* pBorderValue,              \
                                    const ZmoiMorphState* pState, Zmo8u* pBuffer) {                \
        return zmo::morph({zmo::MorphOperation::operation,                                         \
                           zmo1u,                                                                  \
                           1,                                                                      \
                           zmo::imageOf(pSrc, srcStep, srcBitOffset),                              \
                           zmo::imageOf(pDst, dstStep, dstBitOffset),                              \
                           roi,                                                                    \
                           {border, pBorderValue},                                                 \
                           pState,                                                                 \
                           pBuffer,                                                                \
                           false});                                                                \
    }
#define ZMO_MORPH_TYPES(operation, name)       \
    ZMO_MORPH_BITS(operation, name)            \
    ZMO_MORPH(operation, name, Zmo8u, 8u, 1)   \
    ZMO_MORPH(operation, name, Zmo8u, 8u, 3)   \
    ZMO_MORPH(operation, name, Zmo8u, 8u, 4)   \
    ZMO_MORPH(operation, name, Zmo16u, 16u, 1) \
    ZMO_MORPH(operation, name, Zmo16s, 16s, 1) \
    ZMO_MORPH(operation, name, Zmo32f, 32f, 1) \
    ZMO_MORPH(operation, name, Zmo32f, 32f, 3) \
    ZMO_MORPH(operation, name, Zmo32f, 32f, 4)

ZMO_MORPH_TYPES(erode, Erode)
ZMO_MORPH_TYPES(dilate, Dilate)
ZMO_MORPH_TYPES(open, MorphOpen)
ZMO_MORPH_TYPES(close, MorphClose)
ZMO_MORPH_TYPES(gradient, MorphGradient)
ZMO_MORPH_TYPES(tophat, MorphTophat)
ZMO_MORPH_TYPES(blackhat, MorphBlackhat)
