#include "schedule.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <set>
#include <utility>

#include "material.h"

namespace brivok::tables {
namespace {

/// Share of the work at a table that only one thread does.
constexpr double Serial = 0.16;

/// Seconds by the clock that each job takes besides its work.
constexpr double Overhead = 0.05;

double durationOf(const Job& job) {
    return Overhead + job.seconds * (Serial + (1 - Serial) / job.threads);
}

}  // namespace

Schedule::Schedule(const std::vector<TablePlan>& plans, Limits itsLimits) : free(itsLimits) {
    std::map<int, std::size_t> making;  // steps by table
    std::map<int, std::vector<std::size_t>> readers;
    for (const TablePlan& plan : plans) {
        if (plan.check) add(plan, Job::Kind::Check);
        if (!plan.make) continue;
        std::vector<std::size_t> after;
        for (const int below : tablesBelow(plan.id)) {
            readers[below].push_back(steps.size());
            if (const auto found = making.find(below); found != making.end()) {
                after.push_back(found->second);
            }
        }
        making[plan.id] = steps.size();
        add(plan, Job::Kind::Make, std::move(after));
    }
    for (const TablePlan& plan : plans) {
        if (!plan.pack) continue;
        std::vector<std::size_t> after = readers[plan.id];
        if (plan.make) after.push_back(making[plan.id]);
        add(plan, Job::Kind::Pack, std::move(after));
    }
}

void Schedule::add(const TablePlan& plan, Job::Kind kind, std::vector<std::size_t> after) {
    Job job{.id = plan.id, .kind = kind};
    switch (kind) {
        case Job::Kind::Check: job.seconds = plan.costs.checkSeconds; break;
        case Job::Kind::Make:
            job.seconds = plan.adopt ? plan.costs.adoptSeconds : plan.costs.seconds;
            job.memory = plan.costs.memory;
            job.usesScratch = plan.costs.scratch != 0;
            break;
        case Job::Kind::Pack:
            job.seconds = plan.costs.packSeconds;
            job.memory = std::min(PackingMemory, free.memory);
            break;
    }
    assert(job.memory <= free.memory);
    steps.push_back({.job = job, .after = std::move(after)});
}

bool Schedule::isReady(const Step& step) const {
    return step.state == State::Waiting && step.job.memory <= free.memory &&
           std::all_of(step.after.begin(), step.after.end(), [this](std::size_t before) {
               return steps[before].state == State::Finished;
           });
}

std::optional<Job> Schedule::start() {
    if (free.threads == 0) return std::nullopt;
    std::vector<Step*> ready;
    for (Step& step : steps) {
        if (isReady(step)) ready.push_back(&step);
    }
    if (ready.empty()) return std::nullopt;
    std::stable_partition(ready.begin(), ready.end(),
                          [](const Step* step) { return step->job.kind == Job::Kind::Pack; });
    // The steps that fit into memory together share the threads.
    unsigned together = 0;
    std::uint64_t memory = 0;
    for (const Step* const step : ready) {
        if (together == free.threads || memory + step->job.memory > free.memory) continue;
        memory += step->job.memory;
        ++together;
    }
    Step& first = *ready.front();
    first.state = State::Running;
    first.job.threads = std::max(1U, free.threads / together);
    free.threads -= first.job.threads;
    free.memory -= first.job.memory;
    return first.job;
}

void Schedule::finish(const Job& job) {
    const auto step = std::find_if(steps.begin(), steps.end(),
                                   [&](const Step& candidate) { return candidate.job == job; });
    assert(step != steps.end() && step->state == State::Running);
    step->state = State::Finished;
    ++finished;
    free.threads += step->job.threads;
    free.memory += step->job.memory;
}

double Schedule::secondsLeft() const {
    double seconds = 0;
    for (const Step& step : steps) {
        if (step.state != State::Finished) seconds += step.job.seconds;
    }
    return seconds;
}

Forecast forecastOf(const std::vector<TablePlan>& plans, const Limits& limits) {
    Forecast forecast;
    std::map<int, TableCosts> costs;
    std::set<int> adopted;
    for (const TablePlan& plan : plans) {
        forecast.making += plan.make && !plan.adopt ? 1 : 0;
        forecast.adopting += plan.adopt ? 1 : 0;
        forecast.packing += plan.pack ? 1 : 0;
        costs[plan.id] = plan.costs;
        if (plan.adopt) adopted.insert(plan.id);
    }
    Schedule schedule(plans, limits);
    std::multimap<double, Job> running;  // by the time of the end
    std::uint64_t memory = 0;
    std::uint64_t grown = 0;  // bytes on disk
    std::uint64_t freed = 0;
    while (!schedule.isFinished()) {
        while (const auto job = schedule.start()) {
            const TableCosts& cost = costs[job->id];
            running.emplace(forecast.seconds + durationOf(*job), *job);
            memory += job->memory;
            const bool isNew = job->kind == Job::Kind::Make && !adopted.contains(job->id);
            if (isNew) grown += cost.plain + cost.scratch;
            if (job->kind == Job::Kind::Pack) grown += cost.packed;
            forecast.memory = std::max(forecast.memory, memory);
            if (grown > freed) forecast.disk = std::max(forecast.disk, grown - freed);
        }
        const auto next = running.begin();
        assert(next != running.end());
        forecast.seconds = next->first;
        const Job job = next->second;
        running.erase(next);
        memory -= job.memory;
        if (job.kind == Job::Kind::Make) freed += costs[job.id].scratch;
        if (job.kind == Job::Kind::Pack) freed += costs[job.id].plain;
        schedule.finish(job);
    }
    return forecast;
}

}  // namespace brivok::tables
