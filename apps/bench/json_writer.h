#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brivok {

/// Writes JSON from start to end; the caller opens and closes what it opens. Compact, on one line.
class JsonWriter {
public:
    void open(char bracket);
    void close(char bracket);
    void key(std::string_view name);
    void add(std::string_view text);
    void add(const char* text) { add(std::string_view(text)); }  ///< not as a bool
    void add(std::uint64_t number);
    void add(double number);
    void add(bool truth);

    /// A member of an object.
    template <typename Value>
    void member(std::string_view name, Value value) {
        key(name);
        add(value);
    }

    [[nodiscard]] const std::string& text() const { return output; }

private:
    void separate();
    void addQuoted(std::string_view text);

    std::string output;
    bool needsComma = false;
};

}  // namespace brivok
