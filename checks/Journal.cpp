#include "checks/Journal.h"

#include "avcore/ZolTypes.h"
#include "common/frameworksdk/ILogCenter.h"
#include "onlinehost/Text.h"
#include "onlinemanager/IOnlineManager.h"

#include <algorithm>
#include <chrono>

namespace checks
{

namespace
{

thread_local const char* threadName = "module";

} // namespace

void NameThread(const char* name)
{
    threadName = name;
}

std::vector<JournalEntry> Journal::Take()
{
    const std::lock_guard guard(m_mutex);
    return std::exchange(m_entries, {});
}

void Journal::Clear()
{
    Take();
}

size_t Journal::Count(std::string_view part) const
{
    const std::lock_guard guard(m_mutex);
    return CountLocked(part);
}

bool Journal::Await(std::string_view part, size_t count) const
{
    std::unique_lock lock(m_mutex);
    return m_added.wait_for(lock, std::chrono::seconds(30), [&] { return CountLocked(part) >= count; });
}

void Journal::Synchronise() const
{
    const std::lock_guard guard(m_mutex);
}

void Journal::Append(std::string text)
{
    const std::lock_guard guard(m_mutex);
    m_entries.push_back({threadName, std::move(text)});
    m_added.notify_all();
}

size_t Journal::CountLocked(std::string_view part) const
{
    return static_cast<size_t>(std::count_if(m_entries.begin(), m_entries.end(),
                                             [part](const JournalEntry& entry)
                                             { return entry.text.find(part) != std::string::npos; }));
}

std::string LogLine(std::string_view unit, std::string_view text)
{
    std::ostringstream line;
    line << "log ../" << unit << ".cpp: " << text;
    return line.str();
}

std::string Quoted(const char* text)
{
    return text == nullptr ? "null" : '"' + std::string(text) + '"';
}

std::string NameOf(const GUID& id)
{
    static const struct
    {
        GUID id;
        const char* name;
    } known[] = {
        {IID_IUnknown, "IUnknown"},
        {IID_ILogCenter, "ILogCenter"},
        {IID_IWLogAllocator, "IWLogAllocator"},
        {onlinemanager::CLSID_OnlineManager, "OnlineManager"},
        {onlinemanager::IID_OnlineManager, "IOnlineManager"},
        {avcore::CLSID_ZolConnection, "ZolConnection"},
        {avcore::IID_IZolConnection, "IZolConnection"},
        {avcore::IID_IZolOnline, "IZolOnline"},
        {avcore::IID_IZolTMsg, "IZolTMsg"},
        {avcore::IID_IZolMdsClient, "IZolMdsClient"},
    };
    for (const auto& entry : known)
    {
        if (entry.id == id)
        {
            return entry.name;
        }
    }
    return onlinehost::GuidText(id);
}

} // namespace checks
