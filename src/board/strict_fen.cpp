#include "board/strict_fen.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

#include "board/coordinate.h"
#include "shell/base/fields.h"

namespace brivok {

namespace {

constexpr std::ptrdiff_t MostMen = 16;
constexpr std::ptrdiff_t MostPawns = 8;
/// A game ends by the rules when the half-move clock gets here.
constexpr int LastHalfMove = 150;
/// Higher clocks mean the same to the engine.
constexpr int HalfMoveCut = 100;
constexpr int LastFullMove = 9999;

/// A whole number of at most `last`.
std::optional<int> numberIn(std::string_view field, int last) {
    unsigned number = 0;
    const char* const end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, number);
    if (error != std::errc{} || stop != end || number > static_cast<unsigned>(last)) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

int backRow(Side side) { return side == White ? 7 : 0; }

std::string nameOf(Side side) { return side == White ? "White" : "Black"; }

/// The fields of a line, read and checked one after the other. Each step returns what is wrong, or
/// an empty text.
class PositionReader {
public:
    PositionReader(std::string_view line, Variant rules) : fields(fieldsOf(line)), variant(rules) {
        constexpr std::size_t EpdFields = 4;
        const bool hasOperations = fields.size() > EpdFields && fields.back().ends_with(';');
        if (hasOperations) fields.resize(EpdFields);
    }

    [[nodiscard]] std::string read() {
        using Step = std::string (PositionReader::*)();
        constexpr Step steps[] = {
            &PositionReader::readMen,       &PositionReader::checkMen,
            &PositionReader::readSide,      &PositionReader::readCastling,
            &PositionReader::readEnPassant, &PositionReader::readClocks,
        };
        for (const Step step : steps) {
            if (std::string fault = (this->*step)(); !fault.empty()) return fault;
        }
        return "";
    }

    /// Sets up the position, which must have no fault.
    void setUp(Board& board) const {
        board.setPositionFromFen(std::string(fields[0]) + (side == White ? " w - " : " b - ") +
                                 (passed == NoSquare ? "-" : squareName(passed)) + " " +
                                 std::to_string(halfMove) + " " + std::to_string(fullMove));
        CastlingHomes homes = board.castlingHomes();
        Square* const rookHomes[CastlingKinds] = {&homes.whiteKingRook, &homes.whiteQueenRook,
                                                  &homes.blackKingRook, &homes.blackQueenRook};
        std::uint32_t rights = 0;
        for (int kind = 0; kind < CastlingKinds; ++kind) {
            if (rooks[kind] == MissingHome) continue;
            *rookHomes[kind] = rooks[kind];
            rights |= rightOf(kind);
        }
        board.setCastling(homes, rights);
    }

private:
    /// "-" if the line ends before the field.
    [[nodiscard]] std::string_view field(std::size_t index) const {
        return index < fields.size() ? fields[index] : "-";
    }

    std::string readMen() {
        if (fields.empty()) return "the FEN is empty";
        int row = 0;
        int file = 0;
        const auto rankIsFull = [&] { return file == 8; };
        const auto wrongRank = [&] {
            return "rank " + std::to_string(8 - row) + " does not have eight squares";
        };
        for (const char c : fields[0]) {
            if (c == '/') {
                if (!rankIsFull()) return wrongRank();
                if (++row == 8) return "there are more than eight ranks";
                file = 0;
            } else if (c >= '1' && c <= '8') {
                file += c - '0';
            } else {
                const Piece* const piece = std::ranges::find(AllMen, c, fenLetter);
                if (piece == std::end(AllMen)) return "the men have a letter that is no piece";
                if (file < 8) men[squareAt(file, row)] = *piece;
                ++file;
            }
            if (file > 8) return wrongRank();
        }
        if (!rankIsFull()) return wrongRank();
        return row == 7 ? "" : "there are fewer than eight ranks";
    }

    std::string checkMen() {
        for (const Side owner : {White, Black}) {
            const Piece king = pieceOf(Kind::King, owner);
            const Piece pawn = pieceOf(Kind::Pawn, owner);
            if (std::ranges::count(men, king) != 1) return nameOf(owner) + " needs one king";
            kings[whiteFirst(owner)] =
                static_cast<Square>(std::ranges::find(men, king) - std::begin(men));
            const auto owned = [owner](Piece man) { return man != Empty && sideOf(man) == owner; };
            if (std::ranges::count_if(men, owned) > MostMen) {
                return nameOf(owner) + " has more than 16 men";
            }
            if (std::ranges::count(men, pawn) > MostPawns) {
                return nameOf(owner) + " has more than 8 pawns";
            }
            for (int file = 0; file < 8; ++file) {
                if (men[squareAt(file, 0)] == pawn || men[squareAt(file, 7)] == pawn) {
                    return nameOf(owner) + " has a pawn on a back rank";
                }
            }
        }
        return "";
    }

    std::string readSide() {
        if (field(1) != "w" && field(1) != "b") return "the side to move is neither w nor b";
        side = field(1) == "w" ? White : Black;
        return "";
    }

    std::string readCastling() {
        if (field(2) == "-") return "";
        for (const char c : field(2)) {
            const Side owner = c >= 'a' ? Black : White;
            const char letter = owner == White ? static_cast<char>(c - 'A' + 'a') : c;
            const bool isFile = letter >= 'a' && letter <= 'h';
            if (!isFile && letter != 'k' && letter != 'q') {
                return "the castling rights are not letters of KQkq or of files";
            }
            if (variant == Variant::NoCastle) continue;
            const Square rook =
                isFile ? rookOn(owner, letter - 'a') : outermostRook(owner, letter == 'k');
            if (rook != MissingHome) {
                if (!claim(owner, rook)) return "there are two castling rights on one side";
            } else if (isFile) {
                return std::string("there is no rook for the castling right ") + c;
            }
        }
        return "";
    }

    [[nodiscard]] Square kingOf(Side owner) const { return kings[whiteFirst(owner)]; }

    /// The rook on this file of the back rank, if the king is on that rank; or MissingHome.
    [[nodiscard]] Square rookOn(Side owner, int file) const {
        const Square square = squareAt(file, backRow(owner));
        const bool stands = men[square] == pieceOf(Kind::Rook, owner);
        return stands && rowOf(kingOf(owner)) == backRow(owner) ? square : MissingHome;
    }

    /// The rook nearest to the corner on this side of the king, or MissingHome.
    [[nodiscard]] Square outermostRook(Side owner, bool kingSide) const {
        const int step = kingSide ? -1 : 1;
        for (int file = kingSide ? 7 : 0; file != fileOf(kingOf(owner)); file += step) {
            const Square rook = rookOn(owner, file);
            if (rook != MissingHome) return rook;
        }
        return MissingHome;
    }

    /// Notes the right to castle with this rook. False if there is a right with another rook on the
    /// same side of the king.
    [[nodiscard]] bool claim(Side owner, Square rook) {
        const bool kingSide = fileOf(rook) > fileOf(kingOf(owner));
        Square& home = rooks[(owner == White ? WhiteKingSide : BlackKingSide) + (kingSide ? 0 : 1)];
        if (home != MissingHome && home != rook) return false;
        home = rook;
        return true;
    }

    std::string readEnPassant() {
        const std::string_view text = field(3);
        if (text == "-") return "";
        if (text.size() != 2 || text[0] < 'a' || text[0] > 'h' || text[1] < '1' || text[1] > '8') {
            return "the en passant field is not a square";
        }
        passed = squareAt(text[0] - 'a', '8' - text[1]);
        const int forward = side == White ? South : North;  // for the pawn that has moved
        const bool plausible = rowOf(passed) == (side == White ? 2 : 5) && men[passed] == Empty &&
                               men[passed - forward] == Empty &&
                               men[passed + forward] == pieceOf(Kind::Pawn, opposite(side));
        if (!plausible) passed = NoSquare;
        return "";
    }

    std::string readClocks() {
        const auto read = [this](std::size_t index, int last, int& number) {
            if (index >= fields.size()) return true;
            const std::optional<int> given = numberIn(fields[index], last);
            number = given.value_or(0);
            return given.has_value();
        };
        if (!read(4, LastHalfMove, halfMove)) {
            return "the half-move clock is not a number from 0 to " + std::to_string(LastHalfMove);
        }
        if (!read(5, LastFullMove, fullMove)) {
            return "the move number is not a number from 0 to " + std::to_string(LastFullMove);
        }
        halfMove = std::min(halfMove, HalfMoveCut);
        return fields.size() > 6 ? "there is more behind the move number" : "";
    }

    std::vector<std::string_view> fields;
    Variant variant;
    Piece men[Squares]{};
    Square kings[2]{};
    Side side = White;
    /// The castling rooks, by kind.
    Square rooks[CastlingKinds] = {MissingHome, MissingHome, MissingHome, MissingHome};
    Square passed = NoSquare;
    int halfMove = 0;
    int fullMove = 1;
};

}  // namespace

std::string setUpPosition(Board& board, std::string_view fen) {
    PositionReader reader(fen, board.rules->variant);
    if (std::string fault = reader.read(); !fault.empty()) return fault;

    const auto trial = std::make_unique<Board>();
    trial->rules = board.rules;
    reader.setUp(*trial);
    if (trial->moverInCheck()) {
        return nameOf(opposite(trial->sideToMove)) + " is in check, but it is not to move";
    }
    reader.setUp(board);
    return "";
}

}  // namespace brivok
