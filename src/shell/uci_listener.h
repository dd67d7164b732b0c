#pragma once

#include "shell/protocol_listener.h"

namespace brivok {

/// Tells a UCI interface of a search in lines of "info". Its statistics are nobody's business.
class UciListener final : public ProtocolListener {
public:
    using ProtocolListener::ProtocolListener;

    void onRootMove(const SearchProgress& progress, bool firstOfPass) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
    void onManyNodes(const SearchProgress& progress) override;
    void onStatistics(const SearchStats& stats) override;
};

}  // namespace brivok
