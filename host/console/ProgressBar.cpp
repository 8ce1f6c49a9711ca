#include "host/console/ProgressBar.h"

#include <algorithm>
#include <utility>

namespace host
{

namespace
{

constexpr size_t kWidth = 40;
constexpr size_t kPlainStep = 25; // percent
constexpr char kClearLine[] = "\r\x1b[K";

} // namespace

ProgressBar::ProgressBar(const Console& out, std::string what) : m_out(out), m_what(std::move(what)) {}

ProgressBar::~ProgressBar()
{
    if (m_isDrawn)
    {
        m_out.Text(kClearLine);
        m_out.Flush();
    }
}

void ProgressBar::Show(size_t done, size_t total)
{
    if (total < kSmallWork)
    {
        return;
    }
    const size_t percent = std::min(done, total) * 100 / total;
    const size_t step = m_out.IsTerminal() ? 1 : kPlainStep;
    if (percent / step == m_shown / step)
    {
        return;
    }
    m_shown = percent;
    Draw(percent, done, total);
}

void ProgressBar::Draw(size_t percent, size_t done, size_t total)
{
    const std::string numbers = std::to_string(percent) + " %, " + GroupDigits(done) + " of " + GroupDigits(total);
    if (m_out.IsTerminal())
    {
        m_isDrawn = true;
        const size_t filled = percent * kWidth / 100;
        m_out.Text(kClearLine + m_what + " [" + m_out.Paint(Tone::Good, std::string(filled, '#')) +
                   std::string(kWidth - filled, '.') + "] " + numbers);
    }
    else
    {
        m_out.Line("  " + m_what + ": " + numbers);
    }
    m_out.Flush();
}

std::string GroupDigits(size_t number)
{
    std::string text = std::to_string(number);
    for (size_t place = text.size(); place > 3; place -= 3)
    {
        text.insert(place - 3, " ");
    }
    return text;
}

} // namespace host
