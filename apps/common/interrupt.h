#pragma once

#include <csignal>
#include <exception>

namespace brivok {

/// The user has given up. Not an error: the program cleans up and ends.
class Interrupted : public std::exception {
public:
    explicit Interrupted(int number) : signalNumber(number) {}
    [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }
    [[nodiscard]] int signal() const { return signalNumber; }

private:
    int signalNumber;
};

/// While one of these exists, Ctrl-C and similar signals do not end the program at once. Instead
/// check() throws Interrupted, so that incomplete files are removed. A second signal ends the
/// program at once. Work that leaves no files does not need this.
class InterruptWatch {
public:
    InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    ~InterruptWatch();

    void check() const;

private:
    using Handler = void (*)(int);
    Handler onInterrupt;
    Handler onTerminate;
};

}  // namespace brivok
