#include "host/trace/TraceDiagram.h"

#include "host/trace/SequenceDiagram.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace host
{

namespace
{

constexpr size_t kMostItems = 2'000; // an arrow takes 25 characters or more
constexpr size_t kMostDevices = 60;
constexpr size_t kIdsShown = 3;
constexpr size_t kMostUsers = 1'000; // that one arrow stands for and may change its place with others
constexpr size_t kLongestValue = 90;
constexpr size_t kChaptersNamed = 5;
constexpr char kMany[] = "\xC3\x97"; // the multiplication sign
const std::string kDots = "\xE2\x80\xA6";
constexpr size_t kLongestList = 140; // of arguments
constexpr size_t kGuidDigits = 32;
constexpr size_t kGuidDigitsShown = 8;

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> list)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

bool NamesUser(std::string_view argument)
{
    return IsOneOf(argument, {"userId", "userid", "user_id", "srcUserId"});
}

/// Arguments that say nothing about what is going on.
bool IsDull(std::string_view argument)
{
    return IsOneOf(argument, {"appid", "companyid", "conflictExtendInfo", "deviceid", "ext", "ext_info", "http",
                              "inviteCode", "mutex", "page_count", "page_index", "param16", "param32", "param64",
                              "registeruser", "server", "size"});
}

/// Whether a call may go to several receivers, one after the other.
bool HasListeners(Crossing crossing)
{
    return crossing == Crossing::Notification || crossing == Crossing::PlatformEvent ||
           crossing == Crossing::HostPlatformEvent;
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

/// The value with what it names: "user 1001", "invitation 3", "36 (logged in on another device)".
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

/// Empty for what says nothing.
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

/// A payload is too long to be shown twice.
bool IsPayload(std::string_view argument)
{
    return IsOneOf(argument, {"ext_info", "json", "msg"});
}

std::string SecondsText(TraceTime time)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", time.count() / 1e6);
    return text.data();
}

} // namespace

/// A call with what was called inside it, or several equal ones.
class TraceDiagram::Call
{
public:
    Call(const TraceCall& call, TraceTime time)
        : crossing(call.crossing),
          component(call.component),
          connection(call.connection),
          name(call.name),
          begin(time),
          end(time)
    {
        for (const TraceArgument& argument : call.arguments)
        {
            Keep(argument, arguments);
        }
        receivers.insert(call.receiver);
    }

    void AddResult(const TraceResult& result, TraceTime time)
    {
        end = time;
        isFailure = isFailure || result.isFailure;
        if (result.isFailure || !result.isPlain)
        {
            resultText = Shorten(result.text, kLongestValue);
        }
        for (const TraceArgument& output : result.outputs)
        {
            Keep(output, outputs);
        }
        NoteUsers();
    }

    /// Whether this is the same event for another listener.
    bool IsSharedBy(const TraceCall& other) const
    {
        return HasListeners(crossing) && crossing == other.crossing && component == other.component &&
               connection == other.connection && std::strcmp(name, other.name) == 0 &&
               !receivers.contains(other.receiver) && SameTexts(other);
    }

    void AddReceiver(const void* receiver)
    {
        receivers.insert(receiver);
    }

    /// Whether both can be drawn as one: the same calls inside each other, with the same codes and results.
    bool IsAlike(const Call& other) const
    {
        return crossing == other.crossing && component == other.component && std::strcmp(name, other.name) == 0 &&
               isFailure == other.isFailure && resultText == other.resultText &&
               std::equal(arguments.begin(), arguments.end(), other.arguments.begin(), other.arguments.end(),
                          SameMeaning) &&
               std::equal(children.begin(), children.end(), other.children.begin(), other.children.end(),
                          [](const auto& left, const auto& right) { return left->IsAlike(*right); });
    }

    /// Whether both are about users, and not about the same one: then their order does not matter.
    bool IsAboutOthersThan(const Call& other) const
    {
        return !users.empty() && !other.users.empty() && !isAboutMany && !other.isAboutMany &&
               std::none_of(users.begin(), users.end(),
                            [&other](const std::string& user) { return other.users.contains(user); });
    }

    /// Takes in a call that is alike and came later.
    void Add(Call& later)
    {
        count += later.count;
        end = later.end;
        NoteUsersOf(later);
        last = later.last.empty() ? std::move(later.arguments) : std::move(later.last);
        lastOutputs = later.lastOutputs.empty() ? std::move(later.outputs) : std::move(later.lastOutputs);
        for (size_t index = 0; index < children.size(); ++index)
        {
            children[index]->Add(*later.children[index]);
        }
    }

    /// Gives the last call inside its place, once no other listener can get it any more.
    void SettleLastChild()
    {
        if (children.size() < 2)
        {
            return;
        }
        const Call& settled = *children.back();
        for (size_t index = children.size() - 1; index-- > 0;)
        {
            Call& earlier = *children[index];
            if (earlier.IsAlike(settled))
            {
                earlier.Add(*children.back());
                children.pop_back();
                return;
            }
            if (!settled.IsAboutOthersThan(earlier))
            {
                return;
            }
        }
    }

    size_t CountCalls() const
    {
        size_t calls = count;
        for (const auto& child : children)
        {
            calls += child->CountCalls();
        }
        return calls;
    }

    bool IsAbout(const std::vector<TraceSubject>& subjects) const
    {
        return (!IsSetUp(name) && std::find(subjects.begin(), subjects.end(), SubjectOf(name)) != subjects.end()) ||
               std::any_of(children.begin(), children.end(),
                           [&subjects](const auto& child) { return child->IsAbout(subjects); });
    }

    bool IsRead() const
    {
        return crossing == Crossing::HostCall && IsQuery(name) && children.empty();
    }

    /// Whether the host does something, on its own account.
    bool IsAction() const
    {
        return (crossing == Crossing::HostCall || crossing == Crossing::HostPlatformCall) && !IsRead();
    }

    /// "Login(user 2, force=true)", with outputs, result and number.
    std::string Text() const
    {
        const std::string_view full(name);
        const size_t colons = full.rfind("::");
        std::string text(colons == std::string_view::npos ? full : full.substr(colons + 2));
        text += '(' + ListOf(arguments, last) + ')';
        const std::string out = ListOf(outputs, lastOutputs);
        text += out.empty() ? "" : " gives " + out;
        text += resultText.empty() ? "" : " = " + resultText;
        return count == 1 ? text : text + " " + kMany + std::to_string(count);
    }

    Crossing crossing;
    uint32_t component;
    uint32_t connection;
    const char* name;
    TraceTime begin;
    TraceTime end;
    bool isFailure = false;
    std::string resultText{};
    size_t count = 1;
    std::vector<std::unique_ptr<Call>> children{};

private:
    static void Keep(const TraceArgument& argument, TraceArguments& kept)
    {
        TraceArgument copy = argument;
        if (std::string* const text = std::get_if<std::string>(&copy.value))
        {
            *text = Shorten(*text, kLongestValue);
        }
        kept.push_back(std::move(copy));
    }

    bool SameTexts(const TraceCall& other) const
    {
        return std::equal(arguments.begin(), arguments.end(), other.arguments.begin(), other.arguments.end(),
                          [](const TraceArgument& mine, const TraceArgument& theirs) {
                              return Shorten(ValueText(mine.value), kLongestValue) ==
                                     Shorten(ValueText(theirs.value), kLongestValue);
                          });
    }

    /// Numbers, texts and lists may differ among calls that are drawn as one.
    static bool SameMeaning(const TraceArgument& left, const TraceArgument& right)
    {
        const bool hasMeaning =
            std::holds_alternative<bool>(left.value) || std::holds_alternative<TraceCode>(left.value);
        return std::strcmp(left.name, right.name) == 0 && left.value.index() == right.value.index() &&
               (!hasMeaning || ValueText(left.value) == ValueText(right.value));
    }

    /// Notes the users that the call is about, with those of the calls inside it.
    void NoteUsers()
    {
        for (const TraceArgument& argument : arguments)
        {
            const TraceList* const list = std::get_if<TraceList>(&argument.value);
            if (NamesUser(argument.name))
            {
                users.insert(ValueText(argument.value));
            }
            else if (list != nullptr)
            {
                users.insert(list->first.begin(), list->first.end());
                isAboutMany = isAboutMany || list->size != list->first.size();
            }
        }
        for (const auto& child : children)
        {
            NoteUsersOf(*child);
        }
    }

    void NoteUsersOf(const Call& other)
    {
        users.insert(other.users.begin(), other.users.end());
        isAboutMany = isAboutMany || other.isAboutMany || users.size() > kMostUsers;
    }

    static std::string ListOf(const TraceArguments& first, const TraceArguments& last)
    {
        std::string text;
        for (size_t index = 0; index < first.size(); ++index)
        {
            std::string value = ArgumentText(first[index]);
            if (value.empty())
            {
                continue;
            }
            if (index < last.size() && ValueText(last[index].value) != ValueText(first[index].value))
            {
                value += " " + (kDots + (IsPayload(first[index].name) ? "" : " " + NamedText(last[index])));
            }
            text += (text.empty() ? "" : ", ") + value;
        }
        return Shorten(text, kLongestList);
    }

    TraceArguments arguments{};
    TraceArguments outputs{};
    TraceArguments last{}; ///< arguments of the last one of several
    TraceArguments lastOutputs{};
    std::set<const void*> receivers{};
    std::set<std::string> users{};
    bool isAboutMany = false; ///< about more users than are noted
};

/// A line of the diagram's plan.
struct TraceDiagram::Item
{
    enum class Kind
    {
        Chapter,
        SetUp, ///< folded calls
        Call,
    };

    Kind kind;
    TraceTime time;
    std::string text{};           ///< the chapter's title, or what was set up
    uint32_t component = 0;       ///< of folded calls
    size_t folded = 0;            ///< their number
    std::unique_ptr<Call> call{}; ///< outermost
    bool isSettled = false;

    bool BelongsTo(uint32_t wanted) const
    {
        return kind != Kind::Chapter && (kind == Kind::Call ? call->component : component) == wanted;
    }
};

/// Draws the plan.
class TraceDiagram::Renderer
{
public:
    explicit Renderer(const TraceDiagram& plan) : m_plan(plan), m_isAll(plan.m_choice.subjects.empty())
    {
        FindParties();
    }

    std::string Text()
    {
        SequenceDiagram diagram(Names());
        auto item = m_plan.m_items.begin();
        while (item != m_plan.m_items.end() && Draw(*item, diagram))
        {
            ++item;
        }
        Close(item, diagram);
        return diagram.Text();
    }

private:
    static constexpr size_t kHostParty = 0;

    void FindParties()
    {
        for (const Item& item : m_plan.m_items)
        {
            if (item.kind == Item::Kind::Call)
            {
                FindParties(*item.call);
            }
            else if (item.kind == Item::Kind::SetUp)
            {
                AddDevice(item.component);
            }
        }
    }

    void FindParties(const Call& call)
    {
        AddDevice(call.component);
        m_hasHttp = m_hasHttp || call.crossing == Crossing::HttpCall || call.crossing == Crossing::HttpEvent;
        for (const auto& child : call.children)
        {
            FindParties(*child);
        }
    }

    void AddDevice(uint32_t component)
    {
        const std::string& device = m_plan.m_devices[component];
        if (m_devices.size() < kMostDevices && std::find(m_devices.begin(), m_devices.end(), device) == m_devices.end())
        {
            m_devices.push_back(device);
        }
    }

    std::vector<std::vector<std::string>> Names() const
    {
        std::vector<std::vector<std::string>> names{{"Host"}};
        for (const std::string& device : m_devices)
        {
            std::vector<std::string> name{"Module of " + device};
            const auto users = m_plan.m_users.find(device);
            if (users != m_plan.m_users.end())
            {
                std::string text = "user";
                for (const std::string& user : users->second)
                {
                    text += (text == "user" ? " " : ", ") + user;
                }
                name.push_back(text);
            }
            names.push_back(std::move(name));
        }
        if (!m_devices.empty())
        {
            names.push_back({"Platform"});
        }
        if (m_hasHttp)
        {
            names.push_back({"HTTP"});
        }
        return names;
    }

    /// The party of a component's device; nothing when there are too many devices.
    std::optional<size_t> DeviceParty(uint32_t component) const
    {
        const auto found = std::find(m_devices.begin(), m_devices.end(), m_plan.m_devices[component]);
        return found != m_devices.end() ? std::optional<size_t>(found - m_devices.begin() + 1) : std::nullopt;
    }

    /// False when the diagram is full.
    bool Draw(const Item& item, SequenceDiagram& diagram)
    {
        switch (item.kind)
        {
        case Item::Kind::Chapter:
            return diagram.Note(SecondsText(item.time) + " s  " + item.text);
        case Item::Kind::SetUp:
        {
            const std::optional<size_t> party = DeviceParty(item.component);
            return !party || diagram.Note(*party, SecondsText(item.time) + " s  " + item.text + " (" +
                                                      std::to_string(item.folded) + " calls)");
        }
        case Item::Kind::Call:
            break;
        }
        return DrawCall(*item.call, diagram, true);
    }

    bool DrawCall(const Call& call, SequenceDiagram& diagram, bool isOutermost)
    {
        if (!m_isAll && !call.IsAbout(m_plan.m_choice.subjects))
        {
            return true;
        }
        const std::optional<size_t> module = DeviceParty(call.component);
        if (!module || IsSetUp(call.name))
        {
            (module ? m_folded : m_withoutParty) += call.CountCalls();
            return true;
        }
        const auto [from, to] = Ends(call.crossing, *module);
        const auto arrow = call.isFailure ? SequenceDiagram::Arrow::Failed : SequenceDiagram::Arrow::Plain;
        if (!diagram.Message(from, to, (isOutermost ? TimeText(call) : "") + call.Text(), arrow))
        {
            return false;
        }
        return std::all_of(call.children.begin(), call.children.end(),
                           [&](const auto& child) { return DrawCall(*child, diagram, false); });
    }

    static std::string TimeText(const Call& call)
    {
        const std::string begin = SecondsText(call.begin);
        const std::string end = SecondsText(call.end);
        return call.count == 1 || begin == end ? begin + " s  " : begin + " to " + end + " s  ";
    }

    std::pair<size_t, size_t> Ends(Crossing crossing, size_t module) const
    {
        const size_t platform = m_devices.size() + 1;
        const size_t http = platform + 1;
        switch (crossing)
        {
        case Crossing::HostCall:
            return {kHostParty, module};
        case Crossing::Notification:
            return {module, kHostParty};
        case Crossing::PlatformCall:
            return {module, platform};
        case Crossing::PlatformEvent:
        case Crossing::HttpRequest:
            return {platform, module};
        case Crossing::HttpCall:
            return {module, http};
        case Crossing::HttpEvent:
            return {http, module};
        case Crossing::HostPlatformCall:
            return {kHostParty, platform};
        case Crossing::HostPlatformEvent:
            return {platform, kHostParty};
        }
        return {kHostParty, module};
    }

    /// Says what was left out.
    void Close(Items::const_iterator rest, SequenceDiagram& diagram)
    {
        if (m_devices.empty())
        {
            diagram.ClosingNote("No recorded call belongs to what was to be shown");
        }
        const size_t folded = m_folded + m_plan.m_folded;
        if (folded != 0)
        {
            diagram.ClosingNote("Not drawn: " + std::to_string(folded) + " further calls of set-up");
        }
        if (m_withoutParty != 0)
        {
            diagram.ClosingNote("Not drawn: " + std::to_string(m_withoutParty) +
                                " calls and events of the devices after " + m_devices.back() +
                                ". Choose devices to see them");
        }
        size_t missing = m_plan.m_dropped;
        size_t chapters = 0;
        std::string titles;
        std::string since = rest != m_plan.m_items.end() ? SecondsText(rest->time) : "";
        for (; rest != m_plan.m_items.end(); ++rest)
        {
            missing += rest->kind == Item::Kind::Call ? rest->call->CountCalls() : rest->folded;
            if (rest->kind == Item::Kind::Chapter && ++chapters <= kChaptersNamed)
            {
                titles += (titles.empty() ? "" : ", ") + ('"' + rest->text + '"');
            }
        }
        if (missing == 0 && chapters == 0)
        {
            return;
        }
        std::string text = "The diagram is full. Not drawn: the last " + std::to_string(missing) + " calls and events";
        text += since.empty() ? "" : ", from " + since + " s on";
        text += titles.empty() ? "" : ", among them " + titles;
        text +=
            chapters > kChaptersNamed ? " and " + std::to_string(chapters - kChaptersNamed) + " further chapters" : "";
        diagram.ClosingNote(text + ". Choose devices or subjects to see them");
    }

    const TraceDiagram& m_plan;
    const bool m_isAll;
    std::vector<std::string> m_devices;
    bool m_hasHttp = false;
    size_t m_folded = 0;
    size_t m_withoutParty = 0;
};

TraceDiagram::TraceDiagram(DiagramChoice choice) : m_choice(std::move(choice)) {}

TraceDiagram::~TraceDiagram() = default;

void TraceDiagram::AddComponent(const std::string& device)
{
    m_devices.push_back(device);
}

void TraceDiagram::Chapter(const std::string& title, TraceTime time)
{
    m_items.push_back({.kind = Item::Kind::Chapter, .time = time, .text = title, .isSettled = true});
    Limit(std::prev(m_items.end()));
}

TraceDiagram::Call* TraceDiagram::Begin(int thread, Call* outer, const TraceCall& call, TraceTime time)
{
    if (outer != nullptr)
    {
        if (!outer->children.empty() && outer->children.back()->IsSharedBy(call))
        {
            outer->children.back()->AddReceiver(call.receiver);
            return outer->children.back().get();
        }
        outer->SettleLastChild();
        return outer->children.emplace_back(std::make_unique<Call>(call, time)).get();
    }
    const auto last = m_last.find(thread);
    if (last != m_last.end() && last->second->call->IsSharedBy(call))
    {
        last->second->call->AddReceiver(call.receiver);
        return last->second->call.get();
    }
    SettleThread(thread);
    const TraceValue* const user = FindValue(call.arguments, "userid");
    if (user != nullptr)
    {
        m_users[m_devices[call.component]].insert(Shorten(ValueText(*user), kLongestValue));
    }
    m_items.push_back({.kind = Item::Kind::Call, .time = time, .call = std::make_unique<Call>(call, time)});
    m_last[thread] = std::prev(m_items.end());
    return m_items.back().call.get();
}

void TraceDiagram::End(int thread, Call* call, const TraceResult& result, TraceTime time)
{
    call->AddResult(result, time);
    call->SettleLastChild();
    const auto last = m_last.find(thread);
    if (last != m_last.end() && last->second->call.get() == call && !HasListeners(call->crossing))
    {
        SettleThread(thread);
    }
}

/// The thread's last call goes to no further listener.
void TraceDiagram::SettleThread(int thread)
{
    const auto last = m_last.find(thread);
    if (last != m_last.end())
    {
        const Items::iterator item = last->second;
        m_last.erase(last);
        Settle(item);
    }
}

void TraceDiagram::Settle(Items::iterator item)
{
    const Call& call = *item->call;
    item->isSettled = true;
    const bool foundNothing = call.IsRead() && call.isFailure;
    if (!IsChosenDevice(call.component) || foundNothing)
    {
        m_items.erase(item);
    }
    else if (IsSetUp(call.name))
    {
        Fold(item);
    }
    else if ((!m_choice.subjects.empty() && !call.IsAbout(m_choice.subjects)) || Merge(item))
    {
        m_items.erase(item);
    }
    else
    {
        Limit(item);
    }
}

bool TraceDiagram::IsChosenDevice(uint32_t component) const
{
    return m_choice.devices.empty() ||
           std::find(m_choice.devices.begin(), m_choice.devices.end(), m_devices[component]) != m_choice.devices.end();
}

/// Makes a note of the creation or the destruction of a component, and adds to it what follows of the kind.
void TraceDiagram::Fold(Items::iterator item)
{
    const Call& call = *item->call;
    const size_t calls = call.CountCalls();
    const uint32_t component = call.component;
    const std::string_view name(call.name);
    const auto before = std::find_if(std::make_reverse_iterator(item), m_items.rend(),
                                     [component](const Item& each)
                                     { return each.BelongsTo(component) || each.kind == Item::Kind::Chapter; });
    const bool isNoted =
        m_choice.subjects.empty() && (name == "WDllCreateComponent" || name == "IOnlineManager::Destroy");
    if (isNoted)
    {
        *item = {.kind = Item::Kind::SetUp,
                 .time = item->time,
                 .text = name == "WDllCreateComponent" ? "created and set up" : "destroyed",
                 .component = component,
                 .folded = calls,
                 .isSettled = true};
        Limit(item);
        return;
    }
    size_t& folded = before != m_items.rend() && before->kind == Item::Kind::SetUp ? before->folded : m_folded;
    folded += calls;
    m_items.erase(item);
}

/// Whether the call has become part of an equal one before it.
bool TraceDiagram::Merge(Items::iterator item)
{
    Call& call = *item->call;
    for (auto earlier = item; earlier != m_items.begin();)
    {
        --earlier;
        if (earlier->kind == Item::Kind::Chapter)
        {
            return false;
        }
        const bool isOwn = earlier->BelongsTo(call.component);
        const bool isCall = earlier->kind == Item::Kind::Call && earlier->isSettled;
        if (isCall && isOwn && earlier->call->IsAlike(call))
        {
            earlier->call->Add(call);
            return true;
        }
        // What the host does is why later events come, so nothing changes its place with it.
        if (call.IsAction() || (isCall && earlier->call->IsAction()))
        {
            return false;
        }
        if (isOwn && !(isCall && (call.IsRead() || earlier->call->IsRead() || call.IsAboutOthersThan(*earlier->call))))
        {
            return false;
        }
    }
    return false;
}

/// Keeps no more than a diagram has room for.
void TraceDiagram::Limit(Items::iterator item)
{
    if (m_items.size() > kMostItems)
    {
        m_dropped += item->kind == Item::Kind::Call ? item->call->CountCalls() : item->folded;
        m_items.erase(item);
    }
}

std::string TraceDiagram::Text()
{
    while (!m_last.empty())
    {
        SettleThread(m_last.begin()->first);
    }
    return Renderer(*this).Text();
}

std::vector<std::string> TraceDiagram::Devices() const
{
    std::vector<std::string> devices;
    for (const std::string& device : m_devices)
    {
        if (std::find(devices.begin(), devices.end(), device) == devices.end())
        {
            devices.push_back(device);
        }
    }
    return devices;
}

std::vector<std::string> TraceDiagram::UnknownDevices() const
{
    std::vector<std::string> unknown;
    std::copy_if(m_choice.devices.begin(), m_choice.devices.end(), std::back_inserter(unknown),
                 [this](const std::string& device)
                 { return std::find(m_devices.begin(), m_devices.end(), device) == m_devices.end(); });
    return unknown;
}

} // namespace host
