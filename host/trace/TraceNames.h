#pragma once

#include "avcore/ZolTypes.h"
#include "host/trace/TraceCall.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IUserOnline.h"
#include "onlinemanager/OnlineTypes.h"

#include <optional>
#include <string>
#include <vector>

/// Meanings of the codes and operations that are recorded.

namespace host
{

TraceCode MeaningOf(onlinemanager::ErrCode code);
TraceCode MeaningOf(avcore::ZolPortErrCode code);
TraceCode MeaningOf(avcore::ZolInviteRejectReason reason);
TraceCode MeaningOf(onlinemanager::InviteAbandonedReason reason);
TraceCode MeaningOf(avcore::ZolInviteCancelReason reason);
TraceCode MeaningOf(onlinemanager::RejectInvitationReason reason);
TraceCode MeaningOf(onlinemanager::TunnelType type);
TraceCode MeaningOf(onlinemanager::ConnectProperty key);
TraceCode MeaningOfStatus(int32_t status); ///< of a user's terminal

/// The name of a class or interface of the module or the platform, otherwise the GUID's text.
std::string GuidName(const GUID& guid);

/// Fills `result` from the integer that the operation `name` returned.
void SetResult(TraceResult& result, const char* name, int64_t value);

/// What an operation is about.
enum class TraceSubject
{
    Login,
    Presence,
    Invitations,
    Meetings,
    Messages,
    Quality,
};

/// The subjects as options name them.
const std::vector<std::string>& TraceSubjectNames();
/// The subject of this name.
std::optional<TraceSubject> FindTraceSubject(const std::string& name);

/// Whether an operation belongs to a subject. The loss and the return of a connection belong to logins and to meetings: a
/// meeting is left and entered again with them.
bool BelongsTo(const char* name, TraceSubject subject);

/// Whether an operation only creates, connects or removes objects and listeners.
bool IsSetUp(const char* name);

/// Whether an operation of the host only reads what the module knows, without a call to the platform.
bool IsQuery(const char* name);

} // namespace host
