#include "run_app.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "interrupt.h"

namespace brivok {

int runApp(const char* program, const std::function<int()>& work) {
    constexpr int SignalExit = 128;
    const auto tell = [program](const char* text) {
        std::fprintf(stderr, "%s: %s\n", program, text);
        return FailureCode;
    };
    std::signal(SIGXFSZ, SIG_IGN);  // writing fails at the limit instead
    try {
        const int code = work();
        const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
        return isWritten ? code : tell("standard output: cannot be written");
    } catch (const Interrupted& interrupted) {
        return SignalExit + interrupted.signal();
    } catch (const std::bad_alloc&) {
        return tell("not enough memory");
    } catch (const std::exception& error) {
        return tell(error.what());
    }
}

}  // namespace brivok
