#pragma once

#include "onlinehost/Event.h"

#include <string>
#include <string_view>

namespace host
{

/// [any] The event as a JSON object on one line, without an end of line, as `--json` shows it in every command.
///
/// Every object has `type` ("event"), `time` (UTC in ISO 8601, with milliseconds), `source` (`device`, the terminal
/// that got the event), `event` (`onlinehost::EventName`) and `text` (`onlinehost::Describe`, for people). The others
/// by event:
///
/// | Field | Of | Is |
/// |---|---|---|
/// | `tunnel` | reconnections and meetings | "paas" or "gateway" |
/// | `code`, `codeText` | offline, given-up, joined, left, refreshed | the code, and in words |
/// | `wasLoggedIn` | offline | whether the terminal was logged in until then |
/// | `user` | user-joined, user-left, invited, accepted, declined, closed | the other user's id |
/// | `users` | changed | the ids of all users that changed |
/// | `request` | refreshed | the id of the refresh |
/// | `invitation` | invited, accepted, declined, closed | the id of the invitation |
/// | `reason`, `reasonText` | declined, closed | the reason, and in words |
/// | `data` | invited | the fields of `onlinemanager::InviteData` under their own names |
std::string EventJson(std::string_view device, const onlinehost::Event& event);

} // namespace host
