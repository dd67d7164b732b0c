#pragma once

#include "shell/protocol_listener.h"

namespace brivok {

/// Reports a search to a UCI interface in "info" lines; statistics are left out.
class UciListener final : public ProtocolListener {
public:
    using ProtocolListener::ProtocolListener;

    void onRootMove(const SearchProgress& progress, bool firstOfPass) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
    void onManyNodes(const SearchProgress& progress) override;
    void onStatistics(const SearchStats& stats) override;
};

}  // namespace brivok
