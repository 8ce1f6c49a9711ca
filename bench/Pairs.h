#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace bench
{

using Body = void (*)(benchmark::State&);

/// The suffix of the name of a floor's benchmark.
inline constexpr char kFloorSuffix[] = ":floor";

/// The clock that measures both benchmarks of a pair.
enum class Clock
{
    CPU,  ///< the measuring thread's processor time, which other load on the machine does not change
    WALL, ///< for work of which another thread does a part
};

/// Registers a benchmark and its floor, the least that the same work could cost, each once per size. One iteration of both
/// does the same amount of work.
inline void AddPair(const std::string& subject, Body measured, Body floor, const std::vector<int64_t>& sizes = {},
                    Clock clock = Clock::CPU)
{
    for (auto* const benchmark : {benchmark::RegisterBenchmark((subject + kFloorSuffix).c_str(), floor),
                                  benchmark::RegisterBenchmark(subject.c_str(), measured)})
    {
        for (const int64_t size : sizes)
        {
            benchmark->Arg(size);
        }
        if (clock == Clock::WALL)
        {
            benchmark->UseRealTime();
        }
    }
}

void AddLogBenchmarks();
void AddNotifyBenchmarks();
void AddJsonBenchmarks();
void AddHandOffBenchmarks();
void AddPresenceBenchmarks();
void AddInvitationBenchmarks();

} // namespace bench
