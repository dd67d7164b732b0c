#include "folder.h"

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <span>
#include <string>
#include <system_error>

namespace brivok {

namespace {

std::filesystem::path folder;

void leaveFolder() {
    std::error_code unknown;
    std::filesystem::remove_all(folder, unknown);
}

}  // namespace

void fuzz::writeFile(const char* name, std::string_view content) {
    std::ofstream(name, std::ios::binary) << content;
}

void fuzz::removeFiles() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) std::filesystem::remove(entry);
    }
}

}  // namespace brivok

/// Shorter histories of freed memory and of stacks: they cost time.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=16:malloc_context_size=8";
}

/// Called by libFuzzer before anything else.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    // Make the paths of inputs absolute: the working directory is about to change.
    static std::list<std::string> paths;
    for (char*& argument : std::span(*arguments, static_cast<std::size_t>(*count)).subspan(1)) {
        if (*argument == '-') continue;
        argument = paths.emplace_back(std::filesystem::absolute(argument).string()).data();
    }
    std::string name = (std::filesystem::temp_directory_path() / "brivok-fuzz-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        std::fprintf(stderr, "cannot make a folder like %s\n", name.c_str());
        std::exit(1);
    }
    brivok::folder = name;
    std::filesystem::current_path(brivok::folder);
    std::atexit(brivok::leaveFolder);
    std::filesystem::create_directory("logs");
    // Files to which the engine appends would grow from run to run.
    for (const char* const grows : {"brivoklog.txt", "suite-results.txt", "suite-notfound.epd"}) {
        std::filesystem::create_symlink("/dev/null", grows);
    }
    return 0;
}
