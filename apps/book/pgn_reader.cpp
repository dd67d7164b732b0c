#include "pgn_reader.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "annotation.h"

namespace brivok {

namespace {

/// First tag of a game: reading resumes there after an unterminated comment or variation.
constexpr std::string_view FirstTag = "[Event \"";

/// Placement, side to move and castling rights of the standard start position.
constexpr std::string_view StandardStart = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq ";

constexpr std::size_t MaxTagLength = 255;
constexpr std::size_t MaxGlyphLength = 3;

bool isDigit(int c) { return c >= '0' && c <= '9'; }
bool isLetter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isLineEnd(int c) { return c == '\n' || c == '\r' || c == ByteSource::End; }
bool isBlank(int c) { return c == ' ' || c == '\t' || isLineEnd(c); }

/// Bytes that can continue a word: those of moves, results and signs attached to moves.
constexpr auto WordBytes = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789-=:/+#.@")) {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}();

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, [](char c, char lower) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
    });
}

std::optional<GameResult> resultOfText(std::string_view text) {
    if (text == "1-0") return GameResult::WhiteWins;
    if (text == "0-1") return GameResult::BlackWins;
    if (text == "1/2-1/2" || text == "1/2") return GameResult::Draw;
    return std::nullopt;
}

std::optional<int> ratingOfText(std::string_view text) {
    int rating = 0;
    std::from_chars(text.data(), text.data() + text.size(), rating);
    return rating > 0 ? std::optional(rating) : std::nullopt;
}

bool isNormalChess(std::string_view variant) {
    return std::ranges::any_of(
        std::array<std::string_view, 7>{"", "-", "?", "standard", "normal", "chess",
                                        "from position"},
        [variant](std::string_view name) { return equalsIgnoringCase(variant, name); });
}

/// Words among the moves that mean nothing: a novelty, a diagram, a separate "e.p.".
bool isRemark(std::string_view text) {
    return text == "N" || text == "D" || text == "ep" || text == "e.p";
}

}  // namespace

bool PgnReader::next(PgnGame& readInto) {
    game = &readInto;
    game->result = tagResult = endResult = GameResult::Unknown;
    game->otherStart = false;
    game->whiteElo = game->blackElo = std::nullopt;
    game->moves.clear();
    game->fault.clear();
    hasTags = hasMoves = lastMoveKept = setUp = standardStart = false;

    for (;;) {
        const int c = source.peek();
        if (c == ByteSource::End) {
            finish();
            return hasTags || hasMoves;
        }
        if (source.atLineStart()) {
            freshLine = true;
            if (c == '%') {
                source.skipLine();
                continue;
            }
        }
        switch (c) {
            case ' ':
            case '\t':
            case '\n':
            case '\r': source.take(); continue;
            case '[':
                if (!tagBegins()) {
                    source.take();
                } else if (hasMoves || (hasTags && source.startsWith(FirstTag))) {
                    finish();
                    return true;
                } else {
                    readTag();
                }
                break;
            case '{': skipComment(); break;
            case ';': source.skipLine(); break;
            case '(': skipVariation(); break;
            case '$': readNumericGlyph(); break;
            case '!':
            case '?': readGlyph(); break;
            case '*':
                source.take();
                if (!hasTags && !hasMoves) break;
                finish();
                return true;
            default:
                if (isDigit(c) || isLetter(c) || (c == '-' && source.peekAt(1) == '-')) {
                    if (readWord()) {
                        finish();
                        return true;
                    }
                } else {
                    source.take();
                    if (c >= 0x80) continue;  // like a blank, in any alphabet
                }
        }
        freshLine = false;
    }
}

/// After the moves of a game, a bracket counts only at the start of a line and if a name follows
/// it: comments contain other brackets.
bool PgnReader::tagBegins() {
    return source.peek() == '[' && isLetter(source.peekAt(1)) && (freshLine || !hasMoves);
}

void PgnReader::readTag() {
    if (!hasTags) game->line = source.line();
    hasTags = true;
    source.take();
    tagName.clear();
    while (isLetter(source.peek()) || isDigit(source.peek()) || source.peek() == '_') {
        const int c = source.take();
        if (tagName.size() < MaxTagLength) tagName += static_cast<char>(c);
    }
    const std::string_view value = readTagValue();
    if (equalsIgnoringCase(tagName, "result")) {
        tagResult = resultOfText(value).value_or(GameResult::Unknown);
    } else if (equalsIgnoringCase(tagName, "fen")) {
        standardStart = value.starts_with(StandardStart);
        setUp |= !value.empty();
    } else if (equalsIgnoringCase(tagName, "setup")) {
        setUp |= value == "1";
    } else if (equalsIgnoringCase(tagName, "variant")) {
        game->otherStart |= !isNormalChess(value);
    } else if (equalsIgnoringCase(tagName, "whiteelo")) {
        game->whiteElo = ratingOfText(value);
    } else if (equalsIgnoringCase(tagName, "blackelo")) {
        game->blackElo = ratingOfText(value);
    }
}

std::string_view PgnReader::readTagValue() {
    tagValue.clear();
    while (isBlank(source.peek()) && !isLineEnd(source.peek())) source.take();
    const bool quoted = source.peek() == '"';
    if (quoted) source.take();
    while (!isLineEnd(source.peek()) && source.peek() != (quoted ? '"' : ']')) {
        int c = source.take();
        if (c == '\\' && !isLineEnd(source.peek())) c = source.take();
        if (tagValue.size() < MaxTagLength) tagValue += static_cast<char>(c);
    }
    while (!isLineEnd(source.peek()) && source.take() != ']') {
    }
    return tagValue;
}

void PgnReader::skipComment() {
    const std::size_t line = source.line();
    source.take();
    if (!source.skipPast('}', FirstTag)) setFault("unterminated comment", line);
}

void PgnReader::skipVariation() {
    const std::size_t line = source.line();
    source.take();
    for (int depth = 1; depth > 0;) {
        const int c = source.peek();
        const bool lineStart = source.atLineStart();
        if (c == ByteSource::End || (lineStart && c == '[' && isLetter(source.peekAt(1)))) {
            setFault("unterminated variation", line);
            return;
        }
        if (c == '{') {
            skipComment();
        } else if (c == ';' || (c == '%' && lineStart)) {
            source.skipLine();
        } else {
            source.take();
            depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        }
    }
}

void PgnReader::readNumericGlyph() {
    source.take();
    unsigned number = 0;
    constexpr unsigned Cut = 1000;  // more than any glyph number
    while (isDigit(source.peek())) {
        number = std::min(number * 10 + static_cast<unsigned>(source.take() - '0'), Cut);
    }
    annotateLastMove(annotationOfNumber(number));
}

void PgnReader::readGlyph() {
    glyph.clear();
    while (source.peek() == '!' || source.peek() == '?') {
        const int c = source.take();
        if (glyph.size() < MaxGlyphLength) glyph += static_cast<char>(c);
    }
    annotateLastMove(annotationOfGlyph(glyph));
}

/// The first annotation of a move wins.
void PgnReader::annotateLastMove(std::uint32_t annotation) {
    if (!lastMoveKept || game->moves.back().annotation != NoAnnotation) return;
    game->moves.back().annotation = static_cast<std::uint8_t>(annotation);
}

bool PgnReader::readWord() {
    if (!hasTags && !hasMoves) game->line = source.line();
    word.length = 0;
    word.annotation = NoAnnotation;
    word.line = static_cast<std::uint32_t>(source.line());
    const bool startsWithDigit = isDigit(source.peek());
    bool number = startsWithDigit;
    std::size_t left = 0;  // left to read of a promotion in parentheses
    for (;; source.take()) {
        const int c = source.peek();
        if (c == '(' && promotionFollows()) left = 3;
        if (left > 0) {
            --left;
        } else if (c == ByteSource::End || !WordBytes[static_cast<std::size_t>(c)]) {
            break;
        }
        // A move number may be attached to the move.
        if (number && (c == '.' || isLetter(c))) return false;
        number = number && isDigit(c);
        if (word.length < PgnMove::MaxLength) word.letters[word.length++] = static_cast<char>(c);
    }
    while (word.length > 0 && word.letters[word.length - 1] == '.') --word.length;
    const std::string_view text = word.text();
    if (startsWithDigit) {
        if (const std::optional<GameResult> result = resultOfText(text)) {
            endResult = *result;
            return hasTags || hasMoves;
        }
        // Numbers, clock times and the like, but "0-0" is a move.
        if (!text.starts_with("0-0")) return false;
    }
    if (!isRemark(text)) keepMove();
    return false;
}

bool PgnReader::promotionFollows() {
    if (word.length < 2) return false;
    const char rank = word.letters[word.length - 1];
    return (rank == '1' || rank == '8') && isLetter(source.peekAt(1)) && source.peekAt(2) == ')';
}

void PgnReader::keepMove() {
    hasMoves = true;
    lastMoveKept = game->moves.size() < plyLimit;
    if (lastMoveKept) game->moves.push_back(word);
}

void PgnReader::setFault(std::string_view text, std::size_t line) {
    if (!hasTags && !hasMoves) game->line = line;
    hasMoves = true;
    if (!game->fault.empty()) return;
    game->fault = text;
    game->faultLine = line;
}

void PgnReader::finish() {
    game->otherStart |= setUp && !standardStart;
    if (tagResult == GameResult::Unknown || endResult == tagResult) {
        game->result = endResult;
    } else if (endResult == GameResult::Unknown) {
        game->result = tagResult;
    } else {
        setFault("the Result tag and the end of the moves disagree", source.line());
    }
}

}  // namespace brivok
