#include <algorithm>
#include <cstdlib>

#include "board/piece_values.h"
#include "egtb/tablebase_probe.h"
#include "hash/eval_hash.h"
#include "hash/search_stats.h"
#include "search/searcher.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

/// The main search stops here; quiescence goes on a while.
constexpr int MaxMainPly = 40;

/// A null move reduces more above this depth, while the side to move has more than the phase.
constexpr int DeepNullDepth = 6 * OnePly;
constexpr int DeepNullPhase = 8;
/// With hardly a piece left it is tried below this depth only.
constexpr int BarePhase = 5;
constexpr int BareNullDepth = 7 * OnePly;

/// Internal iterative deepening: from this depth, by this much less.
constexpr int IidDepth = 3 * OnePly;
constexpr int IidReduction = 2 * OnePly;
/// Each of its searches may begin with another: this bounds the nesting, far beyond depths in use.
constexpr int MaxIidDepth = 512 * OnePly;

/// Futility and razoring, on the material balance alone.
constexpr int PruningPly = 5;
constexpr int FutilityDepth = 3 * OnePly;
constexpr int FutilityMargin = 301;
constexpr int RazorDepth = 5 * OnePly;
constexpr int RazorMargin = 901;

}  // namespace

int Searcher::searchChild(int alpha, int beta, int newDepth, int childPly, bool recaptured) {
    return newDepth >= OnePly ? -search(-beta, -alpha, newDepth, childPly, true, recaptured)
                              : -quiesce(-beta, -alpha, childPly, true);
}

bool Searcher::isRepetitionDraw(int searchPly) const {
    const Board::Repetitions found = board->countRepetitions(searchPly);
    return found.inTree + found.inGame >= (searchPly >= 3 ? 2 : 3);
}

/// Next to the root always, further on only when the side to move captured or promoted with the
/// last move of its own.
bool Searcher::mayProbeTablebases(int searchPly) const {
    if (searchPly < 3) return true;
    const Move own = board->undo[board->ply - 2].move;
    return moveCapture(own) != Empty || movePromotion(own) != Empty;
}

/// Of draws by the tables the search prefers those in which it has more material.
int Searcher::tableDrawScore() const {
    const Side us = board->sideToMove;
    const int balance = board->material[us] - board->material[opposite(us)];
    return balance > 0 ? 1 : balance < 0 ? -1 : 0;
}

bool Searcher::isSeventhRankPush(Move m) const {
    const Piece piece = board->squares[moveTo(m)];
    return (piece == WhitePawn && rowOf(moveTo(m)) == 1) ||
           (piece == BlackPawn && rowOf(moveTo(m)) == 6);
}

int Searcher::limitExtension(int extension, int searchPly) const {
    extension = std::min(extension, OnePly);
    if (searchPly <= 2 * iteration) return extension;
    if (searchPly > 4 * iteration) return 0;
    return (4 * iteration - searchPly) * extension / (2 * iteration);
}

int Searcher::extensionOf(Move m, Move prev, const NodeFacts& node, int searchPly,
                          bool& recaptured) {
    Board& b = *board;
    int extension = 0;
    b.inCheckAtPly[searchPly + 1] = b.inCheck();
    if (b.inCheckAtPly[searchPly + 1] != 0) {
        extension += settings.checkExtension;
        ++searchStats.extCheck;
    }
    if (node.mateThreat) {
        extension += settings.mateThreatExtension;
        ++searchStats.extMateThreat;
    }
    const Piece captured = moveCapture(m);
    const bool recaptures = extension == 0 && !node.recaptureExtended && captured != Empty &&
                            moveTo(m) == moveTo(prev) &&
                            pieceValue[captured] == pieceValue[moveCapture(prev)];
    recaptured = recaptures || movePromotion(m) != Empty;
    if (recaptured) {
        extension += settings.recaptureExtension;
        ++searchStats.extRecapture;
    }
    if (isSeventhRankPush(m)) {
        extension += settings.pawnPushExtension;
        ++searchStats.extPawnPush;
    }
    if (captured != Empty && !isPawn(captured) && b.pieceCount[0] + b.pieceCount[1] == 2) {
        extension += settings.endgameCaptureExtension;
        ++searchStats.extEndgameCapture;
    }
    if (node.onlyReply) {
        extension += settings.oneReplyExtension;
        ++searchStats.extOneReply;
    }
    return limitExtension(extension, searchPly);
}

int Searcher::search(int alpha, int beta, int depth, int searchPly, bool allowNull,
                     bool recaptureExtended) {
    Board& b = *board;

    // Node entry
    ++searchStats.nodes;
    if (pollSearch()) return 0;
    b.inCheckAtPly[searchPly + 1] = 0;
    b.pvLength[searchPly] = searchPly;
    const bool nodeInCheck = b.inCheckAtPly[searchPly] != 0;
    if (searchPly >= MaxMainPly) return alpha;
    if (nodeLimit != 0 && searchStats.nodes >= nodeLimit && iteration >= 2) {
        stopSearch = true;
        return 0;
    }
    printPeriodic();

    // Draws
    if (isRepetitionDraw(searchPly)) return DrawScore;

    // Endgame tables
    if (searchPly <= iteration && b.totalMen() <= tablebases.tbMaxMen) {
        if (int score = 0; mayProbeTablebases(searchPly) && TablebaseProbe(b, searchPly, score)) {
            return score != 0 ? score : tableDrawScore();
        }
    }

    if (b.totalMen() < 4 && b.isInsufficientMaterial()) return DrawScore;

    // Transposition table; it cuts off at every node
    TranspositionTable::Found found;
    switch (transpositionTable.probe(b.hashKey, searchPly, beta, depth, found, allowNull)) {
        case TranspositionTable::Probe::Upper:
            if (found.score <= alpha) return found.score;
            break;
        case TranspositionTable::Probe::Lower:
            if (found.score >= beta) return found.score;
            break;
        case TranspositionTable::Probe::Exact: return found.score;
        case TranspositionTable::Probe::None:
        case TranspositionTable::Probe::TooShallow: break;
    }
    Move hashMove = found.move;
    bool mateThreat = found.mateThreat;
    const int alphaAtEntry = alpha;

    // Null move (Beal 1989, Donninger 1993), without verification
    const int phase = b.phaseCount[b.sideToMove];
    if (settings.useNullMove && allowNull && !nodeInCheck && !mateThreat &&
        (phase > BarePhase || depth < BareNullDepth)) {
        const bool deep = depth > DeepNullDepth && phase > DeepNullPhase;
        const int reduction = deep ? settings.nullMoveMax : settings.nullMoveMin;
        ++(deep ? searchStats.nullTriesMax : searchStats.nullTriesMin);
        b.makeNullMove();
        const int nullDepth = depth - reduction - OnePly;
        const int score = nullDepth >= OnePly
                              ? -search(-beta, 1 - beta, nullDepth, searchPly + 1, false, false)
                              : -quiesce(-beta, 1 - beta, searchPly + 1, true);
        b.unmakeNullMove();
        if (stopSearch) return 0;
        if (score >= beta) {
            ++(reduction == settings.nullMoveMax ? searchStats.nullCutsMax
                                                 : searchStats.nullCutsMin);
            transpositionTable.store(b.hashKey, searchPly, score, BoundLower, NoMove, false, depth);
            return score;
        }
        if (score < -MateBound) mateThreat = true;
    }

    // Internal iterative deepening, on the last principal variation only
    if (settings.useIid && hashMove == NoMove && followPv && depth >= IidDepth &&
        depth <= MaxIidDepth && allowNull) {
        ++searchStats.iidSearches;
        const int score = search(alpha, beta, depth - IidReduction, searchPly, true, false);
        if (stopSearch) return 0;
        if (score <= alpha) {
            ++searchStats.iidSearches;
            (void)search(-MateScore, beta, depth - IidReduction, searchPly, true, false);
            if (stopSearch) return 0;
        }
        hashMove = b.pvTable[searchPly][searchPly];
    }

    // Move list
    Frame frame;
    if (nodeInCheck) {
        generateEvasions(b, frame.moves);
    } else {
        generateMoves(b, frame.moves);
    }
    frame.count = b.moveCount;
    scoreMoves(frame, hashMove, searchPly);

    // The move that led here. Below a null move that is whatever the undo record last held.
    const Move prev = b.undo[b.ply - 1].move;

    // Move loop
    Move bestMove = NoMove;
    int movesDone = 0;
    int i = 0;
    for (Move m = pickMove(frame, i); m != NoMove; m = pickMove(frame, i)) {
        b.makeMove(m);
        transpositionTable.prefetch(b.hashKey);
        evalHashTable.prefetch(b.hashKey);
        if (!nodeInCheck && b.moverInCheck()) {
            ++searchStats.nodes;
            b.unmakeMove();
            continue;
        }
        bool recaptured = false;
        const bool onlyReply = movesDone == 0 && nodeInCheck && frame.count == 1;
        int extension =
            extensionOf(m, prev, {mateThreat, recaptureExtended, onlyReply}, searchPly, recaptured);
        int score = 0;
        if (movesDone == 0) {
            score = searchChild(alpha, beta, depth + extension - OnePly, searchPly + 1, recaptured);
        } else {
            bool toQuiescence = false;
            if (settings.useFutility && extension == 0 && std::abs(alpha) < MateBound &&
                searchPly >= PruningPly && !nodeInCheck) {
                const int balance = b.material[opposite(b.sideToMove)] - b.material[b.sideToMove];
                if (depth < FutilityDepth) {
                    if (balance + FutilityMargin <= alpha) {
                        toQuiescence = true;
                        ++searchStats.futilityCuts;
                    }
                } else if (depth <= RazorDepth && balance + RazorMargin <= alpha) {
                    extension = -OnePly;
                    ++searchStats.razorReductions;
                }
            }
            const int newDepth = depth + extension - OnePly;
            score = searchChild(alpha, alpha + 1, toQuiescence ? 0 : newDepth, searchPly + 1,
                                recaptured);
            if (score > alpha && score < beta && !stopSearch) {
                score = searchChild(alpha, beta, newDepth, searchPly + 1, recaptured);
            }
        }
        ++movesDone;
        b.unmakeMove();
        if (stopSearch) return 0;

        if (score <= alpha) continue;
        if (score >= beta) {
            if (moveCapture(m) == Empty) {
                b.updateHistory(m, depth);
                b.storeKiller(m, searchPly);
            }
            transpositionTable.store(b.hashKey, searchPly, score, BoundLower, m, mateThreat, depth);
            if (movesDone == 1) ++searchStats.failHighsFirst;
            ++searchStats.failHighs;
            return score;
        }
        alpha = score;
        bestMove = m;
        b.updatePv(searchPly, m);
    }

    // Mate, stalemate and the draws that need a move to be possible
    if (movesDone == 0) return nodeInCheck ? searchPly - MateScore : DrawScore;
    if (b.fiftyCount > FiftyMoveLimit) return DrawScore;
    if (b.totalMen() < 4 && b.isInsufficientMaterial()) return DrawScore;

    transpositionTable.store(b.hashKey, searchPly, alpha,
                             alpha == alphaAtEntry ? BoundUpper : BoundExact, bestMove, mateThreat,
                             depth);
    return alpha;
}

}  // namespace brivok
