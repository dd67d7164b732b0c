#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"

namespace brivok {

enum class GameResult : std::uint8_t { WhiteWins, BlackWins, Draw, Unknown };

/// A move as written in the file, without glyphs. A word longer than any move is truncated.
struct PgnMove {
    static constexpr std::size_t MaxLength = 15;

    char letters[MaxLength];
    std::uint8_t length = 0;
    std::uint8_t annotation = 0;  ///< as in BookRecord
    std::uint32_t line = 0;

    [[nodiscard]] std::string_view text() const { return {letters, length}; }
};

/// What a book requires of one game in a file.
struct PgnGame {
    GameResult result = GameResult::Unknown;
    bool otherStart = false;  ///< a non-standard start position or variant
    std::optional<int> whiteElo, blackElo;
    std::vector<PgnMove> moves;  ///< main line, up to the reader's limit
    std::size_t line = 0;        ///< where the game starts
    std::string fault;           ///< why the text is unusable; empty if it is fine
    std::size_t faultLine = 0;
};

/// Reads the games of a PGN file one by one (S. Edwards, "Portable Game Notation", 1994) and copes
/// with files as they are: tags in any order, games without tags or without a final result, both
/// kinds of comments, nested variations, NAGs and written glyphs, escape lines, evaluation signs,
/// any byte. No text ends the reading early: after an unterminated comment or variation it resumes
/// at the next game.
class PgnReader {
public:
    /// Keeps the first `maxPlies` moves of each game and skips the rest.
    PgnReader(ByteSource& input, std::size_t maxPlies) : source(input), plyLimit(maxPlies) {}

    /// Reads the next game into `readInto`, reusing its memory. False at the end.
    [[nodiscard]] bool next(PgnGame& readInto);

private:
    void readTag();
    std::string_view readTagValue();
    void skipComment();
    void skipVariation();
    void readNumericGlyph();
    void readGlyph();
    void annotateLastMove(std::uint32_t annotation);
    /// Reads a word: a move, a move number, a result or a remark. True if it ends the game.
    [[nodiscard]] bool readWord();
    void keepMove();
    [[nodiscard]] bool tagBegins();
    [[nodiscard]] bool promotionFollows();
    void finish();
    void setFault(std::string_view text, std::size_t line);

    ByteSource& source;
    std::size_t plyLimit;
    PgnGame* game = nullptr;
    bool hasTags = false;
    bool hasMoves = false;
    bool setUp = false;          ///< a tag announces a position
    bool standardStart = false;  ///< and another tag gives the standard one
    bool freshLine = true;       ///< only blanks so far on this line
    bool lastMoveKept = false;   ///< glyphs apply to the last move of `game`
    GameResult tagResult = GameResult::Unknown;
    GameResult endResult = GameResult::Unknown;
    PgnMove word{};
    std::string glyph, tagName, tagValue;
};

}  // namespace brivok
