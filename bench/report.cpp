#include "report.h"

#include <cstdio>
#include <string>

#include "start.h"

namespace brivok {

namespace {

std::string positionText(const TestPosition& position) {
    std::string text = position.fen;
    if (position.variant != Variant::Normal) {
        text.append("  (").append(nameOf(position.variant)).append(")");
    }
    return text;
}

void printLine(const Measurement& measured, const std::string& text) {
    std::printf("%12llu %9.3f %12.0f  %s\n", static_cast<unsigned long long>(measured.nodes),
                measured.processorSeconds, measured.nodesPerSecond(), text.c_str());
}

void addMeasurement(Json& object, const Measurement& measured) {
    object["nodes"] = measured.nodes;
    object["processorSeconds"] = measured.processorSeconds;
    object["wallSeconds"] = measured.wallSeconds;
    object["nodesPerSecond"] = measured.nodesPerSecond();
}

Json jsonOf(const PositionRun& run) {
    Json object{{"fen", run.position.fen}, {"variant", nameOf(run.position.variant)}};
    addMeasurement(object, run.measured);
    int depth = 0;
    for (const Measurement& measured : run.depths) {
        Json& reached = object["depths"].emplace_back(Json{{"depth", ++depth}});
        addMeasurement(reached, measured);
    }
    return object;
}

}  // namespace

void printRun(std::string_view title, const Run& run) {
    std::printf("%s to depth %d (seconds of processor time)\n", std::string(title).c_str(),
                run.depth);
    std::printf("%12s %9s %12s  %s\n", "nodes", "seconds", "nodes/second", "position");
    for (const PositionRun& of : run.positions) printLine(of.measured, positionText(of.position));
    const Measurement total = run.total();
    char wall[64];
    std::snprintf(wall, sizeof wall, "total; %.3f seconds of wall time", total.wallSeconds);
    printLine(total, wall);
    if (!run.knownNodes) return;
    if (run.isRight()) {
        std::printf("The total is the signature.\n");
    } else {
        std::printf("The signature is %llu.\n", static_cast<unsigned long long>(*run.knownNodes));
    }
}

void printDepths(const Run& run) {
    std::printf("Time to depth %d (seconds of processor time)\ndepth", run.depth);
    for (std::size_t i = 1; i <= run.positions.size(); ++i) std::printf(" %8zu.", i);
    std::printf(" %9s %12s\n", "in all", "nodes");
    for (std::size_t d = 0; d < static_cast<std::size_t>(run.depth); ++d) {
        Measurement sum;
        std::printf("%5zu", d + 1);
        for (const PositionRun& of : run.positions) {
            std::printf(" %9.3f", of.depths[d].processorSeconds);
            sum += of.depths[d];
        }
        std::printf(" %9.3f %12llu\n", sum.processorSeconds,
                    static_cast<unsigned long long>(sum.nodes));
    }
    for (std::size_t i = 0; i < run.positions.size(); ++i) {
        std::printf("%5zu. %s\n", i + 1, positionText(run.positions[i].position).c_str());
    }
    std::printf("%.3f seconds of wall time to the last depth.\n", run.total().wallSeconds);
}

Json jsonOf(const Run& run) {
    Json object{{"depth", run.depth}};
    addMeasurement(object, run.total());
    if (run.knownNodes) {
        object["knownNodes"] = *run.knownNodes;
        object["right"] = run.isRight();
    }
    for (const PositionRun& of : run.positions) object["positions"].push_back(jsonOf(of));
    return object;
}

}  // namespace brivok
