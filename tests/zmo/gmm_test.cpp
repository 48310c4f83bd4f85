#include <algorithm>
#include <cmath>

#include "call.h"
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

kit::Buffer newState(ZmoiSize size, const Rules& r, int misalign) {
    kit::Buffer state(kit::bufferOf(zmoiFGMMGetSize, size, r.components, zmo8u, 3).size(),
                      misalign);
    kit::succeed(zmoiFGMMInit, size, r.components, r.rate, r.threshold, r.share, r.complexity,
                 r.variance, zmo8u, 3, state);
    return state;
}

void learn(const Picture& src, Picture& mask, kit::Buffer& state) {
    kit::succeed(zmoiFGMMForeground_8u_C3R, src, mask, src.size(), state);
}
void recall(Picture& dst, kit::Buffer& state) {
    kit::succeed(zmoiFGMMBackground_8u_C3R, dst, dst.size(), state);
}

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

struct Case {
    ZmoiSize size;
    Rules rules;
    int frames;
};

const Case cases[] = {{{37, 5}, usual, 20},
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
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.size << " rate " << c.rules.rate);
        const kit::Layout layout = kit::layouts()[turn++ % 4];
        const std::vector<Picture> pictures = film(c.size, layout, c.frames, random);
        std::vector<Definition> model(static_cast<size_t>(c.size.width * c.size.height),
                                      Definition(c.rules));
        std::vector<Picture> masks;
        std::vector<Picture> backgrounds;
        for (const Picture& picture : pictures) {
            const auto at = [&](int x, int y) -> Definition& {
                return model[kit::indexIn(c.size, x, y)];
            };
            masks.emplace_back(c.size).fill([&](int x, int y) {
                const auto value = [&](int k) { return picture.get(x, y, k); };
                return at(x, y).isForeground({value(0), value(1), value(2)}) ? 255 : 0;
            });
            backgrounds.emplace_back(c.size, kit::Layout(), 0, 3).fill([&](int x, int y, int k) {
                return at(x, y).background(k);
            });
            for (const Definition& pixel : model) most = std::max(most, pixel.count());
        }
        kit::forEachLevel([&] {
            kit::Buffer state = newState(c.size, c.rules, layout.misalign);
            Picture mask(c.size, {layout.misalign + 2, layout.padding});
            Picture back(c.size, {layout.misalign + 5, layout.padding}, 0, 3);
            recall(back, state);
            kit::expectPixels(back, [](int, int, int) { return 0; });
            for (size_t i = 0; i < pictures.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "picture " << i);
                learn(pictures[i], mask, state);
                if (i == 5) {  // states may be moved
                    kit::Buffer moved = newState(c.size, c.rules, layout.misalign + 9);
                    std::memcpy(moved.ptr(), state.ptr(), static_cast<size_t>(moved.size()));
                    state = moved;
                }
                recall(back, state);
                kit::expectPixels(mask, masks[i]);
                kit::expectPixels(back, backgrounds[i]);
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
    kit::forEachLevel([&] {
        for (const Rules& rules :
             {Rules{4, 0.02F, 9, 0.8F, 0.05F, 225}, Rules{4, 0.5F, 9, 0.8F, 0, 225}}) {
            kit::Buffer state = newState(size, rules, 3);
            Picture mask(size);
            Picture picture(size, {}, 0, 3);
            const bool walks = rules.rate < 0.1F;
            for (int frame = 0; frame < 400; ++frame) {
                picture.fill([&](int x, int y) {
                    const bool other = walks ? isSquare(x, y, frame) : frame < 3;
                    return other ? 250 : ground(x, y);
                });
                learn(picture, mask, state);
            }
            kit::expectPixels(mask,
                              [&](int x, int y) { return walks && isSquare(x, y, 399) ? 255 : 0; });
            recall(picture, state);
            kit::expectPixels(picture, ground);
        }
    });
}

TEST(Gmm, BadArguments) {
    const ZmoiSize size{12, 4};
    Picture src(size, {}, 0, 3);
    Picture mask(size);
    kit::Buffer state = newState(size, usual, 0);
    kit::Buffer none(64);
    const auto* const noState = none.as<ZmoiFGMMState>();
    kit::expectBadArguments(zmoiFGMMForeground_8u_C3R,
                            {{4, ZmoiSize{12, 3}, zmoStsStateErr}, {5, noState, zmoStsStateErr}},
                            src, mask, size, state);
    kit::expectBadArguments(zmoiFGMMBackground_8u_C3R,
                            {{2, ZmoiSize{12, 3}, zmoStsStateErr}, {3, noState, zmoStsStateErr}},
                            src, size, state);
    kit::expectBadArguments(zmoiFGMMInit,
                            {{1, {0, 9}, zmoStsRangeErr},
                             {2, {0, NAN}, zmoStsRangeErr},
                             {3, 0, zmoStsThresholdErr},
                             {4, 1.5F, zmoStsRangeErr},
                             {5, -0.1F, zmoStsRangeErr},
                             {6, 3, zmoStsRangeErr},
                             {7, zmo16u, zmoStsDataTypeErr},
                             {8, 1, zmoStsChannelsErr}},
                            size, 4, 0.005F, 9, 0.9F, 0.05F, 225, zmo8u, 3, state);
    int bytes = -1;
    kit::expectBadArguments(zmoiFGMMGetSize,
                            {{1, 0, zmoStsRangeErr},
                             {2, zmo16u, zmoStsDataTypeErr},
                             {3, 1, zmoStsChannelsErr},
                             {0, ZmoiSize{1 << 16, 1 << 14}, zmoStsTooLargeErr}},
                            size, 4, zmo8u, 3, &bytes);
}

}  // namespace
