#include "host/story/Narrator.h"

#include "host/console/EventJson.h"
#include "host/console/JsonLine.h"
#include "host/console/Wording.h"
#include "onlinehost/Text.h"

#include <algorithm>

namespace host
{

namespace
{

constexpr size_t kWidthOfWho = 14;
constexpr size_t kWidthOfTime = 12;
constexpr size_t kWidthOfMark = 6;
constexpr size_t kGap = 2;

std::string Pad(std::string_view text, size_t width)
{
    std::string padded(text);
    padded.resize(std::max(width, text.size()) + kGap, ' ');
    return padded;
}

/// The columns in front of the text. A line without a result has an empty mark.
std::string Columns(const Console& out, std::string_view time, Tone tone, std::string_view mark, std::string_view who)
{
    const std::string paddedMark = Pad(mark, kWidthOfMark);
    return out.Paint(Tone::Quiet, Pad(time, kWidthOfTime)) + (mark.empty() ? paddedMark : out.Paint(tone, paddedMark)) +
           out.Paint(Tone::Strong, Pad(who, kWidthOfWho));
}

std::string Continuation()
{
    return Pad("", kWidthOfTime) + Pad("", kWidthOfMark) + Pad("", kWidthOfWho);
}

std::string Now()
{
    return ClockText(std::chrono::system_clock::now());
}

} // namespace

void Narrator::Line(std::string_view text) const
{
    m_out.Line(text);
    m_out.Flush();
}

void TextNarrator::Chapter(std::string_view title) const
{
    Line("\n" + Out().Paint(Tone::Strong, title));
}

void TextNarrator::Action(std::string_view who, std::string_view what) const
{
    Line(Columns(Out(), Now(), Tone::Quiet, "", who) + std::string(what));
}

void TextNarrator::Success(std::string_view who, std::string_view what, Time time) const
{
    Line(Columns(Out(), ClockText(time), Tone::Good, "ok", who) + std::string(what));
}

void TextNarrator::Failure(std::string_view who, std::string_view expected, std::string_view came) const
{
    Line(Columns(Out(), Now(), Tone::Bad, "FAILED", who) + "expected: " + std::string(expected));
    Line(Continuation() + "came:     " + std::string(came));
}

void TextNarrator::Note(std::string_view text) const
{
    Line(Continuation() + std::string(text));
}

void JsonNarrator::Chapter(std::string_view title) const
{
    Line(JsonLine("chapter").Text("title", title).Take());
}

void JsonNarrator::Action(std::string_view who, std::string_view what) const
{
    Line(JsonLine("action").Text("source", who).Text("text", what).Take());
}

void JsonNarrator::Event(std::string_view who, const onlinehost::Event& event) const
{
    Line(EventJson(who, event));
}

void JsonNarrator::Success(std::string_view who, std::string_view what, Time time) const
{
    Line(JsonLine("step", time).Text("source", who).Flag("ok", true).Text("text", what).Take());
}

void JsonNarrator::Failure(std::string_view who, std::string_view expected, std::string_view came) const
{
    Line(JsonLine("step").Text("source", who).Flag("ok", false).Text("text", expected).Text("came", came).Take());
}

void JsonNarrator::Note(std::string_view text) const
{
    Line(JsonLine("note").Text("text", text).Take());
}

} // namespace host
