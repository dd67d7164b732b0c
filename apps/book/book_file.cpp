#include "book_file.h"

#include <array>

#include "../common/app_error.h"
#include "annotation.h"
#include "other_format.h"

namespace brivok {

namespace {

using RecordImage = std::array<unsigned char, BookRecord::Bytes>;

/// The bytes of a record, as recordFromBytes() reads them.
RecordImage imageOf(const BookRecord& record) {
    RecordImage image;
    std::size_t at = 0;
    const auto append = [&](std::uint64_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8U) {
            image[at++] = static_cast<unsigned char>(value & 0xFFU);
        }
    };
    append(record.key, 8);
    for (const std::uint32_t word :
         {record.whiteWins, record.blackWins, record.draws, record.annotation}) {
        append(word, 4);
    }
    return image;
}

}  // namespace

FileHandle openBookFile(const std::string& name) {
    FileHandle file = openForReading(name);
    if (hasOtherBookFormat(name)) {
        fail(name,
             "is a book in the format of other programs, with records of 16 bytes; Brivok reads "
             "only its own, which brivok-book build makes from games");
    }
    return file;
}

std::filesystem::path bookTarget(const std::string& name) {
    std::error_code unknown;
    if (!std::filesystem::exists(name, unknown)) return name;
    if (!std::filesystem::is_regular_file(name, unknown)) {
        fail(name, "exists and is not a plain file");
    }
    return std::filesystem::canonical(name);
}

void BookWriter::add(const BookRecord& record) {
    file.write(imageOf(record));
    ++records;
}

BookReader::BookReader(const std::string& name) : fileName(name), file(openBookFile(name)) {}

bool BookReader::next(BookRecord& record) {
    RecordImage image;
    const std::size_t count = std::fread(image.data(), 1, image.size(), file.get());
    if (std::ferror(file.get()) != 0) failWithErrno(fileName);
    if (count == 0) return false;
    if (count < image.size()) fault("the file ends inside it");
    record = recordFromBytes(image);
    if (records > 0 && record.key == lastKey) fault("its key is the same as the previous one");
    if (records > 0 && record.key < lastKey) fault("its key is below the previous one");
    if (gamesOf(record) == 0) fault("it has no games");
    if (record.annotation != NoAnnotation && AnnotationText(record.annotation).empty()) {
        fault("its annotation " + std::to_string(record.annotation) + " is unknown");
    }
    lastKey = record.key;
    ++records;
    return true;
}

void BookReader::fault(const std::string& text) const {
    fail(fileName, "record " + std::to_string(records + 1) + " (byte " +
                       std::to_string(records * BookRecord::Bytes) + "): " + text);
}

}  // namespace brivok
