#pragma once

#include <cstdint>
#include <string>

#include "search/game_end.h"
#include "shell/modern/modern_pv.h"
#include "shell/protocol_listener.h"

namespace brivok {

/// Reports a search to a modern UCI interface: from the first iteration on, several lines if they
/// are wanted, and a line of its own for a move that comes without one. Castling is written in the
/// style of the settings.
class ModernUciListener final : public ProtocolListener {
public:
    explicit ModernUciListener(Application& application)
        : ProtocolListener(application, FirstIteration) {}

    /// Call before a search: forgets the one before.
    void begin(const SearchProgress& progress);

    /// Call behind a search, before its answer: makes sure that the last line told begins with the
    /// move to play, or tells that there is none.
    void finish(const SearchProgress& progress, Move best, GameOutcome outcome);

    void onBookMove(Board& board, Move move) override;
    std::string rootMoveText(Board& board, Move move) override;
    void onRootMove(const SearchProgress& progress, bool firstOfPass) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
    void onLines(const SearchProgress& progress, std::span<const SearchLine> lines) override;
    void onManyNodes(const SearchProgress& progress) override;
    void onStatistics(const SearchStats& stats) override;

private:
    static constexpr int FirstIteration = 1;

    /// One "info" line about a line of play.
    struct Told {
        int depth;
        int selDepth;
        std::string score;  ///< with its unit and bound
        std::string moves;
        std::string number{};  ///< "multipv" and its value
    };
    void tell(const SearchProgress& progress, const Told& line);

    /// Nodes, speed, filling of the table and, if there are any, hits in the endgame tables.
    [[nodiscard]] std::string counters(const SearchProgress& progress) const;

    ModernPv pv;
    Move toldMove = NoMove;        ///< first move of the last line told
    int toldDepth = 0;             ///< its depth; 0 before the first line
    std::uint32_t hitsBefore = 0;  ///< endgame table hits before this search
};

}  // namespace brivok
