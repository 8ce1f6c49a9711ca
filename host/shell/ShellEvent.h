#pragma once

#include "onlinehost/Event.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host
{

/// Something that reached the shell from outside: a notification of the module, or word from the platform.
struct ShellEvent
{
    std::string source;        ///< the terminal ("7@pc"), or whoever else tells it
    std::string name;          ///< as `wait` knows it
    std::string text;          ///< in words
    onlinehost::Event event{}; ///< of a notification; otherwise only the user ids and the time mean anything
    uint64_t number = 0;       ///< counts up in the order of arrival
};

inline constexpr char kMessageEvent[] = "message";
inline constexpr char kReportEvent[] = "report";
inline constexpr char kNoticeEvent[] = "notice";

/// Every name that an event can have.
std::vector<std::string> ShellEventNames();

ShellEvent MakeShellEvent(const std::string& terminal, onlinehost::Event event);

/// Whether the event tells something about the user.
bool Concerns(const ShellEvent& event, uint32_t userId);

} // namespace host
