// A libFuzzer target: whatever lines come in under UCI, the engine goes on and ends in order.

#include <cstddef>

#include "harmless.h"
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    brivok::fuzz::runEngine("uci\n" + brivok::fuzz::harmless({data, size}));
    return 0;
}
