#include <algorithm>
#include <cstdlib>

#include "board/piece_values.h"
#include "search/searcher.h"

namespace brivok {

namespace {

/// Limit of the main search; quiescence may go deeper.
constexpr int MaxMainPly = 40;

/// Above this depth a null move is reduced more, if the side to move's phase exceeds DeepNullPhase.
constexpr int DeepNullDepth = 6 * OnePly;
constexpr int DeepNullPhase = 8;
/// With a phase this low, a null move is only tried below BareNullDepth.
constexpr int BarePhase = 5;
constexpr int BareNullDepth = 7 * OnePly;

/// Internal iterative deepening: the least depth, and by how much the depth is reduced.
constexpr int IidDepth = 3 * OnePly;
constexpr int IidReduction = 2 * OnePly;
/// Its searches may deepen internally themselves. This limits the nesting, far beyond real depths.
constexpr int MaxIidDepth = 512 * OnePly;

/// Futility pruning and razoring, by material balance alone.
constexpr int PruningPly = 5;
constexpr int FutilityDepth = 3 * OnePly;
constexpr int FutilityMargin = 301;
constexpr int RazorDepth = 5 * OnePly;
constexpr int RazorMargin = 901;

/// In analysis the listener is told whenever these bits of the node count are all zero.
constexpr std::uint32_t ManyNodesMask = (1U << 20U) - 1;

}  // namespace

bool Searcher::isRepetitionDraw(int searchPly) const {
    const Board::Repetitions found = board->countRepetitions(searchPly);
    return found.inTree + found.inGame >= (searchPly >= 3 ? 2 : 3);
}

/// Always next to the root; further on only if the side to move captured or promoted with its
/// previous move.
bool Searcher::mayProbeTablebases(int searchPly) const {
    if (searchPly < 3) return true;
    const Move own = board->undo[board->ply - 2].move;
    return moveCapture(own) != Empty || movePromotion(own) != Empty;
}

/// Among tablebase draws, the search prefers those with more material.
int Searcher::tableDrawScore() const {
    const Side us = board->sideToMove;
    const int balance = board->material[us] - board->material[opposite(us)];
    return balance > 0 ? 1 : balance < 0 ? -1 : 0;
}

bool Searcher::probeTablebases(int searchPly, int& score) const {
    if (searchPly > iteration || board->totalMen() > tablebases.tbMaxMen) return false;
    if (!mayProbeTablebases(searchPly) || !TablebaseProbe(*board, searchPly, score)) return false;
    if (score == 0) score = tableDrawScore();
    return true;
}

TranspositionTable::Probe Searcher::probeTable(int searchPly, int beta, int depth,
                                               TranspositionTable::Found& found, bool& allowNull) {
    ++stats.ttProbes;
    const auto result =
        transpositionTable.probe(board->hashKey, searchPly, beta, depth, found, allowNull);
    if (result != TranspositionTable::Probe::None) ++stats.ttHits;
    return result;
}

void Searcher::storeInTable(int searchPly, int score, Bound bound, Move move, bool mateThreat,
                            int depth) {
    ++stats.ttStores;
    transpositionTable.store(board->hashKey, searchPly, score, bound, move, mateThreat, depth);
}

bool Searcher::mayTryNullMove(const Node& node, bool allowNull) const {
    // A null move hides mates by zugzwang.
    return settings.useNullMove && mateIn == 0 && allowNull && !node.inCheck && !node.mateThreat &&
           (board->phaseCount[board->sideToMove] > BarePhase || node.depth < BareNullDepth);
}

/// Null move (Beal 1989, Donninger 1993), without verification. True if the node is finished,
/// including by a stop. Otherwise it may have set `mateThreat`.
bool Searcher::nullMoveCuts(Node& node, int& score) {
    Board& b = *board;
    const bool deep = node.depth > DeepNullDepth && b.phaseCount[b.sideToMove] > DeepNullPhase;
    const int reduction = deep ? settings.nullMoveMax : settings.nullMoveMin;
    ++(deep ? stats.nullTriesMax : stats.nullTriesMin);
    b.makeNullMove();
    transpositionTable.prefetch(b.hashKey);
    evaluation.evalHash.prefetch(b.hashKey);
    evaluation.pawnHash.prefetch(b.pawnKey);
    const int nullDepth = node.depth - reduction - OnePly;
    const int childPly = node.searchPly + 1;
    score = nullDepth >= OnePly
                ? -search(-node.beta, 1 - node.beta, nullDepth, childPly, false, false)
                : -quiesce(-node.beta, 1 - node.beta, childPly, true);
    b.unmakeNullMove();
    if (stopSearch) {
        score = 0;
        return true;
    }
    if (score >= node.beta) {
        ++(reduction == settings.nullMoveMax ? stats.nullCutsMax : stats.nullCutsMin);
        storeInTable(node.searchPly, score, BoundLower, NoMove, false, node.depth);
        return true;
    }
    if (score < -MateBound) node.mateThreat = true;
    return false;
}

/// Internal iterative deepening: a shallower search of the node finds the first move to try. The
/// caller checks whether it was stopped.
Move Searcher::deepenInternally(int alpha, const Node& node) {
    const int depth = node.depth - IidReduction;
    ++stats.iidSearches;
    const int score = search(alpha, node.beta, depth, node.searchPly, true, false);
    if (score <= alpha && !stopSearch) {
        ++stats.iidSearches;
        (void)search(-MateScore, node.beta, depth, node.searchPly, true, false);
    }
    return board->pvTable[node.searchPly][node.searchPly];
}

int Searcher::search(int alpha, int beta, int depth, int searchPly, bool allowNull,
                     bool recaptureExtended) {
    // 1. Node entry
    Board& b = *board;
    ++stats.nodes;
    if (pollSearch()) return 0;
    b.inCheckAtPly[searchPly + 1] = 0;
    b.pvLength[searchPly] = searchPly;
    if (searchPly >= MaxMainPly) return alpha;
    if (nodeLimit != 0 && stats.nodes >= nodeLimit && iteration >= 2) {
        stopSearch = true;
        return 0;
    }
    if ((stats.nodes & ManyNodesMask) == 0) tellManyNodes();

    // 2. Draws and endgame tables
    if (isRepetitionDraw(searchPly)) return DrawScore;
    if (int score = 0; probeTablebases(searchPly, score)) return score;
    if (b.isInsufficientMaterial()) return DrawScore;

    // 3. Transposition table; cuts off at every kind of node
    TranspositionTable::Found found;
    switch (probeTable(searchPly, beta, depth, found, allowNull)) {
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
    Node node{.beta = beta,
              .depth = depth,
              .searchPly = searchPly,
              .inCheck = b.inCheckAtPly[searchPly] != 0,
              .mateThreat = found.mateThreat,
              .recaptureExtended = recaptureExtended};

    // 4. Null move
    if (mayTryNullMove(node, allowNull)) {
        if (int score = 0; nullMoveCuts(node, score)) return score;
    }

    // 5. Internal iterative deepening, only on the last principal variation
    Move hashMove = found.move;
    if (settings.useIid && hashMove == NoMove && followPv && depth >= IidDepth &&
        depth <= MaxIidDepth && allowNull) {
        hashMove = deepenInternally(alpha, node);
        if (stopSearch) return 0;
    }

    // 6. Move list
    OrderedMoves list;
    if (node.inCheck) {
        generateEvasions(b, list.moves);
    } else {
        generateMoves(b, list.moves);
    }
    list.count = b.moveCount;
    scoreMoves(list, hashMove, searchPly);
    node.onlyReply = node.inCheck && list.count == 1;
    // After a null move this is whatever the undo record last held.
    node.prev = b.undo[b.ply - 1].move;

    // 7. Move loop
    const int alphaAtEntry = alpha;
    Move bestMove = NoMove;
    int movesDone = 0;
    for (Move m = list.next(b); m != NoMove; m = list.next(b)) {
        const std::uint64_t likelyKey = b.likelyKeyAfter(m);
        transpositionTable.prefetch(likelyKey);
        evaluation.evalHash.prefetch(likelyKey);
        b.makeMove(m);
        evaluation.pawnHash.prefetch(b.pawnKey);
        if (!node.inCheck && b.moverInCheck()) {
            ++stats.nodes;
            b.unmakeMove();
            continue;
        }
        const int score = searchMove(m, alpha, node, movesDone);
        ++movesDone;
        b.unmakeMove();
        if (stopSearch) return 0;

        if (score <= alpha) continue;
        if (score >= beta) {
            if (moveCapture(m) == Empty) {
                b.updateHistory(m, depth);
                b.storeKiller(m, searchPly);
            }
            storeInTable(searchPly, score, BoundLower, m, node.mateThreat, depth);
            if (movesDone == 1) ++stats.failHighsFirst;
            ++stats.failHighs;
            return score;
        }
        alpha = score;
        bestMove = m;
        b.updatePv(searchPly, m);
    }

    // 8. Mate, stalemate, and draws that require a legal move
    if (movesDone == 0) return node.inCheck ? searchPly - MateScore : DrawScore;
    if (drawnBy<GameOutcome::FiftyMoves, GameOutcome::InsufficientMaterial>(b) !=
        GameOutcome::None) {
        return DrawScore;
    }
    storeInTable(searchPly, alpha, alpha == alphaAtEntry ? BoundUpper : BoundExact, bestMove,
                 node.mateThreat, depth);
    return alpha;
}

/// Searches the move just made: the first of a node with the full window; the others, after
/// pruning, with a null window and, if they rise above alpha, again with the full one.
int Searcher::searchMove(Move m, int alpha, const Node& node, int movesDone) {
    bool recaptured = false;
    const int extension = extensionOf(m, node, recaptured);
    const int childPly = node.searchPly + 1;
    int newDepth = node.depth + extension - OnePly;
    if (movesDone == 0) return searchChild(alpha, node.beta, newDepth, childPly, recaptured);

    const Pruning pruning = pruningOf(alpha, node, extension);
    if (pruning == Pruning::OnePlyLess) newDepth -= OnePly;
    const int firstDepth = pruning == Pruning::ToQuiescence ? 0 : newDepth;
    const int score = searchChild(alpha, alpha + 1, firstDepth, childPly, recaptured);
    if (score <= alpha || score >= node.beta || stopSearch) return score;
    return searchChild(alpha, node.beta, newDepth, childPly, recaptured);
}

Searcher::Pruning Searcher::pruningOf(int alpha, const Node& node, int extension) {
    if (!settings.useFutility || extension != 0 || std::abs(alpha) >= MateBound ||
        node.searchPly < PruningPly || node.inCheck) {
        return Pruning::None;
    }
    const Side them = board->sideToMove;
    const int balance = board->material[opposite(them)] - board->material[them];
    if (node.depth < FutilityDepth) {
        if (balance + FutilityMargin > alpha) return Pruning::None;
        ++stats.futilityCuts;
        return Pruning::ToQuiescence;
    }
    if (node.depth > RazorDepth || balance + RazorMargin > alpha) return Pruning::None;
    ++stats.razorReductions;
    return Pruning::OnePlyLess;
}

int Searcher::checkExtensionOf(int searchPly) {
    Board& b = *board;
    b.inCheckAtPly[searchPly + 1] = b.inCheck();
    if (b.inCheckAtPly[searchPly + 1] == 0) return 0;
    ++stats.extCheck;
    return settings.checkExtension;
}

int Searcher::pawnPushExtensionOf(Move m) {
    const Piece piece = board->squares[moveTo(m)];
    const int row = rowOf(moveTo(m));
    if ((piece != WhitePawn || row != 1) && (piece != BlackPawn || row != 6)) return 0;
    ++stats.extPawnPush;
    return settings.pawnPushExtension;
}

int Searcher::extensionOf(Move m, const Node& node, bool& recaptured) {
    const Board& b = *board;
    int extension = checkExtensionOf(node.searchPly);
    if (node.mateThreat) {
        extension += settings.mateThreatExtension;
        ++stats.extMateThreat;
    }
    const Piece captured = moveCapture(m);
    const bool recaptures = extension == 0 && !node.recaptureExtended && captured != Empty &&
                            moveTo(m) == moveTo(node.prev) &&
                            pieceValue[captured] == pieceValue[moveCapture(node.prev)];
    recaptured = recaptures || movePromotion(m) != Empty;
    if (recaptured) {
        extension += settings.recaptureExtension;
        ++stats.extRecapture;
    }
    extension += pawnPushExtensionOf(m);
    if (captured != Empty && !isPawn(captured) && b.pieceCount[0] + b.pieceCount[1] == 2) {
        extension += settings.endgameCaptureExtension;
        ++stats.extEndgameCapture;
    }
    if (node.onlyReply) {
        extension += settings.oneReplyExtension;
        ++stats.extOneReply;
    }
    return limitExtension(extension, node.searchPly);
}

int Searcher::limitExtension(int extension, int searchPly) const {
    extension = std::min(extension, OnePly);
    if (searchPly <= 2 * iteration) return extension;
    if (searchPly > 4 * iteration) return 0;
    return (4 * iteration - searchPly) * extension / (2 * iteration);
}

void Searcher::tellManyNodes() {
    if (searchMode == SearchMode::Analysing && iteration >= listener->firstToldIteration) {
        listener->onManyNodes(progress());
    }
}

}  // namespace brivok
