#pragma once

#include "search/search_listener.h"
#include "shell/base/application.h"

namespace brivok {

/// Common to the listeners of all protocols: prints the budget, logs notes and statistics, and
/// passes input to the current handler.
class ProtocolListener : public SearchListener {
public:
    /// The application must outlive the listener.
    explicit ProtocolListener(Application& application, int firstTold = FirstToldIteration)
        : SearchListener(firstTold), app(application) {}

    void onBudget(const TimeControl& clock) override;
    void onStatistics(const SearchStats& stats) override;
    void onNote(std::string_view line) override;
    bool pollInput() override;

protected:
    Application& app;
};

/// Logs the counters of a search.
void printStatistics(Application& app, const SearchStats& stats);

}  // namespace brivok
