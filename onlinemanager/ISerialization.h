#pragma once

#include "onlinemanager/AVQualityInfo.h"
#include "onlinemanager/InviteData.h"
#include "onlinemanager/OnlineTypes.h"

#include <memory>
#include <string>

namespace onlinemanager
{

/// Formats and parses every payload that travels inside the platform's messages. Internal to the module: hosts and
/// platforms do not call it. `JsonSerialization` implements it. It has no state: every operation may be called on any
/// thread.
///
/// No operation throws on bad input. A field that cannot be read leaves its output unchanged.
class ISerialization
{
public:
    /// Returns the invitation as JSON text.
    virtual std::string FormatInviteUserMsg(const InviteData& data) = 0;

    /// Reads an invitation into `*out`. Returns `out`, also when nothing could be read.
    virtual InviteData* ParseInviteUserMsg(const std::string& json, InviteData* out) = 0;

    /// Return the answers to an invitation as JSON text.
    virtual std::string FormatAcceptInviteMsg(const quenda::TerminalType& terminalType) = 0;
    virtual std::string FormatRejectInviteMsg(const quenda::TerminalType& terminalType, int mode) = 0;

    /// Returns the extension text of a login, which other users see with the terminal.
    virtual std::string FormatLoginExtInfo(const quenda::TerminalType& terminalType) = 0;

    /// Returns the terminal type in an extension text; 0 when there is none.
    virtual uint32_t ParseLoginExtInfo(const std::string& json) = 0;

    /// Return the two quality reports as JSON text. `info` and the elements of its lists must not be null.
    virtual std::string FormatAvQualityOverview(const std::shared_ptr<AVQualityInfo>& info) = 0;
    virtual std::string FormatAvQualityDetail(const std::shared_ptr<AVQualityInfo>& info) = 0;

    /// Does nothing: in this version transparent messages are opaque.
    virtual void ParseTMsgInfo(const std::string& json) = 0;

    /// Reads a command of the monitoring data service, and the report that it concerns.
    virtual void ParseMdsClientInfo(const std::string& json, std::string& command, std::string& subType) = 0;

    virtual ~ISerialization() = default;
};

} // namespace onlinemanager
