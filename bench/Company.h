#pragma once

#include "avcore/ZolTypes.h"
#include "onlinemanager/UserOnlineInfo.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

using Page = WBASELIB::Vector<avcore::ZolUserInfo>;

/// Users with two terminals each, as the platform reports them and as the module keeps them.
class Company
{
public:
    struct Options
    {
        size_t users = 0;
        size_t first = 0;       ///< number of the first user; differs among the parts of one company
        bool shuffled = false;  ///< the users are in random order
        bool longTexts = false; ///< texts as long as those of clients that name their devices by a GUID
    };

    static constexpr size_t kUsersPerPage = 500;

    explicit Company(const Options& options);

    const std::vector<Page>& Pages() const
    {
        return m_pages;
    }

    /// The same users, in the same order.
    const std::vector<onlinemanager::UserOnlineInfo>& Records() const
    {
        return m_records;
    }

    /// One user in a hundred publishes another custom text in the pages, at every second call the former one again.
    void ChangeOnePercent();

    size_t ChangedUsers() const
    {
        return (m_records.size() + kChangeStep - 1) / kChangeStep;
    }

private:
    static constexpr size_t kChangeStep = 100;

    std::vector<onlinemanager::UserOnlineInfo> m_records;
    std::vector<std::string> m_ids;
    std::vector<avcore::ZolUserTerminalInfo> m_terminals;
    std::vector<Page> m_pages;
    bool m_isChanged = false;
};

} // namespace bench
