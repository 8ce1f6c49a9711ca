#include "bench/Memory.h"

#include "bench/Company.h"
#include "bench/LoadedModule.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

constexpr std::string_view kOption = "--memory";

/// Kibibytes of memory in use: now, or at most so far.
struct Usage
{
    long m_now = 0;
    long m_peak = 0;
};

Usage ReadUsage()
{
    Usage usage;
    std::ifstream status("/proc/self/status");
    std::string key;
    while (status >> key)
    {
        if (key == "VmRSS:")
        {
            status >> usage.m_now;
        }
        else if (key == "VmHWM:")
        {
            status >> usage.m_peak;
        }
        status.ignore(1000, '\n');
    }
    return usage;
}

/// Makes the users one page at a time, so that they take little memory themselves, and calls `take(part, pages, index)`.
template <typename Take>
void ForEachPage(unsigned users, bool longTexts, Take take)
{
    const int pages = static_cast<int>((users + Company::kUsersPerPage - 1) / Company::kUsersPerPage);
    int index = 0;
    for (size_t first = 0; first < users; first += Company::kUsersPerPage)
    {
        const size_t count = std::min<size_t>(users - first, Company::kUsersPerPage);
        take(Company({.users = count, .first = first, .longTexts = longTexts}), pages, index);
        ++index;
    }
}

/// The growth of a measured process's memory, in kibibytes.
struct Growth
{
    long m_kept = 0;
    long m_peak = 0;
};

Growth GrowthSince(const Usage& start)
{
    const Usage end = ReadUsage();
    return {end.m_now - start.m_now, end.m_peak - start.m_now};
}

Growth CopyRecords(unsigned users, bool longTexts)
{
    const Usage start = ReadUsage();
    std::vector<onlinemanager::UserOnlineInfo> records;
    records.reserve(users);
    ForEachPage(users, longTexts,
                [&](const Company& part, int /*pages*/, int /*index*/)
                { records.insert(records.end(), part.Records().begin(), part.Records().end()); });
    return GrowthSince(start);
}

Growth Refresh(unsigned users, bool longTexts, int times)
{
    LoadedModule module;
    const Usage start = ReadUsage();
    for (int time = 0; time < times; ++time)
    {
        ForEachPage(users, longTexts,
                    [&](const Company& part, int pages, int index) {
                        module.Platform().OnRefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 1, part.Pages()[0],
                                                                      pages, index);
                    });
    }
    return GrowthSince(start);
}

/// Runs `measure()` in a process of its own, so that no other measurement has used its heap.
template <typename Measure>
Growth RunApart(Measure measure)
{
    int ends[2];
    if (pipe(ends) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0)
    {
        const Growth growth = measure();
        const bool written = write(ends[1], &growth, sizeof(growth)) == ssize_t{sizeof(growth)};
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    Growth growth;
    const bool isRead = child > 0 && read(ends[0], &growth, sizeof(growth)) == ssize_t{sizeof(growth)};
    close(ends[0]);
    int status = 0;
    if (!isRead || waitpid(child, &status, 0) != child || status != 0)
    {
        throw std::runtime_error("a measuring process failed");
    }
    return growth;
}

void PrintRow(const char* texts, const char* what, const Growth& growth)
{
    constexpr double kKibPerMib = 1024;
    std::printf("%-12s %-24s %10.0f %10.0f\n", texts, what, static_cast<double>(growth.m_kept) / kKibPerMib,
                static_cast<double>(growth.m_peak) / kKibPerMib);
}

} // namespace

bool ParseMemoryArgument(const char* argument, unsigned* users)
{
    const std::string_view text = argument;
    if (text == kOption)
    {
        *users = 1'000'000;
        return true;
    }
    if (!text.starts_with(kOption) || text[kOption.size()] != '=')
    {
        return false;
    }
    const char* const end = argument + text.size();
    const auto [stop, error] = std::from_chars(argument + kOption.size() + 1, end, *users);
    if (error != std::errc() || stop != end || *users == 0)
    {
        throw std::runtime_error("--memory needs a number of users");
    }
    return true;
}

int MeasureMemory(unsigned users)
{
    std::printf("%u users with two terminals each, MiB\n%-12s %-24s %10s %10s\n", users, "texts", "", "kept", "peak");
    for (const bool longTexts : {false, true})
    {
        const char* const texts = longTexts ? "long" : "short";
        PrintRow(texts, "bare records", RunApart([=] { return CopyRecords(users, longTexts); }));
        PrintRow(texts, "one refresh", RunApart([=] { return Refresh(users, longTexts, 1); }));
        PrintRow(texts, "three refreshes", RunApart([=] { return Refresh(users, longTexts, 3); }));
    }
    return 0;
}

} // namespace bench
