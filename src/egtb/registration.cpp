#include "egtb/registration.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "egtb/block_cache.h"
#include "egtb/material_lookup.h"
#include "egtb/table_directory.h"
#include "egtb/table_files.h"
#include "egtb/table_index.h"
#include "egtb/tablebase_probe.h"
#include "shell/base/report.h"

namespace brivok {

namespace {

constexpr std::size_t LongestDirectory = 1023;  // characters

/// Ids of the last tables with 3 and 4 men.
constexpr int LastOf3Men = 5;
constexpr int LastOf4Men = 35;
constexpr int LastOf5Men = 145;

/// Compressed files of tables up to this id may have 8.3 names.
constexpr int LastShortName = 110;

/// Found since the program started; never reset.
int compressedFiles = 0;

[[noreturn]] void endWithoutMemory(std::size_t bytes) {
    EndAtOnce("Cannot allocate " + std::to_string(bytes) + " bytes of memory");
}

/// Null for no path, a folder, which some systems can open, and a pipe, which would block.
TableFile openRegularFile(const std::string& path) {
    if (path.empty()) return nullptr;
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) ? openTableFile(path) : nullptr;
}

template <class Object>
std::unique_ptr<Object> makeOrNone() {
    try {
        return std::make_unique<Object>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::string wordsFor(DatacompFailure failure) {
    switch (failure) {
        case DatacompFailure::Read: return "read error";
        case DatacompFailure::OutOfMemory: return "out of memory";
        case DatacompFailure::Broken: return "file broken";
        default: return "error " + std::to_string(static_cast<int>(failure));
    }
}

/// One file of a table, with the names it may have.
struct FileSlot {
    const TablebaseDescriptor& table;
    unsigned side;
    std::size_t part;

    [[nodiscard]] bool isSplit() const { return (table.flags & Split) != 0; }
    [[nodiscard]] std::uint64_t size() const { return table.size[side]; }
    [[nodiscard]] std::uint64_t entryBytes() const { return (table.flags & TwoByte) != 0 ? 2 : 1; }

    /// Without a separator.
    [[nodiscard]] std::string extension() const { return side == 0 ? "nbw" : "nbb"; }

    [[nodiscard]] std::string stem() const {
        constexpr std::string_view PartLetters = "0123456789abcdefgh";
        std::string name(table.signature());
        if (isSplit()) name += std::string(".") + PartLetters[part];
        return name;
    }
};

/// Decoded length of a compressed file, in entries.
std::uint64_t entriesIn(const DatacompFile& decoder, const FileSlot& slot) {
    const std::uint64_t fullBlocks = decoder.blockCount - std::uint64_t{1};
    return fullBlocks * (ChunkBytes / slot.entryBytes()) +
           decoder.lastBlockSize / slot.entryBytes();
}

/// The file must hold all entries of its side; in a split table, a full part or the rest.
void checkLength(const std::string& path, const FileSlot& slot, std::uint64_t length) {
    std::uint64_t whole = slot.size();
    std::uint64_t rest = slot.size();
    if (whole == 0) return;
    if (slot.isSplit()) {
        whole = (std::uint64_t{1} << PartBytesLog) / slot.entryBytes();
        rest %= whole;
    }
    if (length == whole || length == rest) return;
    EndAtOnce(path + " corrupted " + std::to_string(whole) + " " + std::to_string(rest) + " " +
              std::to_string(length));
}

void checkPlainFile(const std::string& path, const FileSlot& slot, std::FILE* file) {
    // Larger files are not checked: their length may not fit in a long.
    if (slot.entryBytes() != 1 || slot.size() >= std::uint64_t{1} << 31U) return;
    const long length = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
    if (length < 0) EndAtOnce("Seek in " + path + " failed");
    checkLength(path, slot, static_cast<std::uint64_t>(length));
}

std::unique_ptr<DatacompFile> readHeader(const std::string& path, const FileSlot& slot,
                                         std::FILE* file) {
    std::unique_ptr<DatacompFile> decoder;
    const DatacompFailure failure = OpenDatacompFile(file, decoder);
    if (failure != DatacompFailure::None) {
        EndAtOnce("Unable to read " + path + " - " + wordsFor(failure));
    }
    if (decoder->blockSize != ChunkBytes) {
        EndAtOnce(path + ": Unsupported block size " + std::to_string(decoder->blockSize));
    }
    checkLength(path, slot, entriesIn(*decoder, slot));
    return decoder;
}

/// Opens the compressed file under the first of its names that exists; null if none does.
TableFile openCompressed(const FileSlot& slot, const TableDirectory& dir, std::string& path) {
    const std::string stem = slot.stem();
    const std::string extension = slot.extension();
    const std::pair<bool, std::string> names[] = {
        {true, stem + "." + extension + ".emd"},
        {!slot.isSplit(), stem + "_" + extension + ".emd"},
        {!slot.isSplit(), stem + "_" + extension + "_emd"},
        {slot.table.id <= LastShortName, stem + extension + ".emd"}};
    for (const auto& [allowed, name] : names) {
        if (!allowed) continue;
        path = dir.pathOf(name);
        if (TableFile file = openRegularFile(path)) return file;
    }
    return nullptr;
}

bool RegisterFile(const FileSlot& slot, const TableDirectory& dir) {
    std::unique_ptr<TableSide>& files = tableSide(slot.table.id, slot.side);
    if (files != nullptr && !files->parts[slot.part].fileName.empty()) return true;

    std::string path = dir.pathOf(slot.stem() + "." + slot.extension());
    std::unique_ptr<DatacompFile> decoder;
    if (const TableFile plain = openRegularFile(path)) {
        checkPlainFile(path, slot, plain.get());
    } else if (const TableFile packed = openCompressed(slot, dir, path)) {
        ++compressedFiles;
        decoder = readHeader(path, slot, packed.get());
    } else {
        return false;
    }

    addToMaterialLookup(slot.table.id);
    if (files == nullptr) files = makeOrNone<TableSide>();
    if (files == nullptr) endWithoutMemory(sizeof(TableSide));
    TablePart& part = files->parts[slot.part];
    part.fileName = std::move(path);
    part.decoder = std::move(decoder);
    return true;
}

bool RegisterTableSide(const TablebaseDescriptor& table, unsigned side, const TableDirectory& dir) {
    const std::size_t parts = partCount(table, side);
    std::size_t part = 0;
    while (part < parts && RegisterFile({table, side, part}, dir)) ++part;
    return part > 0;
}

/// Returns the largest id of which it found a file.
int registerDirectory(std::string_view name) {
    const TableDirectory dir(name);
    if (!dir.mayHoldTables()) return 0;
    int largest = 0;
    for (const TablebaseDescriptor& table : tablebaseDescriptors) {
        if (table.id == 0) continue;
        const unsigned sides = (table.flags & SameForBoth) != 0 ? 1 : 2;
        for (unsigned side = 0; side < sides; ++side) {
            if (RegisterTableSide(table, side, dir)) largest = table.id;
        }
    }
    return largest;
}

int menOf(int id) {
    if (id > LastOf5Men) return 6;
    if (id > LastOf4Men) return 5;
    if (id > LastOf3Men) return 4;
    return id > 0 ? 3 : 0;
}

}  // namespace

void InitTablebases(const std::string& dir, std::uint32_t cacheBytes) {
    TablebaseState& state = tablebases;
    if (!state.tbDirectories.empty() && state.tbDirectories == dir) return;
    state.tbDirectories = dir;
    Note("Checking for endgame tablebases in %s\n", dir.c_str());
    state.tbMaxMen = RegisterTables(dir);
    if (state.tbMaxMen != 0) {
        Note("Using %d-men Nalimov's Endgame Tablebases\n", state.tbMaxMen);
        SetCacheSize(cacheBytes);
    } else {
        Note("The Endgames Tablebases were don't found\n");
    }
}

void SetCacheSize(std::uint32_t bytes) {
    if (tablebases.tbMaxMen == 0) return;
    tablebases.tbCacheBytes = bytes;
    if (!blockCache.InitCache(bytes) && bytes != 0) {
        Note("I couldn't allocate EGTB cache\n");
        ExitProgram(1);
    }
    if (tablebases.noteCacheSize) Note("Allocated %u bytes for EGTB cache\n", bytes);
}

int RegisterTables(std::string_view dir) try {
    blockCache.ResetCache();
    CloseTableFiles();
    for (TableSides& sides : tableSides) sides = {};
    decodeScratch.reset();

    int largest = 0;
    for (bool more = true; more;) {
        const std::size_t end = dir.find_first_of(",;");
        largest =
            std::max(largest, registerDirectory(dir.substr(0, std::min(end, LongestDirectory))));
        more = end != std::string_view::npos;
        if (more) dir.remove_prefix(end + 1);
    }

    if (largest != 0) prepareTableIndex();
    if (compressedFiles != 0) {
        decodeScratch = makeOrNone<DecodeScratch>();
        if (decodeScratch == nullptr) {
            EndAtOnce("Cannot allocate decode block: error code " +
                      std::to_string(static_cast<int>(DatacompFailure::OutOfMemory)));
        }
    }
    return menOf(largest);
} catch (const std::bad_alloc&) {
    endWithoutMemory(LargestIndexArrayBytes);
}

}  // namespace brivok
