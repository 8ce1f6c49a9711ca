#include "bench/Memory.h"
#include "bench/RatioReporter.h"

#include <climits>
#include <cstdio>
#include <exception>
#include <malloc.h>

namespace
{

int RunBenchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 2;
    }
    // The heap keeps freed pages. Otherwise the first benchmark would pay for the pages that later ones use.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);

    bench::AddLogBenchmarks();
    bench::AddNotifyBenchmarks();
    bench::AddJsonBenchmarks();
    bench::AddHandOffBenchmarks();
    bench::AddPresenceBenchmarks();
    bench::AddInvitationBenchmarks();
    bench::RatioReporter reporter;
    const size_t count = benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return count == 0 || reporter.HasFailed() ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        unsigned users = 0;
        if (argc == 2 && bench::ParseMemoryArgument(argv[1], &users))
        {
            return bench::MeasureMemory(users);
        }
        return RunBenchmarks(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "online_bench: %s\n", error.what());
        return 1;
    }
}
