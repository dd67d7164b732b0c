#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <system_error>

#include "table_error.h"

namespace brivok::tables {

/// A file that appears under its name when it is finished, or not at all.
class NewFile {
public:
    explicit NewFile(const std::filesystem::path& itsName) : name(itsName), temporary(itsName) {
        temporary += ".tmp";
        stream.open(temporary, std::ios::binary | std::ios::trunc);
        if (!stream) fail(temporary, "cannot be made");
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (finished) return;
        stream.close();
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
    }

    void write(std::span<const std::uint8_t> bytes) {
        if (!stream.write(reinterpret_cast<const char*>(bytes.data()),
                          static_cast<std::streamsize>(bytes.size()))) {
            fail(temporary, "cannot be written");
        }
    }
    void rewind() { stream.seekp(0); }

    void finish() {
        stream.close();
        if (!stream) fail(temporary, "cannot be written");
        std::error_code failure;
        std::filesystem::rename(temporary, name, failure);
        if (failure) fail(name, "cannot be made: " + failure.message());
        finished = true;
    }

private:
    std::filesystem::path name;
    std::filesystem::path temporary;
    std::ofstream stream;
    bool finished = false;
};

}  // namespace brivok::tables
