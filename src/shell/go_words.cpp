#include "shell/go_words.h"

#include <algorithm>
#include <cstdlib>

#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/words.h"

namespace brivok {

namespace {

/// Largest clock value in "go", in centiseconds; sums of clocks do not overflow.
constexpr std::uint32_t LongestTime = 0x7FFFFFFF;

/// Converts a floating-point number of milliseconds to centiseconds. Negative times count as 0.
std::uint32_t timeValue(const std::string& text) {
    const double centis = std::strtod(text.c_str(), nullptr) * 0.1;
    if (!(centis > 0)) return 0;
    return centis >= LongestTime ? LongestTime : static_cast<std::uint32_t>(centis);
}

std::uint32_t countValue(const std::string& text) {
    const std::int64_t value = parseInteger(text);
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, UINT32_MAX));
}

int depthValue(const std::string& text) {
    return static_cast<int>(std::clamp(parseInteger(text), -DeepestIteration, DeepestIteration));
}

}  // namespace

bool GoWords::take(const std::string& word, const std::string& value) {
    return execute(keywords(), word, *this, value);
}

void GoWords::finish() {
    if (movesToGo == 0 || clock().kind == ClockKind::FixedTime) return;
    clock().kind = ClockKind::Conventional;
    clock().movesPerSession = clock().movesLeft = movesToGo;
}

void GoWords::setClock(Side side, const std::string& value) {
    (us == side ? clock().ownTime : clock().oppTime) = timeValue(value);
    clock().clockGiven = true;
}

void GoWords::setIncrement(Side side, const std::string& value) {
    (us == side ? clock().ownIncrement : clock().oppIncrement) = timeValue(value);
}

CommandTable<GoWords, std::string> GoWords::keywords() {
    static constexpr Command<GoWords, std::string> Keywords[] = {
        {"wtime", [](GoWords& self, const std::string& value) { self.setClock(White, value); }},
        {"btime", [](GoWords& self, const std::string& value) { self.setClock(Black, value); }},
        {"winc", [](GoWords& self, const std::string& value) { self.setIncrement(White, value); }},
        {"binc", [](GoWords& self, const std::string& value) { self.setIncrement(Black, value); }},
        {"movestogo",
         [](GoWords& self, const std::string& value) {
             self.movesToGo = std::min(countValue(value), LongestTime);
         }},
        {"depth", [](GoWords& self,
                     const std::string& value) { self.request.maxIteration = depthValue(value); }},
        {"nodes", [](GoWords& self,
                     const std::string& value) { self.request.nodeLimit = countValue(value); }},
        {"movetime", [](GoWords& self,
                        const std::string& value) { self.clock().setFixedTime(timeValue(value)); }},
    };
    return Keywords;
}

}  // namespace brivok
