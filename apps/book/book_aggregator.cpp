#include "book_aggregator.h"

#include <algorithm>

#include "annotation.h"
#include "book_file.h"

namespace brivok {

namespace {

/// This fraction of the memory is for reading runs; the rest is the buffer.
constexpr std::size_t MergeShare = 8;

/// Observations read from a run at a time.
constexpr std::size_t LeastRead = 256;
constexpr std::size_t MostRead = std::size_t{1} << 16U;

/// Iterates over a sorted run, either in memory or read in pieces.
class RunCursor {
public:
    explicit RunCursor(std::span<const Observation> inMemory) : rest(inMemory) {}
    RunCursor(RunFile& runs, RunFile::Run run, std::size_t pieceSize)
        : file(&runs), unread(run), piece(pieceSize) {
        readPiece();
    }

    [[nodiscard]] bool atEnd() const { return rest.empty(); }
    [[nodiscard]] const Observation& current() const { return rest.front(); }
    void advance() {
        rest = rest.subspan(1);
        if (rest.empty() && file != nullptr) readPiece();
    }

private:
    void readPiece() { rest = std::span(piece).first(file->read(unread, piece)); }

    RunFile* file = nullptr;
    RunFile::Run unread;
    std::vector<Observation> piece;
    std::span<const Observation> rest;
};

/// Heap order with the least observation on top.
bool comesLater(const RunCursor& a, const RunCursor& b) { return b.current() < a.current(); }

/// Sums up the observations of each position in turn.
class RecordMaker {
public:
    explicit RecordMaker(const BookAggregator::Sink& receiver) : sink(receiver) {}

    void add(const Observation& observation) {
        if (any && observation.key != record.key) flush();
        any = true;
        record.key = observation.key;
        mover = observation.mover();
        switch (observation.result()) {
            case GameResult::WhiteWins: addGames(record.whiteWins, observation.games); break;
            case GameResult::BlackWins: addGames(record.blackWins, observation.games); break;
            default: addGames(record.draws, observation.games); break;
        }
        votes.add(observation.annotation(), observation.games);
    }

    void flush() {
        if (!any) return;
        record.annotation = votes.winner();
        sink(record, mover);
        record = {};
        votes = {};
        any = false;
    }

private:
    const BookAggregator::Sink& sink;
    BookRecord record{};
    AnnotationVotes votes;
    Side mover = White;
    bool any = false;
};

}  // namespace

BookAggregator::BookAggregator(const std::filesystem::path& output, std::size_t memoryBytes)
    : runs(output),
      capacity((memoryBytes - memoryBytes / MergeShare) / sizeof(Observation)),
      mergeMemory(memoryBytes / MergeShare) {
    buffer.reserve(capacity);
}

void BookAggregator::add(std::span<const Observation> observations) {
    if (buffer.size() + observations.size() > capacity) {
        condense();
        // With less than half of it free, sorting again soon would gain little.
        if (buffer.size() > capacity / 2) {
            runs.append(buffer);
            buffer.clear();
        }
    }
    buffer.insert(buffer.end(), observations.begin(), observations.end());
}

void BookAggregator::condense() {
    std::sort(buffer.begin(), buffer.end());
    auto last = buffer.begin();
    for (auto next = buffer.begin(); next != buffer.end(); ++next) {
        if (next == last) continue;
        if (last->sameAs(*next)) {
            addGames(last->games, next->games);
        } else {
            *++last = *next;
        }
    }
    if (!buffer.empty()) buffer.erase(last + 1, buffer.end());
}

void BookAggregator::finish(const Sink& sink) {
    condense();
    const std::vector<RunFile::Run>& spilled = runs.runs();
    const std::size_t pieceSize =
        std::clamp(mergeMemory / sizeof(Observation) / std::max<std::size_t>(spilled.size(), 1),
                   LeastRead, MostRead);
    std::vector<RunCursor> heap;
    heap.reserve(spilled.size() + 1);
    for (const RunFile::Run& run : spilled) heap.emplace_back(runs, run, pieceSize);
    if (!buffer.empty()) heap.emplace_back(buffer);
    std::make_heap(heap.begin(), heap.end(), comesLater);

    RecordMaker maker(sink);
    while (!heap.empty()) {
        std::pop_heap(heap.begin(), heap.end(), comesLater);
        RunCursor& least = heap.back();
        maker.add(least.current());
        least.advance();
        if (least.atEnd()) {
            heap.pop_back();
        } else {
            std::push_heap(heap.begin(), heap.end(), comesLater);
        }
    }
    maker.flush();
    buffer.clear();
}

}  // namespace brivok
