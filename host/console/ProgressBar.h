#pragma once

#include "host/console/Console.h"

#include <cstddef>
#include <string>

namespace host
{

/// Shows the progress of long work: a bar on a terminal, a few lines in a file or a pipe, nothing for small work.
class ProgressBar
{
public:
    static constexpr size_t kSmallWork = 1000;

    /// The console must outlive the bar. `what` names the work.
    ProgressBar(const Console& out, std::string what);
    /// Removes the bar from the terminal.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Draws only when the shown number changes, so it may be called for every item.
    void Show(size_t done, size_t total);

private:
    void Draw(size_t percent, size_t done, size_t total);

    const Console& m_out;
    const std::string m_what;
    size_t m_shown = 0; ///< percent
    bool m_isDrawn = false;
};

/// 1234567 as "1 234 567".
std::string GroupDigits(size_t number);

} // namespace host
