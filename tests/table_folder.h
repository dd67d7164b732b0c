#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "egtb/descriptors.h"
#include "egtb/registration.h"
#include "egtb/tablebase_probe.h"
#include "engine_fixture.h"

namespace brivok {

/// The table of a signature.
[[nodiscard]] const TablebaseDescriptor& tableNamed(std::string_view signature);

/// Tests with a folder of table files of their own, and no tables before and after.
class TableFolderTest : public EngineTest {
protected:
    TableFolderTest();
    ~TableFolderTest() override;

    /// Makes a file of this length; bytes that are not told are 0 and take no room on the disk.
    void write(const std::string& name, std::uint64_t length,
               const std::map<std::uint64_t, int>& bytes = {}) const;

    /// Registers the files of the folder, or of a list of directories, and makes the cache.
    void open(std::uint32_t cacheBytes = Megabyte, const std::string& directories = "") const;

    std::filesystem::path folder;
};

}  // namespace brivok
