#include "bench/LoadedModule.h"
#include "bench/Pairs.h"

#include <algorithm>

namespace bench
{

namespace
{

constexpr size_t kBatch = 20; // invitees in one call of the platform

std::vector<unsigned> Invitees(int64_t count)
{
    std::vector<unsigned> ids;
    for (unsigned id = 10'000; ids.size() < static_cast<size_t>(count); ++id)
    {
        ids.push_back(id);
    }
    return ids;
}

void InviteUsers(benchmark::State& state)
{
    const std::vector<unsigned> ids = Invitees(state.range(0));
    LoadedModule module;
    onlinemanager::InviteData data;
    data.inviteCode = 7;
    data.userName = "Ann";
    for (auto _ : state)
    {
        unsigned inviteId = 0;
        if (!module.Users().InviteUsers(ids, data, &inviteId))
        {
            state.SkipWithError("the invitation was refused");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BuildTexts(benchmark::State& state)
{
    const std::vector<unsigned> ids = Invitees(state.range(0));
    for (auto _ : state)
    {
        for (size_t begin = 0; begin < ids.size(); begin += kBatch)
        {
            avcore::ZolTextList batch;
            for (size_t index = begin; index < std::min(begin + kBatch, ids.size()); ++index)
            {
                batch.push_back(avcore::ZolText(std::to_string(ids[index]).c_str()));
            }
            benchmark::DoNotOptimize(batch.begin());
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

void AddInvitationBenchmarks()
{
    AddPair("invite", InviteUsers, BuildTexts, {10'000});
}

} // namespace bench
