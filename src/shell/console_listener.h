#pragma once

#include "shell/protocol_listener.h"

namespace brivok {

/// Shows a search to a person, or to an interface that displays output as is, in thinking lines
/// while posting is on. Console mode uses this listener.
class ConsoleListener : public ProtocolListener {
public:
    using ProtocolListener::ProtocolListener;

    void onRootMove(const SearchProgress& progress, bool firstOfPass) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
};

/// As above for WinBoard: moves are in SAN, and book moves and hints are announced.
class WinBoardListener : public ConsoleListener {
public:
    using ConsoleListener::ConsoleListener;

    void onBookMove(Board& board, Move move) override;
    void onPonderMove(Board& board, Move move) override;
    std::string rootMoveText(Board& board, Move move) override;
};

/// Prints the progress of the search, without a line of moves.
void printAnalysisStatus(Application& app, const SearchProgress& progress);

}  // namespace brivok
