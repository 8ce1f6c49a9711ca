#include "checks/Check.h"

#include <algorithm>
#include <tuple>

namespace checks
{

namespace
{

std::vector<Check>& Registry()
{
    static std::vector<Check> checks;
    return checks;
}

/// The lines of both texts in their order, marked with "  " for lines of both, "- " for expected lines, "+ " for seen
/// lines.
std::string ListDifference(const std::vector<std::string>& expected, const std::vector<std::string>& seen)
{
    // common[i][j]: length of the longest common subsequence of the lines from i and from j on.
    std::vector<std::vector<size_t>> common(expected.size() + 1, std::vector<size_t>(seen.size() + 1, 0));
    for (size_t i = expected.size(); i-- > 0;)
    {
        for (size_t j = seen.size(); j-- > 0;)
        {
            common[i][j] =
                expected[i] == seen[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
        }
    }
    std::string text = "journal differs (- expected, + seen)\n";
    size_t i = 0;
    size_t j = 0;
    while (i < expected.size() || j < seen.size())
    {
        if (i < expected.size() && j < seen.size() && expected[i] == seen[j])
        {
            text += "    " + expected[i++] + "\n";
            ++j;
        }
        else if (j == seen.size() || (i < expected.size() && common[i + 1][j] >= common[i][j + 1]))
        {
            text += "  - " + expected[i++] + "\n";
        }
        else
        {
            text += "  + " + seen[j++] + "\n";
        }
    }
    return text;
}

} // namespace

CheckContext::CheckContext(std::string modulePath) : m_modulePath(std::move(modulePath)) {}

void CheckContext::Fail(std::string text, Where where)
{
    const std::lock_guard guard(m_mutex);
    m_failures.push_back({where, std::move(text)});
}

bool CheckContext::ExpectLines(const std::vector<std::string>& expected, const std::vector<JournalEntry>& seen,
                               Where where)
{
    std::vector<std::string> lines;
    for (const JournalEntry& entry : seen)
    {
        const size_t index = lines.size();
        const bool withThread = index < expected.size() && expected[index].starts_with('[');
        lines.push_back(withThread ? "[" + entry.thread + "] " + entry.text : entry.text);
    }
    if (lines == expected)
    {
        return true;
    }
    Fail(ListDifference(expected, lines), where);
    return false;
}

std::vector<Failure> CheckContext::TakeFailures()
{
    const std::lock_guard guard(m_mutex);
    return std::exchange(m_failures, {});
}

std::vector<Check> AllChecks()
{
    std::vector<Check> checks = Registry();
    std::sort(checks.begin(), checks.end(),
              [](const Check& left, const Check& right)
              {
                  return std::make_tuple(std::string_view(left.where.file), left.where.line) <
                         std::make_tuple(std::string_view(right.where.file), right.where.line);
              });
    return checks;
}

CheckResult RunCheck(const Check& check, const std::string& modulePath)
{
    CheckResult result;
    CheckContext context(modulePath);
    try
    {
        check.run(context);
    }
    catch (const CheckEnded&)
    {
        // The context has the failure that ended the check.
    }
    catch (const CheckLeftOut& leftOut)
    {
        result.leftOut = leftOut.reason;
    }
    catch (const std::exception& error)
    {
        context.Fail(std::string("the check ended with an exception: ") + error.what(), check.where);
    }
    result.failures = context.TakeFailures();
    return result;
}

bool RegisterCheck(Check check)
{
    Registry().push_back(std::move(check));
    return true;
}

} // namespace checks
