#include "host/trace/DiagramCall.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace host
{

namespace
{

constexpr size_t kIdsShown = 3;
constexpr size_t kMostUsers = 1'000; // users of calls that may change their places
constexpr size_t kLongestValue = 90;
constexpr size_t kLongestList = 140; // of arguments
constexpr size_t kGuidDigits = 32;
constexpr size_t kGuidDigitsShown = 8;
constexpr char kTimes[] = "\xC3\x97";     // the multiplication sign
const std::string kDots = "\xE2\x80\xA6"; // the ellipsis

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> list)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

bool NamesUser(std::string_view argument)
{
    return IsOneOf(argument, {"userId", "userid", "user_id", "srcUserId"});
}

/// Arguments that a diagram leaves out, because they do not explain the call.
bool IsDull(std::string_view argument)
{
    return IsOneOf(argument, {"appid", "companyid", "conflictExtendInfo", "deviceid", "ext", "ext_info", "http",
                              "inviteCode", "mutex", "page_count", "page_index", "param16", "param32", "param64",
                              "registeruser", "server", "size"});
}

/// "6d656574..." for a GUID in whatever notation, other texts as they are.
std::string MeetingText(const std::string& text)
{
    std::string digits;
    for (const char character : text)
    {
        const auto code = static_cast<unsigned char>(character);
        if (std::isxdigit(code) != 0)
        {
            digits += static_cast<char>(std::tolower(code));
        }
        else if (std::string_view("{}-").find(character) == std::string_view::npos)
        {
            return text;
        }
    }
    return digits.size() == kGuidDigits ? digits.substr(0, kGuidDigitsShown) + kDots : text;
}

std::string ListText(const TraceList& list)
{
    std::string text = list.size == 1 ? "user " : std::to_string(list.size) + (list.size == 0 ? " users" : " users: ");
    for (size_t index = 0; index < std::min(kIdsShown, list.first.size()); ++index)
    {
        text += (index == 0 ? "" : ", ") + list.first[index];
    }
    return list.size > kIdsShown ? text + ", " + kDots : text;
}

/// The value with its kind or meaning: "user 1001", "invitation 3", "36 (logged in on another device)".
std::string NamedText(const TraceArgument& argument)
{
    if (const TraceList* const list = std::get_if<TraceList>(&argument.value))
    {
        return ListText(*list);
    }
    const std::string_view name(argument.name);
    const std::string text = Shorten(ValueText(argument.value), kLongestValue);
    if (NamesUser(name))
    {
        return "user " + text;
    }
    if (name == "inviteId")
    {
        return "invitation " + text;
    }
    if (name == "requestId")
    {
        return "refresh " + text;
    }
    if (name == "users")
    {
        return text + (text == "1" ? " user" : " users");
    }
    return IsOneOf(name, {"guid", "groupId"}) ? "meeting " + MeetingText(text) : text;
}

/// Empty for an argument that the diagram leaves out.
std::string ArgumentText(const TraceArgument& argument)
{
    const std::string text = NamedText(argument);
    const bool* const flag = std::get_if<bool>(&argument.value);
    const bool isDefault = flag != nullptr && !*flag && std::string_view(argument.name) != "isAccept";
    if (text.empty() || isDefault || IsDull(argument.name))
    {
        return "";
    }
    const bool speaksForItself =
        NamesUser(argument.name) || std::holds_alternative<TraceCode>(argument.value) ||
        IsOneOf(argument.name, {"guid", "groupId", "ids", "inviteId", "requestId", "userIds", "users"});
    return speaksForItself ? text : std::string(argument.name) + "=" + text;
}

/// The value of the last of several calls, which follows the value of the first. Payloads and lists are too long to be
/// shown twice.
std::string LastText(const TraceArgument& last)
{
    const TraceList* const list = std::get_if<TraceList>(&last.value);
    const bool isLong = IsOneOf(last.name, {"json", "msg"}) || (list != nullptr && list->size > 1);
    return " " + kDots + (isLong ? "" : " " + NamedText(last));
}

/// "user 1001 ... user 1029, force=true": what the first call had, and the last one where that differs.
std::string ListText(const TraceArguments& first, const TraceArguments& last)
{
    std::string text;
    for (size_t index = 0; index < first.size(); ++index)
    {
        const std::string value = ArgumentText(first[index]);
        if (value.empty())
        {
            continue;
        }
        const bool differs = index < last.size() && ValueText(last[index].value) != ValueText(first[index].value);
        text += (text.empty() ? "" : ", ") + value + (differs ? LastText(last[index]) : "");
    }
    return Shorten(text, kLongestList);
}

/// Longer texts are not kept: a recording may be long.
TraceArguments Kept(TraceArguments arguments)
{
    for (TraceArgument& argument : arguments)
    {
        if (std::string* const text = std::get_if<std::string>(&argument.value))
        {
            *text = Shorten(*text, kLongestValue);
        }
    }
    return arguments;
}

bool IsSameText(const TraceArgument& kept, const TraceArgument& other)
{
    return Shorten(ValueText(kept.value), kLongestValue) == Shorten(ValueText(other.value), kLongestValue);
}

/// Numbers, texts and lists may differ among calls that are one arrow.
bool IsSameMeaning(const TraceArgument& left, const TraceArgument& right)
{
    const bool hasMeaning = std::holds_alternative<bool>(left.value) || std::holds_alternative<TraceCode>(left.value);
    return std::strcmp(left.name, right.name) == 0 && left.value.index() == right.value.index() &&
           (!hasMeaning || ValueText(left.value) == ValueText(right.value));
}

} // namespace

std::string SecondsText(TraceTime time)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", time.count() / 1e6);
    return text.data();
}

DiagramCall::DiagramCall(const TraceCall& call, TraceTime time)
    : m_crossing(call.crossing),
      m_component(call.component),
      m_connection(call.connection),
      m_name(call.name),
      m_begin(time),
      m_end(time),
      m_arguments(Kept(call.arguments)),
      m_listeners{call.receiver}
{
}

DiagramCall* DiagramCall::BeginInside(const TraceCall& call, TraceTime time)
{
    if (!m_inside.empty() && m_inside.back()->TakeListener(call))
    {
        return m_inside.back().get();
    }
    SettleLast();
    return m_inside.emplace_back(std::make_unique<DiagramCall>(call, time)).get();
}

void DiagramCall::End(const TraceResult& result, TraceTime time)
{
    m_end = time;
    m_isFailure = m_isFailure || result.isFailure;
    if (result.isFailure || !result.isPlain)
    {
        m_result = Shorten(result.text, kLongestValue);
    }
    m_outputs = Kept(result.outputs);
    NoteUsers();
    SettleLast();
}

bool DiagramCall::TakeListener(const TraceCall& other)
{
    return HasListeners() && m_crossing == other.crossing && m_component == other.component &&
           m_connection == other.connection && std::strcmp(m_name, other.name) == 0 &&
           std::equal(m_arguments.begin(), m_arguments.end(), other.arguments.begin(), other.arguments.end(),
                      IsSameText) &&
           m_listeners.insert(other.receiver).second;
}

bool DiagramCall::IsAlike(const DiagramCall& other) const
{
    return m_crossing == other.m_crossing && m_component == other.m_component &&
           std::strcmp(m_name, other.m_name) == 0 && m_isFailure == other.m_isFailure && m_result == other.m_result &&
           std::equal(m_arguments.begin(), m_arguments.end(), other.m_arguments.begin(), other.m_arguments.end(),
                      IsSameMeaning) &&
           std::equal(m_inside.begin(), m_inside.end(), other.m_inside.begin(), other.m_inside.end(),
                      [](const auto& left, const auto& right) { return left->IsAlike(*right); });
}

void DiagramCall::Add(DiagramCall& later)
{
    m_count += later.m_count;
    m_end = later.m_end;
    m_lastArguments = std::move(later.m_count == 1 ? later.m_arguments : later.m_lastArguments);
    m_lastOutputs = std::move(later.m_count == 1 ? later.m_outputs : later.m_lastOutputs);
    NoteUsersOf(later);
    for (size_t index = 0; index < m_inside.size(); ++index)
    {
        m_inside[index]->Add(*later.m_inside[index]);
    }
}

/// Merges the last call inside with an equal one, when no other listener can get it any more.
void DiagramCall::SettleLast()
{
    for (size_t index = m_inside.size(); index > 1; --index)
    {
        DiagramCall& last = *m_inside.back();
        DiagramCall& earlier = *m_inside[index - 2];
        if (earlier.IsAlike(last))
        {
            earlier.Add(last);
            m_inside.pop_back();
            return;
        }
        if (!last.IsAboutOthersThan(earlier))
        {
            return;
        }
    }
}

bool DiagramCall::IsAboutOthersThan(const DiagramCall& other) const
{
    return !m_users.empty() && !other.m_users.empty() && !m_isAboutMany && !other.m_isAboutMany &&
           std::none_of(m_users.begin(), m_users.end(),
                        [&other](const std::string& user) { return other.m_users.contains(user); });
}

bool DiagramCall::IsAbout(const std::vector<TraceSubject>& subjects) const
{
    return (!IsSetUp(m_name) && std::any_of(subjects.begin(), subjects.end(),
                                            [this](TraceSubject subject) { return BelongsTo(m_name, subject); })) ||
           std::any_of(m_inside.begin(), m_inside.end(),
                       [&subjects](const auto& call) { return call->IsAbout(subjects); });
}

bool DiagramCall::IsRead() const
{
    return m_crossing == Crossing::HostCall && IsQuery(m_name) && m_inside.empty();
}

bool DiagramCall::IsAction() const
{
    return (m_crossing == Crossing::HostCall || m_crossing == Crossing::HostPlatformCall) && !IsRead();
}

bool DiagramCall::HasListeners() const
{
    return m_crossing == Crossing::Notification || m_crossing == Crossing::PlatformEvent ||
           m_crossing == Crossing::HostPlatformEvent;
}

size_t DiagramCall::CountCalls() const
{
    size_t calls = m_count;
    for (const auto& call : m_inside)
    {
        calls += call->CountCalls();
    }
    return calls;
}

std::string DiagramCall::Text() const
{
    const std::string_view name(m_name);
    const size_t colons = name.rfind("::");
    std::string text(colons == std::string_view::npos ? name : name.substr(colons + 2));
    text += '(' + ListText(m_arguments, m_lastArguments) + ')';
    const std::string outputs = ListText(m_outputs, m_lastOutputs);
    text += outputs.empty() ? "" : " gives " + outputs;
    text += m_result.empty() ? "" : " = " + m_result;
    return m_count == 1 ? text : text + " " + kTimes + std::to_string(m_count);
}

std::string DiagramCall::TimeText() const
{
    const std::string begin = SecondsText(m_begin);
    const std::string end = SecondsText(m_end);
    return (m_count == 1 || begin == end ? begin : begin + " to " + end) + " s";
}

/// Notes the users that the call is about, with those of the calls inside it.
void DiagramCall::NoteUsers()
{
    for (const TraceArgument& argument : m_arguments)
    {
        const TraceList* const list = std::get_if<TraceList>(&argument.value);
        if (NamesUser(argument.name))
        {
            m_users.insert(ValueText(argument.value));
        }
        else if (list != nullptr)
        {
            m_users.insert(list->first.begin(), list->first.end());
            m_isAboutMany = m_isAboutMany || list->size != list->first.size();
        }
    }
    for (const auto& call : m_inside)
    {
        NoteUsersOf(*call);
    }
}

void DiagramCall::NoteUsersOf(const DiagramCall& other)
{
    m_isAboutMany = m_isAboutMany || other.m_isAboutMany || m_users.size() + other.m_users.size() > kMostUsers;
    if (!m_isAboutMany)
    {
        m_users.insert(other.m_users.begin(), other.m_users.end());
    }
}

} // namespace host
