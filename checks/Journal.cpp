#include "checks/Journal.h"

#include "avcore/ZolTypes.h"
#include "common/frameworksdk/ILogCenter.h"
#include "onlinemanager/IOnlineManager.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace checks
{

namespace
{

thread_local const char* threadName = "module";

void AppendUtf8(std::string& text, uint32_t character)
{
    const auto byte = [&text](uint32_t value) { text += static_cast<char>(value); };
    if (character < 0x80)
    {
        byte(character);
    }
    else if (character < 0x800)
    {
        byte(0xC0 | (character >> 6));
        byte(0x80 | (character & 0x3F));
    }
    else if (character < 0x10000)
    {
        byte(0xE0 | (character >> 12));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    }
    else
    {
        byte(0xF0 | ((character >> 18) & 0x07));
        byte(0x80 | ((character >> 12) & 0x3F));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    }
}

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
    char text[40];
    std::snprintf(text, sizeof(text), "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", id.Data1, id.Data2,
                  id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6],
                  id.Data4[7]);
    return text;
}

std::string Narrow(std::wstring_view text)
{
    std::string narrow;
    for (const wchar_t character : text)
    {
        AppendUtf8(narrow, static_cast<uint32_t>(character));
    }
    return narrow;
}

} // namespace checks
