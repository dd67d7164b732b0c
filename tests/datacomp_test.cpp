#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/tables/datacomp_encoder.h"
#include "datacomp_drive.h"
#include "engine_fixture.h"

namespace brivok {
namespace {

using enum DatacompFailure;
using Lengths = std::vector<std::uint8_t>;
using tables::BlockSize;

/// Random numbers that are the same on every system.
class Dice {
public:
    explicit Dice(unsigned seed) : engine(seed) {}
    unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }

private:
    std::mt19937 engine;
};

/// A complete code for the symbols: the leaves of a random tree, which is deeper for higher `depth`
/// (0 to 7).
Lengths randomCode(const std::vector<unsigned>& symbols, unsigned depth, Dice& dice) {
    Lengths leaves = {0}, lengths(datacomp::SymbolCount);
    while (leaves.size() < symbols.size()) {
        std::size_t split = dice.below(8) < depth ? leaves.size() - 1 : dice.below(leaves.size());
        while (leaves[split] == LongestCode) split = dice.below(leaves.size());
        leaves.push_back(++leaves[split]);
    }
    for (std::size_t i = 0; i < leaves.size(); ++i) lengths[symbols[i]] = leaves[i];
    return lengths;
}

/// A file under construction: its code and distances, and blocks given symbol by symbol.
struct Packed {
    explicit Packed(const Lengths& lengths) : coding{{}, tables::PrefixCode(lengths)} {
        std::iota(coding.distances.begin(), coding.distances.end(), std::uint16_t{1});
    }

    void literal(unsigned byte) {
        coding.code.put(writer, byte);
        data.push_back(static_cast<std::uint8_t>(byte));
    }
    void match(unsigned slot, unsigned lengthCode, unsigned extra = 0) {
        coding.code.put(writer, 256 + 32 * slot + lengthCode);
        if (lengthCode >= 15) writer.put(extra, lengthCode - 14);
        for (unsigned left = lengthOf(lengthCode, extra); left != 0; --left) {
            const std::size_t from = data.size() - coding.distances[slot];
            data.push_back(from < data.size() ? data[from] : std::uint8_t{0});
        }
    }
    static unsigned lengthOf(unsigned lengthCode, unsigned extra) {
        return lengthCode < 15 ? lengthCode + 1 : (1U << (lengthCode - 14)) + extra + 14;
    }

    /// Ends a block that decodes to the first `size` bytes of `data`.
    void endBlock(std::size_t size) {
        writer.finish();
        data.resize(size);
        // Never empty and never as long as a stored block; bits after the last symbol are not read.
        if (bits.empty() || bits.size() == size) bits.push_back(0);
        blocks.push_back(bits.size() <= BlockSize ? bits : data);
        decoded.push_back(data);
        bits.clear();
        data.clear();
    }

    [[nodiscard]] Bytes file() const {
        std::vector<tables::BlockRecord> records;
        for (const Bytes& block : blocks) {
            records.push_back({.packedSize = static_cast<std::uint32_t>(block.size())});
        }
        const auto last = static_cast<std::uint32_t>(decoded.back().size());
        Bytes file = makeHeader(records, last, coding);
        for (const Bytes& block : blocks) file.insert(file.end(), block.begin(), block.end());
        return file;
    }

    /// Checks that every block decodes to its data.
    void check() const {
        const MemoryFile memory(file());
        std::unique_ptr<DatacompFile> decoder;
        ASSERT_EQ(OpenDatacompFile(memory.get(), decoder), None);
        ASSERT_EQ(decoder->blockCount, blocks.size());
        ASSERT_EQ(decoder->lastBlockSize, decoded.back().size());
        for (std::uint32_t i = 0; i < blocks.size(); ++i) {
            Bytes output;
            ASSERT_EQ(decodeBlock(*decoder, memory.get(), i, output), None) << i;
            output.resize(decoded[i].size());
            ASSERT_EQ(output, decoded[i]) << i;
        }
    }

    tables::Coding coding;
    std::vector<Bytes> blocks, decoded;
    Bytes bits, data;  ///< of the current block
    tables::BitWriter writer{bits};
};

DatacompFailure openFailure(const Bytes& bytes) {
    const MemoryFile file(bytes);
    std::unique_ptr<DatacompFile> decoder;
    const DatacompFailure failure = OpenDatacompFile(file.get(), decoder);
    EXPECT_EQ(decoder == nullptr, failure != None);
    return failure;
}

DatacompFailure blockFailure(Bytes bytes, std::uint32_t block = 0) {
    const MemoryFile file(std::move(bytes));
    std::unique_ptr<DatacompFile> decoder;
    EXPECT_EQ(OpenDatacompFile(file.get(), decoder), None);
    Bytes output;
    return decodeBlock(*decoder, file.get(), block, output);
}

/// Numbers and their widths in bits.
using Fields = std::vector<std::pair<unsigned, unsigned>>;

/// A header for full blocks, with the code lengths given bit by bit.
Bytes headerWith(const Fields& code, unsigned blockLog = 13, std::size_t blocks = 0) {
    Bytes file(80 + 8 * blocks + ((blocks + 25) * blockLog + 7) / 8);
    file[70] = static_cast<std::uint8_t>(blockLog);
    for (std::size_t i = 0; i < 4; ++i) {
        file[72 + i] = static_cast<std::uint8_t>(blocks >> (24 - 8 * i));
    }
    tables::BitWriter writer(file);
    for (const auto& [number, width] : code) writer.put(number, width);
    writer.finish();
    file.resize(file.size() + 4);
    repairHeader(file);
    return file;
}
const Fields NoCode = {{1, 1}};

/// Random codes, flat or with up to 31 bits, for few or all symbols, and blocks of random symbols,
/// including rare ones and all kinds of matches that fit.
TEST(Datacomp, DecodesAllCodesAndMatches) {
    int compressed = 0, loose = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        std::vector<unsigned> symbols(datacomp::SymbolCount);
        std::iota(symbols.begin(), symbols.end(), 0U);
        std::swap(symbols[0], symbols[dice.below(256)]);
        for (std::size_t i = symbols.size(); --i > 1;) {
            std::swap(symbols[i], symbols[1 + dice.below(i)]);
        }
        symbols.resize(std::array{2U, 12U, 40U, 300U, 1024U}[dice.below(5)]);
        Packed packed(randomCode(symbols, dice.below(8), dice));
        for (std::uint16_t& distance : packed.coding.distances) {
            // 0 is legal if unused.
            distance = static_cast<std::uint16_t>(dice.below(dice.below(2) != 0 ? 12 : 4000));
        }
        for (int blocks = 3; blocks-- > 0;) {
            const std::size_t size = blocks != 0 ? BlockSize : 1 + dice.below(BlockSize);
            while (packed.data.size() < size) {
                const unsigned symbol = symbols[dice.below(symbols.size())];
                if (dice.below(1U << std::min(packed.coding.code.bits(symbol), 6U)) != 0) continue;
                const unsigned slot = (symbol - 256) / 32, code = symbol % 32;
                const unsigned extra = code < 15 ? 0 : dice.below(1U << (code - 14));
                const std::size_t left = size - packed.data.size();
                const std::size_t length = Packed::lengthOf(code, extra);
                if (symbol < 256) {
                    packed.literal(symbol);
                } else if (packed.coding.distances[slot] - 1U < packed.data.size() &&
                           (length <= 16 || length <= left)) {
                    packed.match(slot, code, extra);
                    loose += length > left ? 1 : 0;
                } else {
                    packed.literal(symbols[0]);
                }
            }
            packed.endBlock(size);
            compressed += packed.blocks.back() != packed.decoded.back() ? 1 : 0;
        }
        packed.check();
    }
    EXPECT_GT(compressed, 100);
    EXPECT_GT(loose, 5);

    // With an empty code, everything is symbol 0.
    const Lengths none(datacomp::SymbolCount);
    Packed zeros(none);
    zeros.endBlock(100);
    zeros.check();
}

TEST(Datacomp, FailsByTheFirstThingThatIsWrong) {
    Dice dice(1);
    Packed packed(randomCode({1, 2, 3, 400}, 0, dice));
    packed.literal(2);
    packed.endBlock(1);
    const Bytes good = packed.file();
    const std::size_t size = datacomp::bigEndian32(&good[64]);
    ASSERT_EQ(openFailure(good), None);

    const struct {
        const char* what;
        DatacompFailure failure;
        std::vector<std::pair<std::size_t, std::uint8_t>> changes;
        std::size_t cut = 0;
    } cases[] = {
        {"no file", Read, {}, good.size()},
        {"short", Read, {}, good.size() - 79},
        {"another signature", Read, {{63, 1}}},
        {"signature before fields", Read, {{10, 0}, {70, 17}}, good.size() - 80},
        {"blocks too large", Broken, {{70, 17}}, good.size() - 80},
        {"header too small", Broken, {{66, 0}, {67, 83}}},
        {"no header", Broken, {{66, 0}, {67, 3}}},
        {"other distances", Broken, {{71, 23}}},
        {"another variant", Broken, {{79, 0xF4}}, good.size() - 80},
        {"header cut", OutOfMemory, {}, good.size() - size + 1},
        {"header size that is not true", OutOfMemory, {{64, 0xFF}}},
        {"more blocks than the header has", Broken, {{72, 0x7F}}},
        {"blocks of a negative number", Broken, {{72, 0xFF}}},
        {"block table into the code", Broken, {{75, 2}}},
    };
    const auto sealed = [](Bytes file, std::size_t summed) {
        const std::uint32_t sum = datacomp::checksum(std::span(file).first(summed));
        for (unsigned i = 0; i < 4; ++i) {
            file[summed + i] = static_cast<std::uint8_t>(sum >> (24U - 8U * i));
        }
        return file;
    };
    for (const auto& [what, failure, changes, cut] : cases) {
        Bytes file = good;
        for (const auto& [at, value] : changes) file[at] = value;
        if (cut == 0) file = sealed(file, size - 4);
        file.resize(file.size() - cut);
        EXPECT_EQ(openFailure(file), failure) << what;
    }
    for (std::size_t at = 80; at < size; ++at) {
        Bytes file = good;
        file[at] ^= 0x10U;
        EXPECT_EQ(openFailure(file), Broken) << at;
    }
    for (std::size_t end = 84; end < size; ++end) {
        Bytes file(good.begin(), good.begin() + std::ptrdiff_t(end));
        repairHeader(file);
        EXPECT_EQ(openFailure(file), Broken) << "bits past " << end;
    }
    EXPECT_EQ(openFailure(headerWith(NoCode, 16, 65525)), None);
    EXPECT_EQ(openFailure(headerWith(NoCode, 16, 65526)), Broken) << "past what an offset holds";
}

/// All lengths 0: directly, by an empty code, and by a code given in runs of 16 zeros. Then codes
/// that must be refused.
TEST(Datacomp, ReadsOnlyCodesThatAreComplete) {
    const unsigned ones = 0xFFFFFFFF;
    Fields wide = {{0, 2}, {9, 5}, {257, 9}};
    wide.insert(wide.end(), 127, {0, 9 + 4});
    const struct {
        DatacompFailure failure;
        Fields lengths;
    } cases[] = {
        {None, NoCode},
        {None, {{0, 1}, {1, 1}}},
        {None, {{0, 2}, {0, 5}, {ones, 32}}},
        {None, {{0, 2}, {0, 5}, {ones - 1, 32}, {0, 4}}},
        {Broken, {{0, 2}, {0, 5}, {ones - 1, 32}, {1, 4}}},  // one zero too many
        {Broken, {{0, 2}, {6, 5}, {32, 6}}},                 // length 32
        {Broken, wide},                                      // 1 if truncated to a byte
    };
    for (const auto& one : cases) {
        EXPECT_EQ(openFailure(headerWith(one.lengths)), one.failure) << &one - cases;
    }

    // A single value and a single run, which take only the nine bits of the run itself; or both
    // codes with 31 bits.
    const auto runs = [](unsigned value, unsigned run, std::uint8_t length = 1) {
        Lengths small(128);
        Fields fields = {{0, 2}, {5, 5}};
        if (length == LongestCode) {
            std::iota(small.begin(), small.begin() + length, std::uint8_t{1});
            std::iota(small.begin() + 64, small.begin() + 64 + length, std::uint8_t{1});
        }
        small[value] = length;
        small[64 + 32 + 9] = length == LongestCode ? length : std::uint8_t{1};
        for (const std::uint8_t one : small) {
            fields.emplace_back(one, 5);
            if (one == 0) fields.emplace_back(0, 4);
        }
        const unsigned bits = length == LongestCode ? LongestCode : 0;
        const unsigned longest = (1U << bits) - 1;
        fields.insert(fields.end(), {{longest, bits}, {longest, bits}, {run - 512 - 33, 9}});
        fields.emplace_back(0, 9);
        return openFailure(headerWith(fields));
    };
    EXPECT_EQ(runs(32 + 10, 1024), None);
    EXPECT_EQ(runs(32 + 10, 1024, LongestCode), None);
    EXPECT_EQ(runs(32 + 10, 1023), Broken) << "the second run is too long";
    EXPECT_EQ(runs(32 + 10, 1025), Broken);
    EXPECT_EQ(runs(32 + 9, 1024), Broken) << "more codes than bits";
    EXPECT_EQ(runs(32 + 11, 1024), Broken) << "fewer codes than bits";
    EXPECT_EQ(runs(32 + 10, 1024, 2), Broken) << "a lone symbol of two bits";
    EXPECT_EQ(runs(10, 1024), None) << "a value without runs";
}

/// Blocks with a flat code, and ways to break them.
TEST(Datacomp, RefusesBlocksThatLeaveTheirBounds) {
    Lengths lengths(datacomp::SymbolCount);
    const unsigned symbols[] = {7, 256, 256 + 14, 256 + 15, 256 + 31, 256 + 32, 256 + 64, 1023};
    for (const unsigned symbol : symbols) lengths[symbol] = 3;
    const struct {
        const char* what;
        DatacompFailure failure;
        std::size_t before;  ///< bytes before the match
        unsigned slot, code, extra;
    } cases[] = {
        {"from the start", None, 99, 0, 15, 0},
        {"from before the start", Broken, 4, 1, 0, 0},
        {"nothing is there yet", Broken, 0, 0, 0, 0},
        {"distance 0", Broken, 50, 2, 0, 0},
        {"16 past the end", None, BlockSize - 1, 0, 15, 0},
        {"17 to the end", None, BlockSize - 17, 0, 15, 1},
        {"17 past the end", Broken, BlockSize - 16, 0, 15, 1},
        {"the longest", Broken, 60, 0, 31, (1U << 17U) - 1},
        {"the last symbol", Broken, 60, 23, 31, 0},
    };
    for (const auto& [what, failure, before, slot, code, extra] : cases) {
        SCOPED_TRACE(what);
        Packed packed(lengths);
        packed.coding.distances[1] = 5;
        packed.coding.distances[2] = 0;
        while (packed.data.size() < before) packed.literal(7);
        packed.match(slot, code, extra);
        while (packed.data.size() < BlockSize) packed.literal(7);
        packed.endBlock(BlockSize);
        Bytes file = packed.file();
        EXPECT_EQ(blockFailure(file), failure);
        EXPECT_EQ(blockFailure(file, 1), BadArgument);
        EXPECT_EQ(blockFailure(file, 0xFFFFFFFF), BadArgument);
        file.pop_back();
        EXPECT_EQ(blockFailure(file), Read);
        packed.blocks[0].pop_back();
        EXPECT_EQ(blockFailure(packed.file()), Broken) << "out of bits";
    }
    EXPECT_EQ(blockFailure(headerWith(NoCode)), BadArgument) << "no blocks";
    EXPECT_EQ(blockFailure(headerWith(NoCode, 14, 1)), BadArgument) << "a large block";
}

/// Under the sanitizers this shows that no input leads outside a buffer.
TEST(Datacomp, SurvivesDamage) {
    std::vector<Bytes> seeds;
    for (const auto& seed :
         std::filesystem::directory_iterator(dataPath("../../fuzz/corpus/datacomp"))) {
        std::ifstream stream(seed.path(), std::ios::binary);
        seeds.push_back({std::istreambuf_iterator<char>(stream), {}});
    }
    ASSERT_FALSE(seeds.empty());
    Dice dice(9);
    int opened = 0;
    for (int round = 0; round < 1500; ++round) {
        Bytes file = seeds[dice.below(seeds.size())];
        for (unsigned changes = dice.below(6); changes-- > 0;) {
            file[64 + dice.below(file.size() - 64)] =
                static_cast<std::uint8_t>(dice.below(3) != 0 ? dice.below(256) : 0);
        }
        if (dice.below(8) == 0) file.resize(dice.below(file.size()));
        repairHeader(file);
        opened += decodeAnything(file) != 0 ? 1 : 0;
    }
    EXPECT_GT(opened, 200);
    EXPECT_LT(opened, 1400);
}

}  // namespace
}  // namespace brivok
