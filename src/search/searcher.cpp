#include "search/searcher.h"

#include "board/piece_values.h"
#include "board/static_tables.h"

namespace brivok {

Searcher theSearcher{{.board = theBoard,
                      .settings = brivok::settings,
                      .stats = searchStats,
                      .clock = timeControl,
                      .transpositionTable = brivok::transpositionTable,
                      .evaluation = theEvaluation,
                      .tablebases = brivok::tablebases}};

Searcher::Searcher(const SearchParts& parts)
    : searchStartTime(centiseconds()),
      board(&parts.board),
      settings(parts.settings),
      stats(parts.stats),
      clock(parts.clock),
      transpositionTable(parts.transpositionTable),
      evaluation(parts.evaluation),
      tablebases(parts.tablebases) {}

void Searcher::onNewGame() {
    clock.setDefault();
    gameOutcome = GameOutcome::None;
}

void Searcher::forgetGame() {
    gameOutcome = GameOutcome::None;
    ponderMove = NoMove;
    hashPonder = 0;
    bookMove = false;
    iterationScore = iteration = selDepth = 0;
    maxIteration = NoFixedDepth;
    nodeLimit = 0;
}

std::uint32_t Searcher::elapsed() const { return centiseconds() - searchStartTime; }

std::uint64_t Searcher::allNodes() const {
    const auto counterAtPoll = static_cast<std::uint32_t>(nodesAtPoll);
    return nodesAtPoll + (stats.nodes - counterAtPoll);
}

SearchProgress Searcher::progress() const {
    return {.board = *board,
            .table = transpositionTable,
            .stats = stats,
            .nodes = allNodes(),
            .mode = searchMode,
            .iteration = iteration,
            .selDepth = selDepth,
            .iterationScore = iterationScore,
            .elapsed = elapsed(),
            .tableHits = tablebases.tbHits,
            .branchingFactor = branchingFactor,
            .rootMovesLeft = rootMovesLeft,
            .rootMovesTotal = rootMovesTotal,
            .currentMoveText = currentMoveText};
}

bool Searcher::ShouldCountResign() const {
    constexpr std::uint32_t FairTime = 20000;
    constexpr int TrustedIteration = 6;
    return iterationScore <= settings.resignValue && iterationScore >= -MateBound &&
           !board->inCheck() && clock.oppTime >= FairTime && iteration >= TrustedIteration;
}

void setUpEngine() {
    buildStaticTables();
    RefreshPieceValues();
    theBoard.newGameListener = &theSearcher;
}

}  // namespace brivok
