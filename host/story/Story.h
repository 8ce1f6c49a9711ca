#pragma once

#include "host/story/Narrator.h"

#include <cstddef>
#include <functional>
#include <string>

namespace host
{

/// A story of scenes, made of steps that are checked: each comes out as expected or does not, and in the end they are
/// counted.
class Story
{
public:
    struct Tally
    {
        size_t steps = 0;
        size_t failed = 0;
    };

    /// The narrator must outlive the story.
    explicit Story(const Narrator& narrator);

    /// Plays a scene. A step that fails ends it, since the next ones build on it; the story goes on with the next scene.
    void Scene(const std::string& title, const std::function<void()>& play);

    /// Somebody does something, of which nothing is expected yet.
    void Tell(const std::string& who, const std::string& what) const;

    /// A step that came out as expected.
    void Came(const std::string& who, const std::string& what, Narrator::Time time = std::chrono::system_clock::now());

    /// A step that did not. Ends the scene by an exception of its own.
    [[noreturn]] void Missed(const std::string& who, const std::string& expected, const std::string& came);

    /// One or the other.
    void Check(bool isGood, const std::string& who, const std::string& expected, const std::string& came);

    const Tally& GetTally() const
    {
        return m_tally;
    }

private:
    const Narrator& m_narrator;
    Tally m_tally;
};

} // namespace host
