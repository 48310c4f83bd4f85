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

    bool isForeground(const std::array<double, 3>& value) {
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

    double background(int channel) const {
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
        return m_list.empty() ? 0 : std::nearbyint(sum / weights - 1);
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

kit::Case initOf(const kit::Turn& t, const Rules& r) {
    return kit::Case(ZMO(zmoiFGMMInit), t)
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

// A model that learns pictures, and recalls what is still in them; states may be moved.
class Model {
  public:
    Model(const kit::Turn& t, const Rules& rules)
        : learning(ZMO(zmoiFGMMForeground_8u_C3R), t, {{"pDst", {}, 0, 1}}),
          recalling(ZMO(zmoiFGMMBackground_8u_C3R), t) {
        kit::Case init = initOf(t, rules);
        EXPECT_EQ(init.run(), zmoStsNoErr);
        learning.give("pState", init.memory("pState"));
    }
    const kit::Image& learn(const kit::Pixels& picture) {
        learning.src().fill(picture);
        EXPECT_EQ(learning.run(), zmoStsNoErr);
        return learning.dst();
    }
    const kit::Image& recall() {
        const kit::Buffer& state = learning.memory("pState");
        kit::Buffer moved(state.size(), 9);
        std::memcpy(moved.ptr(), state.ptr(), static_cast<size_t>(state.size()));
        recalling.give("pState", moved);
        EXPECT_EQ(recalling.run(), zmoStsNoErr);
        return recalling.dst();
    }

    kit::Case learning;
    kit::Case recalling;
};

// Each value stays for some pictures, with noise and now and then something else. Of a still film
// only the first pictures differ.
std::vector<kit::Image> film(kit::Turn& t, int frames, bool still) {
    std::vector<kit::Image> pictures;
    for (int frame = 0; frame < frames; ++frame) {
        const int scene = still ? frame < 3 : frame / 7;
        int i = 0;
        const auto next = [&] {
            const int base = (i++ * 37 + scene * 85) % 4 * 85;
            if (still) return base;
            const bool other = t.between(0, 14) == 0;
            return std::clamp(other ? t.between(0, 255) : base + t.between(-6, 6), 0, 255);
        };
        pictures.push_back(kit::Image(zmo8u, t.size, {}, 0, 3).fill(next));
    }
    return pictures;
}

const Rules usual{4, 0.005F, 9, 0.9F, 0.05F, 225};

struct Film {
    ZmoiSize size;
    Rules rules;
    int frames;
    bool still = false;
};

// In the still ones black pixels, and weights that nothing renews, fade for hundreds of pictures
// without a denormal.
const Film films[] = {{{37, 5}, usual, 20},
                      {{16, 3}, {8, 0.05F, 4, 0.7F, 0.01F, 900}, 40},
                      {{40, 3}, {4, 0.3F, 16, 0.8F, 0.3F, 400}, 60},
                      {{33, 2}, {3, 0.2F, 1, 0.5F, 0.2F, 100}, 40},
                      {{17, 4}, {5, 0.1F, 16, 0.95F, 0, 4}, 40},
                      {{1, 9}, {2, 0.5F, 30, 0.6F, 0.5F, 50}, 30},
                      {{1, 1}, {1, 0.3F, 9, 1, 0.05F, 225}, 12},
                      {{15, 1}, {4, 0x1p-20F, 9, 0.9F, 0, 10000}, 12},
                      {{17, 1}, {4, 0.02F, 9, 0.8F, 0.05F, 225}, 400, true},
                      {{17, 1}, {4, 0.5F, 9, 0.8F, 0, 225}, 400, true}};

TEST(Gmm, FollowsItsDefinition) {
    kit::Turn t(92);
    size_t most = 0;
    for (const Film& f : films) {
        SCOPED_TRACE(testing::Message() << f.size << " rate " << f.rules.rate);
        t.size = f.size;
        t.layout = kit::layouts()[t.number++ % 4];
        const std::vector<kit::Image> pictures = film(t, f.frames, f.still);
        std::vector<Definition> model(kit::indexIn(f.size, 0, f.size.height), Definition(f.rules));
        const auto at = [&](int x, int y) -> Definition& {
            return model[kit::indexIn(f.size, x, y)];
        };
        std::vector<kit::Image> masks;
        std::vector<kit::Image> backgrounds;
        for (const kit::Image& picture : pictures) {
            masks.push_back(kit::Image(zmo8u, f.size).fill([&](int x, int y) {
                const auto value = [&](int k) { return picture(x, y, k); };
                return at(x, y).isForeground({value(0), value(1), value(2)}) ? 255 : 0;
            }));
            backgrounds.push_back(
                picture.alike([&](int x, int y, int k) { return at(x, y).background(k); }));
            for (const Definition& pixel : model) most = std::max(most, pixel.count());
        }
        kit::forEachLevel([&] {
            Model learner(t, f.rules);
            learner.recall().expect(pictures[0].alike(0));
            for (size_t i = 0; i < pictures.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "picture " << i);
                learner.learn(pictures[i]).expect(masks[i]);
                learner.recall().expect(backgrounds[i]);
            }
        });
    }
    EXPECT_GE(most, 6U);
}

TEST(Gmm, BadArguments) {
    const kit::Turn t(94, {12, 4});
    const Zmo64u noState[8] = {};
    const kit::Wrong region{"roi", ZmoiSize{12, 3}, zmoStsStateErr};
    Model model(t, usual);
    model.learning.expectBadArguments({region, {"pState", &noState[0], zmoStsStateErr}});
    model.recall();
    model.recalling.expectBadArguments({region});
    initOf(t, usual).expectBadArguments({{"maxComponents", {0, 9}, zmoStsRangeErr},
                                         {"learningRate", {0, NAN}, zmoStsRangeErr},
                                         {"matchThreshold", 0, zmoStsThresholdErr},
                                         {"backgroundShare", 1.5F, zmoStsRangeErr},
                                         {"complexity", -0.1F, zmoStsRangeErr},
                                         {"initialVariance", 3, zmoStsRangeErr},
                                         {"type", zmo16u, zmoStsDataTypeErr},
                                         {"channels", 1, zmoStsChannelsErr}});
}

}  // namespace
