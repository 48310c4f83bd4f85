#include <algorithm>
#include <climits>
#include <cmath>

#include "case.h"
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
double flat(double, double) {
    return 0.3;
}

// A picture shifted by (dx, dy), in layers that halve the coordinates.
template <class T>
std::vector<kit::Image<T>> layersOf(ZmoiSize size, int count, Texture texture, double dx = 0,
                                    double dy = 0, kit::Layout layout = {}) {
    const double most = std::is_integral_v<T> ? double{std::numeric_limits<T>::max()} : 1000;
    std::vector<kit::Image<T>> layers;
    for (int k = 0; k < count; ++k) {
        layers.emplace_back(size, layout).fill([&](int x, int y) {
            return texture(x * (1 << k) - dx, y * (1 << k) - dy) * most;
        });
        size = {(size.width + 1) / 2, (size.height + 1) / 2};
    }
    return layers;
}

template <class T>
ZmoiPyramidLevels levelsOf(const std::vector<kit::Image<T>>& layers) {
    ZmoiPyramidLevels levels{};
    for (const auto& image : layers) {
        const int k = levels.levels++;
        levels.pImage[k] = image.ptr();
        levels.step[k] = image.step();
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
template <class T>
struct Definition {
    Rules rules;
    const std::vector<kit::Image<T>>& first;
    const std::vector<kit::Image<T>>& second;
    Point to{};
    bool found = false;
    float error = 0;

    Definition(const Rules& r, const std::vector<kit::Image<T>>& a,
               const std::vector<kit::Image<T>>& b, Point from, Point start)
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

    float at(const kit::Image<T>& image, Point p, int i, int j) const {
        const int left = static_cast<int>(std::floor(p.x)) - rules.window / 2;
        const int top = static_cast<int>(std::floor(p.y)) - rules.window / 2;
        const float fx = p.x - std::floor(p.x);
        const float fy = p.y - std::floor(p.y);
        const auto pixel = [&](int x, int y) {
            return static_cast<float>(image.get(std::clamp(x, 0, image.size().width - 1),
                                                std::clamp(y, 0, image.size().height - 1)));
        };
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

    bool track(const kit::Image<T>& a, const kit::Image<T>& b, Point p, Point& q) const {
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

template <class T>
const kit::Function flow = ZMO(zmoiOpticalFlowPyrLK_8u_C1R);
template <>
const kit::Function flow<Zmo16u> = ZMO(zmoiOpticalFlowPyrLK_16u_C1R);
template <>
const kit::Function flow<Zmo32f> = ZMO(zmoiOpticalFlowPyrLK_32f_C1R);

// body(element of the type) for each type.
template <class Body>
void forEachType(Body body) {
    body(Zmo8u());
    body(Zmo16u());
    body(Zmo32f());
}

kit::Buffer memoryOf(const std::vector<Point>& points) {
    kit::Buffer memory(static_cast<int64_t>(points.size() * sizeof(Point)));
    std::memcpy(memory.ptr(), points.data(), points.size() * sizeof(Point));
    return memory;
}

// Layers and points that one call takes; it holds what the call points to.
template <class T>
struct Tracking {
    Tracking(const std::vector<kit::Image<T>>& a, const std::vector<kit::Image<T>>& b,
             const std::vector<Point>& points, const std::vector<Point>& begin, const Rules& r)
        : first(a), second(b), pFirst(levelsOf(first)), pSecond(levelsOf(second)), start(begin) {
        const auto count = static_cast<int64_t>(points.size());
        for (auto& image : first) image.snapshot();
        for (auto& image : second) image.snapshot();
        c.with({{"pFirst", &pFirst},
                {"pSecond", &pSecond},
                {"count", count},
                {"windowSize", r.window},
                {"maxLevel", r.maxLevel},
                {"maxIterations", r.maxIterations},
                {"epsilon", r.epsilon},
                {"type", kit::typeOf<T>},
                {"channels", 1}})
            .give("pFrom", memoryOf(points))
            .give("pTo", memoryOf(begin))
            .give("pFound", kit::Buffer(count))
            .give("pError", kit::Buffer(4 * count))
            .sized(ZMO(zmoiOpticalFlowPyrLKGetBufferSize));
    }
    Tracking(const Tracking&) = delete;
    Tracking& operator=(const Tracking&) = delete;

    void run(bool isWatched = true) {
        c.give("pTo", memoryOf(start));
        EXPECT_EQ(isWatched ? c.run() : c.runUnwatched(), zmoStsNoErr);
        for (auto& image : first) image.expectUntouched("first");
        for (auto& image : second) image.expectUntouched("second");
    }
    template <class Result>
    Result at(const char* list, size_t i) {
        Result result;
        std::memcpy(&result, c.memory(list).ptr() + i * sizeof(Result), sizeof(Result));
        return result;
    }
    Point to(size_t i) { return at<Point>("pTo", i); }
    bool found(size_t i) { return at<Zmo8u>("pFound", i) != 0; }

    std::vector<kit::Image<T>> first;
    std::vector<kit::Image<T>> second;
    ZmoiPyramidLevels pFirst;
    ZmoiPyramidLevels pSecond;
    std::vector<Point> start;
    kit::Case c{flow<T>};
};

struct Scene {
    ZmoiSize size;
    Texture texture;
    Rules rules;
};

const Scene scenes[] = {{{97, 71}, waves, {15, 2, 6, 0.01F}},  {{64, 48}, waves, {7, 3, 3, 0.3F}},
                        {{65, 33}, chessboard, {9, 1, 4, 0}},  {{40, 30}, chessboard, {3, 0, 2, 0}},
                        {{33, 70}, waves, {31, 1, 1, 0}},      {{30, 29}, waves, {127, 0, 2, 0}},
                        {{17, 1}, waves, {5, 1, 2, 0}},        {{1, 1}, waves, {3, 0, 2, 0}},
                        {{50, 50}, stripes, {11, 1, 3, 0.1F}}, {{50, 50}, flat, {11, 1, 3, 0}}};

TEST(OpticalFlow, FollowsItsDefinition) {
    kit::Random random(91);
    forEachType([&](auto element) {
        using T = decltype(element);
        size_t turn = 0;
        int foundPoints = 0;
        for (const Scene& s : scenes) {
            SCOPED_TRACE(testing::Message() << s.size << " window " << s.rules.window);
            const kit::Layout layout = kit::layouts()[turn++ % 4];
            const auto first = layersOf<T>(s.size, s.rules.maxLevel + 1, s.texture, 0, 0, layout);
            const auto second = layersOf<T>(s.size, s.rules.maxLevel + 1, s.texture, 1.4, -0.8,
                                            {layout.misalign + 1, layout.padding + 2});
            // Inside, over each edge, on whole pixels, and nowhere.
            std::vector<Point> from{{0, 0}, {3e9F, 1}, {-0.25F, 0.25F}, {1, -1e30F}};
            std::vector<Point> to{{0, 0}, {3, 1}, {0, 0}, {1, 1}};
            while (from.size() < 16) {
                from.push_back({static_cast<float>(random.uniform(-2, s.size.width + 1)),
                                static_cast<float>(random.uniform(-2, s.size.height + 1))});
                to.push_back({from.back().x + static_cast<float>(random.between(-2, 2)),
                              from.back().y + static_cast<float>(random.uniform(-2, 2))});
            }
            std::vector<Definition<T>> want;
            for (size_t i = 0; i < from.size(); ++i) {
                want.emplace_back(s.rules, first, second, from[i], to[i]);
                foundPoints += want[i].found ? 1 : 0;
            }
            Tracking<T> tracking(first, second, from, to, s.rules);
            kit::forEachLevel([&] {
                tracking.run();
                for (size_t i = 0; i < want.size(); ++i) {
                    EXPECT_TRUE(
                        kit::sameBits(tracking.to(i), want[i].to) &&
                        tracking.found(i) == want[i].found &&
                        kit::sameBits(tracking.template at<float>("pError", i), want[i].error))
                        << "point " << i << " " << tracking.c.text();
                }
            });
        }
        EXPECT_GE(foundPoints, 40);
    });
}

TEST(OpticalFlow, OddNumbersLoseTheirPointOnly) {
    auto first = layersOf<Zmo32f>({80, 40}, 1, waves);
    auto second = layersOf<Zmo32f>({80, 40}, 1, waves, 0.5, 0.25);
    first[0].set(20, 20, NAN);
    second[0].set(39, 20, NAN);  // beside the last window, but not beside whole vectors
    const std::vector<Point> from{{NAN, 5}, {60, 20}, {20, 20}, {30, 20}, {60, 20}};
    const std::vector<Point> to{{5, 5}, {HUGE_VALF, 20}, {20, 20}, {30, 20}, {60, -HUGE_VALF}};
    Tracking<Zmo32f> tracking(first, second, from, to, {11, 0, 9, 0.01F});
    kit::forEachLevel([&] {
        tracking.run(false);
        for (size_t i = 0; i < 5; ++i) {
            EXPECT_EQ(tracking.found(i), i == 3);
            EXPECT_EQ(kit::sameBits(tracking.to(i), to[i]), i != 3);
        }
        EXPECT_NEAR(tracking.to(3).x, 30.5F, 0.02F);
    });
}

TEST(OpticalFlow, BadArguments) {
    forEachType([&](auto element) {
        using T = decltype(element);
        const auto layers = layersOf<T>({24, 20}, 3, waves);
        const std::vector<Point> points(2, Point{9, 9});
        Tracking<T> tracking(layers, layers, points, points, {5, 1, 3, 0.1F});
        std::vector<ZmoiPyramidLevels> bad(5, tracking.pFirst);
        bad[0].pImage[1] = nullptr;
        bad[1].roi[1].height = 0;
        ++bad[2].roi[0].width;
        bad[3].step[0] = 24 * sizeof(element) - 1;
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
    });
    kit::Case(ZMO(zmoiOpticalFlowPyrLKGetBufferSize))
        .with({{"windowSize", 5}, {"type", zmo8u}, {"channels", 1}})
        .expectBadArguments({{"windowSize", 6, zmoStsMaskSizeErr},
                             {"type", zmo8s, zmoStsDataTypeErr},
                             {"channels", 3, zmoStsChannelsErr}});
}

}  // namespace
