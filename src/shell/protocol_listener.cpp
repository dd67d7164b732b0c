#include "shell/protocol_listener.h"

#include <cstdint>
#include <string>
#include <utility>

#include "egtb/tablebase_probe.h"
#include "shell/base/console.h"

namespace brivok {

void ProtocolListener::onBudget(const TimeControl& clock) {
    Print(app, "## (Think) Left time: %d Thinking time: %d\n", clock.ownTime, clock.allocated);
}

void ProtocolListener::onStatistics(const SearchStats& stats) { printStatistics(app, stats); }

void ProtocolListener::onNote(std::string_view line) {
    LogOnly(app, "%s", std::string(line).c_str());
}

bool ProtocolListener::pollInput() { return PollInput(app) != Input::Ended; }

void printStatistics(Application& app, const SearchStats& s) {
    // Each divisor is one larger than its counter, so that nothing is divided by zero.
    const auto percent = [](std::uint32_t part, std::uint32_t whole) {
        return static_cast<double>(static_cast<float>(part) * 100.0F /
                                   (static_cast<float>(whole) + 1.0F));
    };
    LogOnly(app, "Nodes: %u Qnodes: %u (%3.3f%%) Ordering efficiency: %3.3f%%\n", s.nodes, s.qnodes,
            percent(s.qnodes, s.nodes), percent(s.failHighsFirst, s.failHighs));
    LogOnly(app, "Transposition Hash: (S/P/H): %u/%u/%u (%3.3f%%)\n", s.ttStores, s.ttProbes,
            s.ttHits, percent(s.ttHits, s.ttProbes));
    LogOnly(app, "Pawn Hash: (S/P/H): %u/%u/%u (%3.3f%%)\n", s.pawnHashStores, s.pawnHashProbes,
            s.pawnHashHits, percent(s.pawnHashHits, s.pawnHashProbes));
    LogOnly(app, "Evaluation Hash: (S/P/H): %u/%u/%u (%3.3f%%)\n", s.evalHashStores,
            s.evalHashProbes, s.evalHashHits, percent(s.evalHashHits, s.evalHashProbes));
    const TablebaseState& tables = tablebases;
    LogOnly(app, "EGTB: (P/H): %u/%u (%3.3f%%)\n", tables.tbProbes, tables.tbHits,
            percent(tables.tbHits, tables.tbProbes));
    LogOnly(app, "Null-Move: (TMin/TMax/CMin/CMax): %u/%u/%u/%u\n", s.nullTriesMin, s.nullTriesMax,
            s.nullCutsMin, s.nullCutsMax);
    LogOnly(app, "Extensions: (C/OR/RC/T/PP/EC): %u/%u/%u/%u/%u/%u\n", s.extCheck, s.extOneReply,
            s.extRecapture, s.extMateThreat, s.extPawnPush, s.extEndgameCapture);
    LogOnly(app, "Evaluations: (F/L): %u/%u\n", s.evalFull, s.evalLazy);

    const std::pair<const char*, std::uint32_t> rest[] = {
        {"Re-searchs", s.reSearches},     {"IID", s.iidSearches},
        {"SEE cuts", s.seeCuts},          {"Fut.Cuts", s.futilityCuts},
        {"Raz.Reduc", s.razorReductions}, {"Delta Cuts", s.deltaCuts}};
    for (const auto& [name, counter] : rest) {
        if (counter != 0) LogOnly(app, "%s: %u\n", name, counter);
    }
}

}  // namespace brivok
