// Renews the recorded answers in all files of RecordFiles, and the number of the signature. Run by
// tests/record.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <string>

#include "../bench/signature.h"
#include "../bench/start.h"
#include "engine_fixture.h"
#include "replay.h"

namespace brivok {
namespace {

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file || text.empty()) throw std::runtime_error("cannot read " + path);
    return text;
}

/// Leaves a file alone that would stay the same, so that nothing is built anew for it.
void writeFile(const std::string& path, const std::string& text) {
    if (readFile(path) == text) return;
    std::ofstream file(path, std::ios::binary);
    if (!(file << text << std::flush)) throw std::runtime_error("cannot write " + path);
    std::printf("changed: %s\n", path.c_str());
}

void recordFile(const RecordFile& file) {
    nlohmann::json records = loadJson(file.name);
    for (nlohmann::json& record : records) record = file.replay(record);
    writeFile(dataPath(file.name), fileText(records));
}

void recordSignature(const std::string& header) {
    startEngine();
    std::uint64_t total = 0;
    for (const TestPosition& position : signaturePositions()) {
        preparePosition(position);
        total += searchNodes(SignatureDepth);
    }
    const std::regex number("(SignatureNodes = )[0-9]+");
    const std::string text = readFile(header);
    if (!std::regex_search(text, number)) throw std::runtime_error("no number in " + header);
    writeFile(header, std::regex_replace(text, number, "$01" + std::to_string(total)));
}

}  // namespace
}  // namespace brivok

int main() {
    try {
        for (const brivok::RecordFile& file : brivok::RecordFiles) brivok::recordFile(file);
        brivok::recordSignature(BRIVOK_SIGNATURE);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "record: %s\n", error.what());
        return 1;
    }
}
