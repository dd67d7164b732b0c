#pragma once

#include <chrono>
#include <ctime>

#include "table_record.h"

namespace brivok::tables {

/// Measures what it takes this process to make one table, from its construction on.
class MakingWatch {
public:
    MakingWatch();

    [[nodiscard]] Making finish(unsigned threads) const;

private:
    std::chrono::steady_clock::time_point start;
    std::clock_t processorStart;
};

}  // namespace brivok::tables
