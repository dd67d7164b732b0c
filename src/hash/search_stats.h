#pragma once

#include <cstdint>

namespace brivok {

/// Counters of one search, zeroed at its start.
struct SearchStats {
    std::uint32_t ttStores, ttProbes, ttHits;
    std::uint32_t evalHashStores, evalHashProbes, evalHashHits;
    std::uint32_t pawnHashStores, pawnHashProbes, pawnHashHits;
    std::uint32_t nullTriesMin, nullTriesMax;
    std::uint32_t nullCutsMin, nullCutsMax;
    std::uint32_t seeCuts;          ///< quiescence moves dropped for a negative exchange value
    std::uint32_t reSearches;       ///< root passes repeated after leaving the aspiration window
    std::uint32_t iidSearches;      ///< reduced searches of internal iterative deepening
    std::uint32_t futilityCuts;     ///< moves sent to quiescence by futility
    std::uint32_t razorReductions;  ///< moves reduced by one ply
    std::uint32_t deltaCuts;        ///< quiescence moves dropped by delta pruning
    std::uint32_t extCheck, extOneReply, extMateThreat, extRecapture, extPawnPush;
    std::uint32_t extEndgameCapture;
    std::uint32_t evalFull, evalLazy;
    std::uint32_t failHighsFirst;  ///< cut-offs by the first move of a node
    std::uint32_t failHighs;
    std::uint32_t nodes;     ///< nodes of both searches, and illegal tries of the main search
    std::uint32_t qnodes;    ///< nodes of the quiescence search
    std::uint32_t nextPoll;  ///< node count at which the clock and the input are looked at next
};

/// The counters of the present or last search.
inline SearchStats searchStats{};

}  // namespace brivok
