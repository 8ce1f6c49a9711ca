#include "host/trace/TraceFlows.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace host
{

namespace
{

/// The role of an operation for an arrow.
enum class Role
{
    Asks,            ///< starts an arrow; the key of its answer is known before the call
    AsksById,        ///< starts an arrow; the call returns the key of its answer
    Passes,          ///< belongs to a question and does not answer it
    Answers,         ///< answers one call
    AnswersLastPage, ///< answers with its last page; the arrow passes through earlier pages
    AnswersOne,      ///< answers at the listener that makes a notification of it; several listeners get the event
    AnswersAlone,    ///< answers when it is not made inside another call
};

/// The key by which an answer is matched to its call.
enum class By
{
    Component,
    Connection,
    Request,       ///< request id and connection
    Invitation,    ///< invitation id and invitee
    OwnInvitation, ///< invitation id; the invitee is the connection's own user
    Http,          ///< request id and component
};

std::string Text(const TraceArguments& arguments, const char* name)
{
    const TraceValue* const value = FindValue(arguments, name);
    return value != nullptr ? ValueText(*value) : "";
}

} // namespace

struct TraceFlows::Rule
{
    std::string_view name;
    Role role;
    By by;
    const char* question;
};

const TraceFlows::Rule* TraceFlows::RuleOf(const char* name)
{
    static constexpr std::array kRules{
        Rule{"IZolConnection::Login", Role::Asks, By::Connection, "login"},
        Rule{"IZolConnection::LoginOldGw", Role::Asks, By::Connection, "login"},
        Rule{"IZolConnectionListener::OnLoginResult", Role::AnswersOne, By::Connection, "login"},
        Rule{"IZolConnection::Logout", Role::Asks, By::Connection, "logout"},
        Rule{"IZolConnectionListener::OnLogouted", Role::AnswersOne, By::Connection, "logout"},
        Rule{"IZolConnection::JoinGroup", Role::Asks, By::Connection, "join"},
        Rule{"IZolConnectionListener::OnJoinGroupResult", Role::AnswersOne, By::Connection, "join"},
        Rule{"IZolConnection::LeaveGroup", Role::Asks, By::Connection, "leave"},
        Rule{"IZolConnectionListener::OnLeaveGroupResult", Role::AnswersOne, By::Connection, "leave"},
        Rule{"IZolOnline::RefreshUsersStatus", Role::AsksById, By::Request, "refresh"},
        Rule{"IZolOnline::RefreshAllUsersStatus", Role::AsksById, By::Request, "refresh"},
        Rule{"IZolOnlineListener::OnRefreshUserStatusFinished", Role::AnswersLastPage, By::Request, "refresh"},
        Rule{"IZolOnline::InviteUsers", Role::AsksById, By::Invitation, "invitation"},
        Rule{"IZolOnlineListener::OnInviteIncome", Role::Passes, By::OwnInvitation, "invitation"},
        Rule{"IZolOnline::AcceptInvite", Role::Passes, By::OwnInvitation, "invitation"},
        Rule{"IZolOnline::RejectInvite", Role::Passes, By::OwnInvitation, "invitation"},
        Rule{"IZolOnlineListener::OnInviteAccepted", Role::Answers, By::Invitation, "invitation"},
        Rule{"IZolOnlineListener::OnInviteRejected", Role::Answers, By::Invitation, "invitation"},
        Rule{"IHttpClient::Request", Role::AsksById, By::Http, "http"},
        Rule{"IHttpResponseNotify::OnCompleteRespond", Role::Answers, By::Http, "http"},
        Rule{"IPaasOnline::TriggerNotify", Role::Asks, By::Component, "trigger"},
        Rule{"IPaasOnlineNotify::OnLoginSuccess", Role::AnswersAlone, By::Component, "trigger"},
        Rule{"IPaasOnlineNotify::OnOffline", Role::AnswersAlone, By::Component, "trigger"},
    };
    const auto found =
        std::find_if(kRules.begin(), kRules.end(), [name](const Rule& rule) { return rule.name == name; });
    return found != kRules.end() ? &*found : nullptr;
}

/// One key for each answer.
std::vector<std::string> TraceFlows::Keys(const Rule& rule, const TraceCall& call, const TraceArguments& outputs) const
{
    const std::string question(rule.question);
    switch (rule.by)
    {
    case By::Component:
        return {question + " of component " + std::to_string(call.component)};
    case By::Connection:
        return {question + " of connection " + std::to_string(call.connection)};
    case By::Request:
        return {question + " " + Text(outputs, "requestId") + " of connection " + std::to_string(call.connection)};
    case By::Http:
        return {question + " " + Text(outputs, "id") + " of component " + std::to_string(call.component)};
    case By::OwnInvitation:
    {
        const auto user = m_users.find(call.connection);
        return {question + " " + Text(outputs, "inviteId") + " to " + (user != m_users.end() ? user->second : "")};
    }
    case By::Invitation:
        break;
    }
    const std::string invitation = question + " " + Text(outputs, "inviteId") + " to ";
    const TraceValue* const ids = FindValue(call.arguments, "ids");
    const TraceList* const list = ids != nullptr ? std::get_if<TraceList>(ids) : nullptr;
    if (list == nullptr)
    {
        return {invitation + Text(outputs, "userId")};
    }
    std::vector<std::string> keys;
    for (const std::string& id : list->first)
    {
        keys.push_back(invitation + id);
    }
    return keys;
}

TraceFlows::Beginning TraceFlows::Begin(const TraceCall& call, Frame& frame, Frame* outer)
{
    Beginning beginning;
    if (call.crossing == Crossing::Notification && outer != nullptr && outer->answer != 0)
    {
        beginning.inside.push_back({Part::End, std::exchange(outer->answer, 0)});
        if (!outer->shared.empty())
        {
            Find(std::exchange(outer->shared, {}), true);
        }
    }
    if (const TraceValue* const user = FindValue(call.arguments, "userid"); user != nullptr && call.connection != 0)
    {
        m_users[call.connection] = ValueText(*user);
    }
    const Rule* const rule = RuleOf(call.name);
    if (rule == nullptr)
    {
        return beginning;
    }
    if (rule->role != Role::Asks && rule->role != Role::AsksById)
    {
        Answer(*rule, call, frame, outer == nullptr, beginning.inside);
        return beginning;
    }
    for (size_t answer = Keys(*rule, call, {}).size(); answer > 0; --answer)
    {
        frame.begun.push_back(++m_lastArrow);
        (outer != nullptr ? beginning.around : beginning.inside).push_back({Part::Begin, m_lastArrow});
    }
    if (rule->role == Role::Asks)
    {
        m_awaited[Keys(*rule, call, {}).front()].push_back(frame.begun.front());
    }
    return beginning;
}

void TraceFlows::Answer(const Rule& rule, const TraceCall& call, Frame& frame, bool isOutermost, Points& points)
{
    if (rule.role == Role::AnswersAlone && !isOutermost)
    {
        return;
    }
    const std::string key = Keys(rule, call, call.arguments).front();
    bool isAnswer = rule.role != Role::Passes;
    if (rule.role == Role::AnswersLastPage)
    {
        const TraceValue* const count = FindValue(call.arguments, "page_count");
        const TraceValue* const index = FindValue(call.arguments, "page_index");
        isAnswer = count != nullptr && index != nullptr && std::holds_alternative<int64_t>(*count) &&
                   std::holds_alternative<int64_t>(*index) &&
                   std::get<int64_t>(*index) + 1 == std::get<int64_t>(*count);
    }
    const bool isShared = rule.role == Role::AnswersOne;
    const uint64_t arrow = Find(key, isAnswer && !isShared);
    if (arrow == 0)
    {
        if (rule.by == By::Http)
        {
            m_early.insert(key);
        }
        return;
    }
    points.push_back({Part::Step, arrow});
    if (isAnswer)
    {
        frame.answer = arrow;
        frame.shared = isShared ? key : "";
    }
}

TraceFlows::Points TraceFlows::End(const TraceCall& call, const TraceResult& result, Frame& frame)
{
    Points points;
    if (frame.answer != 0 && frame.shared.empty())
    {
        points.push_back({Part::End, frame.answer});
    }
    if (frame.begun.empty())
    {
        return points;
    }
    const Rule& rule = *RuleOf(call.name);
    if (result.isFailure)
    {
        for (const uint64_t arrow : frame.begun)
        {
            // If the answer came before the call returned, it has ended the arrow already.
            if (rule.role != Role::Asks || Withdraw(Keys(rule, call, {}).front(), arrow))
            {
                points.push_back({Part::End, arrow});
            }
        }
    }
    else if (rule.role == Role::AsksById)
    {
        const std::vector<std::string> keys = Keys(rule, call, result.outputs);
        for (size_t index = 0; index < keys.size(); ++index)
        {
            Await(rule, keys[index], frame.begun[index], points);
        }
    }
    return points;
}

/// An HTTP object answers on its own thread, which may be faster than the thread that records the id of the request.
void TraceFlows::Await(const Rule& rule, const std::string& key, uint64_t arrow, Points& points)
{
    if (rule.by == By::Http && m_early.erase(key) != 0)
    {
        points.push_back({Part::End, arrow});
        return;
    }
    m_awaited[key].push_back(arrow);
}

/// Ends the wait of an arrow. False when the arrow did not wait any more.
bool TraceFlows::Withdraw(const std::string& key, uint64_t arrow)
{
    const auto found = m_awaited.find(key);
    if (found == m_awaited.end())
    {
        return false;
    }
    const bool wasWaiting = std::erase(found->second, arrow) != 0;
    if (found->second.empty())
    {
        m_awaited.erase(found);
    }
    return wasWaiting;
}

/// The oldest arrow that waits for an answer with this key; 0 when there is none.
uint64_t TraceFlows::Find(const std::string& key, bool take)
{
    const auto found = m_awaited.find(key);
    if (found == m_awaited.end())
    {
        return 0;
    }
    const uint64_t arrow = found->second.front();
    if (take)
    {
        Withdraw(key, arrow);
    }
    return arrow;
}

TraceFlows::Points TraceFlows::Close()
{
    Points points;
    for (const auto& [key, arrows] : m_awaited)
    {
        for (const uint64_t arrow : arrows)
        {
            points.push_back({Part::End, arrow});
        }
    }
    m_awaited.clear();
    return points;
}

} // namespace host
