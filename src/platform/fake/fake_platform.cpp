#include "platform/fake/fake_platform.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace brivok {

void FakePlatform::type(std::string_view line, const Moment& when) {
    send(std::string(line) + '\n', when);
}

void FakePlatform::send(std::string bytes, const Moment& when) {
    if (!bytes.empty()) add({Kind::Input, when, std::move(bytes)});
}

void FakePlatform::turnClock(std::uint64_t milliseconds, const Moment& when) {
    add({Kind::TurnClock, when, {}, milliseconds});
}

void FakePlatform::closeInput(const Moment& when) { add({Kind::CloseInput, when, {}}); }

void FakePlatform::add(Step step) {
    if (script.empty()) searched = printed.size();
    script.push_back(std::move(step));
}

bool FakePlatform::isPrinted() {
    std::string& text = script.front().when.printed;
    if (!text.empty() && printed.find(text, searched) != printed.npos) text.clear();
    // The awaited text may span the old output and the new.
    if (!text.empty()) {
        searched = std::max(searched, printed.size() - std::min(printed.size(), text.size() - 1));
    }
    return text.empty();
}

void FakePlatform::finishStep() {
    script.pop_front();
    searched = printed.size();
}

bool FakePlatform::doSteps() {
    while (!script.empty() && isPrinted() && script.front().when.time <= clock) {
        if (script.front().kind != Kind::TurnClock) return true;
        clock += script.front().milliseconds;
        finishStep();
    }
    return false;
}

void FakePlatform::countLook() {
    if (++idleLooks > patience) throw std::logic_error("the engine searches without end");
}

bool FakePlatform::inputReady() {
    countLook();
    clock += stepOfPoll;
    return doSteps();
}

Transfer FakePlatform::readInput(char* buffer, std::size_t capacity) {
    idleLooks = 0;
    while (!doSteps()) {
        if (script.empty()) throw ScriptDone();
        if (!isPrinted()) {
            throw std::logic_error("the engine waits for input that waits for \"" +
                                   script.front().when.printed + "\"");
        }
        clock = script.front().when.time;
    }
    Step& step = script.front();
    if (step.kind == Kind::CloseInput) return {Transfer::Outcome::Failed};
    const std::size_t count = step.bytes.copy(buffer, capacity);
    step.bytes.erase(0, count);
    if (step.bytes.empty()) finishStep();
    return {Transfer::Outcome::Moved, count};
}

Transfer FakePlatform::writeOutput(std::string_view text) {
    idleLooks = 0;
    printed += text;
    doSteps();
    return {Transfer::Outcome::Moved, text.size()};
}

MadeDirectory FakePlatform::makeDirectory(const std::string& path) {
    return folders.insert(path).second ? MadeDirectory::Success : MadeDirectory::Exists;
}

std::uint64_t FakePlatform::milliseconds() {
    countLook();
    return clock += stepOfLook;
}

}  // namespace brivok
