#include "host/trace/TraceDiagram.h"

#include "host/trace/DiagramCall.h"
#include "host/trace/SequenceDiagram.h"

#include <algorithm>
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
constexpr size_t kChaptersNamed = 5;
constexpr size_t kLongestName = 50; // of a user

} // namespace

/// A line of the diagram's plan.
struct TraceDiagram::Item
{
    enum class Kind
    {
        Chapter,
        SetUp, ///< calls that a note counts
        Call,
    };

    Kind kind;
    TraceTime time;
    std::string text{};                  ///< the chapter's title, or what was set up
    uint32_t component = 0;              ///< whose calls the note counts
    size_t folded = 0;                   ///< number of calls that the note counts
    std::unique_ptr<DiagramCall> call{}; ///< an outermost call
    bool isSettled = false;

    bool BelongsTo(uint32_t wanted) const
    {
        return kind != Kind::Chapter && (kind == Kind::Call ? call->Component() : component) == wanted;
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

    void FindParties(const DiagramCall& call)
    {
        AddDevice(call.Component());
        m_hasHttp = m_hasHttp || call.Way() == Crossing::HttpCall || call.Way() == Crossing::HttpEvent;
        for (const auto& child : call.Inside())
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

    /// The party of a component's device; empty when there are too many devices.
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

    bool DrawCall(const DiagramCall& call, SequenceDiagram& diagram, bool isOutermost)
    {
        if (!m_isAll && !call.IsAbout(m_plan.m_choice.subjects))
        {
            return true;
        }
        const std::optional<size_t> module = DeviceParty(call.Component());
        if (!module || IsSetUp(call.Name()))
        {
            (module ? m_folded : m_withoutParty) += call.CountCalls();
            return true;
        }
        const auto [from, to] = Ends(call.Way(), *module);
        const auto arrow = call.IsFailure() ? SequenceDiagram::Arrow::Failed : SequenceDiagram::Arrow::Plain;
        if (!diagram.Message(from, to, (isOutermost ? call.TimeText() + "  " : "") + call.Text(), arrow))
        {
            return false;
        }
        return std::all_of(call.Inside().begin(), call.Inside().end(),
                           [&](const auto& child) { return DrawCall(*child, diagram, false); });
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

    /// Adds notes about the calls that the diagram leaves out.
    void Close(Items::const_iterator rest, SequenceDiagram& diagram)
    {
        if (m_devices.empty())
        {
            diagram.ClosingNote("No call of the chosen devices and subjects was recorded");
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

DiagramCall* TraceDiagram::Begin(int thread, DiagramCall* outer, const TraceCall& call, TraceTime time)
{
    if (outer != nullptr)
    {
        return outer->BeginInside(call, time);
    }
    const auto last = m_last.find(thread);
    if (last != m_last.end() && last->second->call->TakeListener(call))
    {
        return last->second->call.get();
    }
    SettleThread(thread);
    if (const TraceValue* const user = FindValue(call.arguments, "userid"); user != nullptr)
    {
        m_users[m_devices[call.component]].insert(Shorten(ValueText(*user), kLongestName));
    }
    m_items.push_back({.kind = Item::Kind::Call, .time = time, .call = std::make_unique<DiagramCall>(call, time)});
    m_last[thread] = std::prev(m_items.end());
    return m_items.back().call.get();
}

void TraceDiagram::End(int thread, DiagramCall* call, const TraceResult& result, TraceTime time)
{
    call->End(result, time);
    const auto last = m_last.find(thread);
    if (last != m_last.end() && last->second->call.get() == call && !call->HasListeners())
    {
        SettleThread(thread);
    }
}

/// Settles the thread's last call, which goes to no further listener.
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
    const DiagramCall& call = *item->call;
    item->isSettled = true;
    if (IsWanted(call) && IsSetUp(call.Name()))
    {
        Fold(item);
    }
    else if (!IsWanted(call) || Merge(item))
    {
        m_items.erase(item);
    }
    else
    {
        Limit(item);
    }
}

/// Whether the call, or the set-up that it is, has a place in the diagram.
bool TraceDiagram::IsWanted(const DiagramCall& call) const
{
    const bool isAboutSubject = m_choice.subjects.empty() || IsSetUp(call.Name()) || call.IsAbout(m_choice.subjects);
    const bool foundNothing = call.IsRead() && call.IsFailure();
    return IsChosenDevice(call.Component()) && isAboutSubject && !foundNothing;
}

bool TraceDiagram::IsChosenDevice(uint32_t component) const
{
    return m_choice.devices.empty() ||
           std::find(m_choice.devices.begin(), m_choice.devices.end(), m_devices[component]) != m_choice.devices.end();
}

/// Replaces the creation or the destruction of a component by a note, which also counts the set-up calls that follow.
void TraceDiagram::Fold(Items::iterator item)
{
    const DiagramCall& call = *item->call;
    const size_t calls = call.CountCalls();
    const uint32_t component = call.Component();
    const std::string_view name(call.Name());
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

/// Merges the call into an equal one before it. False when there is none.
bool TraceDiagram::Merge(Items::iterator item)
{
    DiagramCall& call = *item->call;
    for (auto earlier = item; earlier != m_items.begin();)
    {
        --earlier;
        if (earlier->kind == Item::Kind::Chapter)
        {
            return false;
        }
        const bool isOwn = earlier->BelongsTo(call.Component());
        const bool isCall = earlier->kind == Item::Kind::Call && earlier->isSettled;
        if (isCall && isOwn && earlier->call->IsAlike(call))
        {
            earlier->call->Add(call);
            return true;
        }
        // An action of the host may be the cause of later events, so no call may change its place with it.
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
