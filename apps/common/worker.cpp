#include "worker.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include "app_error.h"
#include "interrupt.h"
#include "run_app.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace brivok {

namespace {

// What a line in the pipe begins with.
constexpr char Said = ' ';
constexpr char Failed = '!';

/// If nobody reads it, SIGPIPE ends the process.
void send(int pipe, char kind, const std::string& text) {
    std::string line = kind + text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t count = write(pipe, rest.data(), rest.size());
        if (count < 0 && errno != EINTR) std::_Exit(FailureCode);
        if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// Signals end the process again, unless its parent process has set them to be ignored.
void endBySignals() {
    for (const int number : {SIGINT, SIGTERM, SIGPIPE}) {
        if (std::signal(number, SIG_DFL) == SIG_IGN && number != SIGPIPE) {
            std::signal(number, SIG_IGN);
        }
    }
}

/// Ends this process when `parent` ends, where the system can do so; elsewhere it ends when it next
/// says something.
void endWith([[maybe_unused]] pid_t parent) {
#ifdef __linux__
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) std::_Exit(FailureCode);
#endif
}

/// Runs the work in the new process and returns its exit code.
int runHere(const std::function<void(const Worker::Say&)>& work, int pipe) {
    try {
        work([pipe](const std::string& line) { send(pipe, Said, line); });
        return 0;
    } catch (const Interrupted&) {
        send(pipe, Failed, "interrupted");
    } catch (const std::bad_alloc&) {
        send(pipe, Failed, "not enough memory");
    } catch (const std::exception& error) {
        send(pipe, Failed, error.what());
    }
    return FailureCode;
}

}  // namespace

Worker::Worker(const std::function<void(const Say&)>& work) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) failWithErrno("pipe");
    std::fflush(nullptr);  // or the copy would print what is buffered, too
    const pid_t parent = getpid();
    process = fork();
    if (process < 0) {
        close(ends[0]);
        close(ends[1]);
        failWithErrno("fork");
    }
    if (process == 0) {
        endBySignals();
        endWith(parent);
        close(ends[0]);
        std::exit(runHere(work, ends[1]));
    }
    close(ends[1]);
    output = ends[0];
    fcntl(output, F_SETFD, FD_CLOEXEC);
    fcntl(output, F_SETFL, O_NONBLOCK);
}

Worker::~Worker() {
    if (isFinished()) return;
    kill(process, SIGTERM);
    finish();
}

std::vector<std::string> Worker::lines() {
    std::vector<std::string> found;
    std::array<char, 4096> bytes{};
    while (output >= 0) {
        const ssize_t count = read(output, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) break;
        if (count > 0) {
            pending.append(bytes.data(), static_cast<std::size_t>(count));
        } else {
            finish();
        }
    }
    for (std::size_t end = 0; (end = pending.find('\n')) != std::string::npos;) {
        const std::string text = pending.substr(1, end - 1);
        if (pending.front() == Failed) {
            reason = text;
        } else {
            found.push_back(text);
        }
        pending.erase(0, end + 1);
    }
    return found;
}

/// Waits for the end of the process.
void Worker::finish() {
    close(output);
    output = -1;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (!reason.empty()) return;
    if (WIFSIGNALED(status)) {
        reason = std::string("ended by a signal: ") + strsignal(WTERMSIG(status));
        if (WTERMSIG(status) == SIGKILL) reason += " (perhaps for want of memory)";
    } else if (WEXITSTATUS(status) != 0) {
        reason = "ended with code " + std::to_string(WEXITSTATUS(status));
    }
}

void Worker::waitForAny(const std::vector<const Worker*>& workers, int milliseconds) {
    std::vector<pollfd> pipes;
    for (const Worker* worker : workers) pipes.push_back({worker->output, POLLIN, 0});
    (void)poll(pipes.data(), static_cast<nfds_t>(pipes.size()), milliseconds);
}

}  // namespace brivok
