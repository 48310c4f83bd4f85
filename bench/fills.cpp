// The fills of test data against plain loops of their definition: first that the
// bytes are the same, then the ratio of the speeds within one run. The program
// fails when a fill differs or is slower than 0.95 of its plain loop.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "fills_plain.h"
#include "ppfill.h"

namespace {

constexpr int width = 128, height = 64;
constexpr int elements = width * height;
constexpr double slowest = 0.95;

using Fill = std::function<void(void*)>;

struct Pair {
    std::string name;
    Fill fill;
    Fill plain;
};

// The limits of the random fill and the sequence; inside every type.
constexpr double lo = 0.1, hi = 100.7, step = 0.7;

template <class T>
void addPairs(std::vector<Pair>& pairs, ppType type) {
    const std::string suffix = std::string("_") + ppInfo(type).name;
    double magnitude = 50, offset = 0;
    ppJaehneMagnitude(type, magnitude, offset);
    pairs.push_back({"random" + suffix,
                     [=](void* p) {
                         unsigned seed = 7;
                         ppFillRandom(type, p, elements, lo, hi, seed);
                     },
                     [=](void* p) {
                         unsigned seed = 7;
                         plainRandom(static_cast<T*>(p), elements, lo, hi, seed);
                     }});
    pairs.push_back({"sequence" + suffix,
                     [=](void* p) { ppFillSequence(type, p, elements, lo, hi, step, true); },
                     [=](void* p) { plainSequence(static_cast<T*>(p), elements, lo, hi, step); }});
    pairs.push_back(
        {"Jaehne" + suffix, [=](void* p) { ppFillJaehne(type, p, elements, magnitude); },
         [=](void* p) { plainJaehne(static_cast<T*>(p), elements, magnitude, offset); }});
    pairs.push_back(
        {"Jaehne2D" + suffix,
         [=](void* p) {
             ppFillPlaneJaehne(type, p, width, height, 1, width * static_cast<int>(sizeof(T)),
                               magnitude);
         },
         [=](void* p) { plainPlaneJaehne(static_cast<T*>(p), width, height, magnitude, offset); }});
}

std::vector<Pair> allPairs() {
    std::vector<Pair> pairs;
    addPairs<unsigned char>(pairs, pp8u);
    addPairs<short>(pairs, pp16s);
    addPairs<int>(pairs, pp32s);
    addPairs<float>(pairs, pp32f);
    addPairs<double>(pairs, pp64f);
    return pairs;
}

bool sameBytes(const Pair& pair) {
    std::vector<double> a(elements), b(elements);
    pair.fill(a.data());
    pair.plain(b.data());
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits, in vectors of any type
    const bool same = std::memcmp(a.data(), b.data(), elements * sizeof(double)) == 0;
    if (!same) std::printf("%s differs from its definition\n", pair.name.c_str());
    return same;
}

// Keeps the fastest repetition of every benchmark.
class Fastest : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            auto [entry, isNew] = m_times.try_emplace(run.run_name.function_name, 1e30);
            entry->second = std::min(entry->second, run.GetAdjustedCPUTime());
        }
    }
    // 0 when a filter on the command line has left it out.
    double time(const std::string& name) const {
        const auto found = m_times.find(name);
        return found == m_times.end() ? 0 : found->second;
    }

  private:
    std::map<std::string, double> m_times;
};

void measure(const std::string& name, const Fill& fill) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [fill](benchmark::State& state) {
                                     std::vector<double> data(elements);
                                     for (auto _ : state) {
                                         fill(data.data());
                                         benchmark::ClobberMemory();
                                     }
                                 })
        ->Repetitions(9)
        ->MinTime(0.02);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Pair> pairs = allPairs();
    bool good = std::ranges::all_of(pairs, sameBytes);
    for (const Pair& pair : pairs) {
        measure(pair.name, pair.fill);
        measure(pair.name + "/plain", pair.plain);
    }
    // Repetitions of a pair take turns, so that a change of the clock meets both.
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.push_back(interleave.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Fastest fastest;
    benchmark::RunSpecifiedBenchmarks(&fastest);

    std::printf("%-14s %12s %12s %8s\n", "fill", "ns/element", "plain", "ratio");
    for (const Pair& pair : pairs) {
        const double own = fastest.time(pair.name), plain = fastest.time(pair.name + "/plain");
        if (own == 0 || plain == 0) continue;
        const bool slow = plain / own < slowest;
        std::printf("%-14s %12.3f %12.3f %8.2f%s\n", pair.name.c_str(), own / elements,
                    plain / elements, plain / own, slow ? "  slower than allowed" : "");
        good = good && !slow;
    }
    return good ? 0 : 1;
}
