#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

#include "table_store.h"

namespace brivok::tables {

struct MakerOptions {
    unsigned threads = 1;
    /// If not empty, the distances are kept in files there while a table is made.
    std::filesystem::path scratch = {};
    /// Receives a few words on each step.
    std::function<void(const std::string&)> progress = [](const std::string&) {};
};

/// Receives the contents of the files: those of the first side, then of the second, each in pieces
/// one after the other.
using FileSink = std::function<void(unsigned side, std::span<const std::uint8_t> bytes)>;

/// Makes a table of up to six men, without pawns if there are six; the tables it depends on must be
/// in the store. Throws AppError if a mate takes longer than the entries of the table can hold.
void writeTable(int id, TableStore& store, const MakerOptions& options, const FileSink& sink);

/// The same with all contents in memory.
[[nodiscard]] TableBytes makeTable(int id, TableStore& store, const MakerOptions& options);

/// The same with entries of two bytes, also for tables whose entries have one.
[[nodiscard]] TableBytes makeWideTable(int id, TableStore& store, const MakerOptions& options);

}  // namespace brivok::tables
