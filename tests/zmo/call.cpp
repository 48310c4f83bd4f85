#include "call.h"

#include <algorithm>

#include "zmocore.h"

namespace kit {

namespace {

int rankOf(const Wrong& wrong) {
    static constexpr ZmoStatus first[] = {zmoStsNullPtrErr, zmoStsSizeErr, zmoStsStepErr};
    return static_cast<int>(std::ranges::find(first, wrong.status) - first);
}

// What every function refuses.
void addUsual(const Call& call, std::vector<Wrong>& wrong) {
    for (size_t i = 0; i < call.parameters.size(); ++i) {
        const Parameter& p = call.parameters[i];
        if (std::ranges::count(call.exempt, i) != 0) continue;
        if (p.pointer) wrong.push_back({i, nullptr, zmoStsNullPtrErr});
        if (p.stretched == nullptr) continue;
        wrong.push_back({i, p.stretched(call.good[i], 0, 1), zmoStsSizeErr});
        wrong.push_back({i, p.stretched(call.good[i], 1, -1), zmoStsSizeErr});
    }
    for (const auto& [block, place, row] : call.guards) {
        const int element = call.parameters[place].element;
        if (row == 0) continue;
        wrong.push_back({place + 1, row - element, zmoStsStepErr});
        wrong.push_back({place + 1, -row, zmoStsStepErr});
        if (element > 1) wrong.push_back({place + 1, row + 1, zmoStsStepErr});
    }
}

// One thing that can be wrong with the arguments of a call, in the order of the checks.
struct Fault {
    std::string name;
    ZmoStatus status;
    std::function<void(Arguments&)> apply;
};

// Each fault alone gives its status, and of two faults the earlier one decides. untouched checks that
// a failed call has written nothing.
void expectFaults(const Call& call, const std::vector<Fault>& faults,
                  const std::function<void()>& untouched) {
    const auto statusWith = [&](const std::vector<const Fault*>& applied) {
        Arguments bad = call.good;
        for (const Fault* fault : applied) fault->apply(bad);
        return watched([&] { return call.run(bad); });
    };
    for (size_t i = 0; i < faults.size(); ++i) {
        SCOPED_TRACE(faults[i].name);
        EXPECT_EQ(statusWith({&faults[i]}), faults[i].status);
        for (size_t j = i + 1; j < faults.size(); ++j) {
            SCOPED_TRACE(faults[j].name);
            EXPECT_EQ(statusWith({&faults[j], &faults[i]}), faults[i].status);
        }
        untouched();
    }
    EXPECT_EQ(statusWith({}), zmoStsNoErr);
}

Fault faultOf(const Call& call, const std::vector<Wrong::Argument>& arguments, ZmoStatus status) {
    std::string name;
    std::vector<std::pair<size_t, Slot>> changes;
    for (const auto& [place, value] : arguments) {
        const Parameter& p = call.parameters[place];
        changes.push_back({place, value.as(p)});
        name += "argument " + std::to_string(place) + " ";
        if (p.fromNumber) name += std::to_string(value.number());
        if (p.pointer && changes.back().second == Slot()) name += "null";
        name += ": ";
    }
    return {name + zmoGetStatusString(status), status, [changes](Arguments& a) {
                for (const auto& [place, slot] : changes) a[place] = slot;
            }};
}

}  // namespace

ZmoStatus runUnwatched(const Call& call) {
    for (const Guard& guard : call.guards) guard.block->snapshot();
    const ZmoStatus status = call.run(call.good);
    for (const Guard& guard : call.guards) {
        const std::string name = "argument " + std::to_string(guard.place);
        if (call.parameters[guard.place].constant) {
            guard.block->expectUntouched(name);
        } else {
            guard.block->expectSurroundingsUntouched(name);
        }
    }
    return status;
}

ZmoStatus run(const Call& call) {
    return watched([&] { return runUnwatched(call); });
}

void expectBadArguments(const Call& call, std::vector<Wrong> wrong) {
    // What the results point to, bytes that are in no block.
    struct Result {
        const unsigned char* bytes;
        std::vector<unsigned char> before;
    };
    std::vector<Result> results;
    for (size_t i = 0; i < call.parameters.size(); ++i) {
        const Parameter& p = call.parameters[i];
        const auto* const bytes = call.good[i].as<const unsigned char*>();
        if (!p.pointer || p.constant || bytes == nullptr) continue;
        if (std::ranges::find(call.guards, i, &Guard::place) != call.guards.end()) continue;
        results.push_back({bytes, {bytes, bytes + p.element}});
    }
    for (const Guard& guard : call.guards) guard.block->snapshot();
    addUsual(call, wrong);
    std::ranges::stable_sort(wrong, {}, rankOf);
    std::vector<Fault> faults;
    for (const Wrong& one : wrong) {
        if (!one.inTurn) faults.push_back(faultOf(call, one.arguments, one.status));
        for (size_t i = 0; one.inTurn && i < one.arguments.size(); ++i) {
            faults.push_back(faultOf(call, {one.arguments[i]}, one.status));
        }
    }
    expectFaults(call, faults, [&] {
        for (const Guard& guard : call.guards) {
            guard.block->expectUntouched("argument " + std::to_string(guard.place));
        }
        for (const Result& result : results) {
            EXPECT_TRUE(
                std::ranges::equal(result.before, std::span(result.bytes, result.before.size())))
                << "a result was written";
        }
    });
}

}  // namespace kit
