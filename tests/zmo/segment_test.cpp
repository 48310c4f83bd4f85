#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

#include "call.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// flood or grow is null.
template <class S, class M>
struct Function {
    const char* name;
    int channels;
    ZmoStatus (*flood)(const S*, int, M*, int, ZmoiSize, int, int, Zmo8u*);
    ZmoStatus (*grow)(const S*, int, M*, int, ZmoiSize, int, Zmo8u*);

    kit::Buffer bufferFor(ZmoiSize size) const {
        return kit::bufferOf(
            flood ? zmoiSegmentWatershedGetBufferSize : zmoiSegmentGradientGetBufferSize, size,
            kit::typeOf<S>, channels);
    }
};

const Function<Zmo32f, Zmo16u> flood32f = {"Watershed_32f16u", 1, zmoiSegmentWatershed_32f16u_C1IR,
                                           nullptr};

template <class Body>
void forEachFunction(Body body) {
    using Bytes = Function<Zmo8u, Zmo8u>;
    body(Bytes{"Watershed_8u", 1, zmoiSegmentWatershed_8u_C1IR, nullptr});
    body(Function<Zmo8u, Zmo16u>{"Watershed_8u16u", 1, zmoiSegmentWatershed_8u16u_C1IR, nullptr});
    body(flood32f);
    body(Bytes{"Gradient_8u_C1", 1, nullptr, zmoiSegmentGradient_8u_C1IR});
    body(Bytes{"Gradient_8u_C3", 3, nullptr, zmoiSegmentGradient_8u_C3IR});
}

// Pixels that wait: level, turn, place, label.
using Waiting = std::tuple<double, int, int, int, int>;

// Segments by the definition: everything that waits stands in one ordered set.
template <class S, class M>
class Oracle {
  public:
    Oracle(const Function<S, M>& function, const kit::Image<S>& src, const kit::Image<M>& markers,
           int connectivity, bool drawLines)
        : m_floods(function.flood != nullptr),
          m_src(src),
          m_segments(markers),
          m_size(src.size()),
          m_connectivity(connectivity),
          m_drawLines(drawLines && m_floods) {}

    kit::Image<M> run() {
        const kit::Image<M> markers = m_segments;
        kit::forEachPixel(m_size, [&](int x, int y) {
            if (isLabel(markers.get(x, y))) offer(x, y);
        });
        while (!m_waiting.empty()) {
            const auto [level, turn, y, x, label] = *m_waiting.begin();
            m_waiting.erase(m_waiting.begin());
            m_level = level;
            const bool line = m_drawLines && meetsOther(x, y, label);
            m_segments.set(x, y, line ? lineValue : static_cast<M>(label));
            if (!line) offer(x, y);
        }
        return m_segments;
    }

  private:
    static constexpr M lineValue = std::numeric_limits<M>::max();

    bool isLabel(M value) const { return value != 0 && !(m_drawLines && value == lineValue); }

    template <class Body>
    void forEachNeighbour(int x, int y, Body body) const {
        oracle::forEachNeighbour(m_size, x, y, m_connectivity, body);
    }

    double levelOf(int x, int y, int fromX, int fromY) const {
        if (m_floods) return std::max<double>(m_level, m_src.get(x, y));
        int step = 0;
        for (int c = 0; c < m_src.channels(); ++c) {
            const int a = static_cast<int>(m_src.get(x, y, c));
            step = std::max(step, std::abs(a - static_cast<int>(m_src.get(fromX, fromY, c))));
        }
        return step;
    }

    void offer(int x, int y) {
        forEachNeighbour(x, y, [&](int toX, int toY) {
            if (m_segments.get(toX, toY) != 0) return;
            const auto waits = std::ranges::find_if(m_waiting, [&](const Waiting& w) {
                return std::get<2>(w) == toY && std::get<3>(w) == toX;
            });
            const double level = levelOf(toX, toY, x, y);
            if (waits != m_waiting.end()) {
                if (m_floods || level >= std::get<0>(*waits)) return;
                m_waiting.erase(waits);
            }
            m_waiting.insert({level, m_turn++, toY, toX, m_segments.get(x, y)});
        });
    }

    bool meetsOther(int x, int y, int label) const {
        bool other = false;
        forEachNeighbour(x, y, [&](int toX, int toY) {
            const M value = m_segments.get(toX, toY);
            other |= isLabel(value) && value != label;
        });
        return other;
    }

    bool m_floods;
    const kit::Image<S>& m_src;
    kit::Image<M> m_segments;
    ZmoiSize m_size;
    int m_connectivity;
    bool m_drawLines;
    std::set<Waiting> m_waiting;
    int m_turn = 0;
    double m_level = -std::numeric_limits<double>::infinity();
};

template <class S>
S drawn(kit::Random& random, bool few) {
    if constexpr (std::is_same_v<S, float>) {
        constexpr float infinity = std::numeric_limits<float>::infinity();
        constexpr float values[] = {0, -0.0F, 1, -1.5F, 3e38F, -infinity, infinity, 1e-30F};
        if (few) return values[random.between(0, 7)];
        return static_cast<float>(random.uniform(-1e6, 1e6));
    } else {
        return static_cast<S>(few ? 85 * random.between(0, 3) : random.between(0, 255));
    }
}

// What the function makes of the markers, which is the same at all levels.
template <class S, class M>
kit::Image<M> segments(const Function<S, M>& function, const kit::Image<S>& src,
                       const kit::Image<M>& markers, int connectivity, int drawLines) {
    return kit::atAllLevels([&] {
        kit::Image<M> image = markers;
        kit::Buffer buffer = function.bufferFor(src.size());
        if (function.flood) {
            kit::succeed(function.flood, src, image, src.size(), connectivity, drawLines, buffer);
        } else {
            kit::succeed(function.grow, src, image, src.size(), connectivity, buffer);
        }
        return image;
    });
}

// Few markers, many, none, and all; labels at both ends of their range.
TEST(Segment, Oracle) {
    forEachFunction([]<class S, class M>(const Function<S, M>& function) {
        SCOPED_TRACE(function.name);
        kit::forEachTurn(101, [&](kit::Random& random, ZmoiSize size, kit::Layout layout,
                                  size_t turn) {
            const int density = std::array{0, 5, 100, 1000}[(turn + turn / 4) % 4];
            const int connectivity = turn % 3 == 0 ? 8 : 4;
            const int drawLines = std::array{6, 7, 0, 0, 0}[turn % 5];
            kit::Image<S> src(size, layout, 0, function.channels);
            src.fill([&] { return drawn<S>(random, turn % 2 == 0); });
            kit::Image<M> markers(size, {layout.misalign + 2, layout.padding});
            markers.fill([&] {
                const M last = std::numeric_limits<M>::max();
                return random.between(0, 999) < density ? random.pick<M>({1, 2, 200, last}) : M(0);
            });
            if (density > 0) markers.set(size.width / 2, size.height / 2, 1);
            kit::expectPixels(segments(function, src, markers, connectivity, drawLines),
                              Oracle(function, src, markers, connectivity, drawLines).run());
        });
    });
}

// Where a relief is not a number the order is left open, but it is the same everywhere.
TEST(Segment, ReliefThatIsNotANumber) {
    kit::Random random(102);
    kit::Image<Zmo32f> src({33, 9});
    src.fill([&] { return random.between(0, 2) ? random.uniform(-1, 1) : NAN; });
    kit::Image<Zmo16u> markers({33, 9});
    markers.fill([&] { return random.between(0, 20) ? 0 : random.between(1, 9); });
    segments(flood32f, src, markers, 4, 0);
}

TEST(Segment, BadArguments) {
    forEachFunction([]<class S, class M>(const Function<S, M>& function) {
        SCOPED_TRACE(function.name);
        kit::Image<S> src({12, 4}, {}, 0, function.channels);
        kit::Image<M> markers(src.size());
        kit::Buffer buffer = function.bufferFor(src.size());
        src.fill([] { return 3; });
        markers.fill([] { return 1; });
        const auto expect = [&](auto run, auto... drawLines) {
            kit::expectBadArguments(run, {{5, {6, 0}, zmoStsConnectivityErr}}, src, markers,
                                    src.size(), 4, drawLines..., buffer);
        };
        if (function.flood) {
            expect(function.flood, 1);
        } else {
            expect(function.grow);
        }
    });
}

}  // namespace
