#include "run_schedule.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <iterator>
#include <list>
#include <utility>

#include "../common/app_error.h"
#include "../common/interrupt.h"
#include "../common/progress_line.h"
#include "../common/worker.h"
#include "egtb/descriptors.h"
#include "report_text.h"
#include "table_jobs.h"

namespace brivok::tables {
namespace {

using Clock = std::chrono::steady_clock;

// What a worker's line begins with.
constexpr char Step = '.';
constexpr char Outcome = '=';
constexpr char Difference = '!';

std::string nameOf(int id) { return std::string(descriptorOf(id).signature()); }

/// What a worker does.
void work(const std::filesystem::path& folder, const Job& job, const std::vector<int>& trusted,
          const Worker::Say& say) {
    const JobListener listener{
        .onStep = [&](const std::string& step) { say(Step + step); },
        .onOutcome = [&](const std::string& outcome) { say(Outcome + outcome); },
    };
    switch (job.kind) {
        case Job::Kind::Check:
            listener.onStep("comparing with its record");
            if (const auto difference = differenceFromRecord(folder, job.id)) {
                say(Difference + *difference);
            }
            break;
        case Job::Kind::Make: makeAndRecord(folder, job, trusted, listener); break;
        case Job::Kind::Pack: packAndRecord(folder, job, listener); break;
    }
}

/// A job that runs.
struct Member {
    Member(const Job& itsJob, const std::function<void(const Worker::Say&)>& itsWork)
        : job(itsJob), worker(itsWork) {}

    Job job;
    Worker worker;
    std::string step{};
    std::vector<std::string> outcomes{};
    bool differs = false;
};

/// Corrects a forecast by how long the part that is done has taken.
class TimeLeft {
public:
    /// `itsForecast` is in seconds by the clock, `itsWork` in seconds of processor time.
    TimeLeft(double itsForecast, double itsWork) : forecast(itsForecast), work(itsWork) {}

    /// Seconds by the clock for the rest of the work.
    [[nodiscard]] double seconds(double workLeft) const {
        constexpr double Trust = 30;  // seconds for which the forecast holds against the clock
        const std::chrono::duration<double> passed = Clock::now() - start;
        const double rest = work > 0 ? workLeft / work : 0;
        return forecast * rest * (passed.count() + Trust) / (forecast * (1 - rest) + Trust);
    }

    [[nodiscard]] int percentDone(double workLeft) const {
        return work > 0 ? static_cast<int>(100 * (1 - workLeft / work)) : 100;
    }

private:
    Clock::time_point start = Clock::now();
    double forecast;
    double work;
};

class ScheduleRun {
public:
    ScheduleRun(std::filesystem::path itsFolder, const std::vector<TablePlan>& plans,
                const Limits& limits, std::vector<int> itsTrusted)
        : folder(std::move(itsFolder)),
          schedule(plans, limits),
          trusted(std::move(itsTrusted)),
          timeLeft(forecastOf(plans, limits).seconds, schedule.secondsLeft()) {}

    Checked run() {
        constexpr int Patience = 250;  // milliseconds
        while (!schedule.isFinished()) {
            startJobs();
            if (members.empty()) break;
            waitFor(Patience);
            for (auto member = members.begin(); member != members.end();) {
                listen(*member);
                member = member->worker.isFinished() ? end(member) : std::next(member);
            }
            showProgress();
        }
        line.clear();
        if (!failure.empty()) throw AppError(failure);
        return checked;
    }

private:
    using Members = std::list<Member>;

    void startJobs() {
        while (failure.empty()) {
            const auto job = schedule.start();
            if (!job) return;
            members.emplace_back(*job,
                                 [&](const Worker::Say& say) { work(folder, *job, trusted, say); });
        }
    }

    void waitFor(int milliseconds) {
        std::vector<const Worker*> workers;
        for (const Member& member : members) workers.push_back(&member.worker);
        Worker::waitForAny(workers, milliseconds);
        interrupt.check();
    }

    static void listen(Member& member) {
        for (const std::string& text : member.worker.lines()) {
            if (text.front() == Step) {
                member.step = text.substr(1);
            } else {
                member.outcomes.push_back(text.substr(1));
                member.differs |= text.front() == Difference;
            }
        }
    }

    Members::iterator end(Members::iterator member) {
        const Job job = member->job;
        const std::string reason = member->worker.failure();
        if (!reason.empty()) {
            if (failure.empty()) failure = nameOf(job.id) + ": " + reason;
        } else {
            schedule.finish(job);
            if (job.kind == Job::Kind::Make) trusted.push_back(job.id);
            if (job.kind == Job::Kind::Check) {
                (member->differs ? checked.wrong : checked.right).push_back(job.id);
            }
        }
        print(*member);
        return members.erase(member);
    }

    void print(const Member& member) {
        constexpr double WorthTelling = 60;  // seconds
        if (member.outcomes.empty()) return;
        line.clear();
        for (const std::string& outcome : member.outcomes) {
            std::printf("%s: %s", nameOf(member.job.id).c_str(), outcome.c_str());
            const double seconds = timeLeft.seconds(schedule.secondsLeft());
            const bool isLast = &outcome == &member.outcomes.back();
            if (member.job.kind == Job::Kind::Make && isLast && seconds >= WorthTelling) {
                std::printf(", %s left", durationText(seconds).c_str());
            }
            std::printf("\n");
        }
        std::fflush(stdout);
    }

    void showProgress() {
        constexpr std::size_t Width = 70;
        if (!line.isDue()) return;
        const double left = schedule.secondsLeft();
        std::string text = std::to_string(timeLeft.percentDone(left)) + "%, " +
                           durationText(timeLeft.seconds(left)) + " left";
        for (const Member& member : members) {
            text += "; " + nameOf(member.job.id) + ": " + member.step;
        }
        line.show(text.substr(0, Width));
    }

    std::filesystem::path folder;
    Schedule schedule;
    std::vector<int> trusted;
    TimeLeft timeLeft;
    InterruptWatch interrupt;
    Members members;  ///< destroyed, and so ended, while signals are still held back
    std::string failure;
    Checked checked;
    ProgressLine line;
};

}  // namespace

Checked runSchedule(const std::filesystem::path& folder, const std::vector<TablePlan>& plans,
                    const Limits& limits, std::vector<int> trusted) {
    return ScheduleRun(folder, plans, limits, std::move(trusted)).run();
}

}  // namespace brivok::tables
