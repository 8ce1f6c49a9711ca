#pragma once

#include "host/story/Narrator.h"

#include <cstddef>
#include <functional>
#include <string>

namespace host
{

class Interruption;

/// A story of scenes. A scene consists of steps; each step succeeds or fails, and the story counts both.
///
/// All operations belong to the thread that plays the scenes.
class Story
{
public:
    struct Tally
    {
        size_t steps = 0;
        size_t failed = 0;
    };

    /// The narrator and the interruption must outlive the story. Without an interruption every scene is played.
    explicit Story(const Narrator& narrator, const Interruption* interruption = nullptr);

    /// Plays a scene. A failed step ends the scene, because the next steps build on it; the story goes on with the next
    /// scene. After a signal the scene ends at its next step, and later scenes are not played.
    void Scene(const std::string& title, const std::function<void()>& play);

    /// Writes an action without a result.
    void Tell(const std::string& who, const std::string& what) const;

    /// An event of the module, before the step that waited for it.
    void TellEvent(const std::string& who, const onlinehost::Event& event) const;

    /// A step that succeeded.
    void Came(const std::string& who, const std::string& what, Narrator::Time time = std::chrono::system_clock::now());

    /// A step that failed. Ends the scene by an exception that `Scene` catches.
    [[noreturn]] void Missed(const std::string& who, const std::string& expected, const std::string& came);

    /// `Came` when `isGood`, otherwise `Missed`.
    void Check(bool isGood, const std::string& who, const std::string& expected, const std::string& came);

    /// For long work inside a step: ends the scene when a signal has come.
    void EndIfInterrupted() const;

    const Tally& GetTally() const
    {
        return m_tally;
    }

private:
    bool IsInterrupted() const;

    const Narrator& m_narrator;
    const Interruption* const m_interruption;
    Tally m_tally;
};

} // namespace host
