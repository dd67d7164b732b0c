#include <string>

#include "search/searcher.h"

namespace brivok {

/// Whether the search ends without further input. Pondering and analysis do not, whatever other
/// limits they have: they wait for a command, which cannot arrive once the input has ended.
bool Searcher::endsByItself() const {
    if (searchMode == SearchMode::Pondering || searchMode == SearchMode::Analysing) return false;
    return nodeLimit != 0 || maxIteration < NoFixedDepth || isTimed();
}

/// Pondering, analysis and, unless the clock counts too, fixed depth ignore the budget.
bool Searcher::isTimed() const {
    return clock.allocated != 0 && usesClock() && searchMode != SearchMode::Pondering &&
           searchMode != SearchMode::Analysing;
}

bool Searcher::pollInputAndClock() {
    nodesAtPoll = allNodes();
    // While the search unwinds, read nothing more: an idle handler would act on it.
    if (stopSearch) return true;
    if (!listener->pollInput() && !endsByItself()) stopSearch = true;
    if (stopSearch) return true;

    stats.nextPoll += searchMode == SearchMode::Pondering ? PonderPollInterval : PollInterval;
    if (iteration < FirstTimedIteration || !isTimed()) return false;
    const std::uint32_t used = elapsed();
    if (used < clock.allocated) return false;
    stopSearch = !mayGoOn(used);
    return stopSearch;
}

/// Extends a spent budget, once, if the iteration fails low and the clock allows it. The accented
/// letters are single bytes of the Windows-1252 code page.
bool Searcher::mayGoOn(std::uint32_t used) {
    if (!mayExtendTime || !failingLow) return false;
    note("Intento extender el tiempo de b\xFAsqueda\n");
    note("Tiempo usado: " + std::to_string(used) + "\n");
    note("Tiempo disponible: " + std::to_string(clock.ownTime - used) + "\n");
    if (!clock.ExtendTime()) {
        note("Tiempo de b\xFAsqueda no extendido. B\xFAsqueda terminada\n");
        return false;
    }
    mayExtendTime = false;
    note("Nuevo tiempo de b\xFAsqueda: " + std::to_string(clock.allocated) + "\n");
    return true;
}

}  // namespace brivok
