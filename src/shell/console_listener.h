#pragma once

#include "shell/protocol_listener.h"

namespace brivok {

/// Tells a person, or an interface that shows the lines as they come, of a search in lines of
/// thinking, while posting is on. This is the listener of the Extra console.
class ConsoleListener : public ProtocolListener {
public:
    using ProtocolListener::ProtocolListener;

    void onRootMove(const SearchProgress& progress, bool firstOfPass) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
};

/// The same under WinBoard: moves are named in SAN, and book moves and hints are told.
class WinBoardListener final : public ConsoleListener {
public:
    using ConsoleListener::ConsoleListener;

    void onBookMove(Board& board, Move move) override;
    void onPonderMove(Board& board, Move move) override;
    std::string rootMoveText(Board& board, Move move) override;
};

/// Prints how far the search has come, without a line of moves.
void printAnalysisStatus(Application& app, const SearchProgress& progress);

}  // namespace brivok
