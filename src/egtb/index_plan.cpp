#include "egtb/index_plan.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

#include "egtb/descriptors.h"
#include "egtb/piece_list.h"
#include "egtb/signature.h"

namespace brivok {
namespace {

/// Number of men of each type on one side; pawns are counted as Pawn.
using SideCounts = std::array<std::uint8_t, ManTypes>;
using Runs = std::vector<MenRun>;

/// `side` is 0 for the first half of the counts, 1 for the second.
SideCounts countsOfSide(const PieceCounts& counts, unsigned side) {
    SideCounts types{};
    const auto* const first = counts.data() + side * CountedKinds;
    std::copy_n(first, CountedKinds, types.data() + indexOf(ManType::Pawn));
    return types;
}

/// The men of one side, strongest type first.
Runs strongestFirst(const SideCounts& counts) {
    Runs runs;
    for (std::size_t type = ManTypes; type-- > 0;) {
        const std::uint8_t count = counts[type];
        if (count > 0) runs.push_back({static_cast<ManType>(type), count, 0});
    }
    return runs;
}

bool isPawnRun(const MenRun& run) { return isPawn(run.type); }

int menIn(const Runs& runs) {
    int men = 0;
    for (const MenRun& run : runs) men += run.count;
    return men;
}

Runs only(const Runs& runs, bool pawns) {
    Runs chosen;
    std::copy_if(runs.begin(), runs.end(), std::back_inserter(chosen),
                 [pawns](const MenRun& run) { return isPawnRun(run) == pawns; });
    return chosen;
}

/// A bit set of byte numbers.
unsigned bytesOf(const MenRun& run) { return ((1U << run.count) - 1) << run.byte; }
unsigned bytesOf(const Runs& runs) {
    unsigned bytes = 0;
    for (const MenRun& run : runs) bytes |= bytesOf(run);
    return bytes;
}

constexpr unsigned KingBytes = 1U << OtherKingByte | 1U << MoverKingByte;

/// For each group of men, how many placements precede each pair of kings. Shared by all tables with
/// such a group.
class GroupStarts {
public:
    const std::uint32_t* of(const Runs& group, const KingPairs& pairs) {
        Key key{&pairs, {}};
        for (const MenRun& run : group) key.second.emplace_back(run.type, run.count);
        std::vector<std::uint32_t>& start = starts[key];
        if (start.empty()) start = count(group, pairs);
        return start.data();
    }

private:
    using Key = std::pair<const KingPairs*, std::vector<std::pair<ManType, std::uint8_t>>>;

    static std::vector<std::uint32_t> count(const Runs& group, const KingPairs& pairs) {
        std::vector<std::uint32_t> start;
        start.reserve(pairs.count + 1);
        start.push_back(0);
        for (std::size_t pair = 0; pair < pairs.count; ++pair) {
            const auto [mover, other] = pairs.kings[pair];
            std::uint64_t placements = 1;
            for (const MenRun& run : group) {
                placements *= choose(GroupSquares(run.type, mover, other).count(), run.count);
            }
            start.push_back(start.back() + static_cast<std::uint32_t>(placements));
        }
        return start;
    }

    std::map<Key, std::vector<std::uint32_t>> starts;
};

/// Men numbered one type after another: the order in which they occupy squares, and the order of
/// their digits, highest first.
struct DigitOrder {
    Runs placement;
    Runs significance;
};

class PlanCompiler {
public:
    PlanCompiler(GroupStarts& starts, const TablebaseDescriptor& table, unsigned side);

    [[nodiscard]] const IndexPlan& result() const { return plan; }

private:
    void chooseGroup(const SideCounts& mover, const SideCounts& other);
    void layOut(Runs& runs, bool areMovers);
    [[nodiscard]] DigitOrder plainOrder() const;
    void compilePlain();
    void compileEnPassant();
    [[nodiscard]] IndexSection section(const Runs& groupRuns, std::uint8_t flip,
                                       const DigitOrder& order, unsigned blockedToPawns,
                                       unsigned blockedToPieces);

    GroupStarts& starts;
    IndexPlan plan;
    Runs group;  ///< men numbered together with the kings
    Runs others;
    std::uint8_t nextByte = FirstManByte;
};

PlanCompiler::PlanCompiler(GroupStarts& groupStarts, const TablebaseDescriptor& table,
                           unsigned side)
    : starts(groupStarts) {
    const PieceCounts counts = countsOf(table.signature());
    const SideCounts mover = countsOfSide(counts, side);
    const SideCounts other = countsOfSide(counts, 1 - side);
    const std::size_t pawn = indexOf(ManType::Pawn);
    plan.hasPawns = mover[pawn] + other[pawn] > 0;
    plan.hasEnPassant = mover[pawn] > 0 && other[pawn] > 0;

    // If one file serves both sides, side 1 is side 0 with the board flipped.
    const bool turned = side == 1 && (table.flags & SameForBoth) != 0;
    plan.rankFlip = turned && plan.hasPawns ? RankFlip : 0;
    plan.moverGoesUp = side == 0 || turned;

    chooseGroup(mover, other);
    compilePlain();
    if (plan.hasEnPassant) compileEnPassant();
}

/// If the mover has a bare king, the other side's pawns, as free pawns, are numbered with it.
void PlanCompiler::chooseGroup(const SideCounts& mover, const SideCounts& other) {
    group = strongestFirst(mover);
    others = strongestFirst(other);
    const bool freePawns = group.empty() && plan.hasPawns;
    if (freePawns) {
        group = only(others, true);
        group.front().type = ManType::FreePawn;
        others = only(others, false);
    }
    // A pair comes before a single man, even a stronger one.
    std::stable_sort(group.begin(), group.end(),
                     [](const MenRun& a, const MenRun& b) { return a.count > b.count; });
    layOut(group, !freePawns);
    layOut(others, false);
    for (const MenRun& run : only(group, true)) plan.moverPawns = run;
    for (const MenRun& run : only(others, true)) plan.otherPawns = run;
}

/// Assigns bytes to men and records their slots in the lists.
void PlanCompiler::layOut(Runs& runs, bool areMovers) {
    for (MenRun& run : runs) {
        run.byte = nextByte;
        const ManType type = std::max(run.type, ManType::Pawn);
        const std::size_t place = indexOf(type) - indexOf(ManType::Pawn);
        auto slot = static_cast<std::uint8_t>(place * SlotsPerType);
        for (unsigned man = 0; man < run.count; ++man, ++nextByte) {
            plan.men[plan.menCount++] = {areMovers, slot++};
            if (isPawnRun(run)) plan.pawnBytes |= squareAtByte(1, nextByte);
        }
    }
}

/// Strongest piece first, then pawns; the reverse with two men against two and a pawn on the board.
DigitOrder PlanCompiler::plainOrder() const {
    DigitOrder order{others, others};
    if (plan.hasPawns && menIn(group) == 2 && menIn(others) == 2) {
        std::reverse(order.significance.begin(), order.significance.end());
        order.placement = order.significance;
    }
    std::stable_partition(order.placement.begin(), order.placement.end(), isPawnRun);
    // Without pawns, a pair is placed after a weaker single piece although its digit is higher.
    if (!plan.hasPawns && others.size() == 2 && others[0].count == 2) {
        std::reverse(order.placement.begin(), order.placement.end());
    }
    return order;
}

void PlanCompiler::compilePlain() {
    const Runs pawns = only(group, true);
    const std::uint8_t flip = plan.moverGoesUp || pawns.empty() ? 0 : RankFlip;
    plan.plain = section(group, flip, plainOrder(), bytesOf(pawns), KingBytes | bytesOf(group));
}

void PlanCompiler::compileEnPassant() {
    // The two pawns of the capture are the first among the pawns of their sides.
    const auto withoutFirst = [](MenRun run) {
        ++run.byte;
        --run.count;
        return run;
    };
    const Runs groupPieces = only(group, false);
    const Runs otherPieces = only(others, false);
    DigitOrder order{{}, otherPieces};
    for (const MenRun& pawns : {withoutFirst(plan.otherPawns), withoutFirst(plan.moverPawns)}) {
        if (pawns.count == 0) continue;
        order.significance.push_back(pawns);
        order.placement.insert(order.placement.begin(), pawns);
    }
    order.placement.insert(order.placement.end(), otherPieces.begin(), otherPieces.end());

    const unsigned capture = 1U << plan.moverPawns.byte | 1U << plan.otherPawns.byte |
                             1U << EnPassantByte | 1U << PawnOriginByte;
    plan.enPassant =
        section(groupPieces, 0, order, capture, KingBytes | capture | bytesOf(groupPieces));
}

/// `blockedToPawns` and `blockedToPieces` are the bytes whose squares are occupied from the start.
IndexSection PlanCompiler::section(const Runs& groupRuns, std::uint8_t flip,
                                   const DigitOrder& order, unsigned blockedToPawns,
                                   unsigned blockedToPieces) {
    IndexSection result;
    for (const MenRun& run : order.placement) {
        const bool pawns = isPawnRun(run);
        const unsigned blocked = pawns ? blockedToPawns : blockedToPieces;
        const std::uint8_t margin = pawns ? 8 : 0;
        MenDigit& digit = result.digits[result.digitCount++];
        digit.run = run;
        digit.lowest = margin;
        digit.padding = paddingOutside(blocked);
        digit.radix =
            choose(64U - 2U * margin - static_cast<unsigned>(std::popcount(blocked)), run.count);
        blockedToPawns |= bytesOf(run);
        blockedToPieces |= bytesOf(run);
    }
    std::uint64_t weight = 1;
    const auto weigh = [&](const MenRun& run) {
        MenDigit& digit = *std::find_if(
            result.digits.begin(), result.digits.end(),
            [&run](const MenDigit& candidate) { return candidate.run.byte == run.byte; });
        digit.weight = weight;
        weight *= digit.radix;
    };
    std::for_each(order.significance.rbegin(), order.significance.rend(), weigh);

    GroupDigit& head = result.group;
    std::copy(groupRuns.begin(), groupRuns.end(), head.runs.begin());
    head.runCount = groupRuns.size();
    head.pairs = plan.hasPawns ? &kingPairs1806 : &kingPairs462;
    head.start = starts.of(groupRuns, *head.pairs);
    head.weight = weight;
    head.flip = flip;
    result.count = head.start[head.pairs->count] * weight;
    return result;
}

struct AllPlans {
    GroupStarts starts;
    std::array<std::array<IndexPlan, 2>, TableCount> plans{};

    AllPlans() {
        for (std::size_t id = 0; id < plans.size(); ++id) {
            for (unsigned side = 0; side < 2; ++side) {
                plans[id][side] = PlanCompiler(starts, tablebaseDescriptors[id], side).result();
            }
        }
    }
};

}  // namespace

const IndexPlan& indexPlan(int id, unsigned side) {
    assert(id >= 0 && id < TableCount && side < 2);
    static const AllPlans all;
    return all.plans[static_cast<std::size_t>(id)][side];
}

}  // namespace brivok
