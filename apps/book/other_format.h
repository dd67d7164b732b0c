#pragma once

#include <string>

namespace brivok {

/// Whether a file is a book in the format that most other programs share: records of 16 bytes, all
/// numbers big-endian, sorted by key: 8 bytes for the key of the position before the move, 2 for
/// the move, 2 for its weight, 4 for what was learnt of it.
///
/// Never true of a book of ours, sound or damaged: the annotation in its first record would have to
/// be unknown and its records sorted in both formats. False if the file cannot be read twice, such
/// as a pipe.
[[nodiscard]] bool hasOtherBookFormat(const std::string& name);

}  // namespace brivok
