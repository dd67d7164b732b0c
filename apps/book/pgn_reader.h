#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"

namespace brivok {

enum class GameResult : std::uint8_t { WhiteWins, BlackWins, Draw, Unknown };

/// A move as the file writes it, without its glyphs. A word that is longer than any move is cut.
struct PgnMove {
    static constexpr std::size_t MaxLength = 15;

    char letters[MaxLength];
    std::uint8_t length = 0;
    std::uint8_t annotation = 0;  ///< value of a book record
    std::uint32_t line = 0;

    [[nodiscard]] std::string_view text() const { return {letters, length}; }
};

/// One game of a file, as far as a book needs it.
struct PgnGame {
    GameResult result = GameResult::Unknown;
    bool otherStart = false;  ///< another first position, or other rules than those of chess
    std::optional<int> whiteElo, blackElo;
    std::vector<PgnMove> moves;  ///< of the main line, as many as the reader was asked for
    std::size_t line = 0;        ///< where the game begins
    std::string fault;           ///< why the text cannot be trusted; empty if nothing is wrong
    std::size_t faultLine = 0;
};

/// Reads the games of a PGN file one by one (S. Edwards, "Portable Game Notation", 1994) and takes
/// what is met in the wild: any order of tags, games without tags or without a result at the end of
/// the moves, comments of both kinds, nested variations, numeric and written glyphs, escape lines,
/// evaluation signs, every byte. No text ends the reading: after a comment or variation that does
/// not end it goes on at the next game.
class PgnReader {
public:
    /// The first `maxPlies` moves of a game are kept; the rest of it is skipped.
    PgnReader(ByteSource& input, std::size_t maxPlies) : source(input), plyLimit(maxPlies) {}

    /// Reads the next game into `readInto`, whose room is used again. False at the end.
    [[nodiscard]] bool next(PgnGame& readInto);

private:
    void readTag();
    std::string_view readTagValue();
    void skipComment();
    void skipVariation();
    void readNumericGlyph();
    void readGlyph();
    void annotateLastMove(std::uint32_t annotation);
    /// Reads a word: a move or the number of one, a result, a remark. True when it ends the game.
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
    bool setUp = false;          ///< a tag says that the game has a position of its own
    bool standardStart = false;  ///< and another that it is the usual one
    bool freshLine = true;       ///< nothing but blanks has been seen on the line
    bool lastMoveKept = false;   ///< glyphs belong to the last of the game's moves
    GameResult tagResult = GameResult::Unknown;
    GameResult endResult = GameResult::Unknown;
    PgnMove word{};
    std::string glyph, tagName, tagValue;
};

}  // namespace brivok
