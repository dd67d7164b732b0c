// A libFuzzer target: whatever the bytes of a compressed table, reading its header and decoding its
// blocks stays within all buffers and ends.

#include <cstddef>
#include <cstdint>

#include "datacomp_drive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    brivok::Bytes bytes(data, data + size);
    brivok::decodeAnything(bytes);
    brivok::repairHeader(bytes);
    brivok::decodeAnything(bytes);
    return 0;
}
