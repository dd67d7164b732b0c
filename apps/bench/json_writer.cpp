#include "json_writer.h"

#include <cstdio>

namespace brivok {

void JsonWriter::open(char bracket) {
    separate();
    output += bracket;
    needsComma = false;
}

void JsonWriter::close(char bracket) {
    output += bracket;
    needsComma = true;
}

void JsonWriter::key(std::string_view name) {
    separate();
    addQuoted(name);
    output += ": ";
    needsComma = false;
}

void JsonWriter::add(std::string_view text) {
    separate();
    addQuoted(text);
}

void JsonWriter::add(std::uint64_t number) {
    separate();
    output += std::to_string(number);
}

/// To a millionth, the resolution of the clocks.
void JsonWriter::add(double number) {
    separate();
    output += std::to_string(number);
}

void JsonWriter::add(bool truth) {
    separate();
    output += truth ? "true" : "false";
}

void JsonWriter::separate() {
    if (needsComma) output += ", ";
    needsComma = true;
}

/// A text from the command line can hold any byte: what is no plain ASCII is escaped as if it were
/// Latin-1, so that the output is valid whatever comes.
void JsonWriter::addQuoted(std::string_view text) {
    output += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            output += '\\';
            output += c;
        } else if (byte < ' ' || byte > '~') {
            char escape[sizeof "\\u0000"];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            output += escape;
        } else {
            output += c;
        }
    }
    output += '"';
}

}  // namespace brivok
