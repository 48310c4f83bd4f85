#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

const std::vector<kit::Function> functions = {
    ZMO(zmoiSegmentWatershed_8u_C1IR), ZMO(zmoiSegmentWatershed_8u16u_C1IR),
    ZMO(zmoiSegmentWatershed_32f16u_C1IR), ZMO(zmoiSegmentGradient_8u_C1IR),
    ZMO(zmoiSegmentGradient_8u_C3IR)};

// The others grow segments from pixel to pixel.
bool floods(const kit::Function& function) {
    return function.isNamed("Watershed");
}

kit::Case caseOf(const kit::Function& function, ZmoiSize size, kit::Layout layout, int connectivity,
                 int drawLines) {
    kit::Case c(function, size, layout, {{"pSrcDst", {}, 0, 1}});
    c.with({{"connectivity", connectivity}, {"drawLines", drawLines}});
    return c.sized(floods(function) ? ZMO(zmoiSegmentWatershedGetBufferSize)
                                    : ZMO(zmoiSegmentGradientGetBufferSize));
}

// Pixels that wait: level, turn, place, label.
using Waiting = std::tuple<double, int, int, int, double>;

// Segments by the definition: everything that waits stands in one ordered set.
class Oracle {
  public:
    Oracle(const kit::Case& c, int connectivity, bool drawLines)
        : m_floods(floods(c.function())),
          m_src(c.src()),
          m_segments(c.dst()),
          m_size(c.roi()),
          m_connectivity(connectivity),
          m_drawLines(drawLines && m_floods),
          m_lineValue(m_segments.most()) {}

    const kit::AnyImage& run() {
        const kit::AnyImage markers = m_segments;
        kit::forEachPixel(m_size, [&](int x, int y) {
            if (isLabel(markers.get(x, y))) offer(x, y);
        });
        while (!m_waiting.empty()) {
            const auto [level, turn, y, x, label] = *m_waiting.begin();
            m_waiting.erase(m_waiting.begin());
            m_level = level;
            const bool line = m_drawLines && meetsOther(x, y, label);
            m_segments.set(x, y, 0, line ? m_lineValue : label);
            if (!line) offer(x, y);
        }
        return m_segments;
    }

  private:
    bool isLabel(double value) const {
        return value != 0 && !(m_drawLines && value == m_lineValue);
    }

    template <class Body>
    void forEachNeighbour(int x, int y, Body body) const {
        oracle::forEachNeighbour(m_size, x, y, m_connectivity, body);
    }

    double levelOf(int x, int y, int fromX, int fromY) const {
        if (m_floods) return std::max(m_level, m_src.get(x, y));
        double step = 0;
        for (int c = 0; c < m_src.channels(); ++c) {
            step = std::max(step, std::fabs(m_src.get(x, y, c) - m_src.get(fromX, fromY, c)));
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

    bool meetsOther(int x, int y, double label) const {
        bool other = false;
        forEachNeighbour(x, y, [&](int toX, int toY) {
            const double value = m_segments.get(toX, toY);
            other |= isLabel(value) && value != label;
        });
        return other;
    }

    bool m_floods;
    const kit::AnyImage& m_src;
    kit::AnyImage m_segments;
    ZmoiSize m_size;
    int m_connectivity;
    bool m_drawLines;
    double m_lineValue;
    std::set<Waiting> m_waiting;
    int m_turn = 0;
    double m_level = -HUGE_VAL;
};

double drawn(const kit::AnyImage& src, kit::Random& random, bool few) {
    constexpr double values[] = {0, -0.0, 1, -1.5, 3e38, -HUGE_VAL, HUGE_VAL, 1e-30};
    if (src.most() == 0) return few ? values[random.between(0, 7)] : random.uniform(-1e6, 1e6);
    return static_cast<double>(few ? 85 * random.between(0, 3) : random.between(0, 255));
}

// Few markers, many, none, and all; labels at both ends of their range.
TEST(Segment, Oracle) {
    kit::forEachCase(
        {101, 4}, functions,
        [](auto& random, const auto& function, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int density = std::array{0, 5, 100, 1000}[(turn + turn / 4) % 4];
            const int connectivity = turn % 3 == 0 ? 8 : 4;
            const int drawLines = std::array{6, 7, 0, 0, 0}[turn % 5];
            kit::Case c = caseOf(function, size, layout, connectivity, drawLines);
            c.src().fill([&] { return drawn(c.src(), random, turn % 2 == 0); });
            c.dst().fill([&] {
                const double label = random.template pick<double>({1, 2, 200, c.dst().most()});
                return random.between(0, 999) < density ? label : 0;
            });
            if (density > 0) c.dst().set(size.width / 2, size.height / 2, 0, 1);
            Oracle oracle(c, connectivity, drawLines != 0);
            const kit::AnyImage& want = oracle.run();
            return c.want("pSrcDst", [&](int x, int y) { return want.get(x, y); });
        });
}

// Where a relief is not a number the order is left open, but it is the same everywhere.
TEST(Segment, ReliefThatIsNotANumber) {
    kit::Random random(102);
    kit::Case c = caseOf(functions[2], {33, 9}, {}, 4, 0);
    c.src().fill([&] { return random.between(0, 2) ? random.uniform(-1, 1) : NAN; });
    c.dst().fill([&] { return random.between(0, 20) ? 0 : random.between(1, 9); });
    kit::expectSameAtAllLevels(c);
}

TEST(Segment, BadArguments) {
    for (const auto& function : functions) caseOf(function, {12, 4}, {}, 4, 1).expectBadArguments();
}

}  // namespace
