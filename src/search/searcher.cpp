#include "search/searcher.h"

#include <algorithm>

#include "search/time_control.h"
#include "shell/base/settings.h"

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

bool Searcher::ShouldCountResign() const {
    constexpr std::uint32_t FairTime = 20000;
    constexpr int TrustedIteration = 6;
    return iterationScore <= settings.resignValue && iterationScore >= -MateBound &&
           !board->inCheck() && timeControl.oppTime >= FairTime && iteration >= TrustedIteration;
}

}  // namespace brivok
