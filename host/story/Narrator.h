#pragma once

#include "host/console/Console.h"
#include "onlinehost/Event.h"

#include <chrono>
#include <string>
#include <string_view>

namespace host
{

/// Writes a story line by line as it happens: the time, the device, the action or event, and the result. Texts from
/// outside the program must have passed `Printable`.
///
/// Flushes every line, so that a reader at a pipe gets it at once.
class Narrator
{
public:
    using Time = std::chrono::system_clock::time_point;

    /// The console must outlive the narrator.
    explicit Narrator(const Console& out) : m_out(out) {}
    virtual ~Narrator() = default;
    Narrator(const Narrator&) = delete;
    Narrator& operator=(const Narrator&) = delete;

    virtual void Chapter(std::string_view title) const = 0;

    /// An action of `who`, without a result.
    virtual void Action(std::string_view who, std::string_view what) const = 0;

    /// An event of the module, before the step that waited for it.
    virtual void Event(std::string_view who, const onlinehost::Event& event) const = 0;

    /// A step that succeeded.
    virtual void Success(std::string_view who, std::string_view what, Time time) const = 0;

    /// A step that failed.
    virtual void Failure(std::string_view who, std::string_view expected, std::string_view came) const = 0;

    /// A remark on the story itself.
    virtual void Note(std::string_view text) const = 0;

    /// Whether a progress bar may be shown between the lines.
    virtual bool HasProgress() const = 0;

    const Console& Out() const
    {
        return m_out;
    }

protected:
    void Line(std::string_view text) const;

private:
    const Console& m_out;
};

/// A story for people, in columns.
class TextNarrator final : public Narrator
{
public:
    using Narrator::Narrator;

    void Chapter(std::string_view title) const override;
    void Action(std::string_view who, std::string_view what) const override;
    /// Writes nothing, because the step says what came.
    void Event(std::string_view, const onlinehost::Event&) const override {}
    void Success(std::string_view who, std::string_view what, Time time) const override;
    void Failure(std::string_view who, std::string_view expected, std::string_view came) const override;
    void Note(std::string_view text) const override;
    bool HasProgress() const override
    {
        return true;
    }
};

/// A story for programs, one JSON object in each line; docs/json.md describes the fields.
class JsonNarrator final : public Narrator
{
public:
    using Narrator::Narrator;

    void Chapter(std::string_view title) const override;
    void Action(std::string_view who, std::string_view what) const override;
    void Event(std::string_view who, const onlinehost::Event& event) const override;
    void Success(std::string_view who, std::string_view what, Time time) const override;
    void Failure(std::string_view who, std::string_view expected, std::string_view came) const override;
    void Note(std::string_view text) const override;
    bool HasProgress() const override
    {
        return false;
    }
};

} // namespace host
