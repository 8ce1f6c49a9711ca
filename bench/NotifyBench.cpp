#include "bench/Pairs.h"
#include "onlinemanager/IUserOnline.h"
#include "onlinemanager/NotifyList.h"

namespace bench
{

namespace
{

using onlinemanager::IUserOnlineNotify;

class Listener final : public IUserOnlineNotify
{
public:
    // Not inlined: the compiler of the module never sees a listener's code.
    __attribute__((noinline)) void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode /*code*/) override
    {
        m_sum += requestId;
    }

    void OnInviteRejected(unsigned /*userId*/, unsigned /*inviteId*/, avcore::ZolInviteRejectReason /*reason*/) override
    {
    }

    uint64_t Sum() const
    {
        return m_sum;
    }

private:
    uint64_t m_sum = 0;
};

void CheckSums(benchmark::State& state, const std::vector<Listener>& listeners)
{
    for (const Listener& listener : listeners)
    {
        if (listener.Sum() != static_cast<uint64_t>(state.iterations()))
        {
            state.SkipWithError("a listener was not called exactly once");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Deliver(benchmark::State& state)
{
    std::vector<Listener> listeners(static_cast<size_t>(state.range(0)));
    onlinemanager::NotifyList<IUserOnlineNotify> list;
    for (Listener& listener : listeners)
    {
        list.AddNotify(&listener);
    }
    for (auto _ : state)
    {
        list.Deliver([](IUserOnlineNotify& notify) { notify.OnUserStatusRefreshed(1, avcore::ZOL_PORT_SUCCESS); });
    }
    CheckSums(state, listeners);
}

void PlainLoop(benchmark::State& state)
{
    std::vector<Listener> listeners(static_cast<size_t>(state.range(0)));
    std::vector<IUserOnlineNotify*> list;
    for (Listener& listener : listeners)
    {
        list.push_back(&listener);
    }
    for (auto _ : state)
    {
        for (IUserOnlineNotify* notify : list)
        {
            benchmark::DoNotOptimize(notify);
            notify->OnUserStatusRefreshed(1, avcore::ZOL_PORT_SUCCESS);
        }
    }
    CheckSums(state, listeners);
}

} // namespace

void AddNotifyBenchmarks()
{
    AddPair("deliver", Deliver, PlainLoop, {1, 10, 1000});
}

} // namespace bench
