#pragma once

#include <cstdint>

namespace brivok {

/// Counters of one search, zeroed at its start.
struct SearchStats {
    std::uint32_t ttStores;           ///< of the transposition table
    std::uint32_t ttProbes;           ///< of the transposition table
    std::uint32_t ttHits;             ///< probes that found the position
    std::uint32_t evalHashStores;     ///< of the evaluation hash
    std::uint32_t evalHashProbes;     ///< of the evaluation hash
    std::uint32_t evalHashHits;       ///< probes that found the position
    std::uint32_t pawnHashStores;     ///< of the pawn hash
    std::uint32_t pawnHashProbes;     ///< of the pawn hash
    std::uint32_t pawnHashHits;       ///< probes that found the structure
    std::uint32_t nullTriesMin;       ///< null moves with the setting `nullMoveMin`
    std::uint32_t nullTriesMax;       ///< null moves with the setting `nullMoveMax`
    std::uint32_t nullCutsMin;        ///< those of the first that cut off
    std::uint32_t nullCutsMax;        ///< those of the second that cut off
    std::uint32_t seeCuts;            ///< quiescence moves dropped for a negative exchange value
    std::uint32_t reSearches;         ///< root passes repeated after leaving the aspiration window
    std::uint32_t iidSearches;        ///< reduced searches of internal iterative deepening
    std::uint32_t futilityCuts;       ///< moves sent to quiescence by futility
    std::uint32_t razorReductions;    ///< moves reduced by one ply
    std::uint32_t deltaCuts;          ///< quiescence moves dropped by delta pruning
    std::uint32_t extCheck;           ///< extensions for a check
    std::uint32_t extOneReply;        ///< for an only reply
    std::uint32_t extMateThreat;      ///< for a threat of mate
    std::uint32_t extRecapture;       ///< for a recapture
    std::uint32_t extPawnPush;        ///< for a push to the seventh rank
    std::uint32_t extEndgameCapture;  ///< for a capture into a pawn endgame
    std::uint32_t evalFull;           ///< evaluations with all terms
    std::uint32_t evalLazy;           ///< evaluations that ended at the lazy exit
    std::uint32_t failHighsFirst;     ///< cut-offs by the first move of a node
    std::uint32_t failHighs;          ///< all cut-offs of the main search
    std::uint32_t nodes;     ///< nodes of both searches, and illegal tries of the main search
    std::uint32_t qnodes;    ///< nodes of the quiescence search
    std::uint32_t nextPoll;  ///< node count at which the clock and the input are looked at next
};

/// The counters of the present or last search.
inline SearchStats searchStats{};

}  // namespace brivok
