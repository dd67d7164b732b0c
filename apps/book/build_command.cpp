#include <array>
#include <cstdio>
#include <filesystem>

#include "../common/app_error.h"
#include "../common/progress_line.h"
#include "board/board.h"
#include "book_aggregator.h"
#include "book_file.h"
#include "commands.h"
#include "platform/platform.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

constexpr std::uint64_t BrokenGamesShown = 5;
constexpr const char* StandardInput = "-";

/// Total bytes of all inputs; 0 if the size of one is unknown.
std::uint64_t bytesOf(const std::vector<std::string>& inputs) {
    std::uint64_t sum = 0;
    for (const std::string& name : inputs) {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(name, unknown);
        if (name == StandardInput || unknown) return 0;
        sum += size;
    }
    return sum;
}

ByteSource openInput(const std::string& name) {
    if (name == StandardInput) return {FileHandle(stdin), "standard input"};
    return {openForReading(name), name};
}

/// Reads the games of all inputs into an aggregator.
class GameIntake {
public:
    GameIntake(const BuildOptions& buildOptions, BookAggregator& receiver)
        : options(buildOptions),
          aggregator(receiver),
          counter(theBoard, options.count),
          bytesInAll(bytesOf(options.inputs)) {}

    void readAll() {
        for (const std::string& name : options.inputs) {
            ByteSource source = openInput(name);
            read(source);
            bytesBefore += source.bytesTaken();
        }
        progress.clear();
    }

    void printSummary() const {
        std::printf("%12llu games read\n", number(games));
        constexpr std::array<const char*, Verdicts> texts{
            "counted",
            "skipped: not normal chess from the start position",
            "skipped: broken",
            "skipped: no result",
            "skipped: rating too low",
            "skipped: no moves"};
        for (std::size_t i = 0; i < Verdicts; ++i) {
            if (i == 0 || verdicts[i] > 0)
                std::printf("%12llu %s\n", number(verdicts[i]), texts[i]);
        }
    }

    [[nodiscard]] std::uint64_t countedGames() const { return of(Verdict::Counted); }

private:
    static unsigned long long number(std::uint64_t value) { return value; }
    [[nodiscard]] std::uint64_t of(Verdict verdict) const {
        return verdicts[static_cast<std::size_t>(verdict)];
    }

    void read(ByteSource& source) {
        PgnReader reader(source, options.count.plies);
        while (reader.next(game)) {
            const Verdict verdict = counter.observe(game, observations);
            ++games;
            ++verdicts[static_cast<std::size_t>(verdict)];
            if (verdict == Verdict::Counted) aggregator.add(observations);
            if (verdict == Verdict::Broken) reportBroken(source.name());
            if (progress.isDue()) showProgress(bytesBefore + source.bytesTaken());
        }
    }

    void showProgress(std::uint64_t bytesDone) {
        const std::uint64_t spent = platform().milliseconds() - start;
        char text[70];
        std::snprintf(text, sizeof text, "%12llu games %10llu games/s", number(games),
                      number(games * 1000 / spent));
        std::string line = text;
        if (bytesInAll > 0) {
            std::snprintf(text, sizeof text, "%5llu %%", number(bytesDone * 100 / bytesInAll));
            line += text;
        }
        progress.show(line);
    }

    void reportBroken(const std::string& name) {
        if (of(Verdict::Broken) > BrokenGamesShown) return;
        progress.clear();
        std::fprintf(stderr, "%s:%zu: %s (game starts on line %zu)\n", name.c_str(), game.faultLine,
                     game.fault.c_str(), game.line);
    }

    const BuildOptions& options;
    BookAggregator& aggregator;
    GameCounter counter;
    ProgressLine progress;
    std::uint64_t start = platform().milliseconds();
    PgnGame game;
    std::vector<Observation> observations;
    std::uint64_t bytesInAll;
    std::uint64_t bytesBefore = 0;
    std::uint64_t games = 0;
    std::array<std::uint64_t, Verdicts> verdicts{};
};

/// Whether the position is frequent enough and scores well enough for the side that moved to it.
bool belongsInBook(const BuildOptions& options, const BookRecord& record, Side mover) {
    const auto games = static_cast<double>(gamesOf(record));
    const std::uint32_t wins = mover == White ? record.whiteWins : record.blackWins;
    const double points = wins + record.draws / 2.0;
    return gamesOf(record) >= options.minGames && points * 100 >= options.minScore * games;
}

}  // namespace

void buildBook(const BuildOptions& options) {
    BookAggregator aggregator(bookTarget(options.output), options.memoryMB * Megabyte);
    GameIntake intake(options, aggregator);
    intake.readAll();
    intake.printSummary();
    if (intake.countedGames() == 0) throw AppError("no game counts; no book written");

    BookWriter writer(options.output);
    std::uint64_t positions = 0;
    aggregator.finish([&](const BookRecord& record, Side mover) {
        ++positions;
        if (belongsInBook(options, record, mover)) writer.add(record);
    });
    if (writer.recordCount() == 0) throw AppError("no positions left; no book written");
    writer.commit();
    std::printf("%12llu positions, %llu records in %s\n",
                static_cast<unsigned long long>(positions),
                static_cast<unsigned long long>(writer.recordCount()), options.output.c_str());
}

}  // namespace brivok
