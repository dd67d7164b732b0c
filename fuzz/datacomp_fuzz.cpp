// A libFuzzer target: whatever the bytes of a compressed table are, to read its header and to
// decode its blocks stays within all buffers and ends.
//   clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -Isrc -Itests
//       fuzz/datacomp_fuzz.cpp src/egtb/datacomp.cpp src/egtb/huffman.cpp -o datacomp_fuzz
//   ./datacomp_fuzz -malloc_limit_mb=64 CORPUS fuzz/corpus/datacomp

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
