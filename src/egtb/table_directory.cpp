#include "egtb/table_directory.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "shell/base/words.h"

namespace brivok {

namespace fs = std::filesystem;

namespace {

bool isDirectory(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path.empty() ? "." : path, error);
}

/// Calls `take` with the name of each entry, in no particular order. False if the directory cannot
/// be listed.
template <class Take>
bool forEachEntry(const fs::path& directory, Take take) {
    std::error_code error;
    fs::directory_iterator entry(directory.empty() ? "." : directory, error);
    while (!error && entry != fs::directory_iterator()) {
        take(entry->path().filename().string());
        entry.increment(error);
    }
    return !error;
}

/// The existing directory that the rest of a path leads to from `start`, or an empty path. A name
/// that exists as it is written goes first, the others alphabetically.
fs::path follow(const fs::path& start, fs::path::const_iterator next,
                fs::path::const_iterator end) {
    if (next == end) return start;
    const std::string name = (*next++).string();
    if (isDirectory(start / name)) {
        fs::path exact = follow(start / name, next, end);
        if (!exact.empty()) return exact;
    }
    std::vector<std::string> others;
    forEachEntry(start, [&](const std::string& entry) {
        if (entry != name && lowerCase(entry) == lowerCase(name)) others.push_back(entry);
    });
    std::sort(others.begin(), others.end());
    for (const std::string& other : others) {
        if (!isDirectory(start / other)) continue;
        fs::path inexact = follow(start / other, next, end);
        if (!inexact.empty()) return inexact;
    }
    return {};
}

/// The existing directory of this name in any case, or an empty path. As in any path, a name that
/// ".." takes back must exist, too.
fs::path findInAnyCase(const std::string& name) {
    fs::path way;
    for (const fs::path& part : fs::path(name)) {
        if (part == ".." && !way.empty() && follow({}, way.begin(), way.end()).empty()) return {};
        way = (way / part).lexically_normal();
    }
    return follow({}, way.begin(), way.end());
}

}  // namespace

TableDirectory::TableDirectory(std::string_view name) : prefix(name) {
    found = isDirectory(prefix);
    if (!found) {
        prefix = findInAnyCase(prefix).string();
        found = !prefix.empty();
    }
    if (!found) return;
    listed = forEachEntry(prefix, [this](const std::string& entry) {
        const std::string key = lowerCase(entry);
        // The name of every table begins with a king.
        if (!key.starts_with('k')) return;
        const auto [known, isNew] = entries.try_emplace(key, entry);
        // Several may differ in case alone.
        if (!isNew && (entry == key || (known->second != key && entry < known->second))) {
            known->second = entry;
        }
    });
    if (!prefix.empty() && prefix.back() != '/') prefix += '/';
}

std::string TableDirectory::pathOf(const std::string& fileName) const {
    if (!listed) return prefix + fileName;
    const auto entry = entries.find(fileName);
    return entry == entries.end() ? "" : prefix + entry->second;
}

}  // namespace brivok
