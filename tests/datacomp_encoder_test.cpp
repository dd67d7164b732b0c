#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <queue>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/tables/datacomp_symbols.h"
#include "../apps/tables/pack.h"
#include "../apps/tables/prefix_code.h"
#include "engine_fixture.h"

namespace brivok::tables {
namespace {

namespace fs = std::filesystem;

Bytes randomBytes(std::size_t count) {
    std::mt19937 random;
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// Rises and falls like the values of a table, with plateaus and a little noise.
Bytes tableLike(std::size_t count) {
    std::mt19937 random;
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t piece = i % 62;
        const std::size_t king = i / 62 % 62;
        const bool plain = (i / 62 / 62) % 3 == 1 || piece % 9 == king % 7;
        const bool noise = random() % 40 == 0;
        bytes[i] = static_cast<std::uint8_t>(
            plain ? 0 : 90 + (piece * 5 + king) % 23 + (noise ? random() % 4 : 0));
    }
    return bytes;
}

class DatacompEncoderTest : public ::testing::Test {
protected:
    DatacompEncoderTest() {
        std::string name = fs::temp_directory_path() / "brivok-XXXXXX";
        folder = mkdtemp(name.data());
    }
    ~DatacompEncoderTest() override { fs::remove_all(folder); }

    [[nodiscard]] fs::path write(const std::string& name, const Bytes& bytes) const {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return folder / name;
    }
    [[nodiscard]] Bytes read(const std::string& name) const {
        std::ifstream file(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] Bytes packed(const Bytes& bytes, bool best = false) {
        result = packFile(write("plain", bytes), folder / "packed", {.best = best});
        return read("packed");
    }
    [[nodiscard]] std::ptrdiff_t fileCount() const {
        return std::distance(fs::directory_iterator(folder), {});
    }

    fs::path folder;
    PackResult result;  ///< from packed()
};

/// Compares the bits from a byte on with `expected`, in which blanks are ignored.
void expectBits(const Bytes& bytes, std::size_t begin, std::string expected) {
    std::erase(expected, ' ');
    std::string bits;
    for (std::size_t i = begin * 8; bits.size() < expected.size(); ++i) {
        bits += (bytes.at(i / 8) >> (7 - i % 8) & 1) != 0 ? '1' : '0';
    }
    EXPECT_EQ(bits, expected);
}

// Where the bit streams of a one-block file begin: 26 fields of 13 bits, then the code lengths.
constexpr std::size_t BlockTable = 80 + 8;
constexpr std::size_t CodeLengths = BlockTable + (26 * 13 + 7) / 8;

TEST_F(DatacompEncoderTest, UnpacksWhatItHasPacked) {
    Bytes half = randomBytes(3 * BlockSize);
    std::fill_n(half.begin(), BlockSize, std::uint8_t{7});
    const std::pair<const char*, Bytes> cases[] = {
        {"one byte", {5}},
        {"two bytes", {5, 6}},
        {"a lone symbol", {5, 5}},
        {"constant", Bytes(5 * BlockSize, 42)},
        {"constant, a byte more", Bytes(BlockSize + 1, 42)},
        {"random block", randomBytes(BlockSize)},
        {"random, a byte more", randomBytes(BlockSize + 1)},
        {"random but for a block", half},
        {"short table", tableLike(1000)},
        {"one block", tableLike(BlockSize)},
        {"a byte less", tableLike(BlockSize - 1)},
        {"a byte more", tableLike(BlockSize + 1)},
        {"many blocks", tableLike((SlowBuild ? 2 : 6) * BlockSize + 77)},
    };
    for (const auto& [name, bytes] : cases) {
        for (const bool best : {false, true}) {
            SCOPED_TRACE(name + std::string(best ? ", best" : ""));
            EXPECT_EQ(packed(bytes, best).size(), result.packedSize);
            EXPECT_EQ(result.plainSize, bytes.size());
            EXPECT_EQ(unpackFile(folder / "packed", folder / "unpacked"), bytes.size());
            EXPECT_TRUE(read("unpacked") == bytes);
        }
    }
    EXPECT_EQ(fileCount(), 3);
}

TEST_F(DatacompEncoderTest, PacksBytesThatNoSampledBlockHas) {
    constexpr std::size_t BlockCount = 80;  // more than are sampled
    Bytes bytes = tableLike(BlockCount * BlockSize);
    for (std::size_t block = 0; block < BlockCount; ++block) {
        bytes[block * BlockSize + 1234] = static_cast<std::uint8_t>(150 + block);
    }
    EXPECT_LT(packed(bytes).size(), bytes.size() / 8);
    EXPECT_EQ(result.storedBlocks, 0);
    unpackFile(folder / "packed", folder / "unpacked");
    EXPECT_TRUE(read("unpacked") == bytes);
}

TEST_F(DatacompEncoderTest, ShrinksWhatRepeatsAndStoresTheRest) {
    const Bytes table = tableLike(6 * BlockSize);
    EXPECT_LT(packed(table).size(), table.size() / 8);
    EXPECT_EQ(result.storedBlocks, 0);

    const Bytes random = randomBytes(3 * BlockSize);
    EXPECT_LT(packed(random).size(), random.size() + 250);
    EXPECT_EQ(result.storedBlocks, 3);

    Bytes mixed = table;
    mixed.insert(mixed.begin() + BlockSize, random.begin(), random.end());
    EXPECT_LT(packed(mixed).size(), table.size() / 8 + random.size());
    EXPECT_EQ(result.storedBlocks, 3);
}

TEST_F(DatacompEncoderTest, LaysOutStoredBlocks) {
    Bytes bytes(256);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    const Bytes file = packed(bytes);
    ASSERT_EQ(file.size(), CodeLengths + 1 + 4 + 256);
    EXPECT_EQ(Bytes(file.begin() + 60, file.begin() + BlockTable),
              (Bytes{0,    0,    0,    0,    0, 0, 0, 0x88,  // after the text: header size
                     0,    0,    13,   24,   0, 0, 0, 1,    0x00, 0x40, 0x01, 0xF5,  // one block
                     0xD7, 0xAD, 0x24, 0x52,  // checksum of the block,
                     0xD7, 0xAD, 0x24, 0x52}));
    expectBits(file, BlockTable,
               "0000100000000"           // compressed size
               "0000100000000"           // decoded size
               "0000000000001");         // first distance
    EXPECT_EQ(file[CodeLengths], 0x80);  // no code
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), file.end() - 256));
}

TEST_F(DatacompEncoderTest, LaysOutTheCode) {
    const Bytes file = packed({'a', 'a'});
    expectBits(file, BlockTable,
               "0000000000001"
               "0000000000010");
    expectBits(file, CodeLengths,
               // A code for the lengths; its own lengths in one bit each.
               "0 0 00001 "
               "0 0000 1 "                              // lengths 0 and 1 ..
               "0 1111 0 1101 1 "                       // .. and 32, runs of length 0
               "0 1111 0 1111 0 1111 0 1111 0 0100 1 "  // run sizes 38 ..
               "0 0001 1 "                              // .. and 41
               "0 1111 0 0101 "                         // no more until the end
               "1 0 000000 "                            // 97 times 0
               "0 "                                     // 1
               "1 1 101111101 "                         // 926 times 0
               "00");
    EXPECT_EQ(file.back(), 0);
}

TEST_F(DatacompEncoderTest, LaysOutMatches) {
    const Bytes file = packed(Bytes(BlockSize, 'x'));
    expectBits(file, BlockTable,
               "0000000000010"
               "0000000000000");  // a full block
    expectBits(file, file.size() - 2,
               "0 "               // x
               "1 111111110001 "  // one byte back, 4110 bytes plus 4081
               "00");
}

TEST_F(DatacompEncoderTest, ThreadsChangeNothing) {
    const fs::path plain = write("plain", tableLike((SlowBuild ? 5 : 17) * BlockSize));
    std::vector<std::uint64_t> reports;
    packFile(plain, folder / "one");
    packFile(plain, folder / "three",
             {.threads = 3, .progress = [&](std::uint64_t done, std::uint64_t total) {
                  EXPECT_LE(done, total);
                  reports.push_back(total - done);
              }});
    EXPECT_TRUE(read("one") == read("three"));
    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(std::is_sorted(reports.rbegin(), reports.rend()));
    EXPECT_EQ(reports.back(), 0);
}

/// Inverts the checksums of some blocks of a packed file, as if they were of another kind.
Bytes withOtherSums(Bytes file, std::initializer_list<std::size_t> blocks) {
    for (const std::size_t block : blocks) {
        for (std::size_t i = 0; i < datacomp::BlockSumsSize; ++i) {
            file[datacomp::BlockSumsOffset + block * datacomp::BlockSumsSize + i] ^= 0xFF;
        }
    }
    const std::size_t end =
        datacomp::bigEndian32(&file[datacomp::HeaderSizeOffset]) - datacomp::ChecksumSize;
    const std::uint32_t sum = datacomp::checksum(ByteSpan(file).first(end));
    for (std::size_t i = 0; i < datacomp::ChecksumSize; ++i) {
        file[end + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    }
    return file;
}

TEST_F(DatacompEncoderTest, ChecksumsTellDamageFromFilesOfOtherOrigin) {
    const auto agree = [this](const Bytes& file) {
        return forEachUnpackedBlock(write("file", file), [](ByteSpan, auto, auto) {});
    };
    const Bytes three = packed(tableLike(2 * BlockSize + 5));
    EXPECT_TRUE(agree(three));
    EXPECT_FALSE(agree(withOtherSums(three, {0, 1, 2})));
    EXPECT_THROW((void)agree(withOtherSums(three, {0})), AppError);
    EXPECT_THROW((void)agree(withOtherSums(three, {0, 1})), AppError);
    EXPECT_THROW((void)agree(withOtherSums(three, {2})), AppError);
    EXPECT_THROW((void)agree(withOtherSums(packed(tableLike(1000)), {0})), AppError);
    Bytes stored = packed(randomBytes(2 * BlockSize));
    EXPECT_TRUE(agree(stored));
    stored.back() ^= 1;
    EXPECT_THROW((void)agree(stored), AppError);
}

TEST_F(DatacompEncoderTest, FailuresLeaveNothingBehind) {
    const fs::path plain = write("plain", tableLike(1000));
    const fs::path packed = folder / "packed";
    packFile(plain, packed);
    const Bytes good = read("packed");
    fs::create_directory(folder / "directory");
    const fs::path empty = write("empty", {});
    const fs::path large = write("large", {});
    fs::resize_file(large, std::uint64_t{1} << 32);
    Bytes bytes = good;
    bytes.back() ^= 1;
    bytes.pop_back();
    const fs::path shortened = write("shortened", bytes);
    bytes = good;
    bytes[BlockTable] ^= 1;
    const fs::path damaged = write("damaged", bytes);
    const std::ptrdiff_t files = fileCount();

    EXPECT_THROW(packFile(plain, folder / "missing" / "file"), AppError);
    EXPECT_THROW(packFile(plain, folder / "directory"), AppError);
    for (const fs::path& input : {folder / "missing", folder / "directory", empty, large}) {
        EXPECT_THROW(packFile(input, packed), AppError) << input;
    }
    EXPECT_THROW(unpackFile(packed, folder / "missing" / "file"), AppError);
    EXPECT_THROW(unpackFile(packed, folder / "new", {.sha256 = std::string(64, '0')}), AppError);
    for (const fs::path& input : {folder / "missing", plain, empty, shortened, damaged}) {
        EXPECT_THROW(unpackFile(input, folder / "new"), AppError) << input;
    }
    EXPECT_EQ(fileCount(), files);
    EXPECT_TRUE(read("packed") == good);
}

/// Total length of the optimal code without a length limit: the sum of Huffman's inner nodes.
std::uint64_t huffmanSize(const std::vector<std::uint64_t>& counts) {
    std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> nodes;
    for (const std::uint64_t count : counts) {
        if (count != 0) nodes.push(count);
    }
    std::uint64_t size = 0;
    while (nodes.size() > 1) {
        std::uint64_t sum = nodes.top();
        nodes.pop();
        sum += nodes.top();
        nodes.pop();
        nodes.push(sum);
        size += sum;
    }
    return size;
}

TEST(PrefixCode, IsCompleteWithinTheLimitAndOptimalWithoutIt) {
    std::vector<std::uint64_t> fibonacci = {0, 1, 1};
    while (fibonacci.size() < 30) {
        fibonacci.push_back(*(fibonacci.end() - 1) + *(fibonacci.end() - 2));
    }
    std::vector<std::uint64_t> even(1024, 3);
    std::vector<std::uint64_t> mixed(300);
    std::mt19937 random;
    for (std::uint64_t& count : mixed) count = random() % 5 == 0 ? 0 : random() >> random() % 32;

    for (const auto& counts : {fibonacci, even, mixed}) {
        for (const unsigned limit : {10U, 15U, 40U}) {
            const std::vector<std::uint8_t> lengths = codeLengths(counts, limit);
            std::uint64_t size = 0;
            std::uint64_t space = 0;  // in units of 2^-40
            for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
                ASSERT_EQ(lengths[symbol] == 0, counts[symbol] == 0);
                ASSERT_LE(lengths[symbol], limit);
                size += lengths[symbol] * counts[symbol];
                if (lengths[symbol] != 0) space += std::uint64_t{1} << (40 - lengths[symbol]);
            }
            EXPECT_EQ(space, std::uint64_t{1} << 40);
            EXPECT_GE(size, huffmanSize(counts));
            EXPECT_TRUE(limit < 40 || size == huffmanSize(counts));
        }
    }
    EXPECT_EQ(codeLengths(std::vector<std::uint64_t>{0, 9, 0}, 15), (Bytes{0, 1, 0}));
    EXPECT_EQ(codeLengths(std::vector<std::uint64_t>{1, 1, 1, 100}, 2), (Bytes{2, 2, 2, 2}));
}

}  // namespace
}  // namespace brivok::tables
