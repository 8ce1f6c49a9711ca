#pragma once

#include "common/wbaselib/wtypes.h"

namespace avcore
{

/// Receives the commands of the monitoring data service. The module's MDS client implements it and registers it with
/// `IZolMdsClient::AddListener`; the platform does not own it.
class IZolMdsClientListener
{
public:
    /// [platform] A command. `msg` is JSON text, valid during the call only, not null.
    virtual void OnMdsMsgData(const char* msg) = 0;

protected:
    ~IZolMdsClientListener() = default;
};

/// The connection's client of the monitoring data service. The platform library implements it; the module gets it from
/// `IZolConnection::GetComponent(IID_IZolMdsClient)` without a reference. It lives as long as the connection.
class IZolMdsClient
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener; it is not owned. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolMdsClientListener* listener) = 0;

    /// [any] Removes a listener, with the promise of `IZolConnection::RemoveListener`. The module does not call it: it
    /// drops the client without it, and its listener stays valid while the module is loaded.
    virtual HRESULT RemoveListener(IZolMdsClientListener* listener) = 0;

    /// [any] Sends one report, JSON text; the platform copies it. Negative on failure.
    virtual HRESULT SendMdsData(const char* json) = 0;

protected:
    ~IZolMdsClient() = default;
};

} // namespace avcore
