// A libFuzzer target: whatever the file of an endgame table contains, the engine accepts or refuses
// it, and every probe yields a value in range or none. The first byte chooses the table, the side,
// and whether the rest is a plain or a compressed file. It can also ask for a repair of the rest:
// the correct length for a plain file, a header that passes for a compressed one.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "datacomp_drive.h"
#include "egtb/block_cache.h"
#include "egtb/descriptors.h"
#include "egtb/registration.h"
#include "egtb/tablebase_probe.h"
#include "expect.h"
#include "folder.h"
#include "platform/fake/fake_platform.h"
#include "session.h"
#include "shell/base/settings.h"

namespace brivok {
namespace {

struct Table {
    const char* name;
    const char* fen;  ///< a position in the table
};
constexpr std::array<Table, 5> Tables{{{"kqk", "8/8/3k4/8/4Q3/8/8/K7"},
                                       {"krk", "8/8/3k4/8/7R/8/8/K7"},
                                       {"kbk", "8/8/3k4/8/7B/8/8/K7"},
                                       {"knk", "8/8/3k4/8/7N/8/8/K7"},
                                       {"kpk", "8/8/3k4/8/7P/8/8/K7"}}};

const TablebaseDescriptor& tableNamed(std::string_view name) {
    return *std::ranges::find_if(tablebaseDescriptors,
                                 [name](const auto& table) { return table.signature() == name; });
}

void probe(const Table& table, unsigned side) {
    const TablebaseDescriptor& descriptor = tableNamed(table.name);
    const std::uint64_t size = descriptor.size[side];
    for (std::uint64_t index = 0; index <= size; index += ChunkBytes / 4) {
        (void)ProbeTableValue(descriptor.id, side, index);
    }
    fuzz::expect(ProbeTableValue(descriptor.id, side, size) == NoValue,
                 "nothing lies behind the end");
    for (const char* const toMove : {" w - -", " b - -"}) {
        theBoard.setPositionFromFen(std::string(table.fen) + toMove);
        std::int32_t score = 0;
        if (!TablebaseProbe(theBoard, 1, score)) continue;
        fuzz::expect(score >= -32767 && score <= 32768, "a score is in range");
    }
}

void registerAndProbe(const Table& table, unsigned side) try {
    tablebases.tbDirectories.clear();
    InitTablebases(".", Megabyte);
    probe(table, side);
} catch (const ProcessEnded&) {
}

}  // namespace
}  // namespace brivok

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace brivok;
    if (size == 0) return 0;
    const bool packed = (data[0] & 1) != 0;
    const unsigned side = data[0] >> 1 & 1;
    const bool fit = (data[0] & 4) != 0;
    const Table& table = Tables[(data[0] >> 3) % Tables.size()];

    Bytes bytes(data + 1, data + size);
    if (fit && packed) repairHeader(bytes);
    if (fit && !packed) bytes.resize(tableNamed(table.name).size[side]);
    const std::string name =
        table.name + std::string(side == 0 ? ".nbw" : ".nbb") + (packed ? ".emd" : "");
    fuzz::freshBoard();
    fuzz::writeFile(name.c_str(), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    registerAndProbe(table, side);
    fuzz::removeFiles();
    return 0;
}
