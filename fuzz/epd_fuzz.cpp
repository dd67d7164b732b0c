// A libFuzzer target: whatever a suite contains, "epdtest" and "evaltest" get through it.

#include <cstddef>

#include "folder.h"
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    brivok::fuzz::writeFile("suite.epd", {data, size});
    brivok::fuzz::runEngine("evaltest\nsuite.epd\nepdtest\nsuite.epd\n1\n");
    return 0;
}
