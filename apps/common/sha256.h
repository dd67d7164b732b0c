#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace brivok {

/// The SHA-256 sum of bytes that come piece by piece.
class Sha256 {
public:
    /// Throws AppError if the library refuses.
    Sha256();

    void add(std::span<const std::uint8_t> bytes);

    /// The sum of all bytes so far as 64 lower-case hexadecimal digits. Nothing may be added later.
    [[nodiscard]] std::string finish();

private:
    struct Closer {
        void operator()(void* state) const;
    };
    std::unique_ptr<void, Closer> state;
};

[[nodiscard]] std::string sha256Of(std::span<const std::uint8_t> bytes);

/// The sum of a file, which is read in pieces. Throws AppError.
[[nodiscard]] std::string sha256OfFile(const std::filesystem::path& path);

}  // namespace brivok
