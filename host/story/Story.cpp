#include "host/story/Story.h"

#include "onlinehost/Error.h"

namespace host
{

using namespace onlinehost;

namespace
{

struct SceneEnded
{
};

} // namespace

Story::Story(const Narrator& narrator) : m_narrator(narrator) {}

void Story::Scene(const std::string& title, const std::function<void()>& play)
{
    m_narrator.Heading(title);
    try
    {
        play();
    }
    catch (const SceneEnded&)
    {
        m_narrator.Continue("the rest of this scene is left out");
    }
    catch (const Error& error)
    {
        ++m_tally.steps;
        ++m_tally.failed;
        m_narrator.Tell("the host", error.what(), Narrator::Outcome::NotAsExpected);
    }
}

void Story::Tell(const std::string& who, const std::string& what) const
{
    m_narrator.Tell(who, what);
}

void Story::Came(const std::string& who, const std::string& what, Narrator::Time time)
{
    ++m_tally.steps;
    m_narrator.Tell(who, what, Narrator::Outcome::AsExpected, time);
}

void Story::Missed(const std::string& who, const std::string& expected, const std::string& came)
{
    ++m_tally.steps;
    ++m_tally.failed;
    m_narrator.Tell(who, "expected: " + expected, Narrator::Outcome::NotAsExpected);
    m_narrator.Continue("came:     " + came);
    throw SceneEnded{};
}

void Story::Check(bool isGood, const std::string& who, const std::string& expected, const std::string& came)
{
    if (!isGood)
    {
        Missed(who, expected, came);
    }
    Came(who, expected);
}

} // namespace host
