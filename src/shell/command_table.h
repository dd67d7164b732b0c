#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace brivok {

/// A command of a protocol.
template <class Handler, class Line>
struct Command {
    std::string_view word;                  ///< what the line begins with
    void (*action)(Handler&, const Line&);  ///< what is done then
};

/// The commands of one state of a handler, in the order in which they are tried.
template <class Handler, class Line>
using CommandTable = std::span<const Command<Handler, Line>>;

/// Carries out the command of this word; false if there is none.
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

/// The words of all commands of a table.
template <class Handler, class Line>
[[nodiscard]] std::vector<std::string_view> wordsOf(CommandTable<Handler, Line> table) {
    std::vector<std::string_view> words;
    for (const auto& command : table) words.push_back(command.word);
    return words;
}

}  // namespace brivok
