#include "../apps/tables/schedule.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/tables/material.h"
#include "../apps/tables/targets.h"
#include "engine_fixture.h"

namespace brivok::tables {
namespace {

class ScheduleTest : public EngineTest {
protected:
    static std::vector<TablePlan> plansFor(const std::vector<int>& ids, bool pack) {
        std::vector<TablePlan> plans;
        for (const int id : ids) {
            plans.push_back({.id = id, .make = true, .pack = pack, .costs = costsOf(id)});
        }
        return plans;
    }
};

/// Whatever order jobs finish in, each finds what it reads and exceeds no limit.
TEST_F(ScheduleTest, JobsStartWhenWhatTheyReadIsThere) {
    const std::vector<int> ids = tablesToMake({"5men"});
    const std::vector<TablePlan> plans = plansFor(ids, true);
    std::mt19937 random(1);
    for (const Limits limits : {Limits{4'000'000'000, 1}, Limits{4'000'000'000, 8},
                                Limits{20'000'000'000, 5}, Limits{200'000'000'000, 64}}) {
        Schedule schedule(plans, limits);
        std::vector<Job> running;
        std::set<int> made;
        std::set<int> packed;
        std::size_t mostRunning = 0;
        while (!schedule.isFinished()) {
            while (const auto job = schedule.start()) {
                const std::vector<int> below = tablesBelow(job->id);
                if (job->kind == Job::Kind::Make) {
                    for (const int id : below) {
                        EXPECT_TRUE(made.contains(id) && !packed.contains(id));
                    }
                } else {
                    EXPECT_TRUE(made.contains(job->id));
                    packed.insert(job->id);
                }
                running.push_back(*job);
                Limits used{.memory = 0, .threads = 0};
                for (const Job& other : running) {
                    used.memory += other.memory;
                    used.threads += other.threads;
                }
                EXPECT_LE(used.memory, limits.memory);
                EXPECT_LE(used.threads, limits.threads);
                mostRunning = std::max(mostRunning, running.size());
            }
            ASSERT_FALSE(running.empty());
            const auto next =
                running.begin() + static_cast<std::ptrdiff_t>(random() % running.size());
            if (next->kind == Job::Kind::Make) made.insert(next->id);
            schedule.finish(*next);
            running.erase(next);
        }
        EXPECT_EQ(made.size(), ids.size());
        EXPECT_EQ(packed.size(), ids.size());
        EXPECT_GE(mostRunning, std::min<std::size_t>(limits.threads, 5));
        EXPECT_EQ(schedule.secondsLeft(), 0);
    }
}

TEST_F(ScheduleTest, ASingleTableGetsAllThreads) {
    const std::vector<int> ids = tablesNamed({"krbkn"});
    Schedule schedule(plansFor(ids, false), {.memory = 1'000'000'000, .threads = 6});
    const auto job = schedule.start();
    ASSERT_TRUE(job);
    EXPECT_EQ(job->threads, 6U);
    EXPECT_FALSE(schedule.start());
}

TEST_F(ScheduleTest, ForecastsFollowTheLimits) {
    const std::vector<int> ids = tablesToMake({"5men"});
    const Limits narrow{.memory = 5'000'000'000, .threads = 1};
    const Limits wide{.memory = 100'000'000'000, .threads = 16};
    const Forecast slow = forecastOf(plansFor(ids, false), narrow);
    const Forecast fast = forecastOf(plansFor(ids, false), wide);
    const Forecast packing = forecastOf(plansFor(ids, true), narrow);
    EXPECT_EQ(slow.making, 145U);
    EXPECT_NEAR(static_cast<double>(slow.disk), 30.6e9, 0.1e9);  // the size of the set
    EXPECT_LT(packing.disk, slow.disk);
    EXPECT_LE(slow.memory, narrow.memory);
    EXPECT_GT(fast.memory, narrow.memory);
    EXPECT_LT(fast.seconds, slow.seconds / 4);
    EXPECT_GT(packing.seconds, slow.seconds);
}

}  // namespace
}  // namespace brivok::tables
