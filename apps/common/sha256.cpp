#include "sha256.h"

#include <gcrypt.h>

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

#include "app_error.h"
#include "files.h"

namespace brivok {
namespace {

gcry_md_hd_t handleOf(const auto& state) { return static_cast<gcry_md_hd_t>(state.get()); }

/// The library wants to be asked for its version before anything else.
bool prepareLibrary() {
    static const bool ready = [] {
        if (gcry_check_version(GCRYPT_VERSION) == nullptr) return false;
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        return true;
    }();
    return ready;
}

}  // namespace

void Sha256::Closer::operator()(void* handle) const {
    gcry_md_close(static_cast<gcry_md_hd_t>(handle));
}

Sha256::Sha256() {
    gcry_md_hd_t handle = nullptr;
    if (!prepareLibrary() || gcry_md_open(&handle, GCRY_MD_SHA256, 0) != 0) {
        throw AppError("SHA-256 is not available: libgcrypt does not start");
    }
    state.reset(handle);
}

void Sha256::add(std::span<const std::uint8_t> bytes) {
    gcry_md_write(handleOf(state), bytes.data(), bytes.size());
}

std::string Sha256::finish() {
    const unsigned char* const sum = gcry_md_read(handleOf(state), GCRY_MD_SHA256);
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < gcry_md_get_algo_dlen(GCRY_MD_SHA256); ++i) {
        text += Digits[sum[i] >> 4U];
        text += Digits[sum[i] & 0xFU];
    }
    return text;
}

std::string sha256Of(std::span<const std::uint8_t> bytes) {
    Sha256 sum;
    sum.add(bytes);
    return sum.finish();
}

std::string sha256OfFile(const std::filesystem::path& path) {
    constexpr std::size_t PieceSize = 1 << 16;
    const FileHandle file = openForReading(path);
    std::vector<std::uint8_t> piece(PieceSize);
    Sha256 sum;
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
        sum.add(std::span(piece).first(count));
    }
    if (std::ferror(file.get()) != 0) failWithErrno(path);
    return sum.finish();
}

}  // namespace brivok
