#pragma once

#include "search/search_listener.h"
#include "shell/base/application.h"

namespace brivok {

/// What the listeners of all protocols do alike: the budget is printed, notes and statistics go
/// into the log, and input goes to the handler in force.
class ProtocolListener : public SearchListener {
public:
    /// Speaks through the application, which outlives the listener.
    explicit ProtocolListener(Application& application) : app(application) {}

    void onBudget(const TimeControl& clock) override;
    void onStatistics(const SearchStats& stats) override;
    void onNote(std::string_view line) override;
    bool pollInput() override;

protected:
    Application& app;  ///< the one it speaks through
};

/// Notes the counters of a search in the log.
void printStatistics(Application& app, const SearchStats& stats);

}  // namespace brivok
