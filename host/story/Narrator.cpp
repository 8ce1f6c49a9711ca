#include "host/story/Narrator.h"

#include "host/console/Wording.h"

#include <algorithm>

namespace host
{

namespace
{

constexpr size_t kWidthOfWho = 14;
constexpr size_t kWidthOfTime = 12;
constexpr size_t kWidthOfOutcome = 6;
constexpr size_t kGap = 2;

std::string Pad(std::string_view text, size_t width)
{
    std::string padded(text);
    padded.resize(std::max(width, text.size()) + kGap, ' ');
    return padded;
}

} // namespace

Narrator::Narrator(const Console& out) : m_out(out) {}

void Narrator::Heading(std::string_view text) const
{
    m_out.Line("\n" + m_out.Paint(Tone::Strong, text));
}

void Narrator::Tell(std::string_view who, std::string_view what, Outcome outcome, Time time) const
{
    std::string mark = Pad("", kWidthOfOutcome);
    if (outcome == Outcome::AsExpected)
    {
        mark = m_out.Paint(Tone::Good, Pad("ok", kWidthOfOutcome));
    }
    else if (outcome == Outcome::NotAsExpected)
    {
        mark = m_out.Paint(Tone::Bad, Pad("FAILED", kWidthOfOutcome));
    }
    m_out.Line(m_out.Paint(Tone::Quiet, Pad(ClockText(time), kWidthOfTime)) + mark +
               m_out.Paint(Tone::Strong, Pad(who, kWidthOfWho)) + std::string(what));
    // The story is followed while it happens, in a pipe too.
    m_out.Flush();
}

void Narrator::Continue(std::string_view what) const
{
    m_out.Line(Pad("", kWidthOfTime) + Pad("", kWidthOfOutcome) + Pad("", kWidthOfWho) + std::string(what));
}

} // namespace host
