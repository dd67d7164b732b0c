#include "other_format.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>

#include "../common/files.h"
#include "book/annotation.h"
#include "book/opening_book.h"

namespace brivok {

namespace {

constexpr std::size_t RecordBytes = 16;
using Record = std::array<unsigned char, RecordBytes>;

std::uint64_t bigEndian(std::span<const unsigned char> bytes) {
    std::uint64_t value = 0;
    for (const unsigned char byte : bytes) value = value << 8U | byte;
    return value;
}

std::uint64_t keyOf(const Record& record) { return bigEndian(std::span(record).first(8)); }

/// From the lowest bit: 6 bits for the square that the man goes to, 6 for its own (a1, b1, ... h8),
/// 3 for the new man of a promotion: none, knight, bishop, rook or queen.
bool hasPossibleMove(const Record& record) {
    const std::uint64_t move = bigEndian(std::span(record).subspan(8, 2));
    const std::uint64_t to = move & 63U;
    const std::uint64_t from = move >> 6U & 63U;
    const std::uint64_t promotion = move >> 12U;
    const std::uint64_t rank = to / 8;
    return from != to && (promotion == 0 || (promotion <= 4 && (rank == 0 || rank == 7)));
}

/// What stands in the place of the annotation in a book of ours is, in the other format, half of
/// the second key: four bytes that look like nothing.
bool beginsAsOurs(std::FILE* file) {
    std::array<unsigned char, BookRecord::Bytes> image;
    if (std::fread(image.data(), 1, image.size(), file) < image.size()) return true;
    std::rewind(file);
    const std::uint32_t mark = recordFromBytes(image).annotation;
    return mark == NoAnnotation || !AnnotationText(mark).empty();
}

}  // namespace

bool hasOtherBookFormat(const std::string& name) {
    std::error_code unknown;
    if (!std::filesystem::is_regular_file(name, unknown)) return false;
    const FileHandle file = openForReading(name);
    if (beginsAsOurs(file.get())) return false;

    Record record;
    std::uint64_t lastKey = 0;
    std::size_t count = 0;
    while ((count = std::fread(record.data(), 1, RecordBytes, file.get())) == RecordBytes) {
        if (keyOf(record) < lastKey || !hasPossibleMove(record)) return false;
        lastKey = keyOf(record);
    }
    return count == 0 && std::ferror(file.get()) == 0;
}

}  // namespace brivok
