#pragma once

#include "host/console/Interruption.h"
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

/// One device of one user in a story. It writes the actions of the device to the story, and waits within a time limit
/// for the events of the device. Each wait is a step of the story; a failed step ends the scene.
///
/// All operations belong to the thread that plays the scenes.
class Actor
{
public:
    using Wanted = std::function<bool(const onlinehost::Event&)>;

    /// The story and the interruption must outlive the actor. A signal ends the actor's waits; `interruption` may be
    /// null.
    Actor(Story& story, std::string name, std::unique_ptr<onlinehost::Component> session,
          onlinemanager::LoginParam login, std::chrono::milliseconds limit, Interruption* interruption = nullptr);

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

    /// Starts a login; its result is another step.
    void StartsLogin(bool force);

    /// A step: logs in, which must succeed.
    void LogsIn(bool force = false);

    /// A step: logs out, which must succeed.
    void LogsOut();

    void Does(const std::string& what);

    /// A step whose result is known at once.
    void Has(bool isSo, const std::string& expected, const std::string& otherwise);

    /// Waits for the first event of these kinds; `isWanted` must accept it.
    onlinehost::Event Gets(const std::string& expected, std::initializer_list<onlinehost::EventKind> kinds,
                           const Wanted& isWanted = {});

    /// Waits until an event of this kind has come for each of the users.
    void GetsOfEach(const std::string& expected, onlinehost::EventKind kind, std::set<unsigned> userIds);

    /// Waits until `isSo` returns true; calls it after each event of the presence service. `describe` returns the state
    /// for the message of a time-out.
    void Sees(const std::string& expected, const std::function<bool()>& isSo,
              const std::function<std::string()>& describe);

    /// A step: the property must have this text.
    void Reads(onlinemanager::ConnectProperty key, const std::string& what, const std::string& expected);

    /// The module's records of these users, in the order of the ids.
    std::vector<onlinemanager::UserOnlineInfo> Ask(const std::vector<unsigned>& userIds);

    /// Fails when an event is left that no step waited for. Changes of users' status and of a meeting's members do not
    /// count.
    void HasNothingLeft();

private:
    std::string Waiting();

    Story& m_story;
    const std::string m_name;
    std::unique_ptr<onlinehost::Component> m_session;
    const onlinemanager::LoginParam m_login;
    const std::chrono::milliseconds m_limit;
    const Interruption::Watch m_watch;
};

} // namespace host
