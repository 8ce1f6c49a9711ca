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
    m_narrator.Chapter(title);
    try
    {
        play();
    }
    catch (const StepFailed&)
    {
        m_narrator.Note("the rest of this scene is left out");
    }
    catch (const Interrupted&)
    {
        m_narrator.Note("interrupted");
    }
    catch (const Error& error)
    {
        ++m_tally.steps;
        ++m_tally.failed;
        m_narrator.Failure("the host", "no error", error.what());
    }
}

void Story::Tell(const std::string& who, const std::string& what) const
{
    EndIfInterrupted();
    m_narrator.Action(who, what);
}

void Story::TellEvent(const std::string& who, const onlinehost::Event& event) const
{
    m_narrator.Event(who, event);
}

void Story::Came(const std::string& who, const std::string& what, Narrator::Time time)
{
    EndIfInterrupted();
    ++m_tally.steps;
    m_narrator.Success(who, what, time);
}

void Story::Missed(const std::string& who, const std::string& expected, const std::string& came)
{
    // A wait that the signal ended has not failed.
    EndIfInterrupted();
    ++m_tally.steps;
    ++m_tally.failed;
    m_narrator.Failure(who, expected, came);
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
