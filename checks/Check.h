#pragma once

#include "checks/Journal.h"

#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// Named checks of a module file. A check uses only the module's exported functions and the slots of its interfaces, so
/// it runs against any module file. The checks depend on no test framework: a failure is a text with a position.

namespace checks
{

/// A position in the source of a check. As a default argument, `Here` gives the position of the call.
struct Where
{
    const char* file;
    int line;

    static constexpr Where Here(const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        return {file, line};
    }
};

struct Failure
{
    Where where;
    std::string text;
};

/// The result of a check, which passed if it has no failure and was not left out.
struct CheckResult
{
    std::vector<Failure> failures;
    std::string leftOut; ///< why the check was left out; empty if it ran
};

/// Ends a check at once. A check throws it after a failure without which it cannot continue.
struct CheckEnded
{
};

/// Ends a check at once and leaves it out, because this module file does not allow it.
struct CheckLeftOut
{
    std::string reason;
};

/// The argument of a running check: it knows the path of the module and collects the failures. [any], except `Require`.
class CheckContext
{
public:
    explicit CheckContext(std::string modulePath);

    const std::string& ModulePath() const
    {
        return m_modulePath;
    }

    void Fail(std::string text, Where where = Where::Here());

    /// Each `Expect` operation adds a failure if the claim does not hold, and returns whether it holds.
    bool Expect(bool holds, std::string_view claim, Where where = Where::Here())
    {
        if (!holds)
        {
            Fail("does not hold: " + std::string(claim), where);
        }
        return holds;
    }

    template <typename Expected, typename Seen>
    bool ExpectEqual(const Expected& expected, const Seen& seen, std::string_view what, Where where = Where::Here())
    {
        const bool holds = AreEqual(expected, seen);
        if (!holds)
        {
            std::ostringstream text;
            text << what << "\n  expected: " << Shown(expected) << "\n  seen:     " << Shown(seen);
            Fail(text.str(), where);
        }
        return holds;
    }

    /// Compares two sequences; the failure shows the difference line by line. An expected line may begin with the name
    /// of a thread in brackets, as "[platform] A.OnLoginSuccess()"; then the entry's thread is compared too.
    bool ExpectLines(const std::vector<std::string>& expected, const std::vector<JournalEntry>& seen,
                     Where where = Where::Here());

    /// Like `Expect`, but ends the check if the claim does not hold. Only on the thread that runs the check.
    void Require(bool holds, std::string_view claim, Where where = Where::Here())
    {
        if (!Expect(holds, claim, where))
        {
            throw CheckEnded();
        }
    }

    std::vector<Failure> TakeFailures();

private:
    template <typename T>
    static constexpr bool kIsNumber = std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char>;

    template <typename Left, typename Right>
    static bool AreEqual(const Left& left, const Right& right)
    {
        if constexpr (kIsNumber<Left> && kIsNumber<Right>)
        {
            return std::cmp_equal(left, right);
        }
        else
        {
            return left == right;
        }
    }

    template <typename T>
    static std::string Shown(const T& value)
    {
        std::ostringstream text;
        if constexpr (std::is_same_v<T, bool>)
        {
            text << (value ? "true" : "false");
        }
        else if constexpr (std::is_null_pointer_v<T>)
        {
            text << "null";
        }
        else if constexpr (std::is_convertible_v<T, std::string_view>)
        {
            text << '"' << std::string_view(value) << '"';
        }
        else if constexpr (std::is_enum_v<T>)
        {
            text << +static_cast<std::underlying_type_t<T>>(value);
        }
        else if constexpr (std::is_integral_v<T>)
        {
            text << +value;
            if (value < T{})
            {
                text << " (0x" << std::hex << +std::make_unsigned_t<T>(value) << ')';
            }
        }
        else if constexpr (std::is_pointer_v<T>)
        {
            text << static_cast<const void*>(value);
        }
        else
        {
            for (const auto& element : value)
            {
                text << Shown(element) << ' ';
            }
        }
        return text.str();
    }

    const std::string m_modulePath;
    std::mutex m_mutex; ///< guards the members below
    std::vector<Failure> m_failures;
};

struct Check
{
    std::string group;
    std::string claim;       ///< what the check proves, as one word in camel case
    std::string description; ///< the same as a sentence
    Where where;
    void (*run)(CheckContext& check);

    std::string Name() const
    {
        return group + "." + claim;
    }
};

/// All checks, sorted by the names of their files and by their lines there.
std::vector<Check> AllChecks();

/// Runs one check on the calling thread. An exception that leaves the check becomes a failure.
CheckResult RunCheck(const Check& check, const std::string& modulePath);

/// Adds a check to `AllChecks`. CONTRACT_CHECK calls it before main.
bool RegisterCheck(Check check);

} // namespace checks

/// Defines and registers a check. The body follows the macro and has the argument `CheckContext& check`.
#define CONTRACT_CHECK(group, claim, description)                                                            \
    static void Run_##group##_##claim(checks::CheckContext& check);                                          \
    [[maybe_unused]] static const bool registered_##group##_##claim =                                        \
        checks::RegisterCheck({#group, #claim, description, checks::Where::Here(), &Run_##group##_##claim}); \
    static void Run_##group##_##claim([[maybe_unused]] checks::CheckContext& check)
