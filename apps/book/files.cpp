#include "files.h"

#include <cerrno>
#include <cstring>

#include "book_error.h"

namespace brivok {

FileHandle openForReading(const std::string& name) {
    std::error_code unknown;
    if (std::filesystem::is_directory(name, unknown)) throw BookError(name + " is a folder");
    FileHandle file(std::fopen(name.c_str(), "rb"));
    if (!file) failWithErrno("cannot open " + name);
    return file;
}

FreshFile makeFileBeside(const std::filesystem::path& target) {
    for (int number = 0;; ++number) {
        std::filesystem::path path = target;
        path += ".part" + std::to_string(number);
        FileHandle file(std::fopen(path.c_str(), "w+bx"));
        if (file) return {std::move(file), std::move(path)};
        if (errno != EEXIST) failWithErrno("cannot write beside " + target.string());
    }
}

void failWithErrno(const std::string& what) { throw BookError(what + ": " + std::strerror(errno)); }

}  // namespace brivok
