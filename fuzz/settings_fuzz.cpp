// A libFuzzer target: whatever brivok.ini says, an engine that has read it still plays.

#include <cstddef>

#include "folder.h"
#include "harmless.h"
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    brivok::fuzz::writeFile("brivok.ini", brivok::fuzz::harmless({data, size}));
    brivok::fuzz::runEngine(
        "xboard\n"
        "setboard r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 10\n"
        "eval\ngo\n\n\n\n\nforce\nsetboard 8/2k5/3p4/8/1P3P2/3K4/7r/8 b - - 0 40\ngo\n\n\n");
    brivok::fuzz::removeFiles();
    return 0;
}
