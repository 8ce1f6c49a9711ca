#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// The record of one call across the boundary of the module.

namespace host
{

/// How a call crosses the boundary of the module.
enum class Crossing
{
    HostCall,          ///< the host calls the module
    Notification,      ///< the module calls the host
    PlatformCall,      ///< the module calls the platform
    PlatformEvent,     ///< the platform calls the module
    HttpRequest,       ///< the platform asks the module to send a request
    HttpCall,          ///< the module calls the HTTP object
    HttpEvent,         ///< the HTTP object calls the module
    HostPlatformCall,  ///< the host calls the connection that it shares with the module, past the module
    HostPlatformEvent, ///< the platform calls the host, past the module
};

/// A number that has a meaning: a result code, a reason, a kind.
struct TraceCode
{
    int64_t value;
    std::string text; ///< number and meaning: "36 (logged in on another device)"
};

/// A list of identifiers, of which the first ones are kept.
struct TraceList
{
    static constexpr size_t kKept = 20;

    size_t size = 0;
    std::vector<std::string> first{};
};

using TraceValue = std::variant<bool, int64_t, std::string, TraceCode, TraceList>;

struct TraceArgument
{
    const char* name;
    TraceValue value;
};
using TraceArguments = std::vector<TraceArgument>;

struct TraceCall
{
    Crossing crossing;
    uint32_t component; ///< as `Trace::AddComponent` gave it
    const char* name;   ///< interface and operation: "IPaasOnline::Login"
    TraceArguments arguments{};
    uint32_t connection = 0;        ///< number of the platform's connection in the whole recording; 0 for none
    const void* receiver = nullptr; ///< the object that is called: a platform calls several listeners with one event
};

struct TraceResult
{
    std::string text{};       ///< empty when the operation returns nothing
    bool isFailure = false;   ///< false, or a negative code
    bool isPlain = true;      ///< says no more than success or failure
    TraceArguments outputs{}; ///< what the operation wrote to its output arguments
};

/// The argument or output with this name; null when there is none.
const TraceValue* FindValue(const TraceArguments& arguments, const char* name);

/// The value as the trace shows it: "45: 2, 3, 1001, ...".
std::string ValueText(const TraceValue& value);

/// Shortens a text to about `limit` bytes, between two characters, and makes it safe to show.
std::string Shorten(const std::string& text, size_t limit);

} // namespace host
