#include "hash/search_stats.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"

namespace brivok {

/// What counts at the end of the input: pondering and analysis wait for a word that cannot come any
/// more, whatever other limits they have.
bool Searcher::endsByItself() const {
    if (searchMode == SearchMode::Pondering || searchMode == SearchMode::Analysing) return false;
    return nodeLimit != 0 || maxIteration < NoFixedDepth || isTimed();
}

/// A fixed depth, pondering and analysis have no limit of time, whatever budget stands.
bool Searcher::isTimed() const {
    return timeControl.allocated != 0 && maxIteration == NoFixedDepth &&
           searchMode != SearchMode::Pondering && searchMode != SearchMode::Analysing;
}

bool Searcher::pollInputAndClock() {
    // While the search unwinds no further line is read: an idle handler would act on it.
    if (stopSearch) return true;
    const Input input = PollInput(*theApplication);
    if (input == Input::Ended && !endsByItself()) stopSearch = true;
    if (stopSearch) return true;

    searchStats.nextPoll += searchMode == SearchMode::Pondering ? PonderPollInterval : PollInterval;
    if (iteration < FirstTimedIteration || !isTimed()) return false;
    const std::uint32_t used = elapsed();
    if (used < timeControl.allocated) return false;

    if (mayExtendTime && failingLow) {
        // The accented letters are single bytes of the Windows-1252 code page.
        Application& app = *theApplication;
        LogOnly(app, "Intento extender el tiempo de b\xFAsqueda\n");
        LogOnly(app, "Tiempo usado: %ld\n", static_cast<long>(used));
        LogOnly(app, "Tiempo disponible: %lu\n",
                static_cast<unsigned long>(timeControl.ownTime - used));
        if (timeControl.ExtendTime()) {
            mayExtendTime = false;
            LogOnly(app, "Nuevo tiempo de b\xFAsqueda: %lu\n",
                    static_cast<unsigned long>(timeControl.allocated));
            return false;
        }
        LogOnly(app, "Tiempo de b\xFAsqueda no extendido. B\xFAsqueda terminada\n");
    }
    stopSearch = true;
    return true;
}

}  // namespace brivok
