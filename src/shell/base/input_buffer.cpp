#include "shell/base/input_buffer.h"

#include <algorithm>
#include <cstring>

#include "platform/platform.h"

namespace brivok {

void InputBuffer::fill() {
    if (begin != 0) {
        std::memmove(bytes.data(), bytes.data() + begin, end - begin);
        end -= begin;
        scanned -= begin;
        begin = 0;
    }
    for (;;) {
        const Transfer read = platform().readInput(bytes.data() + end, bytes.size() - end);
        switch (read.outcome) {
            case Transfer::Outcome::Moved: end += read.bytes; return;
            case Transfer::Outcome::Interrupted: break;
            case Transfer::Outcome::WouldBlock: platform().waitForInput(); break;
            case Transfer::Outcome::Failed: ended = true; return;
        }
    }
}

std::string_view InputBuffer::take() {
    std::size_t length = lineLength();
    if (length == 0) length = end - begin;
    char* const line = bytes.data() + begin;
    begin += length;
    scanned = begin;
    while (length >= 2 && line[length - 1] == '\n' && line[length - 2] == '\r') {
        line[--length - 1] = '\n';
    }
    return {line, length};
}

std::size_t InputBuffer::lineLength() const {
    const std::size_t limit = std::min(end, begin + MaxLineLength);
    while (scanned < limit) {
        if (bytes[scanned++] == '\n') {
            --scanned;
            return scanned + 1 - begin;
        }
    }
    return limit - begin == MaxLineLength ? MaxLineLength : 0;
}

}  // namespace brivok
