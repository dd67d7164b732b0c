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

[[nodiscard]] const TablebaseDescriptor& tableNamed(std::string_view signature);

/// Tests with their own folder of table files; no tables are registered before or after.
class TableFolderTest : public EngineTest {
protected:
    TableFolderTest();
    ~TableFolderTest() override;

    /// Creates a file of this length. Unlisted bytes are 0 and take no disk space.
    void write(const std::string& name, std::uint64_t length,
               const std::map<std::uint64_t, int>& bytes = {}) const;

    /// Registers the files in the folder, or in a list of directories, and creates the cache.
    void open(std::uint32_t cacheBytes = Megabyte, const std::string& directories = "") const;

    std::filesystem::path folder;
};

}  // namespace brivok
