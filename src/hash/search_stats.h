#pragma once

#include <cstdint>

namespace brivok {

/// Counters of one search, zeroed when it starts.
struct SearchStats {
    std::uint32_t ttStores;
    std::uint32_t ttProbes;
    std::uint32_t ttHits;  ///< probes that found the position
    std::uint32_t evalHashStores;
    std::uint32_t evalHashProbes;
    std::uint32_t evalHashHits;  ///< probes that found the position
    std::uint32_t pawnHashStores;
    std::uint32_t pawnHashProbes;
    std::uint32_t pawnHashHits;  ///< probes that found the structure
    std::uint32_t nullTriesMin;  ///< null moves tried with the reduction `nullMoveMin`
    std::uint32_t nullTriesMax;  ///< null moves tried with the reduction `nullMoveMax`
    std::uint32_t nullCutsMin;   ///< cutoffs among nullTriesMin
    std::uint32_t nullCutsMax;   ///< cutoffs among nullTriesMax
    std::uint32_t seeCuts;       ///< quiescence moves dropped for a negative exchange value
    /// Root passes repeated after the score left the aspiration window.
    std::uint32_t reSearches;
    std::uint32_t iidSearches;        ///< reduced searches of internal iterative deepening
    std::uint32_t futilityCuts;       ///< moves that futility pruning sent to quiescence
    std::uint32_t razorReductions;    ///< moves that razoring reduced by one ply
    std::uint32_t deltaCuts;          ///< quiescence moves dropped by delta pruning
    std::uint32_t extCheck;           ///< extensions for giving check
    std::uint32_t extOneReply;        ///< extensions of an only reply to a check
    std::uint32_t extMateThreat;      ///< extensions for a mate threat
    std::uint32_t extRecapture;       ///< extensions of a recapture
    std::uint32_t extPawnPush;        ///< extensions of a pawn push to the seventh rank
    std::uint32_t extEndgameCapture;  ///< extensions of a capture into a pawn endgame
    std::uint32_t evalFull;
    std::uint32_t evalLazy;        ///< evaluations that ended at the lazy exit
    std::uint32_t failHighsFirst;  ///< beta cutoffs on the first move of a node
    std::uint32_t failHighs;       ///< all beta cutoffs of the main search
    std::uint32_t nodes;           ///< nodes of both searches, and illegal tries of the main search
    std::uint32_t qnodes;          ///< nodes of the quiescence search alone
    std::uint32_t nextPoll;        ///< node count at which clock and input are polled next
};

/// Counters of the current or last search.
inline SearchStats searchStats{};

}  // namespace brivok
