// A libFuzzer target: the engine survives any UCI input and ends properly.

#include <cstddef>

#include "harmless.h"
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    brivok::fuzz::runEngine("uci\n" + brivok::fuzz::harmless({data, size}));
    return 0;
}
