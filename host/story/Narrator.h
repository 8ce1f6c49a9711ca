#pragma once

#include "host/console/Console.h"

#include <chrono>
#include <string>
#include <string_view>

namespace host
{

/// Tells a story line by line: when, who, what, and what became of it. Texts of others must have passed `Printable`.
class Narrator
{
public:
    using Time = std::chrono::system_clock::time_point;

    enum class Outcome
    {
        None, ///< the line tells what somebody does, not what came of it
        AsExpected,
        NotAsExpected,
    };

    /// The console must outlive the narrator.
    explicit Narrator(const Console& out);

    void Heading(std::string_view text) const;
    void Tell(std::string_view who, std::string_view what, Outcome outcome = Outcome::None,
              Time time = std::chrono::system_clock::now()) const;
    /// Goes on with the line before.
    void Continue(std::string_view what) const;

    const Console& Out() const
    {
        return m_out;
    }

private:
    const Console& m_out;
};

} // namespace host
