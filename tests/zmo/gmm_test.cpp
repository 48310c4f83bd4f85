#include <algorithm>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

struct Rules {
    int components;
    float rate;
    float threshold;
    float share;
    float complexity;
    float variance;
};

struct Component {
    float weight;
    float mean[3];
    float variance;
};

// The header's definition for one pixel.
class Definition {
  public:
    explicit Definition(const Rules& rules) : m_rules(rules) {}

    bool isForeground(std::array<Zmo8u, 3> value) {
        float x[3];
        for (size_t i = 0; i < 3; ++i) x[i] = static_cast<float>(value[i] + 1);
        const Rules& r = m_rules;
        size_t own = m_list.size();
        float before = 0;
        bool foreground = true;
        float distance = 0;
        for (size_t k = 0; k < m_list.size() && own == m_list.size(); ++k) {
            distance = distanceOf(m_list[k], x);
            if (distance < r.threshold * m_list[k].variance) {
                own = k;
                foreground = !(before < r.share);
            }
            before += m_list[k].weight;
        }
        const bool isNew = own == m_list.size();
        std::vector<Component> kept;
        Component moved{r.rate, {x[0], x[1], x[2]}, r.variance};
        for (size_t k = 0; k < m_list.size(); ++k) {
            Component c = m_list[k];
            c.weight = (1 - r.rate) * c.weight - r.rate * r.complexity;
            if (k == own) {
                c.weight += r.rate;
                const float a = std::min(r.rate / c.weight, 1.0F);
                for (int i = 0; i < 3; ++i) c.mean[i] += a * (x[i] - c.mean[i]);
                c.variance += a * (distance - c.variance);
                c.variance = std::min(std::max(c.variance, 4.0F), 4 * r.variance);
                moved = c;
            } else if (c.weight > 0x1p-24F) {
                kept.push_back(c);
            }
        }
        if (isNew && kept.size() == static_cast<size_t>(r.components)) kept.pop_back();
        size_t place = isNew ? kept.size() : std::min(own, kept.size());
        while (place > 0 && moved.weight > kept[place - 1].weight) --place;
        kept.insert(kept.begin() + static_cast<std::ptrdiff_t>(place), moved);
        float sum = 0;
        for (const Component& c : kept) sum += c.weight;
        for (Component& c : kept) c.weight *= 1 / sum;
        m_list = kept;
        return foreground;
    }

    Zmo8u background(int channel) const {
        float sum = 0;
        float weights = 0;
        float before = 0;
        for (const Component& c : m_list) {
            if (before < m_rules.share) {
                sum += c.weight * c.mean[channel];
                weights += c.weight;
            }
            before += c.weight;
        }
        return m_list.empty() ? Zmo8u{0} : static_cast<Zmo8u>(std::nearbyint(sum / weights - 1));
    }

    size_t count() const { return m_list.size(); }

  private:
    static float distanceOf(const Component& c, const float (&x)[3]) {
        const float d[3] = {x[0] - c.mean[0], x[1] - c.mean[1], x[2] - c.mean[2]};
        return (d[0] * d[0] + d[1] * d[1]) + d[2] * d[2];
    }

    Rules m_rules;
    std::vector<Component> m_list;
};

using Picture = kit::Image<Zmo8u>;

kit::Case initOf(ZmoiSize size, const Rules& r) {
    return kit::Case(ZMO(zmoiFGMMInit), size)
        .with({{"maxComponents", r.components},
               {"learningRate", r.rate},
               {"matchThreshold", r.threshold},
               {"backgroundShare", r.share},
               {"complexity", r.complexity},
               {"initialVariance", r.variance},
               {"type", zmo8u},
               {"channels", 3}})
        .sized(ZMO(zmoiFGMMGetSize));
}

// A model that learns pictures, and tells what is still in them; states may be moved.
class Model {
  public:
    Model(ZmoiSize size, const Rules& rules, kit::Layout layout = {})
        : m_learning(ZMO(zmoiFGMMForeground_8u_C3R), size, layout, {{"pDst", {}, 0, 1}}),
          m_recalling(ZMO(zmoiFGMMBackground_8u_C3R), size, layout) {
        kit::Case init = initOf(size, rules);
        EXPECT_EQ(init.run(), zmoStsNoErr);
        m_learning.give("pState", init.memory("pState"));
    }
    const kit::AnyImage& learn(const Picture& picture) {
        m_learning.src().as<Zmo8u>().fill(
            [&](int x, int y, int k) { return picture.get(x, y, k); });
        EXPECT_EQ(m_learning.run(), zmoStsNoErr);
        return m_learning.dst();
    }
    const kit::AnyImage& recall() {
        const kit::Buffer& state = m_learning.memory("pState");
        kit::Buffer moved(state.size(), 9);
        std::memcpy(moved.ptr(), state.ptr(), static_cast<size_t>(state.size()));
        m_recalling.give("pState", moved);
        EXPECT_EQ(m_recalling.run(), zmoStsNoErr);
        return m_recalling.dst();
    }
    kit::Case& learning() { return m_learning; }
    kit::Case& recalling() { return m_recalling; }

  private:
    kit::Case m_learning;
    kit::Case m_recalling;
};

// Each value stays for some pictures, with noise and now and then something else.
std::vector<Picture> film(ZmoiSize size, kit::Layout layout, int frames, kit::Random& random) {
    std::vector<Picture> pictures;
    for (int frame = 0; frame < frames; ++frame) {
        int i = 0;
        pictures.emplace_back(size, layout, 0, 3).fill([&] {
            const int base = (i++ * 37 + frame / 7 * 85) % 4 * 85;
            const bool other = random.between(0, 14) == 0;
            return std::clamp<int64_t>(
                other ? random.between(0, 255) : base + random.between(-6, 6), 0, 255);
        });
    }
    return pictures;
}

const Rules usual{4, 0.005F, 9, 0.9F, 0.05F, 225};

struct Film {
    ZmoiSize size;
    Rules rules;
    int frames;
};

const Film films[] = {{{37, 5}, usual, 20},
                      {{16, 3}, {8, 0.05F, 4, 0.7F, 0.01F, 900}, 40},
                      {{40, 3}, {4, 0.3F, 16, 0.8F, 0.3F, 400}, 60},
                      {{33, 2}, {3, 0.2F, 1, 0.5F, 0.2F, 100}, 40},
                      {{17, 4}, {5, 0.1F, 16, 0.95F, 0, 4}, 40},
                      {{1, 9}, {2, 0.5F, 30, 0.6F, 0.5F, 50}, 30},
                      {{1, 1}, {1, 0.3F, 9, 1, 0.05F, 225}, 12},
                      {{15, 1}, {4, 0x1p-20F, 9, 0.9F, 0, 10000}, 12}};

TEST(Gmm, FollowsItsDefinition) {
    kit::Random random(92);
    size_t turn = 0;
    size_t most = 0;
    for (const Film& f : films) {
        SCOPED_TRACE(testing::Message() << f.size << " rate " << f.rules.rate);
        const kit::Layout layout = kit::layouts()[turn++ % 4];
        const std::vector<Picture> pictures = film(f.size, layout, f.frames, random);
        std::vector<Definition> model(static_cast<size_t>(f.size.width * f.size.height),
                                      Definition(f.rules));
        std::vector<Picture> masks;
        std::vector<Picture> backgrounds;
        for (const Picture& picture : pictures) {
            const auto at = [&](int x, int y) -> Definition& {
                return model[kit::indexIn(f.size, x, y)];
            };
            masks.emplace_back(f.size).fill([&](int x, int y) {
                const auto value = [&](int k) { return picture.get(x, y, k); };
                return at(x, y).isForeground({value(0), value(1), value(2)}) ? 255 : 0;
            });
            backgrounds.emplace_back(f.size, kit::Layout(), 0, 3).fill([&](int x, int y, int k) {
                return at(x, y).background(k);
            });
            for (const Definition& pixel : model) most = std::max(most, pixel.count());
        }
        kit::forEachLevel([&] {
            Model learner(f.size, f.rules, layout);
            const Picture black = Picture(f.size, {}, 0, 3).fill([] { return 0; });
            learner.recall().expect(black);
            for (size_t i = 0; i < pictures.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "picture " << i);
                learner.learn(pictures[i]).expect(masks[i]);
                learner.recall().expect(backgrounds[i]);
            }
        });
    }
    EXPECT_GE(most, 6U);
}

// A square walks over a still picture. Black pixels, and weights that nothing renews, fade for
// hundreds of pictures without a denormal.
TEST(Gmm, TellsWhatMoves) {
    constexpr ZmoiSize size{48, 20};
    const auto ground = [](int x, int y) { return x % 3 == 0 ? 0 : 60 + 3 * x + y; };
    const auto isSquare = [](int x, int y, int frame) {
        return y >= 5 && y < 12 && (x + 480 - frame) % 40 < 3;
    };
    kit::forLevels([&] {
        for (const Rules& rules :
             {Rules{4, 0.02F, 9, 0.8F, 0.05F, 225}, Rules{4, 0.5F, 9, 0.8F, 0, 225}}) {
            Model model(size, rules);
            Picture picture(size, {}, 0, 3);
            const bool walks = rules.rate < 0.1F;
            for (int frame = 0; frame < 400; ++frame) {
                picture.fill([&](int x, int y) {
                    const bool other = walks ? isSquare(x, y, frame) : frame < 3;
                    return other ? 250 : ground(x, y);
                });
                model.learn(picture);
            }
            kit::expectPixels(model.learning().dst().as<Zmo8u>(),
                              [&](int x, int y) { return walks && isSquare(x, y, 399) ? 255 : 0; });
            kit::expectPixels(model.recall().as<Zmo8u>(), ground);
        }
    });
}

TEST(Gmm, BadArguments) {
    const ZmoiSize size{12, 4};
    const Zmo64u noState[8] = {};
    const std::vector<kit::Wrong> wrong = {{"roi", ZmoiSize{12, 3}, zmoStsStateErr},
                                           {"pState", &noState[0], zmoStsStateErr}};
    Model model(size, usual);
    model.learning().expectBadArguments(wrong);
    model.recall();
    model.recalling().expectBadArguments({wrong[0]});
    initOf(size, usual)
        .expectBadArguments({{"maxComponents", {0, 9}, zmoStsRangeErr},
                             {"learningRate", {0, NAN}, zmoStsRangeErr},
                             {"matchThreshold", 0, zmoStsThresholdErr},
                             {"backgroundShare", 1.5F, zmoStsRangeErr},
                             {"complexity", -0.1F, zmoStsRangeErr},
                             {"initialVariance", 3, zmoStsRangeErr},
                             {"type", zmo16u, zmoStsDataTypeErr},
                             {"channels", 1, zmoStsChannelsErr}});
    kit::Case(ZMO(zmoiFGMMGetSize), size)
        .with({{"maxComponents", 4}, {"type", zmo8u}, {"channels", 3}})
        .expectBadArguments({{"maxComponents", 0, zmoStsRangeErr},
                             {"type", zmo16u, zmoStsDataTypeErr},
                             {"channels", 1, zmoStsChannelsErr},
                             {"roi", ZmoiSize{1 << 16, 1 << 14}, zmoStsTooLargeErr}});
}

}  // namespace
