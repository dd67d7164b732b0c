#include "search/searcher.h"

#include <algorithm>

#include "search/time_control.h"

namespace brivok {

Searcher theSearcher;

Searcher::Searcher() : searchStartTime(centiseconds()), board(&theBoard) { newGameListener = this; }

void Searcher::onNewGame() {
    timeControl.setDefault();
    gameOutcome = GameOutcome::None;
}

void Searcher::clearRootMoves() {
    std::fill(std::begin(root.moves), std::end(root.moves), NoMove);
    root.count = 0;
}

std::uint32_t Searcher::elapsed() const { return centiseconds() - searchStartTime; }

}  // namespace brivok
