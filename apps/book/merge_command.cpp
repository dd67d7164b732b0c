#include <cstdio>
#include <functional>
#include <memory>
#include <queue>
#include <utility>

#include "annotation.h"
#include "book_file.h"
#include "commands.h"

namespace brivok {

namespace {

/// An input book and its current record.
struct Input {
    explicit Input(const std::string& name) : reader(name) {}
    BookReader reader;
    BookRecord record;
};

void addRecord(BookRecord& sum, AnnotationVotes& votes, const BookRecord& record) {
    addGames(sum.whiteWins, record.whiteWins);
    addGames(sum.blackWins, record.blackWins);
    addGames(sum.draws, record.draws);
    votes.add(record.annotation, gamesOf(record));
}

}  // namespace

void mergeBooks(const std::vector<std::string>& inputs, const std::string& output) {
    // Least key on top.
    using Place = std::pair<std::uint64_t, Input*>;
    std::priority_queue<Place, std::vector<Place>, std::greater<>> queue;
    std::vector<std::unique_ptr<Input>> books;
    const auto readOn = [&queue](Input& input) {
        if (input.reader.next(input.record)) queue.emplace(input.record.key, &input);
    };
    for (const std::string& name : inputs) {
        readOn(*books.emplace_back(std::make_unique<Input>(name)));
    }

    BookWriter writer(output);
    while (!queue.empty()) {
        BookRecord sum{};
        sum.key = queue.top().first;
        AnnotationVotes votes;
        while (!queue.empty() && queue.top().first == sum.key) {
            Input& input = *queue.top().second;
            queue.pop();
            addRecord(sum, votes, input.record);
            readOn(input);
        }
        sum.annotation = votes.winner();
        writer.add(sum);
    }
    writer.commit();

    for (const auto& book : books) {
        std::printf("%12llu records in %s\n",
                    static_cast<unsigned long long>(book->reader.recordCount()),
                    book->reader.name().c_str());
    }
    std::printf("%12llu records in %s\n", static_cast<unsigned long long>(writer.recordCount()),
                output.c_str());
}

}  // namespace brivok
