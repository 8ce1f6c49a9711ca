#include "bench/RatioReporter.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <unistd.h>

namespace bench
{

namespace
{

std::string TimeText(double seconds)
{
    double value = seconds * 1e9;
    const char* unit = "ns";
    for (const char* const larger : {"us", "ms", "s"})
    {
        if (value < 1000)
        {
            break;
        }
        value /= 1000;
        unit = larger;
    }
    char text[32];
    std::snprintf(text, sizeof(text), "%.*f %s", value < 10 ? 2 : value < 100 ? 1 : 0, value, unit);
    return text;
}

} // namespace

RatioReporter::RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_Color : OO_None) {}

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
    {
        m_failed = m_failed || run.error_occurred;
        if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations != 0)
        {
            Note(run);
        }
    }
}

void RatioReporter::Note(const Run& run)
{
    std::string subject = run.run_name.function_name;
    const bool isFloor = subject.ends_with(kFloorSuffix);
    if (isFloor)
    {
        subject.resize(subject.size() - std::string_view(kFloorSuffix).size());
    }
    if (!run.run_name.args.empty())
    {
        subject += "/" + run.run_name.args;
    }
    Pair& pair = Find(subject);
    double& quickest = isFloor ? pair.m_floor : pair.m_measured;
    const bool isWall = !run.run_name.time_type.empty();
    const double seconds =
        (isWall ? run.real_accumulated_time : run.cpu_accumulated_time) / static_cast<double>(run.iterations);
    quickest = quickest == 0 ? seconds : std::min(quickest, seconds);
}

RatioReporter::Pair& RatioReporter::Find(const std::string& subject)
{
    const auto known =
        std::find_if(m_pairs.begin(), m_pairs.end(), [&](const Pair& pair) { return pair.m_subject == subject; });
    if (known != m_pairs.end())
    {
        return *known;
    }
    m_pairs.push_back({subject});
    return m_pairs.back();
}

void RatioReporter::Finalize()
{
    std::printf("\n%-36s %12s %12s %9s\n", "", "floor", "module", "ratio");
    for (const Pair& pair : m_pairs)
    {
        if (pair.m_floor > 0 && pair.m_measured > 0)
        {
            std::printf("%-36s %12s %12s %9.2f\n", pair.m_subject.c_str(), TimeText(pair.m_floor).c_str(),
                        TimeText(pair.m_measured).c_str(), pair.m_measured / pair.m_floor);
        }
    }
}

} // namespace bench
