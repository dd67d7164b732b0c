#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace brivok {

/// A protocol command.
template <class Handler, class Line>
struct Command {
    std::string_view word;  ///< first word of the line
    void (*action)(Handler&, const Line&);
};

/// The commands of one handler state, in the order in which they are tried.
template <class Handler, class Line>
using CommandTable = std::span<const Command<Handler, Line>>;

/// Runs the command with this word; false if there is none.
template <class Handler, class Line>
bool execute(CommandTable<Handler, Line> table, std::string_view word, Handler& handler,
             const Line& line) {
    for (const auto& command : table) {
        if (word != command.word) continue;
        command.action(handler, line);
        return true;
    }
    return false;
}

template <class Handler, class Line>
[[nodiscard]] std::vector<std::string_view> wordsOf(CommandTable<Handler, Line> table) {
    std::vector<std::string_view> words;
    for (const auto& command : table) words.push_back(command.word);
    return words;
}

}  // namespace brivok
