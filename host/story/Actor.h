#pragma once

#include "host/story/Story.h"
#include "onlinehost/Component.h"
#include "onlinehost/Event.h"

#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// One device of one user in a story: what it does is told, and what it gets is waited for within a time limit, each a step
/// of the story. A step that does not come out ends the scene.
class Actor
{
public:
    using Wanted = std::function<bool(const onlinehost::Event&)>;

    /// The story must outlive the actor.
    Actor(Story& story, std::string name, std::unique_ptr<onlinehost::Component> session,
          onlinemanager::LoginParam login, std::chrono::milliseconds limit);

    const std::string& Name() const
    {
        return m_name;
    }

    unsigned UserId() const
    {
        return m_login.userid;
    }

    onlinehost::Component& Online()
    {
        return *m_session;
    }

    /// Starts a login; what comes of it is another step.
    void StartsLogin(bool force);

    /// Logs in, and that must succeed.
    void LogsIn(bool force = false);

    /// Logs out, and that must succeed.
    void LogsOut();

    void Does(const std::string& what);

    /// A step that is known at once.
    void Has(bool isSo, const std::string& expected, const std::string& otherwise);

    /// Waits for the first event of these kinds, which must be as wanted.
    onlinehost::Event Gets(const std::string& expected, std::initializer_list<onlinehost::EventKind> kinds,
                           const Wanted& isWanted = {});

    /// Waits until there has been an event of this kind about each of the users.
    void GetsOfEach(const std::string& expected, onlinehost::EventKind kind, std::set<unsigned> userIds);

    /// Waits until what the module knows of the users is as wanted. `describe` tells how it is.
    void Sees(const std::string& expected, const std::function<bool()>& isSo,
              const std::function<std::string()>& describe);

    /// The property must have this text.
    void Reads(onlinemanager::ConnectProperty key, const std::string& what, const std::string& expected);

    /// What the module knows of users, in their order.
    std::vector<onlinemanager::UserOnlineInfo> Ask(const std::vector<unsigned>& userIds);

    /// Events that nobody has waited for, those left out that come of themselves. None must be left.
    void HasNothingLeft();

private:
    std::string Waiting();

    Story& m_story;
    const std::string m_name;
    std::unique_ptr<onlinehost::Component> m_session;
    const onlinemanager::LoginParam m_login;
    const std::chrono::milliseconds m_limit;
};

} // namespace host
