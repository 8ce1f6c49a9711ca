#pragma once

#include "common/wbaselib/wtypes.h"

namespace avcore
{

/// Receives the commands of the monitoring data service. Implemented by the module's MDS client.
class IZolMdsClientListener
{
public:
    /// [platform] A command, JSON text, never null, not valid after the call.
    virtual void OnMdsMsgData(const char* msg) = 0;

protected:
    ~IZolMdsClientListener() = default;
};

/// The connection's way to the monitoring data service. Implemented by the platform library; got from
/// `IZolConnection::GetComponent(IID_IZolMdsClient)`, borrowed, lives as long as the connection.
class IZolMdsClient
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolMdsClientListener* listener) = 0;

    /// [any] Takes a listener away; the same promise as `IZolConnection::RemoveListener`.
    virtual HRESULT RemoveListener(IZolMdsClientListener* listener) = 0;

    /// [any] Sends one report. Negative on failure.
    virtual HRESULT SendMdsData(const char* json) = 0;

protected:
    ~IZolMdsClient() = default;
};

} // namespace avcore
