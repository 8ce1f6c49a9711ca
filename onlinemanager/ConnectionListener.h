#pragma once

#include "avcore/IZolConnection.h"

namespace onlinemanager
{

/// A listener of a platform connection that ignores every event. A derived class overrides the events that it handles;
/// a new event of the platform needs a body here and in the class that handles it.
class ConnectionListener : public avcore::IZolConnectionListener
{
public:
    void OnLoginResult(avcore::ZolPortErrCode /*code*/, const char* /*szConflictDeviceId*/,
                       const char* /*szConflictCustomState*/, const char* /*szConflictExtendInfo*/) override
    {
    }
    void OnJoinGroupResult(avcore::ZolPortErrCode /*code*/) override {}
    void OnLeaveGroupResult(avcore::ZolPortErrCode /*code*/) override {}
    void OnLogouted(avcore::ZolPortErrCode /*code*/) override {}
    int32_t OnReconnectStart() override
    {
        return avcore::ZOL_RECONNECT_UNDECIDED;
    }
    void OnReconnectSucess() override {}
    void OnReconnectFail(avcore::ZolPortErrCode /*code*/, const char* /*text*/) override {}
    void OnGroupUserJoined(const char* /*userId*/) override {}
    void OnGroupUserLeaved(const char* /*userId*/) override {}
    void OnGroupUserSync(const avcore::ZolTextList& /*users*/, const WBASELIB::Vector<avcore::ZolMediaInfo>& /*media*/,
                         bool /*complete*/) override
    {
    }

protected:
    ~ConnectionListener() = default;
};

} // namespace onlinemanager
