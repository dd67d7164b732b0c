#include "fresh_engine.h"

#include "board/piece_values.h"
#include "eval/evaluate.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "search/searcher.h"
#include "shell/base/settings.h"
#include "shell/modern/modern_options.h"

namespace brivok {

void makeFresh() {
    static const bool ready = (setUpEngine(), true);
    static_cast<void>(ready);
    static const Board emptyBoard;
    theBoard = emptyBoard;
    theBoard.newGameListener = &theSearcher;

    settings = Settings{};
    modernSettings = ModernSettings{};
    RefreshPieceValues();
    transpositionTable = TranspositionTable{};
    transpositionTable.resize();
    evalHashTable.Allocate();
    pawnHashTable.Allocate();
    theEvaluation.lazyMargin = 0;
    searchStats = SearchStats{};

    theSearcher.searchMode = SearchMode::Idle;
    theSearcher.ponderEnabled = theSearcher.postThinking = true;
    theSearcher.stopSearch = false;
    theSearcher.forgetGame();
    theSearcher.nodesAtIteration.fill(0);
    theBoard.NewGame();
}

}  // namespace brivok
