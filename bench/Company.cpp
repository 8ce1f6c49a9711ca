#include "bench/Company.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <utility>

namespace bench
{

namespace
{

using onlinemanager::UserOnlineInfo;
using onlinemanager::UserTerminalInfo;

/// The extension text of a login from this kind of terminal.
constexpr const char* kExtInfos[] = {R"({"tt":1})", R"({"tt":3})"};
constexpr char kShortTail[] = "";
constexpr char kLongTail[] = "-4f5a-9c1b-7e2d-60a1b2c3d4e5";

UserTerminalInfo Terminal(const std::string& name, uint32_t type, uint32_t status, bool longTexts)
{
    UserTerminalInfo terminal;
    terminal.terminal = name + (longTexts ? kLongTail : kShortTail);
    terminal.terminal_type = static_cast<quenda::TerminalType>(type);
    terminal.status = status;
    terminal.custom = longTexts ? "in a meeting until three o'clock" : "in a meeting";
    return terminal;
}

UserOnlineInfo User(size_t number, bool longTexts)
{
    UserOnlineInfo user;
    user.user_id = static_cast<uint32_t>(10'000 + 3 * number);
    user.online_status = 1;
    const std::string id = std::to_string(user.user_id);
    user.terminals.push_back(Terminal("pc-" + id, 1, 1, longTexts));
    user.terminals.push_back(Terminal("phone-" + id, 3, 0, longTexts));
    return user;
}

} // namespace

Company::Company(const Options& options)
{
    std::vector<size_t> numbers(options.users);
    std::iota(numbers.begin(), numbers.end(), options.first);
    if (options.shuffled)
    {
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    }

    m_records.reserve(options.users);
    m_ids.reserve(options.users);
    m_terminals.reserve(2 * options.users);
    for (const size_t number : numbers)
    {
        const UserOnlineInfo& user = m_records.emplace_back(User(number, options.longTexts));
        const std::string& id = m_ids.emplace_back(std::to_string(user.user_id));
        const size_t firstTerminal = m_terminals.size();
        for (const UserTerminalInfo& terminal : user.terminals)
        {
            const char* const extInfo = kExtInfos[m_terminals.size() - firstTerminal];
            m_terminals.push_back(
                {terminal.terminal.c_str(), static_cast<int32_t>(terminal.status), terminal.custom.c_str(), extInfo});
        }
        if (m_pages.empty() || m_pages.back().size() == kUsersPerPage)
        {
            m_pages.emplace_back();
        }
        m_pages.back().push_back(
            {id.c_str(), static_cast<int32_t>(user.terminals.size()), &m_terminals[firstTerminal]});
    }
}

void Company::ChangeOnePercent()
{
    m_isChanged = !m_isChanged;
    for (size_t index = 0; index < m_records.size(); index += kChangeStep)
    {
        m_terminals[2 * index].custom = m_isChanged ? "on the phone" : m_records[index].terminals[0].custom.c_str();
    }
}

} // namespace bench
