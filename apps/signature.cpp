// Searches the positions of the signature and compares the total of their nodes with the known one.

#include "bench/signature.h"

#include <cstdint>
#include <cstdio>
#include <ctime>

#include "bench/start.h"

int main() {
    using namespace brivok;
    startEngine();

    std::uint64_t total = 0;
    const std::clock_t start = std::clock();
    for (const TestPosition& position : signaturePositions()) {
        preparePosition(position);
        const std::uint32_t nodes = searchNodes(SignatureDepth);
        std::printf("%10u  %s\n", nodes, position.fen);
        total += nodes;
    }
    // Processor time: it tells the same on a busy machine.
    const double seconds = static_cast<double>(std::clock() - start + 1) / CLOCKS_PER_SEC;
    std::printf("Nodes: %llu - Processor time: %.2f s - Nodes/second: %.0f\n",
                static_cast<unsigned long long>(total), seconds,
                static_cast<double>(total) / seconds);
    if (total == SignatureNodes) return 0;
    std::printf("The signature is %llu\n", static_cast<unsigned long long>(SignatureNodes));
    return 1;
}
