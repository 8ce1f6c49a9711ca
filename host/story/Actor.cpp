#include "host/story/Actor.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <utility>

namespace host
{

using namespace onlinehost;
using namespace onlinemanager;
using std::chrono::milliseconds;

namespace
{

/// One time limit for several waits.
class Deadline
{
public:
    explicit Deadline(milliseconds limit) : m_end(std::chrono::steady_clock::now() + limit) {}

    milliseconds Left() const
    {
        const auto left = std::chrono::duration_cast<milliseconds>(m_end - std::chrono::steady_clock::now());
        return std::max(left, milliseconds(0));
    }

private:
    const std::chrono::steady_clock::time_point m_end;
};

bool ComesOfItself(EventKind kind)
{
    return kind == EventKind::UserStatusChanged || kind == EventKind::UserJoined || kind == EventKind::UserLeaved;
}

} // namespace

Actor::Actor(Story& story, std::string name, std::unique_ptr<Component> session, LoginParam login, milliseconds limit,
             Interruption* interruption)
    : m_story(story),
      m_name(std::move(name)),
      m_session(std::move(session)),
      m_login(std::move(login)),
      m_limit(limit),
      m_watch(interruption, [this] { m_session->CancelWaits(); })
{
}

void Actor::StartsLogin(bool force)
{
    Does("logs in as user " + std::to_string(m_login.userid) + (force ? " with force" : ""));
    if (!m_session->Login(m_login, force))
    {
        m_story.Missed(m_name, "the module starts the login", "it refuses at once");
    }
}

void Actor::LogsIn(bool force)
{
    StartsLogin(force);
    Gets("logged in", {EventKind::LoginSuccess, EventKind::Offline},
         [](const Event& event) { return event.kind == EventKind::LoginSuccess; });
    // The module's presence service learns of the login after all listeners, so it may not know the user yet. The
    // result of its refresh shows that it does.
    if (!m_session->Events().TakeIf([](const Event& event) { return event.kind == EventKind::UserStatusChanged; },
                                    m_limit))
    {
        m_story.Missed(m_name, "the first refresh of the company", Waiting());
    }
}

void Actor::LogsOut()
{
    Does("logs out");
    if (!m_session->Online().Logout())
    {
        m_story.Missed(m_name, "the module starts the logout", "it refuses");
    }
    Gets("went offline: success", {EventKind::Offline}, [](const Event& event) { return event.code == ERR_SUCCESS; });
}

void Actor::Does(const std::string& what)
{
    m_story.Tell(m_name, what);
}

void Actor::Has(bool isSo, const std::string& expected, const std::string& otherwise)
{
    m_story.Check(isSo, m_name, expected, otherwise);
}

Event Actor::Gets(const std::string& expected, std::initializer_list<EventKind> kinds, const Wanted& isWanted)
{
    const std::vector<EventKind> accepted(kinds);
    const std::optional<Event> event = m_session->Events().TakeIf(
        [&](const Event& each) { return std::find(accepted.begin(), accepted.end(), each.kind) != accepted.end(); },
        m_limit);
    if (!event)
    {
        m_story.Missed(m_name, expected, Waiting());
    }
    m_story.TellEvent(m_name, *event);
    if (isWanted && !isWanted(*event))
    {
        m_story.Missed(m_name, expected, Describe(*event));
    }
    m_story.Came(m_name, Describe(*event), event->time);
    return *event;
}

void Actor::GetsOfEach(const std::string& expected, EventKind kind, std::set<unsigned> userIds)
{
    const size_t total = userIds.size();
    const Deadline deadline(m_limit);
    while (!userIds.empty())
    {
        const std::optional<Event> event = m_session->Events().TakeIf(
            [&](const Event& each) { return each.kind == kind && userIds.contains(each.userId); }, deadline.Left());
        if (!event)
        {
            m_story.Missed(m_name, expected,
                           std::to_string(total - userIds.size()) + " of " + std::to_string(total) + ", not of " +
                               ListIds(userIds) + "; " + Waiting());
        }
        userIds.erase(event->userId);
    }
    m_story.Came(m_name, expected);
}

void Actor::Sees(const std::string& expected, const std::function<bool()>& isSo,
                 const std::function<std::string()>& describe)
{
    const Deadline deadline(m_limit);
    while (!isSo())
    {
        // An event may be older than the last question, so each event leads to another question.
        const std::optional<Event> event = m_session->Events().TakeIf(
            [](const Event& each) { return each.kind == EventKind::UserStatusChanged; }, deadline.Left());
        if (!event)
        {
            m_story.Missed(m_name, "sees " + expected, describe());
        }
    }
    m_story.Came(m_name, "sees " + expected);
}

void Actor::Reads(ConnectProperty key, const std::string& what, const std::string& expected)
{
    const std::optional<std::string> text = m_session->Property(key);
    m_story.Check(text == expected, m_name, "reads " + what + ": \"" + expected + "\"",
                  text ? "\"" + Printable(*text) + "\"" : "no text");
}

std::vector<UserOnlineInfo> Actor::Ask(const std::vector<unsigned>& userIds)
{
    std::vector<UserOnlineInfo> answers;
    answers.reserve(userIds.size());
    m_session->Users().QueryUserStatus(userIds, [&](const UserOnlineInfo& info) { answers.push_back(info); });
    return answers;
}

void Actor::HasNothingLeft()
{
    const std::optional<Event> event =
        m_session->Events().TakeIf([](const Event& each) { return !ComesOfItself(each.kind); }, milliseconds(0));
    if (event)
    {
        m_story.Missed(m_name, "nothing further", Describe(*event));
    }
}

/// A description of the event that came instead of the expected one.
std::string Actor::Waiting()
{
    const std::optional<Event> event =
        m_session->Events().TakeIf([](const Event& each) { return !ComesOfItself(each.kind); }, milliseconds(0));
    return event ? Describe(*event) : "nothing in " + std::to_string(m_limit.count()) + " ms";
}

} // namespace host
