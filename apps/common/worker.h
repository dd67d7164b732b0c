#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace brivok {

/// Work in a copy of this process, beside it. What it allocates goes back to the system when it
/// ends, the processor time and the memory that it takes can be measured, and it can be ended at
/// any moment: Ctrl-C does so, unless it is writing a NewFile. It does not outlive this process.
class Worker {
public:
    /// Tells the starter a line of text.
    using Say = std::function<void(const std::string& line)>;

    /// Starts work(say). There must be no other thread. Throws AppError if the system refuses.
    explicit Worker(const std::function<void(const Say& say)>& work);
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    /// Ends the work, as Ctrl-C does, if it is not finished.
    ~Worker();

    /// The lines said since the last call.
    [[nodiscard]] std::vector<std::string> lines();

    [[nodiscard]] bool isFinished() const { return output < 0; }

    /// Why the work has failed: the message of what it threw, or what ended it; empty if it is
    /// done. Requires that it is finished, and that the lines are read.
    [[nodiscard]] const std::string& failure() const { return reason; }

    /// Waits until one of the workers says something or finishes, a signal arrives, or this many
    /// milliseconds have passed.
    static void waitForAny(const std::vector<const Worker*>& workers, int milliseconds);

private:
    void finish();

    pid_t process = -1;
    int output = -1;      ///< pipe from the worker; -1 when it has finished
    std::string pending;  ///< an incomplete line
    std::string reason;
};

}  // namespace brivok
