#include "shell/base/logger.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <string>

#include "platform/platform.h"
#include "shell/base/application.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
#include "shell/base/settings.h"
#include "shell/base/version.h"

namespace brivok {

namespace {

constexpr char SingleLogName[] = "brivoklog.txt";
constexpr int LogNumbers = 100'000;

std::string numberedLogName(int number) {
    const std::string digits = std::to_string(number);
    return settings.logFolder + "log" + std::string(5 - digits.size(), '0') + digits + ".txt";
}

/// Local time, as in "Wed Jun  7 21:49:08 2006".
std::string timeStamp() {
    const std::time_t now = std::time(nullptr);
    const std::tm* const local = std::localtime(&now);
    std::array<char, 64> text{};
    if (local != nullptr) {
        std::strftime(text.data(), text.size(), "%a %b %e %H:%M:%S %Y", local);
    }
    return text.data();
}

}  // namespace

void Logger::OpenLog() {
    if (!settings.createLog || enabled) return;
    if (settings.logInSingleFile) {
        file.reset(std::fopen(SingleLogName, "a"));
        enabled = file != nullptr;
        if (!enabled) Print(owner, "I couldn't open file %s\n", SingleLogName);
        return;
    }

    CreateLogFolders(settings.logFolder);
    // Exclusive mode keeps apart two engines that start at the same time in the same folder.
    for (int number = 0; number < LogNumbers && file == nullptr; ++number) {
        file.reset(std::fopen(numberedLogName(number).c_str(), "wx"));
    }
    if (file != nullptr) {
        WriteLogHeader();
        enabled = true;
        std::fflush(file.get());
        return;
    }
    file.reset(std::fopen(numberedLogName(LogNumbers - 1).c_str(), "a"));
    enabled = file != nullptr;
    if (!enabled) Print(owner, "I can't create a log file!\n");
}

void Logger::CloseLog() {
    enabled = false;
    file.reset();
}

void Logger::WriteLogHeader() {
    constexpr char Rule[] = "+---------------------------\n";
    std::fprintf(file.get(), "%s+ %s LogFile\n+ Info: %s\n+ %s\n%s\n", Rule, EngineName, EngineInfo,
                 timeStamp().c_str(), Rule);
}

void CreateLogFolders(std::string_view path) {
    for (std::size_t end = path.find('/'); end != path.npos; end = path.find('/', end + 1)) {
        const std::string folder(path.substr(0, end));
        if (folder.empty()) continue;  // the root folder
        if (platform().makeDirectory(folder) == MadeDirectory::Failure) {
            PrintUnlogged("Error creating directory!\n");
            return;
        }
    }
}

}  // namespace brivok
