#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace brivok {

/// Records hold answers of the engine beside what they answer. A replay takes the inputs of a
/// record and returns the whole record anew: the inputs that it has read, and the answers of the
/// engine as it is now. The test compares the two, and the recorder writes the new one.
///
/// Every replay is a fresh engine; the opening book and the endgame tables are those of the current
/// folder. A record that cannot be replayed makes it throw a std::exception.
using Replay = nlohmann::json(const nlohmann::json& record);

/// A position with its state and keys, the lists of its moves, exchange values, evaluation and move
/// tree. The length of "perft" says how deep the tree goes, so it is an input too.
Replay replayPosition;

/// One search under UCI, or several "steps" of one engine: all that is printed from "go" on, by a
/// clock that stands still, and all that the search leaves. "config" are lines of "brivok.ini".
Replay replaySearch;

/// The counters of the same search under UCI, and under WinBoard with posting on and off.
Replay replayPosting;

/// A file of the folder of test data whose records are made by a replay.
struct RecordFile {
    const char* name;
    Replay* replay;
};

inline constexpr RecordFile RecordFiles[] = {
    {"positions.json", replayPosition},
    {"search.json", replaySearch},
    {"game.json", replaySearch},
    {"posting.json", replayPosting},
};

/// The text of such a file: a record a line.
[[nodiscard]] std::string fileText(const nlohmann::json& records);

}  // namespace brivok
