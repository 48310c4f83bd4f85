#include <climits>
#include <cmath>

#include "oracle/border.h"
#include "zmocv.h"

namespace {

using Point = ZmoiPoint32f;

// Pictures as functions of the place, in 0 ... 1.
using Texture = double (*)(double x, double y);

double waves(double x, double y) {
    return 0.5 + 0.2 * std::sin(x * 0.31 + y * 0.12) + 0.15 * std::sin(y * 0.27 - x * 0.09) +
           0.1 * std::sin(x * 0.83 + 2) * std::sin(y * 0.71);
}
double chessboard(double x, double y) {
    return static_cast<int>(std::floor(x / 3) + std::floor(y / 4)) & 1;
}
// Further down with more and more texture.
double stripes(double x, double y) {
    return 0.5 + 0.4 * std::sin(x * 0.6) + 0.0006 * y * std::sin(y * 0.5);
}

// A picture shifted by (dx, dy), in layers that halve the coordinates.
using Layers = std::vector<kit::Image>;
Layers layersOf(ZmoDataType type, ZmoiSize size, int count, Texture texture, double dx = 0,
                double dy = 0, kit::Layout layout = {}) {
    Layers layers;
    for (int k = 0; k < count; ++k) {
        kit::Image& layer = layers.emplace_back(type, size, layout);
        const double most = layer.isWhole() ? layer.most() : 1000;
        layer.fill(
            [&](int x, int y) { return texture(x * (1 << k) - dx, y * (1 << k) - dy) * most; });
        size = {(size.width + 1) / 2, (size.height + 1) / 2};
    }
    return layers;
}

ZmoiPyramidLevels levelsOf(const Layers& layers) {
    ZmoiPyramidLevels levels{};
    for (const auto& image : layers) {
        const int k = levels.levels++;
        levels.pImage[k] = image.ptr();
        levels.step[k] = static_cast<int>(image.step());
        levels.roi[k] = image.size();
    }
    return levels;
}

struct Rules {
    int window;
    int maxLevel;
    int maxIterations;
    float epsilon;
};

// The results for one point as the header defines them, one pixel at a time.
struct Definition {
    Rules rules;
    const Layers& first;
    const Layers& second;
    Point to{};
    bool found = false;
    float error = 0;

    Definition(const Rules& r, const Layers& a, const Layers& b, Point from, Point start)
        : rules(r), first(a), second(b) {
        Point q = scaled(start, rules.maxLevel);
        for (int k = rules.maxLevel; k >= 0; --k) {
            const size_t layer = static_cast<size_t>(k);
            if (k < rules.maxLevel) q = {q.x * 2, q.y * 2};
            const Point before = q;
            found = track(first[layer], second[layer], scaled(from, k), q);
            if (!found) q = before;
        }
        to = found ? q : start;
        if (!found) return;
        error = sum([&](int i, int j) {
                    return std::fabs(at(first[0], from, i, j) - at(second[0], q, i, j));
                }) /
                static_cast<float>(rules.window * rules.window);
    }

    static Point scaled(Point p, int k) { return {std::ldexp(p.x, -k), std::ldexp(p.y, -k)}; }

    static bool inside(Point p, ZmoiSize size) {
        return p.x >= -0.5F && p.y >= -0.5F && double{p.x} <= size.width - 0.5 &&
               double{p.y} <= size.height - 0.5;
    }

    float at(const kit::Image& image, Point p, int i, int j) const {
        const int left = static_cast<int>(std::floor(p.x)) - rules.window / 2;
        const int top = static_cast<int>(std::floor(p.y)) - rules.window / 2;
        const float fx = p.x - std::floor(p.x);
        const float fy = p.y - std::floor(p.y);
        const oracle::Extended source{image, zmoiBorderReplicate};
        const auto pixel = [&](int x, int y) { return static_cast<float>(source(x, y)); };
        const auto line = [&](int y) {
            return (1 - fx) * pixel(left + i, y) + fx * pixel(left + i + 1, y);
        };
        return (1 - fy) * line(top + j) + fy * line(top + j + 1);
    }

    template <class Term>
    float sum(Term term) const {
        float lanes[8] = {};
        for (int i = 0; i < rules.window; ++i) {
            float column = 0;
            for (int j = 0; j < rules.window; ++j) column += term(i, j);
            lanes[i % 8] += column;
        }
        return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) +
               ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
    }

    bool track(const kit::Image& a, const kit::Image& b, Point p, Point& q) const {
        if (!inside(p, a.size()) || !inside(q, b.size())) return false;
        const auto dx = [&](int i, int j) { return (at(a, p, i + 1, j) - at(a, p, i - 1, j)) / 2; };
        const auto dy = [&](int i, int j) { return (at(a, p, i, j + 1) - at(a, p, i, j - 1)) / 2; };
        const auto d = [&](int i, int j) { return at(a, p, i, j) - at(b, q, i, j); };
        const auto total = [&](auto u, auto v) {
            return double{sum([&](int i, int j) { return u(i, j) * v(i, j); })};
        };
        const double gxx = total(dx, dx);
        const double gxy = total(dx, dy);
        const double gyy = total(dy, dy);
        const double det = gxx * gyy - gxy * gxy;
        if (!(det > (gxx + gyy) * (gxx + gyy) / 1024)) return false;
        for (int n = 0; n < rules.maxIterations; ++n) {
            const double bx = total(d, dx);
            const double by = total(d, dy);
            const Point step{static_cast<float>((gyy * bx - gxy * by) / det),
                             static_cast<float>((gxx * by - gxy * bx) / det)};
            q = {q.x + step.x, q.y + step.y};
            if (!inside(q, b.size())) return false;
            if (std::hypot(double{step.x}, double{step.y}) < double{rules.epsilon}) break;
        }
        return true;
    }
};

const std::vector<kit::Function> functions = {ZMO(zmoiOpticalFlowPyrLK_8u_C1R),
                                              ZMO(zmoiOpticalFlowPyrLK_16u_C1R),
                                              ZMO(zmoiOpticalFlowPyrLK_32f_C1R)};

ZmoDataType typeOf(const kit::Function& function) {
    return function.isNamed("_8u_") ? zmo8u : function.isNamed("_16u_") ? zmo16u : zmo32f;
}

// Layers and points that one call takes; it holds what the call points to.
struct Tracking {
    Tracking(const kit::Function& function, Layers a, Layers b, const std::vector<Point>& points,
             const std::vector<Point>& begin, const Rules& r)
        : first(std::move(a)),
          second(std::move(b)),
          pFirst(levelsOf(first)),
          pSecond(levelsOf(second)),
          c(function) {
        c.with({{"pFirst", &pFirst},
                {"pSecond", &pSecond},
                {"count", points.size()},
                {"windowSize", r.window},
                {"maxLevel", r.maxLevel},
                {"maxIterations", r.maxIterations},
                {"epsilon", r.epsilon},
                {"type", first[0].type()},
                {"channels", 1}})
            .sized(ZMO(zmoiOpticalFlowPyrLKGetBufferSize));
        std::vector<Point> to;
        std::vector<Zmo8u> found;
        std::vector<float> errors;
        for (size_t i = 0; i < points.size(); ++i) {
            const Definition d(r, first, second, points[i], begin[i]);
            to.push_back(d.to);
            found.push_back(d.found);
            errors.push_back(d.error);
            foundPoints += d.found ? 1 : 0;
        }
        c.wantEntries("pTo", to).wantEntries("pFound", found).wantEntries("pError", errors);
        c.give("pFrom", kit::Buffer(points)).give("pTo", kit::Buffer(begin));
    }
    Tracking(const Tracking&) = delete;
    Tracking& operator=(const Tracking&) = delete;

    Layers first;
    Layers second;
    ZmoiPyramidLevels pFirst;
    ZmoiPyramidLevels pSecond;
    kit::Case c;
    int foundPoints = 0;
};

struct Scene {
    ZmoiSize size;
    Texture texture;
    Rules rules;
};

const Scene scenes[] = {{{97, 71}, waves, {15, 2, 6, 0.01F}},
                        {{64, 48}, waves, {7, 3, 3, 0.3F}},
                        {{65, 33}, chessboard, {9, 1, 4, 0}},
                        {{40, 30}, chessboard, {3, 0, 2, 0}},
                        {{33, 70}, waves, {31, 1, 1, 0}},
                        {{30, 29}, waves, {127, 0, 2, 0}},
                        {{17, 1}, waves, {5, 1, 2, 0}},
                        {{1, 1}, waves, {3, 0, 2, 0}},
                        {{50, 50}, stripes, {11, 1, 3, 0.1F}},
                        {{50, 50}, [](double, double) { return 0.3; }, {11, 1, 3, 0}}};

TEST(OpticalFlow, FollowsItsDefinition) {
    kit::Turn t(91);
    for (const auto& function : functions) {
        int foundPoints = 0;
        for (const Scene& s : scenes) {
            const kit::Layout layout = kit::layouts()[t.number++ % 4];
            const auto layers = [&](double dx, double dy, kit::Layout own) {
                return layersOf(typeOf(function), s.size, s.rules.maxLevel + 1, s.texture, dx, dy,
                                own);
            };
            // Inside, over each edge, on whole pixels, and nowhere.
            std::vector<Point> from{{0, 0}, {3e9F, 1}, {-0.25F, 0.25F}, {1, -1e30F}};
            std::vector<Point> begin{{0, 0}, {3, 1}, {0, 0}, {1, 1}};
            while (from.size() < 16) {
                from.push_back({static_cast<float>(t.uniform(-2, s.size.width + 1)),
                                static_cast<float>(t.uniform(-2, s.size.height + 1))});
                begin.push_back({from.back().x + static_cast<float>(t.between(-2, 2)),
                                 from.back().y + static_cast<float>(t.uniform(-2, 2))});
            }
            Tracking tracking(function, layers(0, 0, layout),
                              layers(1.4, -0.8, {layout.misalign + 1, layout.padding + 2}), from,
                              begin, s.rules);
            foundPoints += tracking.foundPoints;
            kit::forEachLevel([&] { tracking.c.expect(); });
            for (const auto& image : tracking.first) image.expectUntouched("first");
            for (const auto& image : tracking.second) image.expectUntouched("second");
        }
        EXPECT_GE(foundPoints, 40);
    }
}

TEST(OpticalFlow, OddNumbersLoseTheirPointOnly) {
    auto first = layersOf(zmo32f, {80, 40}, 1, waves);
    auto second = layersOf(zmo32f, {80, 40}, 1, waves, 0.5, 0.25);
    first[0].set(20, 20, NAN);
    second[0].set(39, 20, NAN);  // beside the last window, but not beside whole vectors
    Tracking tracking(
        functions[2], first, second, {{NAN, 5}, {60, 20}, {20, 20}, {30, 20}, {60, 20}},
        {{5, 5}, {HUGE_VALF, 20}, {20, 20}, {30, 20}, {60, -HUGE_VALF}}, {11, 0, 9, 0.01F});
    EXPECT_EQ(tracking.foundPoints, 1);
    kit::forEachLevel([&] { tracking.c.expectSameBits(); });
}

TEST(OpticalFlow, BadArguments) {
    const std::vector<Point> points(2, Point{9, 9});
    for (const auto& function : functions) {
        const auto layers = layersOf(typeOf(function), {24, 20}, 3, waves);
        Tracking tracking(function, layers, layers, points, points, {5, 1, 3, 0.1F});
        std::vector<ZmoiPyramidLevels> bad(5, tracking.pFirst);
        bad[0].pImage[1] = nullptr;
        bad[1].roi[1].height = 0;
        ++bad[2].roi[0].width;
        bad[3].step[0] -= 1;
        bad[4].step[1] = 0;
        tracking.c.expectBadArguments({{"pSecond", &bad[0], zmoStsNullPtrErr},
                                       {"pFirst", &bad[1], zmoStsSizeErr},
                                       {"pSecond", &bad[2], zmoStsSizeErr},
                                       {"count", 0, zmoStsSizeErr},
                                       {"pFirst", &bad[3], zmoStsStepErr},
                                       {"pSecond", &bad[4], zmoStsStepErr},
                                       {"windowSize", {4, 1, 129}, zmoStsMaskSizeErr},
                                       {"maxLevel", 3, zmoStsRangeErr},
                                       {"maxIterations", 0, zmoStsRangeErr},
                                       {"epsilon", {-0.1F, NAN}, zmoStsThresholdErr}});
        // No layer is looked at then.
        for (const int level : {-1, 16, INT_MAX}) {
            EXPECT_EQ(tracking.c.with("maxLevel", level).run(), zmoStsRangeErr);
        }
    }
}

}  // namespace
