#pragma once

#include "host/console/Console.h"
#include "host/story/Story.h"

#include <chrono>
#include <cstdint>
#include <memory>

class IComponentFactory;

namespace platform
{
class Platform;
}

namespace onlinehost
{
class LogCenter;
class Module;
} // namespace onlinehost

namespace host
{

class Trace;

/// What a story needs around it. Everything that is referred to must outlive it.
struct StoryWorld
{
    const Console& out;
    platform::Platform& platform; ///< where the factory's connections come from
    onlinehost::LogCenter& log;   ///< the one of the factory, open for the module's lines
    IComponentFactory& factory;
    std::shared_ptr<onlinehost::Module> module; ///< unloaded at the end, when nobody else has it
    Trace* trace = nullptr;                     ///< null: nothing is recorded
};

struct MeetingOptions
{
    static constexpr uint32_t kFewestUsers = 50; ///< so that there is everybody whom the story needs

    uint32_t users = 200;                    ///< size of the company
    std::chrono::milliseconds limit{10'000}; ///< for each step; a large company gets more
};

/// Tells one meeting from the first login to the unloading of the module, and checks each step of it. The module it is told
/// on may be any; the numbers of steps tell whether it did what it should.
Story::Tally TellMeeting(StoryWorld world, const MeetingOptions& options);

} // namespace host
