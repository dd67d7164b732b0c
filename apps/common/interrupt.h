#pragma once

#include <csignal>
#include <exception>

namespace brivok {

/// The user has given up. Not an error: everything is put away and the program ends.
class Interrupted : public std::exception {
public:
    explicit Interrupted(int number) : signalNumber(number) {}
    [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }
    [[nodiscard]] int signal() const { return signalNumber; }

private:
    int signalNumber;
};

/// While one of these lives, Ctrl-C and the like end nothing at once: check() throws Interrupted,
/// so that files that are not complete go away. Work that leaves no files needs no watch.
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
