#pragma once

#include "host/shell/ShellPresence.h"
#include "onlinehost/Event.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host
{

/// An event that the shell shows: a notification of the module, a message, a report, or a notice of the platform.
struct ShellEvent
{
    std::string source;                ///< the terminal ("7@pc"), "monitoring" or "platform"
    std::string name;                  ///< the event's name in `wait`
    std::string text;                  ///< the event in words
    onlinehost::Event event{};         ///< the notification; for other events only `userId` and `time` have a meaning
    std::string content{};             ///< the message or the report as it came
    std::vector<UserChange> changes{}; ///< how the users changed, for `changed`
    uint64_t number = 0;               ///< counts up in the order of arrival
};

inline constexpr char kMessageEvent[] = "message";
inline constexpr char kReportEvent[] = "report";
inline constexpr char kNoticeEvent[] = "notice";

/// Every name that an event can have.
std::vector<std::string> ShellEventNames();

/// The event of a notification that a terminal got.
ShellEvent MakeShellEvent(const std::string& terminal, onlinehost::Event event);

/// Whether the event is `OnUserStatusChanged`.
bool IsChange(const ShellEvent& event);

/// The event as a JSON object on one line. A notification has the fields of `EventJson`. The others have `type`,
/// `time`, `source`, `event` and `text` too, messages and reports also `user` and `content`.
std::string ShellEventJson(const ShellEvent& event);

/// Whether the event is about the user.
bool Concerns(const ShellEvent& event, uint32_t userId);

} // namespace host
