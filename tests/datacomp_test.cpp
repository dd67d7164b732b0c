#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "datacomp_drive.h"

namespace brivok {
namespace {

using Lengths = std::vector<std::uint8_t>;

/// Numbers that are the same on every system.
class Dice {
public:
    explicit Dice(unsigned seed) : engine(seed) {}
    unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }

private:
    std::mt19937 engine;
};

struct BitWriter {
    Bytes bytes;
    std::size_t used = 0;

    void put(std::uint64_t number, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit, ++used) {
            if (used % 8 == 0) bytes.push_back(0);
            bytes.back() |= static_cast<std::uint8_t>((number >> bit & 1U) << (7 - used % 8));
        }
    }
};

/// The symbols of a canonical code, by lengths.
struct Code {
    Lengths lengths;
    std::vector<std::uint32_t> codes;

    explicit Code(Lengths of) : lengths(std::move(of)), codes(lengths.size()) {
        std::uint32_t next = 0;
        for (unsigned length = 1; length <= 31; ++length, next <<= 1U) {
            for (std::size_t i = 0; i < lengths.size(); ++i) {
                if (lengths[i] == length) codes[i] = next++;
            }
        }
        // A lone symbol takes no bits.
        lone = std::count(lengths.begin(), lengths.end(), 0) + 1 == std::ssize(lengths);
    }
    void put(BitWriter& bits, unsigned symbol) const {
        ASSERT_NE(lengths[symbol], 0) << symbol;
        if (!lone) bits.put(codes[symbol], lengths[symbol]);
    }

private:
    bool lone = false;
};

/// A complete code of the given symbols among `count`: leaves of a tree that grows at random, the
/// more in depth the higher `depth` (0 .. 7).
Lengths randomLengths(std::vector<unsigned> symbols, std::size_t count, unsigned depth,
                      Dice& dice) {
    Lengths leaves = {0}, lengths(count);
    while (leaves.size() < symbols.size()) {
        std::size_t split = dice.below(8) < depth ? leaves.size() - 1 : dice.below(leaves.size());
        while (leaves[split] == 31) split = dice.below(leaves.size());
        leaves.push_back(++leaves[split]);
    }
    if (leaves.size() == 1) leaves[0] = 1;
    for (const std::uint8_t length : leaves) {
        if (symbols.empty()) break;
        const auto pick = symbols.begin() + dice.below(symbols.size());
        lengths[*pick] = length;
        symbols.erase(pick);
    }
    return lengths;
}

/// The lengths of the two codes behind the lengths of the big one, as they stand in a header.
void putSmallLengths(BitWriter& bits, const Lengths& lengths) {
    bits.put(0, 1);
    bits.put(5, 5);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        bits.put(lengths[i], 5);
        if (lengths[i] != 0) continue;
        unsigned more = 0;
        while (more < 15 && i + 1 < lengths.size() && lengths[i + 1] == 0) ++more, ++i;
        bits.put(more, 4);
    }
}

/// The code lengths in the form with runs, whose codes are random ones.
void putLengths(BitWriter& bits, const Lengths& lengths, Dice& dice) {
    struct Run {
        unsigned value, code = 0, extra = 0;
    };
    std::vector<Run> runs;
    std::vector<unsigned> values, codes;
    const auto note = [](std::vector<unsigned>& seen, unsigned symbol) {
        if (std::find(seen.begin(), seen.end(), symbol) == seen.end()) seen.push_back(symbol);
    };
    for (std::size_t i = 0; i < lengths.size();) {
        unsigned length = 1;
        while (i + length < lengths.size() && lengths[i + length] == lengths[i]) ++length;
        Run run{lengths[i]};
        if (length >= 2 && dice.below(16) != 0) {
            run.value += 32;
            run.code = length - 2;
            if (length >= 34) {
                const auto k = static_cast<unsigned>(std::bit_width(length - 33)) - 1;
                run.code = 32 + k;
                run.extra = length - 33 - (1U << k);
            }
            note(codes, run.code);
        } else {
            length = 1;
        }
        note(values, run.value);
        runs.push_back(run);
        i += length;
    }
    Lengths small = randomLengths(values, 64, 5, dice);
    const Lengths second = randomLengths(codes, 64, 3, dice);
    const Code valueCode(small), runCode(second);
    small.insert(small.end(), second.begin(), second.end());
    bits.put(0, 1);
    putSmallLengths(bits, small);
    for (const Run& run : runs) {
        valueCode.put(bits, run.value);
        if (run.value >= 32) runCode.put(bits, run.code);
        if (run.value >= 32 && run.code >= 32) bits.put(run.extra, static_cast<int>(run.code) - 32);
    }
}

/// The checksum bit by bit, without a table: set bits shift, clear ones take the polynomial.
std::uint32_t slowChecksum(const std::uint8_t* bytes, std::size_t count) {
    std::uint32_t sum = 0;
    for (; count != 0; --count) {
        std::uint32_t low = (sum ^ *bytes++) & 0xFFU;
        for (int i = 0; i < 8; ++i) low = (low & 1U) != 0 ? low >> 1U : low >> 1U ^ 0xEDB88320U;
        sum = sum >> 8U ^ low;
    }
    return sum;
}

void put32(Bytes& bytes, std::size_t at, std::uint64_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    }
}

Bytes sealed(Bytes file, std::size_t size) {
    put32(file, size - 4, slowChecksum(file.data(), size - 4));
    return file;
}

/// A compressed file to be: its code and distances, and blocks that are given symbol by symbol.
struct Packed {
    Packed(Lengths lengths, std::uint32_t log, unsigned seed = 1)
        : code(std::move(lengths)), blockLog(log), dice(seed) {
        for (unsigned i = 0; i < 24; ++i) distances.push_back(i + 1);
    }
    explicit Packed(std::uint32_t log = 13) : Packed(Lengths(1024), log) {}

    void startBlock(std::size_t size = 0) {
        bits = {};
        data.clear();
        blockSize = size != 0 ? size : std::size_t{1} << blockLog;
    }
    void literal(unsigned byte) {
        code.put(bits, byte);
        data.push_back(static_cast<std::uint8_t>(byte));
    }
    void match(unsigned slot, unsigned lengthCode, unsigned extra = 0) {
        code.put(bits, 256 + 32 * slot + lengthCode);
        if (lengthCode >= 15) bits.put(extra, static_cast<int>(lengthCode) - 14);
        for (unsigned left = lengthOf(lengthCode, extra); left != 0; --left) {
            const std::size_t from = data.size() - distances[slot];
            data.push_back(from < data.size() ? data[from] : std::uint8_t{0});
        }
    }
    static unsigned lengthOf(unsigned lengthCode, unsigned extra) {
        return lengthCode < 15 ? lengthCode + 1 : (1U << (lengthCode - 14)) + extra + 14;
    }
    [[nodiscard]] bool full() const { return data.size() >= blockSize; }

    /// Ends the block, which the decoder is to fill with `data`.
    void endBlock() {
        data.resize(blockSize);
        decoded.push_back(data);
        // Never empty, nor as long as a stored block: bits behind the last symbol are not read.
        if (bits.bytes.empty()) bits.bytes.push_back(0);
        if (bits.bytes.size() == blockSize) bits.bytes.push_back(0);
        blocks.push_back(bits.bytes.size() <= std::size_t{1} << blockLog ? bits.bytes : data);
    }
    void store(Bytes bytes) {
        blocks.push_back(bytes);
        decoded.push_back(std::move(bytes));
    }

    [[nodiscard]] Bytes file() {
        BitWriter fields;
        const int width = static_cast<int>(blockLog);
        for (const Bytes& block : blocks) fields.put(block.size(), width);  // a full one is 0
        fields.put(decoded.empty() ? 0 : decoded.back().size(), width);
        for (const unsigned distance : distances) fields.put(distance, width);
        fields.put(0, static_cast<int>((8 - fields.used % 8) % 8));
        codesAt = 80 + 8 * blocks.size() + fields.bytes.size();
        if (code.lengths == Lengths(1024)) {
            fields.put(1, 1);
        } else {
            putLengths(fields, code.lengths, dice);
        }
        Bytes file(datacomp::Signature.begin(), datacomp::Signature.end());
        file.resize(80 + 8 * blocks.size());
        file.insert(file.end(), fields.bytes.begin(), fields.bytes.end());
        file.resize(file.size() + 4);
        headerSize = file.size();
        put32(file, 64, headerSize);
        file[70] = static_cast<std::uint8_t>(blockLog);
        file[71] = 24;
        put32(file, 72, blocks.size());
        put32(file, 76, 4194805);
        file = sealed(file, headerSize);
        for (const Bytes& block : blocks) file.insert(file.end(), block.begin(), block.end());
        return file;
    }

    /// Every block decodes to what it was made of.
    void check() {
        const MemoryFile memory(file());
        std::unique_ptr<DatacompFile> decoder;
        ASSERT_EQ(OpenDatacompFile(memory.get(), decoder), DatacompFailure::None);
        ASSERT_EQ(decoder->blockCount, std::ssize(blocks));
        ASSERT_EQ(decoder->blockSize, 1 << blockLog);
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            Bytes output;
            const auto block = static_cast<std::uint32_t>(i);
            ASSERT_EQ(decodeBlock(*decoder, memory.get(), block, output), DatacompFailure::None)
                << i;
            output.resize(decoded[i].size());
            ASSERT_EQ(output, decoded[i]) << i;
        }
        ASSERT_EQ(decoder->lastBlockSize, std::ssize(decoded.back()));
    }

    Code code;
    std::uint32_t blockLog;
    Dice dice;
    std::vector<unsigned> distances;
    std::vector<Bytes> blocks, decoded;
    std::size_t headerSize = 0, codesAt = 0;  // of the file written last

    BitWriter bits;  // the block at work
    Bytes data;
    std::size_t blockSize = 0;
};

DatacompFailure openFailure(const Bytes& bytes) {
    const MemoryFile file(bytes);
    std::unique_ptr<DatacompFile> decoder;
    const DatacompFailure failure = OpenDatacompFile(file.get(), decoder);
    EXPECT_EQ(decoder == nullptr, failure != DatacompFailure::None);
    return failure;
}

/// A code of all bytes and of the matches of the first two distances.
Lengths usualLengths() {
    Dice dice(5);
    std::vector<unsigned> symbols;
    for (unsigned i = 0; i < 256 + 64; ++i) symbols.push_back(i);
    return randomLengths(symbols, 1024, 0, dice);
}

/// Files of random codes, flat ones and such of up to 31 bits, of up to all symbols, and blocks of
/// random symbols: the rare ones too, and matches of all kinds that fit.
TEST(Datacomp, DecodesFilesOfAllCodesAndMatches) {
    int compressed = 0, loose = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        const std::size_t wanted = std::array{2U, 12U, 40U, 300U, 1024U}[dice.below(5)];
        std::vector<unsigned> symbols = {dice.below(256)};
        while (symbols.size() < wanted) {
            const unsigned symbol = dice.below(1024);
            if (wanted == 1024 || std::count(symbols.begin(), symbols.end(), symbol) == 0) {
                symbols.push_back(wanted == 1024 ? static_cast<unsigned>(symbols.size()) : symbol);
            }
        }
        if (wanted == 1024) symbols[0] = 0;
        Packed packed(randomLengths(symbols, 1024, dice.below(8), dice), 7 + dice.below(7), seed);
        for (unsigned& distance : packed.distances) {
            distance = dice.below(dice.below(2) != 0 ? 12 : 127);  // 0 is legal, if never used
        }
        const unsigned count = 1 + dice.below(4);
        for (unsigned block = 0; block < count; ++block) {
            const auto full = std::size_t{1} << packed.blockLog;
            packed.startBlock(block + 1 < count ? full : 1 + dice.below(full));
            while (!packed.full()) {
                unsigned symbol = symbols[dice.below(symbols.size())];
                const unsigned mask = (1U << packed.code.lengths[symbol]) - 1;
                if (dice.below(64) != 0 && (dice.below(mask + 1ULL) & 63U) != 0) continue;
                const unsigned slot = (symbol - 256) / 32, code = symbol % 32;
                const unsigned extra = code < 15 ? 0 : dice.below(1U << (code - 14));
                const std::size_t left = packed.blockSize - packed.data.size();
                const std::size_t length = symbol < 256 ? 1 : Packed::lengthOf(code, extra);
                if (symbol >= 256 && (packed.distances[slot] - 1 >= packed.data.size() ||
                                      (length > 16 && length > left))) {
                    symbol = symbols[0];
                }
                if (symbol < 256) {
                    packed.literal(symbol);
                } else {
                    packed.match(slot, code, extra);
                    loose += length > left ? 1 : 0;
                }
            }
            packed.endBlock();
            compressed += packed.blocks.back().size() != packed.decoded.back().size() ? 1 : 0;
        }
        packed.check();
    }
    EXPECT_GT(compressed, 50);
    EXPECT_GT(loose, 5);
}

TEST(Datacomp, DecodesBlocksThatTakeNoCode) {
    Bytes noise(8192);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<std::uint8_t>(i * i >> 5U);
    for (const std::size_t last : {8192U, 8191U, 1U}) {
        Packed stored;
        for (int block = 0; block < 3; ++block) stored.store(noise);
        stored.store(Bytes(noise.begin(), noise.begin() + std::ptrdiff_t(last)));
        stored.check();
    }
    // A lone symbol fills all blocks, and so does symbol 0 if no symbol has a code.
    for (const unsigned symbol : {0U, 255U, 256U}) {
        Lengths lengths(1024);
        if (symbol < 256) lengths[symbol] = 1;
        Packed lone(lengths, 13);
        for (const std::size_t size : {8192U, 100U}) {
            lone.startBlock(size);
            lone.data.assign(size, static_cast<std::uint8_t>(symbol));
            lone.endBlock();
        }
        lone.check();
    }
}

TEST(Datacomp, FailsByTheFirstThingThatIsWrong) {
    Packed packed(usualLengths(), 13);
    packed.startBlock(100);
    while (!packed.full()) packed.literal(packed.dice.below(200));
    packed.endBlock();
    const Bytes good = packed.file();
    const std::size_t size = packed.headerSize;
    ASSERT_EQ(openFailure(good), DatacompFailure::None);

    using enum DatacompFailure;
    const auto cut = [](std::size_t to) { return [to](Bytes& file) { file.resize(to); }; };
    const auto set = [](std::size_t at, int value) {
        return [=](Bytes& file) { file[at] = static_cast<std::uint8_t>(value); };
    };
    const auto word = [](std::size_t at, std::uint64_t value) {
        return [=](Bytes& file) { put32(file, at, value); };
    };
    const struct {
        const char* what;
        DatacompFailure failure;
        std::vector<std::function<void(Bytes&)>> changes;
    } cases[] = {
        {"no file", Read, {cut(0)}},
        {"short", Read, {cut(79)}},
        {"another signature", Read, {set(63, 1)}},
        {"signature before fields", Read, {set(10, 0), set(70, 17), cut(80)}},
        {"blocks too large", Broken, {set(70, 17), cut(80)}},
        {"header too small", Broken, {word(64, 83)}},
        {"no header", Broken, {word(64, 3)}},
        {"other distances", Broken, {set(71, 23)}},
        {"another variant", Broken, {set(79, 0xF4), cut(80)}},
        {"header cut", OutOfMemory, {cut(size - 1)}},
        {"header size that is not true", OutOfMemory, {word(64, 0xFFFFFFFF)}},
        {"more blocks than the header has", Broken, {word(72, 0xFFFFFFFF)}},
        {"blocks of a negative number", Broken, {word(72, 0x80000000)}},
        {"block table into the code", Broken, {word(72, (size - 80) / 8)}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        Bytes file = good;
        for (const auto& change : one.changes) change(file);
        const std::size_t header = file.size() < 80 ? 0 : datacomp::bigEndian32(&file[64]);
        if (header >= 84 && header <= file.size()) file = sealed(file, header);
        EXPECT_EQ(openFailure(file), one.failure);
    }
    for (std::size_t at = 80; at < size; ++at) {
        Bytes file = good;
        file[at] ^= 0x10U;
        EXPECT_EQ(openFailure(file), Broken) << at;
    }
    for (std::size_t end = 84; end < size; ++end) {
        Bytes file(good.begin(), good.begin() + std::ptrdiff_t(end));
        put32(file, 64, end);
        EXPECT_EQ(openFailure(sealed(file, end)), Broken) << "bits past " << end;
    }
    // The blocks end beyond what an offset holds.
    Packed large(16);
    large.blocks.assign(65536, {});
    EXPECT_EQ(openFailure(large.file()), Broken);
}

/// Code lengths given bit by bit.
TEST(Datacomp, RefusesCodesThatAreNone) {
    using enum DatacompFailure;
    using Fields = std::vector<std::pair<unsigned, int>>;
    const auto failure = [](BitWriter bits, const Fields& fields) {
        for (const auto& [number, width] : fields) bits.put(number, width);
        Packed packed;
        Bytes file = packed.file();
        file.resize(packed.codesAt);
        file.insert(file.end(), bits.bytes.begin(), bits.bytes.end());
        file.resize(file.size() + 4);
        put32(file, 64, file.size());
        return openFailure(sealed(file, file.size()));
    };
    // Lengths of 0 only: at once, by a code of nothing, and by one given in runs of 16 zeros.
    const unsigned ones = 0xFFFFFFFF;
    EXPECT_EQ(failure({}, {{1, 1}}), None);
    EXPECT_EQ(failure({}, {{0, 1}, {1, 1}}), None);
    EXPECT_EQ(failure({}, {{0, 2}, {0, 5}, {ones, 32}}), None);
    EXPECT_EQ(failure({}, {{0, 2}, {0, 5}, {ones - 1, 32}, {0, 4}}), None);
    EXPECT_EQ(failure({}, {{0, 2}, {0, 5}, {ones - 1, 32}, {1, 4}}), Broken);
    EXPECT_EQ(failure({}, {{0, 2}, {6, 5}, {32, 6}}), Broken) << "a length of 32";
    BitWriter wide;
    wide.put(9, 7);
    wide.put(257, 9);
    for (int i = 1; i < 128; ++i) wide.put(0, 9 + 4);
    EXPECT_EQ(failure(wide, {}), Broken) << "1 if cut to a byte";

    // A lone value and a lone run, which take no bits but the nine of the run itself.
    const auto runs = [&](unsigned value, unsigned run, std::uint8_t length = 1) {
        Lengths small(128);
        small[value] = length;
        small[64 + 32 + 9] = 1;
        BitWriter bits;
        bits.put(0, 1);
        putSmallLengths(bits, small);
        return failure(bits, {{run - 512 - 33, 9}, {0, 9}});
    };
    EXPECT_EQ(runs(32 + 10, 1024), None);
    EXPECT_EQ(runs(32 + 10, 1023), Broken) << "the second run is too long";
    EXPECT_EQ(runs(32 + 10, 1025), Broken);
    EXPECT_EQ(runs(32 + 9, 1024), Broken) << "more codes than bits";
    EXPECT_EQ(runs(32 + 11, 1024), Broken) << "fewer codes than bits";
    EXPECT_EQ(runs(32 + 10, 1024, 2), Broken) << "a lone symbol of two bits";
    EXPECT_EQ(runs(10, 1024), None) << "a value without runs";
}

/// Blocks of a code that is flat but for one symbol, and what goes wrong with them.
TEST(Datacomp, RefusesBlocksThatLeaveTheirBounds) {
    using enum DatacompFailure;
    const auto blockFailure = [](Packed& packed, std::size_t cut = 0, std::uint32_t block = 0) {
        Bytes bytes = packed.file();
        bytes.resize(bytes.size() - cut);
        const MemoryFile file(bytes);
        std::unique_ptr<DatacompFile> decoder;
        EXPECT_EQ(OpenDatacompFile(file.get(), decoder), None);
        Bytes output;
        return decodeBlock(*decoder, file.get(), block, output);
    };
    Lengths lengths(1024);
    const unsigned symbols[] = {7, 256, 256 + 14, 256 + 15, 256 + 31, 256 + 32, 256 + 64, 1023};
    for (const unsigned symbol : symbols) lengths[symbol] = 3;

    struct Case {
        const char* what;
        DatacompFailure failure;
        std::function<void(Packed&)> write;
    };
    const auto fill = [](unsigned slot, unsigned code, unsigned extra, std::size_t size) {
        return [=](Packed& packed) {
            while (packed.data.size() < size) packed.literal(7);
            packed.match(slot, code, extra);
        };
    };
    const Case cases[] = {
        {"from the start", None, fill(0, 15, 0, 99)},
        {"from before the start", Broken, fill(1, 0, 0, 4)},
        {"nothing is there yet", Broken, fill(0, 0, 0, 0)},
        {"distance 0", Broken, fill(2, 0, 0, 50)},
        {"16 past the end", None, fill(0, 15, 0, 127)},
        {"17 to the end", None, fill(0, 15, 1, 128 - 17)},
        {"17 past the end", Broken, fill(0, 15, 1, 128 - 16)},
        {"the longest", Broken, fill(0, 31, (1U << 17U) - 1, 60)},
        {"the last symbol", Broken, fill(23, 31, 0, 60)},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        Packed packed(lengths, 7);
        packed.distances[1] = 5;
        packed.distances[2] = 0;
        packed.startBlock();
        one.write(packed);
        while (!packed.full()) packed.literal(7);
        packed.endBlock();
        EXPECT_EQ(blockFailure(packed), one.failure);
        EXPECT_EQ(blockFailure(packed, 1), Read);
        EXPECT_EQ(blockFailure(packed, 0, 1), BadArgument);
        EXPECT_EQ(blockFailure(packed, 0, 0xFFFFFFFF), BadArgument);
        packed.blocks[0].pop_back();
        EXPECT_EQ(blockFailure(packed), Broken) << "out of bits";
    }

    Packed none;
    EXPECT_EQ(blockFailure(none), BadArgument);
    Packed large(14);
    large.store(Bytes(1U << 14U));
    EXPECT_EQ(blockFailure(large), BadArgument);

    Lengths match(1024);
    match[256] = 1;
    Packed lone(match, 13);
    lone.blocks = {{0}};
    EXPECT_EQ(blockFailure(lone), Broken);
}

/// Under the sanitizers this shows that no bytes lead out of a buffer.
TEST(Datacomp, SurvivesDamage) {
    std::vector<Bytes> seeds;
    for (const std::uint32_t log : {7U, 13U}) {
        Packed packed(usualLengths(), log);
        for (unsigned block = 0; block < 4; ++block) {
            packed.startBlock();
            packed.literal(block);
            while (!packed.full()) {
                if (packed.dice.below(2) != 0) {
                    packed.literal(packed.dice.below(200));
                } else {
                    packed.match(0, packed.dice.below(15));
                }
            }
            packed.endBlock();
        }
        seeds.push_back(packed.file());
    }
    Dice dice(9);
    int good = 0, opened = 0;
    for (int round = 0; round < 1500; ++round) {
        Bytes file = seeds[dice.below(seeds.size())];
        for (unsigned changes = dice.below(6); changes-- > 0;) {
            const std::size_t at = 64 + dice.below(dice.below(2) != 0 ? 600 : file.size() - 64);
            if (at >= file.size()) continue;
            file[at] = static_cast<std::uint8_t>(dice.below(3) != 0 ? dice.below(256) : 0);
        }
        if (dice.below(8) == 0) file.resize(dice.below(file.size()));
        repairHeader(file);
        const int decoded = decodeAnything(file);
        good += decoded;
        opened += decoded != 0 ? 1 : 0;
    }
    EXPECT_GT(opened, 200);
    EXPECT_LT(good, 4 * 1400);
}

}  // namespace
}  // namespace brivok
