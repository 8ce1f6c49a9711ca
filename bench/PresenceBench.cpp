#include "bench/Company.h"
#include "bench/LoadedModule.h"
#include "bench/Pairs.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <unordered_map>
#include <utility>

namespace bench
{

namespace
{

using onlinemanager::UserOnlineInfo;
using onlinemanager::UserTerminalInfo;

constexpr int64_t kQueriedIds = 1000;

enum class Order
{
    ASCENDING,
    SHUFFLED,
};

/// Counts the users that are reported as changed.
class Listener final : public onlinemanager::IUserOnlineNotify
{
public:
    void OnUserStatusChanged(const std::vector<unsigned>& userIds) override
    {
        m_changed += userIds.size();
    }
    void OnUserStatusRefreshed(unsigned /*requestId*/, avcore::ZolPortErrCode /*code*/) override {}
    void OnInviteRejected(unsigned /*userId*/, unsigned /*inviteId*/, avcore::ZolInviteRejectReason /*reason*/) override
    {
    }

    size_t TakeChanged()
    {
        return std::exchange(m_changed, 0);
    }

private:
    size_t m_changed = 0;
};

/// The company of the running benchmark. Kept until a benchmark needs another one, because a large one takes longer to make than to measure.
Company& SharedCompany(int64_t users, Order order)
{
    static std::unique_ptr<Company> company;
    static std::pair<int64_t, Order> kind;
    if (company == nullptr || kind != std::pair(users, order))
    {
        company.reset();
        company = std::make_unique<Company>(
            Company::Options{.users = static_cast<size_t>(users), .shuffled = order == Order::SHUFFLED});
        kind = {users, order};
    }
    return *company;
}

/// A logged-in user who watches a company.
class Watch
{
public:
    Watch()
    {
        m_module.Users().AddNotify(&m_listener);
    }

    LoadedModule& Module()
    {
        return m_module;
    }

    /// Sends all pages of a refresh and returns how many users it changed.
    size_t Refresh(const Company& company)
    {
        const int pages = static_cast<int>(company.Pages().size());
        int index = 0;
        for (const Page& page : company.Pages())
        {
            m_module.Platform().OnRefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 1, page, pages, index);
            ++index;
        }
        return m_listener.TakeChanged();
    }

    size_t TakeChanged()
    {
        return m_listener.TakeChanged();
    }

private:
    Listener m_listener;
    LoadedModule m_module;
};

/// Runs refreshes, each of which must change `changes` users. Calls `prepare()` before each, outside of the measured time.
template <typename Prepare>
void RunRefresh(benchmark::State& state, Watch& watch, const Company& company, size_t changes, Prepare prepare)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        prepare();
        state.ResumeTiming();
        if (watch.Refresh(company) != changes)
        {
            state.SkipWithError("wrong number of changed users");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Order order>
void FirstRefresh(benchmark::State& state)
{
    const Company& company = SharedCompany(state.range(0), order);
    Watch watch;
    RunRefresh(state, watch, company, company.Records().size(), [&] { watch.Module().ForgetUsers(); });
}

template <Order order>
void UnchangedRefresh(benchmark::State& state)
{
    const Company& company = SharedCompany(state.range(0), order);
    Watch watch;
    watch.Refresh(company);
    RunRefresh(state, watch, company, 0, [] {});
}

template <Order order>
void ChangedRefresh(benchmark::State& state)
{
    Company& company = SharedCompany(state.range(0), order);
    Watch watch;
    watch.Refresh(company);
    RunRefresh(state, watch, company, company.ChangedUsers(), [&] { company.ChangeOnePercent(); });
}

template <Order order>
void CopyRecords(benchmark::State& state)
{
    const std::vector<UserOnlineInfo>& records = SharedCompany(state.range(0), order).Records();
    for (auto _ : state)
    {
        std::vector<UserOnlineInfo> copy(records);
        benchmark::DoNotOptimize(copy.data());
        state.PauseTiming();
        copy = {};
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Gives the numbers below `count` in random order, again and again.
class RandomOrder
{
public:
    explicit RandomOrder(size_t count) : m_numbers(count)
    {
        std::iota(m_numbers.begin(), m_numbers.end(), size_t{0});
        std::shuffle(m_numbers.begin(), m_numbers.end(), std::mt19937(2));
    }

    size_t Next()
    {
        if (m_next == m_numbers.size())
        {
            m_next = 0;
            ++m_rounds;
        }
        return m_numbers[m_next++];
    }

    /// How many times all numbers have been given.
    size_t Rounds() const
    {
        return m_rounds;
    }

private:
    std::vector<size_t> m_numbers;
    size_t m_next = 0;
    size_t m_rounds = 0;
};

/// The text that a terminal publishes in a round of events; it differs from the text of the round before.
const char* CustomText(size_t round)
{
    return round % 2 == 0 ? "back at three" : "at lunch";
}

void TerminalEvents(benchmark::State& state)
{
    const Company& company = SharedCompany(state.range(0), Order::ASCENDING);
    Watch watch;
    watch.Refresh(company);
    RandomOrder order(company.Records().size());
    for (auto _ : state)
    {
        const size_t index = order.Next();
        const avcore::ZolUserInfo& user =
            company.Pages()[index / Company::kUsersPerPage][index % Company::kUsersPerPage];
        avcore::ZolUserTerminalInfo event = user.terminals[0];
        event.custom = CustomText(order.Rounds());
        watch.Module().Platform().OnUserTerminalStateChanged(user.user_id, event);
    }
    if (watch.TakeChanged() != static_cast<size_t>(state.iterations()))
    {
        state.SkipWithError("an event changed nothing");
    }
    state.SetItemsProcessed(state.iterations());
}

void MapUpdates(benchmark::State& state)
{
    const std::vector<UserOnlineInfo>& records = SharedCompany(state.range(0), Order::ASCENDING).Records();
    std::unordered_map<unsigned, UserOnlineInfo> users;
    for (const UserOnlineInfo& record : records)
    {
        users.emplace(record.user_id, record);
    }
    RandomOrder order(records.size());
    for (auto _ : state)
    {
        UserTerminalInfo& terminal = users.find(records[order.Next()].user_id)->second.terminals[0];
        terminal.status = 1;
        terminal.custom = CustomText(order.Rounds());
    }
    state.SetItemsProcessed(state.iterations());
}

void QueryUsers(benchmark::State& state)
{
    const Company& company = SharedCompany(state.range(0), Order::ASCENDING);
    Watch watch;
    watch.Refresh(company);
    RandomOrder order(company.Records().size());
    std::vector<unsigned> ids;
    size_t terminals = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        ids.clear();
        while (ids.size() < kQueriedIds)
        {
            ids.push_back(company.Records()[order.Next()].user_id);
        }
        state.ResumeTiming();
        watch.Module().Users().QueryUserStatus(ids, [&terminals](const UserOnlineInfo& user)
                                               { terminals += user.terminals.size(); });
    }
    if (terminals != static_cast<size_t>(2 * kQueriedIds * state.iterations()))
    {
        state.SkipWithError("a user was not found");
    }
    state.SetItemsProcessed(state.iterations() * kQueriedIds);
}

void CopyQueriedRecords(benchmark::State& state)
{
    const std::vector<UserOnlineInfo>& records = SharedCompany(state.range(0), Order::ASCENDING).Records();
    RandomOrder order(records.size());
    std::vector<size_t> positions;
    for (auto _ : state)
    {
        state.PauseTiming();
        positions.clear();
        while (positions.size() < kQueriedIds)
        {
            positions.push_back(order.Next());
        }
        state.ResumeTiming();
        for (const size_t position : positions)
        {
            const UserOnlineInfo copy = records[position];
            benchmark::DoNotOptimize(copy.terminals.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kQueriedIds);
}

} // namespace

void AddPresenceBenchmarks()
{
    constexpr Order kAscending = Order::ASCENDING;
    constexpr Order kShuffled = Order::SHUFFLED;
    // One size after the other, so that each company is made once.
    for (const int64_t users : {10'000, 100'000, 1'000'000})
    {
        AddPair("refresh_first", FirstRefresh<kAscending>, CopyRecords<kAscending>, {users});
        AddPair("refresh_unchanged", UnchangedRefresh<kAscending>, CopyRecords<kAscending>, {users});
        AddPair("refresh_1_percent_changed", ChangedRefresh<kAscending>, CopyRecords<kAscending>, {users});
        AddPair("query_1000", QueryUsers, CopyQueriedRecords, {users});
        AddPair("terminal_event", TerminalEvents, MapUpdates, {users});
        AddPair("refresh_first_shuffled", FirstRefresh<kShuffled>, CopyRecords<kShuffled>, {users});
        AddPair("refresh_unchanged_shuffled", UnchangedRefresh<kShuffled>, CopyRecords<kShuffled>, {users});
        AddPair("refresh_1_percent_changed_shuffled", ChangedRefresh<kShuffled>, CopyRecords<kShuffled>, {users});
    }
}

} // namespace bench
