// A libFuzzer target: the book builder reads any file of games to its end, with the same result for
// every buffer size, and leaves the board intact.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "../apps/book/game_counter.h"
#include "expect.h"
#include "session.h"

namespace brivok {
namespace {

/// Plays all games of the text and returns what they yield as one string.
std::string readAll(std::string_view text, std::size_t capacity) {
    std::string all;
    if (text.empty()) return all;
    ByteSource source(FileHandle(fmemopen(const_cast<char*>(text.data()), text.size(), "rb")),
                      "games", capacity);
    PgnReader reader(source, MaxBookPlies);
    GameCounter counter(theBoard, {});
    std::vector<Observation> observations;
    for (PgnGame game; reader.next(game);) {
        const Verdict verdict = counter.observe(game, observations);
        fuzz::expect(theBoard.ply == 0, "the board is as before");
        fuzz::expect(verdict == Verdict::Counted || observations.empty(),
                     "nothing is learnt of a game that does not count");
        all += std::to_string(static_cast<int>(verdict)) + " " + std::to_string(game.line) + " " +
               game.fault + "\n";
        for (const Observation& observation : observations) {
            all += std::to_string(observation.key) + " ";
        }
    }
    return all;
}

}  // namespace
}  // namespace brivok

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    using namespace brivok;
    constexpr std::size_t SmallestBuffer = 8;  // the start of a game's first tag
    fuzz::freshBoard();
    const std::string_view text(data, size);
    fuzz::expect(readAll(text, ByteSource::DefaultCapacity) == readAll(text, SmallestBuffer),
                 "all buffers read alike");
    return 0;
}
