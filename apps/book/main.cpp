// brivok-book: builds opening books from games, shows, checks and merges them.

#include <CLI/CLI.hpp>

#include "../common/command_line.h"
#include "board/piece_values.h"
#include "board/static_tables.h"
#include "book_aggregator.h"
#include "commands.h"
#include "shell/base/settings.h"

namespace {

using namespace brivok;

constexpr std::size_t LargestMemoryMB = std::size_t{1} << 20U;

/// The command line: the command to run, with its options.
struct CommandLine {
    CLI::App app{"Builds, shows, checks and merges opening books for Brivok."};
    BuildOptions build;
    ShowOptions show;
    std::string book, output;
    std::vector<std::string> books;
    bool quick = false;
    bool onlyWhite = false;
    bool onlyBlack = false;

    CommandLine() {
        app.require_subcommand(1);
        addBuild();
        addShow();
        addMerge();

        CLI::App* const check = app.add_subcommand(
            "check", "Check that a book is sound: complete, sorted, no record twice, none empty.");
        check->add_option("book", book, "The book")->required();
        check->add_flag("--quick", quick, "Skip the walk through the positions of the book");
        check->callback([this] { checkBook(book, !quick); });

        CLI::App* const lookup = app.add_subcommand(
            "lookup",
            "Print the record of each position on standard input, one FEN or EPD per line: "
            "key, White's wins, Black's wins, draws, annotation.");
        lookup->add_option("book", book, "The book")->required();
        lookup->callback([this] { lookUpPositions(book); });
    }

    void addBuild() {
        CLI::App* const command =
            app.add_subcommand("build", "Build a book from games in PGN files.");
        command->add_option("games", build.inputs, "PGN files; - is standard input")->required();
        command->add_option("-o,--output", build.output, "The book to write")->required();
        command->add_option("--plies", build.count.plies, "Half-moves of each game that count")
            ->check(CLI::Range(std::size_t{1}, MaxBookPlies))
            ->capture_default_str();
        command
            ->add_option("--min-games", build.minGames,
                         "Keep positions that at least this many games reached")
            ->check(CLI::PositiveNumber)
            ->capture_default_str();
        command
            ->add_option("--min-score", build.minScore,
                         "Keep moves that scored at least this percentage for their side")
            ->check(CLI::Range(0.0, 100.0))
            ->capture_default_str();
        auto* const white = command->add_flag("--white-only", onlyWhite, "Only White's moves");
        command->add_flag("--black-only", onlyBlack, "Only Black's moves")->excludes(white);
        command
            ->add_option("--min-elo", build.count.minElo,
                         "Skip games in which a player's known rating is below this")
            ->check(CLI::NonNegativeNumber);
        command
            ->add_option("--memory", build.memoryMB, "Megabytes of memory for collecting positions")
            ->check(CLI::Range(BookAggregator::LeastMemory / Megabyte, LargestMemoryMB))
            ->capture_default_str();
        command->callback([this] {
            build.count.whiteMoves = !onlyBlack;
            build.count.blackMoves = !onlyWhite;
            buildBook(build);
        });
    }

    void addShow() {
        CLI::App* const command = app.add_subcommand(
            "show", "Show the moves that a book has for a position, as the engine weighs them.");
        command->add_option("book", show.book, "The book")->required();
        command->add_option("--fen", show.fen, "The position (default: the start of a game)");
        command->add_option("--moves", show.moves,
                            "Moves to play first, as \"e2e4 e7e5\" or \"e4 e5\"");
        command->callback([this] { showBook(show); });
    }

    void addMerge() {
        CLI::App* const command =
            app.add_subcommand("merge", "Merge books into one, summing up their games.");
        command->add_option("books", books, "The books to merge")->required();
        command->add_option("-o,--output", output, "The book to write")->required();
        command->callback([this] { mergeBooks(books, output); });
    }
};

}  // namespace

int main(int argc, char** argv) {
    buildStaticTables();
    RefreshPieceValues();
    return runApp("brivok-book", [argc, argv] {
        CommandLine line;
        return parseCommandLine(line.app, argc, argv).value_or(0);
    });
}
