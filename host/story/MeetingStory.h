#pragma once

#include "host/story/Narrator.h"
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

class Interruption;
class Trace;

/// What a story works with. Everything that is referred to must outlive the story.
struct StoryWorld
{
    const Narrator& narrator;
    platform::Platform& platform; ///< where the factory's connections come from
    onlinehost::LogCenter& log;   ///< the one of the factory, open for the module's lines
    IComponentFactory& factory;
    std::shared_ptr<onlinehost::Module> module; ///< unloaded at the end, unless the caller holds it
    Trace* trace = nullptr;                     ///< null: nothing is recorded
    Interruption* interruption = nullptr;       ///< null: nothing interrupts the story
};

struct MeetingOptions
{
    static constexpr uint32_t kFewestUsers = 50; ///< the story's scripts need as many

    uint32_t users = 200;                    ///< size of the company
    std::chrono::milliseconds limit{10'000}; ///< for each step; a large company gets more
};

/// Tells one meeting from the first login to the unloading of the module, and checks each step. Works with any module: the
/// result says how many steps there were and how many failed. After a signal the story ends at the next step; everything is
/// torn down in order, and no further step is counted.
Story::Tally TellMeeting(StoryWorld world, const MeetingOptions& options);

} // namespace host
