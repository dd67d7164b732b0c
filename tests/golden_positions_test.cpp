#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "eval/evaluate.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "movegen/generate.h"
#include "movegen/move_text.h"
#include "movegen/perft.h"
#include "movegen/san.h"
#include "search/searcher.h"

namespace brivok {
namespace {

using Json = nlohmann::json;

std::uint64_t keyOf(const Json& text) { return std::stoull(text.get<std::string>(), nullptr, 16); }

/// Every test walks all records of the file, each set up on the board.
class GoldenPositions : public EngineTest {
protected:
    template <class Check>
    void forEachRecord(Check check) {
        const Json records = loadJson("positions.json");
        ASSERT_FALSE(records.empty());
        for (const Json& record : records) {
            const std::string fen = record["fen"];
            SCOPED_TRACE(record["id"].dump() + " " + record["tag"].get<std::string>() + " " + fen);
            setPosition(fen, static_cast<Variant>(record["variant"].get<unsigned>()));
            for (const std::string move : record["moves"]) ASSERT_TRUE(playMoves(board, move));
            check(record);
        }
    }

    int freshEvaluation() {
        evalHashTable.Clear();
        pawnHashTable.Clear();
        theEvaluation.lazyMargin = 0;
        return Evaluate(board, -MateScore, MateScore);
    }

    static Json texts(const Move* first, const Move* last) {
        Json names = Json::array();
        for (; first != last; ++first) names.push_back(moveToCoordinate(*first));
        return names;
    }
};

TEST_F(GoldenPositions, StateAndKeys) {
    forEachRecord([this](const Json& record) {
        EXPECT_EQ(board.hashKey, keyOf(record["hashKey"]));
        EXPECT_EQ(board.pawnKey, keyOf(record["pawnKey"]));
        EXPECT_EQ(board.epSquare, record["epSquare"]);
        EXPECT_EQ(board.castling, record["castling"]);
        EXPECT_EQ(board.fiftyCount, record["fiftyCount"]);
        EXPECT_EQ(board.gamePly(), record["ply"]);
        EXPECT_EQ(board.inCheck(), record["inCheck"]);
        for (const Side side : {White, Black}) {
            const char* const name = side == White ? "white" : "black";
            EXPECT_EQ(board.material[side], record["material"][name]);
            EXPECT_EQ(board.phaseCount[side], record["phaseCount"][name]);
            EXPECT_EQ(board.pawnCount[whiteFirst(side)], record["pawnCount"][name]);
            EXPECT_EQ(board.pieceCount[whiteFirst(side)], record["pieceCount"][name]);
        }
        EXPECT_EQ(Json(board.kingStart), record["kingStart"]);
        EXPECT_EQ(Json(board.whiteRookStart), record["whiteRookStart"]);
        EXPECT_EQ(Json(board.blackRookStart), record["blackRookStart"]);
        expectConsistent(board);
    });
}

TEST_F(GoldenPositions, OrderedMoveLists) {
    forEachRecord([this](const Json& record) {
        MoveList list;
        generateCaptures(board, list);
        const Move* const quiet = list + board.moveCount;
        EXPECT_EQ(texts(list, quiet), record["captures"]);
        if (!record["nonCaptures"].is_null()) {
            generateNonCaptures(board, list);
            EXPECT_EQ(texts(quiet, list + board.moveCount), record["nonCaptures"]);
        }
        const std::vector<Move> moves = generatedMoves(board);
        if (!record["evasions"].is_null()) {
            EXPECT_EQ(texts(moves.data(), moves.data() + moves.size()), record["evasions"]);
        }
        EXPECT_EQ(Json(moves), record["moveWords"]);
    });
}

TEST_F(GoldenPositions, ExchangeValuesAndMoveText) {
    forEachRecord([this](const Json& record) {
        MoveList list;
        generateCaptures(board, list);
        std::set<Json> values;
        for (int i = 0; i < board.moveCount; ++i) {
            const Move move = list[i];
            const int value = board.see(opposite(board.sideToMove), moveTo(move), moveFrom(move),
                                        movePromotion(move));
            values.insert(Json::array({moveToCoordinate(move), value}));
        }
        EXPECT_EQ(values, std::set<Json>(record["see"].begin(), record["see"].end()));
        for (const Json& entry : record["san"]) {
            const Move move = parseMove(board, entry[0].get<std::string>());
            EXPECT_EQ(moveToSan(board, move), entry[1]) << entry[0];
        }
        EXPECT_EQ(legalMoves(board, generatedMoves(board)).size(), record["san"].size());
    });
}

TEST_F(GoldenPositions, EvaluationAndNullMove) {
    forEachRecord([this](const Json& record) {
        EXPECT_EQ(freshEvaluation(), record["evaluate"]);
        const Json& afterNull = record.value("afterNull", Json());
        if (afterNull.is_null()) return;
        const std::string before = snapshot(board);
        board.makeNullMove();
        EXPECT_EQ(board.hashKey, keyOf(afterNull["hashKey"]));
        EXPECT_EQ(board.pawnKey, keyOf(afterNull["pawnKey"]));
        EXPECT_EQ(freshEvaluation(), afterNull["evaluate"]);
        board.unmakeNullMove();
        EXPECT_TRUE(snapshot(board) == before);
    });
}

TEST_F(GoldenPositions, Perft) {
    forEachRecord([this](const Json& record) {
        const int depth = static_cast<int>(record["perft"].size());
        const PerftNodes nodes = countPerft(board, depth);
        EXPECT_EQ(Json(std::vector<std::uint32_t>(nodes.begin() + 1, nodes.begin() + 1 + depth)),
                  record["perft"]);
    });
}

}  // namespace
}  // namespace brivok
