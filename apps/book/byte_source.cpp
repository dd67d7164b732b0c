#include "byte_source.h"

#include <algorithm>
#include <cassert>

#include "../common/app_error.h"

namespace brivok {

ByteSource::ByteSource(FileHandle input, std::string name, std::size_t capacity)
    : file(std::move(input)), sourceName(std::move(name)), buffer(capacity) {
    if (constexpr std::string_view mark = "\xEF\xBB\xBF"; startsWith(mark)) {
        at = lineStart = mark.size();
    }
}

bool ByteSource::fill(std::size_t wanted) {
    assert(wanted <= buffer.size());
    lineStart = lineStart == at ? 0 : NotInBuffer;
    std::copy(buffer.data() + at, buffer.data() + filled, buffer.data());
    filled -= at;
    at = 0;
    while (filled < wanted) {
        const std::size_t count =
            std::fread(buffer.data() + filled, 1, buffer.size() - filled, file.get());
        if (count == 0) {
            if (std::ferror(file.get()) != 0) failWithErrno(sourceName);
            return false;
        }
        filled += count;
        bytesRead += count;
    }
    return true;
}

int ByteSource::takeLineEnd(int byte) {
    if (byte == '\r' && peek() == '\n') ++at;
    ++lineNumber;
    lineStart = at;
    return '\n';
}

void ByteSource::skipLine() {
    for (int byte = peek(); byte != '\n' && byte != '\r' && byte != End; byte = peek()) ++at;
}

bool ByteSource::skipPast(char stop, std::string_view alarm) {
    for (;;) {
        const int byte = take();
        if (byte == stop) return true;
        if (byte == End || (byte == '\n' && startsWith(alarm))) return false;
    }
}

bool ByteSource::startsWith(std::string_view text) {
    if (filled - at < text.size() && !fill(text.size())) return false;
    return std::equal(text.begin(), text.end(), buffer.data() + at,
                      [](char c, unsigned char byte) { return c == static_cast<char>(byte); });
}

}  // namespace brivok
