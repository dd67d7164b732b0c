// Writes random games to measure the book builder: brivok-random-pgn GAMES [SEED]. The first moves
// favour a few choices, so that games share openings as real ones do; later moves are uniformly
// random. The games are legal and otherwise meaningless.
//
//   ninja -C build/release brivok-random-pgn brivok-book
//   build/release/bin/brivok-random-pgn 1000000 >games.pgn
//   /usr/bin/time -v build/release/bin/brivok-book build games.pgn -o libro.bin

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "board/board.h"
#include "board/coordinate.h"
#include "board/piece_values.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"

namespace {

using namespace brivok;

constexpr std::size_t OpeningPlies = 16;
constexpr double OpeningBias = 4;  ///< exponent that favours the front of the move list
constexpr std::size_t LeastPlies = 50;
constexpr std::size_t MostPlies = 110;
constexpr std::size_t LineLength = 80;
constexpr const char* Results[] = {"1-0", "0-1", "1/2-1/2"};

class RandomGames {
public:
    explicit RandomGames(unsigned long seed) : random(seed) {}

    void write(unsigned long number) {
        const char* const result = Results[random() % std::size(Results)];
        std::printf(
            "[Event \"Random\"]\n[Site \"?\"]\n[Date \"????.??.??\"]\n[Round \"%lu\"]\n"
            "[White \"White\"]\n[Black \"Black\"]\n[Result \"%s\"]\n\n",
            number, result);
        line.clear();
        theBoard.NewGame();
        const std::size_t plies = LeastPlies + random() % (MostPlies - LeastPlies);
        for (std::size_t ply = 0; ply < plies; ++ply) {
            const Move move = draw(ply < OpeningPlies);
            if (move == NoMove) break;
            if (ply % 2 == 0) writeWord(std::to_string(ply / 2 + 1) + ".");
            writeWord(textOf(move));
            theBoard.makeMove(move);
        }
        writeWord(result);
        std::printf("%s\n\n", line.c_str());
    }

private:
    Move draw(bool inOpening) {
        MoveList list;
        generateForPosition(theBoard, list);
        for (auto left = static_cast<std::size_t>(theBoard.moveCount); left > 0; --left) {
            const double part = std::generate_canonical<double, 32>(random);
            const auto index = static_cast<std::size_t>(
                static_cast<double>(left) * (inOpening ? std::pow(part, OpeningBias) : part));
            const Move move = list[index];
            if (leavesKingSafe(theBoard, move)) return move;
            list[index] = list[left - 1];
        }
        return NoMove;
    }

    /// The short form; the long one where three pieces make the short one ambiguous.
    static std::string textOf(Move move) {
        const std::string san = moveToSan(theBoard, move);
        return readSan(theBoard, san).move == move ? san : moveToCoordinate(move);
    }

    void writeWord(const std::string& word) {
        if (line.size() + word.size() >= LineLength) {
            std::puts(line.c_str());
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }

    std::mt19937_64 random;
    std::string line;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("Usage: brivok-random-pgn GAMES [SEED]\n", stderr);
        return 1;
    }
    buildStaticTables();
    RefreshPieceValues();
    RandomGames games(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
    const unsigned long count = std::strtoul(argv[1], nullptr, 10);
    for (unsigned long number = 1; number <= count; ++number) games.write(number);
}
