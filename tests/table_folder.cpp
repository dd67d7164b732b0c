#include "table_folder.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "egtb/block_cache.h"

namespace brivok {

namespace {

void forgetTables() {
    (void)RegisterTables("no such folder");
    tablebases = TablebaseState{};
    (void)blockCache.InitCache(0);
}

}  // namespace

const TablebaseDescriptor& tableNamed(std::string_view signature) {
    return *std::find_if(tablebaseDescriptors.begin(), tablebaseDescriptors.end(),
                         [signature](const auto& table) { return table.signature() == signature; });
}

TableFolderTest::TableFolderTest()
    : folder(std::filesystem::path(::testing::TempDir()) /
             ("table files of " + std::to_string(::getpid()))) {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    forgetTables();
}

TableFolderTest::~TableFolderTest() {
    forgetTables();
    std::filesystem::remove_all(folder);
}

void TableFolderTest::write(const std::string& name, std::uint64_t length,
                            const std::map<std::uint64_t, int>& bytes) const {
    const std::filesystem::path path = folder / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).close();
    std::filesystem::resize_file(path, length);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    for (const auto& [at, byte] : bytes) {
        file.seekp(static_cast<std::streamoff>(at));
        file.put(static_cast<char>(byte));
    }
    ASSERT_TRUE(file.flush());
}

void TableFolderTest::open(std::uint32_t cacheBytes, const std::string& directories) const {
    tablebases.tbDirectories.clear();
    InitTablebases(directories.empty() ? folder.string() : directories, cacheBytes);
}

}  // namespace brivok
