#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine_fixture.h"
#include "eval/evaluate.h"
#include "eval/terms.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"

namespace brivok {
namespace {

constexpr int Infinite = 32767;

std::string withCaseSwapped(std::string text) {
    for (char& c : text) {
        const auto letter = static_cast<unsigned char>(c);
        c = static_cast<char>(std::isupper(letter) ? std::tolower(letter) : std::toupper(letter));
    }
    return text;
}

/// The position with colours swapped and rows reversed.
std::string mirrored(const std::string& fen) {
    std::istringstream fields(fen);
    std::string placement, side, castling = "-", passed = "-";
    fields >> placement >> side >> castling >> passed;
    std::string turned;
    std::istringstream rows(placement);
    for (std::string row; std::getline(rows, row, '/');) {
        turned = turned.empty() ? row : row + "/" + turned;
    }
    if (passed != "-") passed[1] = passed[1] == '3' ? '6' : '3';
    return withCaseSwapped(turned) + (side == "w" ? " b " : " w ") + withCaseSwapped(castling) +
           " " + passed;
}

/// What the squares of the men of a kind are worth to S.
template <Side S>
int placed(const Board& board, Kind kind) {
    const Piece piece = pieceOf(kind, S);
    int sum = 0;
    for (Bitboard men = board.pieces[piece]; men != 0;) {
        sum += placeValue[piece][takeNext<S>(men)];
    }
    return S == White ? sum : -sum;
}

class EvalTest : public EngineTest {
protected:
    /// Evaluates with fresh tables.
    int evaluate(const std::string& fen, Variant variant = Variant::Normal) {
        setPosition(fen, variant);
        evalHashTable.Clear();
        pawnHashTable.Clear();
        theEvaluation.lazyMargin = 0;
        return Evaluate(board, -Infinite, Infinite);
    }

    const PawnHashRecord& pawnsOf(const std::string& fen) {
        setPosition(fen);
        EvaluatePawns(board, record);
        return record;
    }

    struct Case {
        std::string fen;
        int expected;
    };

    /// Checks a term for White, and for Black in the mirrored position. `term` is a template over
    /// the side.
    template <class Term>
    void expectTerm(Term term, std::initializer_list<Case> cases) {
        for (const auto& [placement, expected] : cases) {
            const std::string fen =
                placement.find(' ') == std::string::npos ? placement + " w - -" : placement;
            pawnsOf(fen);
            EXPECT_EQ((term.template operator()<White>(board, record)), expected) << placement;
            pawnsOf(mirrored(fen));
            EXPECT_EQ((term.template operator()<Black>(board, record)), expected)
                << "for Black in the mirror of " << placement;
        }
    }

    PawnHashRecord record{};
};

TEST_F(EvalTest, StartIsLevel) {
    const std::string start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR ";
    for (const bool lazy : {false, true}) {
        settings.lazyEvalEnabled = lazy;
        EXPECT_EQ(evaluate(start + "w KQkq -"), 0);
        EXPECT_EQ(evaluate(start + "b KQkq -"), 0);
    }
}

TEST_F(EvalTest, MirroredPositionsScoreTheSame) {
    std::vector<std::string> fens{
        // As many men of a kind as fit on the board.
        "1qqqqqqk/qqqqqqqq/8/p7/7P/8/QQQQQQQQ/KQQQQQQ1 w - -",
        "k7/ppp5/pppp4/pppp4/pppp4/PPPPPPPP/PPPPPPP1/7K b - -",
        "k6r/rrrrrrrr/rrrrr3/8/p7/6PP/BBBBBBBB/KBBBBB2 w - -",
        "1nnnnnnk/nnnnnnnn/8/4P3/3p4/8/NNNNNNNN/KNNNNNN1 b - -",
    };
    // An extra queen can tip the scales, and without pawns the record is not for this position.
    for (const auto& position : loadJson("positions.json")) {
        const std::string fen = position["fen"];
        if (std::count(fen.begin(), fen.end(), 'q') > 2 ||
            std::count(fen.begin(), fen.end(), 'Q') > 2)
            continue;
        const std::string placement = fen.substr(0, fen.find(' '));
        if (placement.find_first_of("pP") == std::string::npos) continue;
        if (position["variant"] == 0) fens.push_back(fen);
    }
    for (const std::string& fen : fens) {
        EXPECT_EQ(evaluate(fen), evaluate(mirrored(fen))) << fen;
    }
}

TEST_F(EvalTest, StoredScoreServesEveryWindow) {
    const int score = evaluate("r3k3/8/8/4p3/8/4P3/8/R2QK3 w - -");
    EXPECT_EQ(Evaluate(board, 0, 1), score);
    EXPECT_EQ(searchStats.evalHashProbes, 2U);
    EXPECT_EQ(searchStats.evalHashHits, 1U);
    EXPECT_EQ(searchStats.evalFull, 1U);
    EXPECT_EQ(searchStats.pawnHashStores, 1U);
    evalHashTable.Clear();
    EXPECT_EQ(Evaluate(board, 0, 1), score);
    EXPECT_EQ(searchStats.pawnHashHits, 1U);

    EvalHashRecord& stored = evalHashTable.Find(board.hashKey);
    stored.score = -7;
    EXPECT_EQ(Evaluate(board, 0, 1), -7) << "with its sign";
}

TEST_F(EvalTest, PositionWithoutPawnsTakesAFreshRecord) {
    (void)evaluate("r3k3/8/8/8/8/8/8/R2QK3 w - -");
    EXPECT_EQ(board.pawnKey, 0U);
    EXPECT_EQ(searchStats.pawnHashHits, 1U);
    EXPECT_EQ(searchStats.pawnHashStores, 0U);
}

TEST_F(EvalTest, LazyExit) {
    settings.lazyEvalEnabled = true;
    // One pawn, isolated and backward on an open file: 100 - 20 before the king tables.
    setPosition("4k3/8/8/8/8/8/P7/4K3 w - -");
    EXPECT_EQ(Evaluate(board, 81, 90), 80);
    EXPECT_EQ(Evaluate(board, 70, 79), 80);
    EXPECT_EQ(searchStats.evalLazy, 2U);
    EXPECT_EQ(searchStats.evalHashStores, 0U);
    EXPECT_EQ(theEvaluation.lazyMargin, 0);

    // At the edge of the window there is no lazy exit, and the margin is updated.
    const int full = Evaluate(board, 80, 80);
    EXPECT_EQ(searchStats.evalFull, 1U);
    EXPECT_EQ(theEvaluation.lazyMargin, std::abs(100 - full));

    theEvaluation.lazyMargin = 50;
    setPosition("4k3/8/8/8/8/8/P7/4K3 b - -");
    EXPECT_EQ(Evaluate(board, -29, 0), -30);
    EXPECT_EQ(Evaluate(board, -200, -131), -130);
    EXPECT_EQ(Evaluate(board, -30, -30), -full);
    EXPECT_EQ(theEvaluation.lazyMargin, 50) << "only ever raised";
}

TEST_F(EvalTest, MaterialImbalance) {
    const auto imbalance = []<Side S>(const Board& b, const PawnHashRecord&) {
        return S == White ? MaterialImbalance(b) : -MaterialImbalance(b);
    };
    expectTerm(imbalance, {
                              {"4k3/8/8/8/8/8/8/N3K3", 0},        // too little material to correct
                              {"4k3/8/8/8/8/8/8/NN2K3", 120},     // now there is enough
                              {"b3k3/8/8/8/8/8/8/R3K3", 30},      // rook against minor
                              {"r3k3/8/8/8/8/8/8/NB2K3", 120},    // two minors against rook
                              {"4k3/8/8/8/8/8/8/RB2K3", 0},       // one major and one minor up
                              {"4k3/8/8/8/8/8/8/RNB1K3", 0},      // one major and two minors up
                              {"q3k3/8/8/8/8/8/8/NBN1K3", 120},   // three minors against queen
                              {"rr2k3/8/8/8/8/8/8/NBN1K3", 120},  // and against two rooks
                              {"q3k3/8/8/8/8/8/8/NB2K3", 0},      // two minors against queen
                              {"4k3/8/8/8/8/8/8/QNNNK3", 120},    // regardless of the majors
                              {"rr2k3/8/8/8/8/8/8/Q3K3", 60},     // queen against two rooks
                              {"qr2k3/8/8/8/8/8/8/Q1R1K3", 0},    //
                              {"r3k3/8/8/8/8/8/8/Q3K3", 120},     // one major up
                              {"qr2k3/8/8/8/8/8/8/NNNNK3", 0},    // a difference of three majors
                          });
}

TEST_F(EvalTest, Development) {
    const auto development = []<Side S>(const Board& b, const PawnHashRecord&) {
        return Development<S>(b);
    };
    expectTerm(development,
               {
                   {"4k3/8/8/8/Q7/8/8/1N2K3 w - -", -200},
                   {"4k3/8/8/8/Q7/2N5/8/4K3 w - -", 0},      // all minors out, no right
                   {"4k3/8/8/8/Q7/2N5/8/4K2R w K -", -200},  // with the king-side right
                   // The queen-side right does not count.
                   {"4k3/8/8/8/Q7/2N5/8/R3K3 w Q -", 0},
                   {"1n2k3/8/8/8/Q7/2N5/8/4K3 w - -", 0},       // nor does an enemy minor
                   {"4k3/8/8/8/8/3Pp3/3PP3/1N2K3 w - -", -10},  // both centre pawns blocked
                   {"4k3/8/8/3p4/3P4/2N5/2P2Q2/1N2K3 w - -", 5},
                   {"4k3/8/8/8/3P4/2N5/2P2Q2/1N2K3 w - -", 10},
               });
    for (const Variant variant : {Variant::Fischerandom, Variant::NoCastle}) {
        setPosition("4k3/8/8/8/Q7/8/8/1N2K3 w - -", variant);
        EXPECT_EQ(Development<White>(board), 0);
    }
    // With several queens, White's on the lowest square and Black's on the highest count.
    setPosition("1n2k3/8/8/2Q4Q/q4q2/8/8/1N2K3 w - -");
    EXPECT_EQ(Development<White>(board), 0);
    EXPECT_EQ(Development<Black>(board), 0);
    setPosition("1n2k3/2q5/8/8/7q/8/2Q5/1N2K3 w - -");
    EXPECT_EQ(Development<Black>(board), -200) << "one on each half of the board";
}

TEST_F(EvalTest, PawnScore) {
    const auto score = []<Side S>(const Board&, const PawnHashRecord& pawns) {
        return S == White ? pawns.score : -pawns.score;
    };
    expectTerm(score, {
                          {"4k3/8/8/8/8/8/8/4K3", 0},
                          {"4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3", 0},
                          // Isolated, so no bonus for a passed pawn.
                          {"4k3/8/8/8/8/8/P7/4K3", -20},
                          {"4k3/P7/8/8/8/8/8/4K3", 51},     // never isolated on the seventh rank
                          {"4k3/3P4/8/8/8/8/8/4K3", 78},    //
                          {"4k3/8/P7/8/8/8/8/4K3", 7},      //
                          {"4k3/8/8/4P3/4P3/8/8/4K3", 52},  // doubled, both passed
                          {"4k3/8/8/8/3pP3/8/8/4K3", -6},   // level pawns are both passed
                          {"4k3/8/8/3p4/4P3/8/8/4K3", 0},   // neither is passed
                          {"4k3/p7/8/8/8/8/P7/4K3", 0},     //
                          {"4k3/8/8/8/p7/8/P7/4K3", -6},    // closed file: -8, and 6 - 8 for Black
                      });
}

TEST_F(EvalTest, PawnRecord) {
    const PawnHashRecord& none = pawnsOf("4k3/8/8/8/8/8/8/4K3 w - -");
    EXPECT_EQ(none.cover[0] | none.cover[1] | none.reach[0] | none.reach[1], 0U);
    EXPECT_EQ(none.files[0] | none.files[1], 0);
    EXPECT_EQ(none.rowOfNone[0], 1);
    EXPECT_EQ(none.rowOfNone[1], 6);

    const PawnHashRecord& some = pawnsOf("4k3/7p/8/P6p/8/P7/8/4K3 w - -");
    EXPECT_EQ(some.key, board.pawnKey);
    EXPECT_EQ(some.files[0], 1);
    EXPECT_EQ(some.files[1], 128);
    EXPECT_EQ(some.onDark[0] + 16 * some.onLight[0], 2);
    EXPECT_EQ(some.onDark[1] + 16 * some.onLight[1], 2 * 16);
    EXPECT_EQ(some.cover[0], bit[squareNamed("b6")] | bit[squareNamed("b4")]);
    EXPECT_EQ(some.cover[1], bit[squareNamed("g6")] | bit[squareNamed("g4")]);
    EXPECT_EQ(some.reach[0], fileMask[1] & ~(rowMask[5] | rowMask[6] | rowMask[7]));
    EXPECT_EQ(some.reach[1], fileMask[6] & ~(rowMask[0] | rowMask[1]));
}

TEST_F(EvalTest, ShelterIsKeptForTheLastPairOfKings) {
    const std::string pawns = "/pppppppp/8/8/8/8/PPPPPP1P/RNBQ1";
    const int safe = evaluate("rnbq1rk1" + pawns + "RK1 w - -");
    EXPECT_EQ(Evaluate(board, -Infinite, Infinite), safe);
    for (const char* kings : {"RK1 w - -", "R1K w - -", "RK1 w - -"}) {
        setPosition("rnbq1rk1" + pawns + kings);
        evalHashTable.Clear();
        const int kept = Evaluate(board, -Infinite, Infinite);
        EXPECT_EQ(kept, evaluate("rnbq1rk1" + pawns + kings)) << kings;
    }
}

TEST_F(EvalTest, PatternsOfPieces) {
    const auto heavy = []<Side S>(const Board& b, const PawnHashRecord&) {
        return HeavyOnSeventh<S>(b);
    };
    expectTerm(heavy, {
                          {"6k1/3R4/8/8/8/8/8/4K3", 25},
                          {"8/3R4/6k1/8/8/8/8/4K3", 0},
                          {"6k1/3RQ3/8/8/8/8/8/4K3", 100},
                          {"6k1/3Q4/8/8/8/8/8/4K3", 0},
                          {"R5k1/RRRQQ3/8/8/8/8/8/4K3", 300},
                      });
    const auto trapped = []<Side S>(const Board& b, const PawnHashRecord&) {
        return TrappedBishop<S>(b);
    };
    expectTerm(trapped, {
                            {"4k3/B1p5/1p6/8/8/8/8/4K3", -180},
                            {"4k3/B7/1p6/8/8/8/8/4K3", 0},
                            {"4k3/B7/1p6/8/8/8/8/1R2K3", 0},  // an enemy attack does not guard
                            {"4k3/5p1B/6p1/8/8/8/8/4K3", -180},
                            {"1B2k3/2pr4/8/8/8/8/8/4K3", -180},
                            {"4k1B1/5p2/8/8/8/8/8/4K3", -180},            // guarded by the king
                            {"1B2k1B1/B1p2p1B/1p4p1/8/8/8/8/4K3", -180},  // counted once
                            {"4k3/B1P5/1P6/8/8/8/8/4K3", 0},
                        });
    const auto bishops = []<Side S>(const Board& b, const PawnHashRecord& pawns) {
        return BishopPairOrBadBishop<S>(b, pawns);
    };
    expectTerm(bishops, {
                            {"4k3/8/8/8/8/8/8/2B1KB2", 60},
                            {"4k3/ppp5/8/8/8/8/PP6/2B1KB2", 40},
                            {"4k3/pppppppp/8/8/8/8/PPPPPPPP/2B1KB2", 30},
                            {"4k3/pppppppp/pppppp2/8/8/PPPPP3/PPPPPPPP/2B1KB2", 30},  // 27 pawns
                            {"4k3/8/8/8/8/8/8/B1B1K3", 60},         // even on the same colour
                            {"4k3/8/8/8/8/8/PPPP1P1P/2B1K3", -16},  // four on dark squares
                            {"4k3/8/8/8/8/8/PPPP4/4KB2", -8},       // light
                            {"4k3/8/8/8/8/8/PPPP4/B1B1KB2", -8},    // three: dark comes first
                            {"2b1kb2/8/8/8/8/8/PPPP4/4K3", 0},
                        });
    // Dark squares come first for both sides.
    const PawnHashRecord& pawns = pawnsOf("b1b1kb2/8/1p6/8/8/8/8/4K3 w - -");
    EXPECT_EQ(BishopPairOrBadBishop<Black>(board, pawns), -4);
}

TEST_F(EvalTest, PiecesAndMobility) {
    const auto rooks = []<Side S>(const Board& b, const PawnHashRecord& pawns) {
        return Rooks<S>(b, pawns) + placed<S>(b, Kind::Rook);
    };
    expectTerm(rooks, {
                          // Two blocked squares count as attacked.
                          {"4k3/8/8/8/8/8/P7/RN2K3", -5},
                          {"k7/8/8/8/8/7K/4R3/4R3", 43},         // doubled on an open file
                          {"k7/8/4p3/8/8/7K/8/4R3", 8 + 6 + 8},  // half open
                          {"k7/8/8/8/8/4P2K/8/4R3", 6 + 6},
                      });
    const auto bishops = []<Side S>(const Board& b, const PawnHashRecord& pawns) {
        return Bishops<S>(b, pawns) + Outposts<S>(b, pawns) + placed<S>(b, Kind::Bishop);
    };
    expectTerm(bishops, {
                            {"4k3/8/8/8/3p4/2p5/8/B3K3", -2},       // all squares attacked by pawns
                            {"4k3/8/8/8/3n4/8/8/B3K3", 3 * 3 - 2},  // a capture counts
                            {"4k3/8/8/8/3R4/8/8/B3K3", 2 * 3 - 2},  // an own man does not count
                            {"4k3/8/8/4B3/3P4/8/8/6K1", 2 * 5 + 4 + 9 * 3},
                        });
    const auto knights = []<Side S>(const Board& b, const PawnHashRecord& pawns) {
        return Outposts<S>(b, pawns) + placed<S>(b, Kind::Knight);
    };
    expectTerm(knights, {
                            {"4k3/8/8/4N3/3P4/8/8/4K3", 16 + 10},
                            {"4k3/8/4N3/8/8/8/8/4K3", 9 + 5},
                            {"4k3/3p4/8/4N3/3P4/8/8/4K3", 10},      // a pawn can still attack it
                            {"4k3/8/8/3pN3/3P4/8/8/4K3", 16 + 10},  // it no longer can
                            {"4k3/8/8/8/8/4N3/8/4K3", 5},           // not an outpost square
                        });
}

TEST_F(EvalTest, KingSafety) {
    const auto safety = []<Side S>(const Board& b, const PawnHashRecord& pawns) {
        return CastlingState<S>(b, pawns) + KingShelter<S>(b, pawns);
    };
    // The FEN parser treats a king as being on its start square.
    expectTerm(safety, {
                           {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", 0},
                           {"4k3/8/8/8/8/8/5PPP/6K1", 0},
                           {"4k3/8/8/8/8/8/5P1P/6K1", -12},
                           {"4k3/8/8/8/8/5P1P/6P1/6K1", -14},
                           {"4k3/8/8/8/6P1/8/5P1P/6K1", -16},
                           {"4k3/8/8/8/8/6K1/5PPP/8", -36},      // pawns behind the king
                           {"5k2/8/8/8/8/8/5PP1/7K", -12 - 12},  // next to the edge
                           {"2k5/8/8/8/3P4/2P5/5PPP/6K1", 3 * (18 - 1 - 5 - 4) + 6},
                           {"2k5/8/8/8/8/8/5PPP/6K1", 3 * (18 - 3) + 8 + 6 + 6},
                           {"k7/8/8/8/8/8/PP3PPP/6K1", 3 * (18 - 1 - 6 - 6) + 6},
                       });

    // Castling counts as long as it is the last move.
    for (const Side side : {White, Black}) {
        const auto play = [&](const char* white, const char* black) {
            ASSERT_TRUE(playMoves(board, side == White ? white : black));
        };
        const auto score = [&] {
            EvaluatePawns(board, record);
            return side == White ? CastlingState<White>(board, record)
                                 : CastlingState<Black>(board, record);
        };
        const std::string fen = "2kr1bnr/ppppp1p1/8/8/8/8/PPPPPPPP/R3K2R w KQ -";
        setPosition(side == White ? fen : mirrored(fen));
        play("e1g1", "e8g8");
        EXPECT_EQ(score(), 24);
        play("c8b8", "c1b1");
        EXPECT_EQ(score(), -7);

        setPosition(side == White ? fen : mirrored(fen));
        play("e1c1 c8b8", "e8c8 c1b1");
        EXPECT_EQ(score(), -7);
        play("c2c4 d7d5 c4d5 b8a8", "c7c5 d2d4 c5d4 b1a1");
        EXPECT_EQ(score(), -15);
    }
}

TEST_F(EvalTest, EndgameBeginsWithEitherSide) {
    const auto kings = []<Side S>(const Board& b, const PawnHashRecord&) {
        return KingPlace<S>(b, false) + 100 * KingPlace<S>(b, true);
    };
    expectTerm(kings, {{"4k3/8/8/8/4K3/8/8/8", -13 + 3000}, {"4k3/8/8/8/8/8/8/6K1", 14 - 300}});

    // Only the middlegame prefers e4 to e5. Three rooks have a phase of 15, queen and rook 14.
    const auto preference = [this](const std::string& black, const std::string& white) {
        return evaluate(black + "3k1/8/8/8/4K3/8/8/" + white + "5 w - -") -
               evaluate(black + "3k1/8/8/4K3/8/8/8/" + white + "5 w - -");
    };
    EXPECT_EQ(preference("rrr", "RRR"), 8);
    EXPECT_EQ(preference("rrr", "QR1"), 0);
    EXPECT_EQ(preference("qr1", "RRR"), 0);
}

}  // namespace
}  // namespace brivok
