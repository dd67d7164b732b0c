#include "app_error.h"

#include <cerrno>
#include <cstring>

namespace brivok {

void fail(const std::filesystem::path& file, const std::string& reason) {
    throw AppError(file.string() + ": " + reason);
}

void failWithErrno(const std::filesystem::path& file) { fail(file, std::strerror(errno)); }

}  // namespace brivok
