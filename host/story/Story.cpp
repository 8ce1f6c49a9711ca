#include "host/story/Story.h"

#include "host/console/Interruption.h"
#include "onlinehost/Error.h"

namespace host
{

using namespace onlinehost;

namespace
{

struct StepFailed
{
};

struct Interrupted
{
};

} // namespace

Story::Story(const Narrator& narrator, const Interruption* interruption)
    : m_narrator(narrator),
      m_interruption(interruption)
{
}

bool Story::IsInterrupted() const
{
    return m_interruption != nullptr && m_interruption->Signal() != 0;
}

void Story::EndIfInterrupted() const
{
    if (IsInterrupted())
    {
        throw Interrupted{};
    }
}

void Story::Scene(const std::string& title, const std::function<void()>& play)
{
    if (IsInterrupted())
    {
        return;
    }
    m_narrator.Heading(title);
    try
    {
        play();
    }
    catch (const StepFailed&)
    {
        m_narrator.Continue("the rest of this scene is left out");
    }
    catch (const Interrupted&)
    {
        m_narrator.Continue("interrupted");
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
    EndIfInterrupted();
    m_narrator.Tell(who, what);
}

void Story::Came(const std::string& who, const std::string& what, Narrator::Time time)
{
    EndIfInterrupted();
    ++m_tally.steps;
    m_narrator.Tell(who, what, Narrator::Outcome::AsExpected, time);
}

void Story::Missed(const std::string& who, const std::string& expected, const std::string& came)
{
    // A wait that the signal ended has not failed.
    EndIfInterrupted();
    ++m_tally.steps;
    ++m_tally.failed;
    m_narrator.Tell(who, "expected: " + expected, Narrator::Outcome::NotAsExpected);
    m_narrator.Continue("came:     " + came);
    throw StepFailed{};
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
