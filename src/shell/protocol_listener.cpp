#include "shell/protocol_listener.h"

#include <cstdint>
#include <string>
#include <utility>

#include "egtb/tablebase_probe.h"
#include "shell/base/console.h"

namespace brivok {

void ProtocolListener::onBudget(const TimeControl& clock) {
    Print(app, "## (Think) Left time: %d Thinking time: %d\n", static_cast<int>(clock.ownTime),
          static_cast<int>(clock.allocated));
}

void ProtocolListener::onStatistics(const SearchStats& stats) { printStatistics(app, stats); }

void ProtocolListener::onNote(std::string_view line) {
    LogOnly(app, "%s", std::string(line).c_str());
}

bool ProtocolListener::pollInput() { return PollInput(app) != Input::Ended; }

void printStatistics(Application& app, const SearchStats& s) {
    // A divisor is one larger than its counter, so that nothing is divided by zero.
    const auto percent = [](std::uint32_t part, std::uint32_t whole) {
        return static_cast<double>(static_cast<float>(part) * 100.0F /
                                   (static_cast<float>(whole) + 1.0F));
    };
    const auto count = [](std::uint32_t counter) { return static_cast<unsigned long>(counter); };
    LogOnly(app, "Nodes: %lu Qnodes: %lu (%3.3f%%) Ordering efficiency: %3.3f%%\n", count(s.nodes),
            count(s.qnodes), percent(s.qnodes, s.nodes), percent(s.failHighsFirst, s.failHighs));
    LogOnly(app, "Transposition Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.ttStores),
            count(s.ttProbes), count(s.ttHits), percent(s.ttHits, s.ttProbes));
    LogOnly(app, "Pawn Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.pawnHashStores),
            count(s.pawnHashProbes), count(s.pawnHashHits),
            percent(s.pawnHashHits, s.pawnHashProbes));
    LogOnly(app, "Evaluation Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.evalHashStores),
            count(s.evalHashProbes), count(s.evalHashHits),
            percent(s.evalHashHits, s.evalHashProbes));
    const TablebaseState& tables = tablebases;
    LogOnly(app, "EGTB: (P/H): %ld/%ld (%3.3f%%)\n", static_cast<long>(tables.tbProbes),
            static_cast<long>(tables.tbHits), percent(tables.tbHits, tables.tbProbes));
    LogOnly(app, "Null-Move: (TMin/TMax/CMin/CMax): %lu/%lu/%lu/%lu\n", count(s.nullTriesMin),
            count(s.nullTriesMax), count(s.nullCutsMin), count(s.nullCutsMax));
    LogOnly(app, "Extensions: (C/OR/RC/T/PP/EC): %lu/%lu/%lu/%lu/%lu/%lu\n", count(s.extCheck),
            count(s.extOneReply), count(s.extRecapture), count(s.extMateThreat),
            count(s.extPawnPush), count(s.extEndgameCapture));
    LogOnly(app, "Evaluations: (F/L): %lu/%lu\n", count(s.evalFull), count(s.evalLazy));

    const std::pair<const char*, std::uint32_t> rest[] = {
        {"Re-searchs", s.reSearches},     {"IID", s.iidSearches},
        {"SEE cuts", s.seeCuts},          {"Fut.Cuts", s.futilityCuts},
        {"Raz.Reduc", s.razorReductions}, {"Delta Cuts", s.deltaCuts}};
    for (const auto& [name, counter] : rest) {
        if (counter != 0) LogOnly(app, "%s: %lu\n", name, count(counter));
    }
}

}  // namespace brivok
