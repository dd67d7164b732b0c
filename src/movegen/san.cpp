#include "movegen/san.h"

#include <algorithm>
#include <optional>

#include "board/coordinate.h"
#include "movegen/legal_moves.h"

namespace brivok {

namespace {

// Writing

/// What distinguishes a piece from another of its kind that can go to the same square: its file
/// letter, or its rank digit if the rival shares the file; empty without a rival. Only the first
/// rival in the list counts.
std::string disambiguation(Board& board, Move move) {
    const Square from = moveFrom(move);
    Move rival = NoMove;
    forEachLegalMove(
        board,
        [&](Move first) {
            rival = first;
            return false;
        },
        [&](Move other) {
            return moveTo(other) == moveTo(move) && moveFrom(other) != from &&
                   movePiece(other) == movePiece(move);
        });
    if (rival == NoMove) return "";
    const std::string name = squareName(from);
    return fileOf(moveFrom(rival)) == fileOf(from) ? name.substr(1) : name.substr(0, 1);
}

std::string pawnText(const Board& board, Move move) {
    const std::string to = squareName(moveTo(move));
    const bool captures = board.squares[moveTo(move)] != Empty || moveIsEnPassant(move);
    std::string text = captures ? squareName(moveFrom(move)).substr(0, 1) + "x" + to : to;
    if (movePromotion(move) != Empty) text += std::string("=") + PieceLetters[movePromotion(move)];
    return text;
}

std::string pieceText(Board& board, Move move) {
    std::string text(1, PieceLetters[movePiece(move)]);
    text += disambiguation(board, move);
    if (moveCapture(move) != Empty) text += "x";
    return text + squareName(moveTo(move));
}

/// "+" or "#" for the side to move, or empty.
std::string checkMark(Board& board) {
    if (!board.inCheck()) return "";
    bool canReply = false;
    forEachLegalMove(board, [&](Move) {
        canReply = true;
        return false;
    });
    return canReply ? "+" : "#";
}

// Reading

/// What a move must match; unset fields match anything.
struct Pattern {
    std::optional<Kind> kind;
    std::optional<int> fromFile, fromRow;
    std::optional<Square> to;
    std::optional<Kind> promotion;
    std::uint32_t castle = NoCastling;

    [[nodiscard]] bool fits(Move move) const {
        const Square from = moveFrom(move);
        if (castle != NoCastling) return moveCastle(move) == castle;
        if (moveTo(move) != to) return false;
        if (kind && kindOf(movePiece(move)) != kind) return false;
        if (fromFile && fileOf(from) != fromFile) return false;
        if (fromRow && rowOf(from) != fromRow) return false;
        // Castling written as squares gives both of them.
        if (moveCastle(move) != NoCastling && !(fromFile && fromRow)) return false;
        if (movePromotion(move) == Empty) return !promotion;
        return kindOf(movePromotion(move)) == promotion.value_or(Kind::Queen);
    }
};

constexpr bool isFile(char c) { return c >= 'a' && c <= 'h'; }
constexpr bool isRank(char c) { return c >= '1' && c <= '8'; }

/// Signs after a move that say nothing about it.
constexpr std::string_view Trailing = "+#=-/:@.!?";

std::string_view withoutTail(std::string_view text) {
    for (const std::string_view tail : {"e.p.", "e.p", "ep"}) {
        if (text.ends_with(tail)) text.remove_suffix(tail.size());
    }
    return text.substr(0, text.find_last_not_of(Trailing) + 1);
}

std::uint32_t castleOf(std::string_view text) {
    std::string_view shape = "O-O-O";
    if (text.size() == 3) shape = shape.substr(0, 3);
    const bool fits = std::ranges::equal(text, shape, [](char c, char wanted) {
        return c == wanted || (wanted == 'O' && (c == '0' || c == 'o'));
    });
    if (!fits) return NoCastling;
    return text.size() == 3 ? KingSide : QueenSide;
}

/// Cuts the promotion piece off the end of a pawn move. False if the letter is not a piece.
bool takePromotion(std::string_view& text, std::optional<Kind>& promotion) {
    if (text.ends_with(')')) text.remove_suffix(1);
    if (text.empty() || isRank(text.back())) return true;
    const char letter = text.back();
    promotion = kindOfLetter(letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter);
    text.remove_suffix(1);
    if (text.ends_with('=') || text.ends_with('(') || text.ends_with('/')) text.remove_suffix(1);
    return promotion.has_value();
}

std::optional<Pattern> parse(std::string_view text) {
    Pattern pattern;
    text = withoutTail(text);
    pattern.castle = castleOf(text);
    if (pattern.castle != NoCastling) return pattern;
    if (text.empty()) return std::nullopt;

    pattern.kind = kindOfLetter(text.front());
    if (pattern.kind) text.remove_prefix(1);
    if (!takePromotion(text, pattern.promotion)) return std::nullopt;

    // What remains is one or two squares or parts of them, with a sign between or before them.
    if (text.size() < 2 || !isRank(text.back()) || !isFile(text[text.size() - 2])) {
        return std::nullopt;
    }
    pattern.to = squareAt(text[text.size() - 2] - 'a', '8' - text.back());
    text.remove_suffix(2);
    bool capture = false;
    if (!text.empty() && std::string_view("x:-").find(text.back()) != std::string_view::npos) {
        capture = text.back() != '-';
        text.remove_suffix(1);
    }
    if (!text.empty() && isFile(text.front())) {
        pattern.fromFile = text.front() - 'a';
        text.remove_prefix(1);
    }
    if (!text.empty() && isRank(text.front())) {
        pattern.fromRow = '8' - text.front();
        text.remove_prefix(1);
    }
    if (!text.empty()) return std::nullopt;

    // Without a piece letter it is a pawn, unless the full from-square is given. A pawn that
    // captures nothing stays on its file.
    if (!pattern.kind && !(pattern.fromFile && pattern.fromRow)) pattern.kind = Kind::Pawn;
    if (pattern.kind == Kind::Pawn && !pattern.fromFile && !capture) {
        pattern.fromFile = fileOf(*pattern.to);
    }
    return pattern;
}

}  // namespace

std::string moveToSan(Board& board, Move move) {
    if (move == NoMove) return "xxxx";
    std::string text;
    if (moveCastle(move) != NoCastling) {
        text = moveCastle(move) == KingSide ? "O-O" : "O-O-O";
    } else if (isPawn(movePiece(move))) {
        text = pawnText(board, move);
    } else {
        text = pieceText(board, move);
    }
    board.makeMove(move);
    if (board.moverInCheck()) {
        text = "xxxx";
    } else {
        text += checkMark(board);
    }
    board.unmakeMove();
    return text;
}

SanReading readSan(Board& board, std::string_view text) {
    const std::optional<Pattern> pattern = parse(text);
    if (!pattern) return {NoMove, "no move text"};
    Move found = NoMove;
    int fitting = 0;
    forEachLegalMove(
        board,
        [&](Move move) {
            found = move;
            return ++fitting < 2;
        },
        [&](Move move) { return pattern->fits(move); });
    if (fitting == 1) return {found, ""};
    return {NoMove, fitting == 0 ? "illegal move" : "ambiguous move"};
}

}  // namespace brivok
