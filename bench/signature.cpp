#include "signature.h"

#include "board/board.h"
#include "egtb/tablebase_probe.h"
#include "hash/search_stats.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/protocols.h"

namespace brivok {

namespace {

constexpr TestPosition Positions[] = {
    {Variant::Normal, "2kr1bnr/pppqpppp/2n5/3p1b2/3P1B2/2N4P/PPPQPPP1/2KR1BNR b - - 0 6"},
    {Variant::Normal, "2kr3r/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/R4RK1 w - - 6 9"},
    {Variant::Normal, "rnbqkbnr/ppp2ppp/8/1B1pp3/8/8/PPPPPPPP/RNBQK1NR b KQkq - 0 1"},
    {Variant::Normal, "r2qk2r/ppp1bppp/2n5/1B1p4/3Nn1b1/8/PPP2PPP/RNBQR1K1 b kq - 0 9"},
    {Variant::Normal, "r1b1k2r/ppppnppp/2n2q2/2b5/3NP3/2P1B3/PP2QPPP/RN2KB1R b KQkq - 2 7"},
    {Variant::Normal, "3r2k1/1Q3ppp/3R4/8/8/8/qr3PPP/5RK1 b - - 0 30"},
    {Variant::Normal, "2rq1rk1/pb1nbppp/1p2pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2Q1RK1 w - - 4 11"},
    {Variant::Normal, "r2q1rk1/1b2bppp/p1n1pn2/1p6/3N4/1BN1B3/PPP2PPP/R2QR1K1 w - - 2 13"},
    {Variant::Normal, "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10"},
    {Variant::Normal, "1rb2rk1/p4ppp/1p1qp1n1/3n2N1/2pP4/2P3P1/PP3PBP/R1BQ1RK1 w - - 0 1"},
    {Variant::Normal, "r1bqkbnr/pppp1ppp/2n5/4p3/3PP3/5N2/PPP2PPP/RNBQKB1R b KQkq d3 0 3"},
    {Variant::Normal, "r1bqk2r/pp1nbppp/2p1pn2/3p2B1/2PP4/2NBPN2/PP3PPP/R2QK2R b KQkq - 3 8"},
    {Variant::Normal, "rnbq1rk1/ppp1ppbp/3p1np1/8/2PPP3/2N2N2/PP3PPP/R1BQKB1R w KQ - 3 6"},
    {Variant::Normal, "2k5/5P2/8/8/8/8/4p3/2K5 w - - 0 1"},
    {Variant::Normal, "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N w - - 0 1"},
    {Variant::Normal, "r2q1rk1/pP1p2pp/Q4n2/bbp1p3/Np6/1B3NBn/pPPP1PPP/R3K2R b KQ - 0 1"},
    {Variant::Normal, "r1b2rk1/2q1b1pp/p2ppn2/1p6/3QP3/1BN1B3/PPP3PP/R4RK1 w - - 0 1"},
    {Variant::Normal, "rnbqkb1r/pppp1ppp/8/4P3/6n1/7P/PPPNPPP1/R1BQKBNR b KQkq - 0 1"},
    {Variant::Normal, "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"},
    {Variant::Normal, "8/8/3k4/8/8/3K4/3Q4/8 w - - 0 1"},
    {Variant::Normal, "8/1p4pp/p1p2k2/3b4/3P1P2/P3K1P1/1P5P/5B2 w - - 0 31"},
    {Variant::Normal, "5k2/8/8/8/8/8/3n4/4K2N w - - 0 1"},
    {Variant::Normal, "2B5/3K4/N7/8/5k2/8/8/8 w - - 5 60"},
    {Variant::Normal, "5k2/2N1b3/8/3K4/1p6/3Pp3/6P1/8 b - - 10 36"},
    {Variant::Normal, "3n4/1P3pP1/3k4/2P3q1/7p/1K4p1/8/4B2Q b - - 15 60"},
    {Variant::Normal, "k6r/8/1K6/8/8/8/8/4Q3 w - - 13 66"},
    {Variant::Normal, "1K6/6k1/4P3/2rR3p/1p6/2P5/8/8 b - - 0 55"},
    {Variant::Normal, "1rb2k1r/1pQp1pp1/p6p/2P5/n5P1/P7/4PPBP/n1BK1R2 w - - 0 19"},
    {Variant::Normal, "1r1k1b2/1pp1p3/2B4p/8/6b1/4P3/PPP2r1P/R1K3R1 b - - 4 20"},
    {Variant::Normal, "3rk3/1p3pn1/8/p6r/2KP4/2P4P/P4P2/1q2N3 b - - 9 35"},
    {Variant::Normal, "r1bqkbnr/ppp2pp1/8/3pn2p/6P1/P7/1PPPPP1P/RNBQKBR1 w Qkq - 0 6"},
    {Variant::Normal, "7r/p1N2k2/8/3ppp1p/6p1/1N1PP3/1PP2PPP/4KB1R w K - 4 29"},
    {Variant::Fischerandom, "qrkb1nbr/pppppppp/8/4P3/2P2n2/8/PPNP1PPP/QRKB1NBR b KQkq - 2 4"},
    {Variant::Fischerandom, "r1q1krbn/1pbp2pp/2p4n/p3pB2/2P3PP/2QP2N1/PP2PP2/R2NKRB1 b KQkq - 4 8"},
    {Variant::Fischerandom, "nbkrr1b1/p1ppp1pp/6n1/1p2q3/1P1PNp1P/2P5/P3PPP1/NBRKRQB1 b - - 0 8"},
    {Variant::Fischerandom, "8/1P1p4/4pk2/6p1/3P2P1/4PP2/P2b1K2/8 w - - 1 38"},
    {Variant::Fischerandom, "n1kqn1rb/2ppp3/7p/1p1Q2p1/4PP2/5N1P/bPP2BP1/NRK2R1B b KQ - 1 11"},
    {Variant::Fischerandom, "rknqbnrb/pp1p1ppp/8/2p1B3/8/3P4/PPP1PPPP/RKNQ1NRB b KQkq - 0 3"},
    {Variant::NoCastle, "1rq1kb1r/p1p1p1pp/1pNp3n/5pN1/3P4/PP6/1P2PPPP/R1BQKB1R w - - 1 12"},
    {Variant::NoCastle, "3rknR1/2p5/pp6/2q5/P1R2P2/8/1P1N3P/4K3 w - - 1 33"},
    {Variant::NoCastle, "1nb2kr1/3p1q1p/2p3p1/p3Q3/P7/bP3P2/2P3PP/4KBNR w - - 2 19"},
};

}  // namespace

std::span<const TestPosition> signaturePositions() { return Positions; }

void preparePosition(const TestPosition& position) {
    settings.variant = position.variant;
    allocateTables();
    tablebases.tbMaxMen = 0;  // ignore tables in the current directory
    theBoard.setPositionFromFen(position.fen);
}

std::uint32_t searchNodes(int depth) {
    SearchListener silent;
    theSearcher.think({.maxIteration = depth, .clock = TimeControl{}}, silent);
    return searchStats.nodes;
}

}  // namespace brivok
