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

/// The objects that a story uses. They must outlive the story.
struct StoryWorld
{
    const Narrator& narrator;
    platform::Platform& platform; ///< makes the connections of `factory`
    onlinehost::LogCenter& log;   ///< the log center of `factory`, with a level that lets the module's lines pass
    IComponentFactory& factory;
    std::shared_ptr<onlinehost::Module> module; ///< unloaded at the end, unless the caller holds it
    Trace* trace = nullptr;                     ///< null: nothing is recorded
    Interruption* interruption = nullptr;       ///< null: nothing interrupts the story
};

struct MeetingOptions
{
    static constexpr uint32_t kFewestUsers = 50; ///< the scenes need this number

    uint32_t users = 200;                    ///< size of the company
    std::chrono::milliseconds limit{10'000}; ///< for each step; a large company gets more
};

/// Plays one meeting from the first login to the unloading of the module, and checks each step. Works with any module.
/// Returns the number of steps and of failed steps. After a signal the story ends at the next step, tears everything
/// down in order, and counts no further step.
Story::Tally TellMeeting(StoryWorld world, const MeetingOptions& options);

} // namespace host
