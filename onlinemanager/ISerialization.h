#pragma once

#include "onlinemanager/AVQualityInfo.h"
#include "onlinemanager/InviteData.h"
#include "onlinemanager/OnlineTypes.h"

#include <memory>
#include <string>

namespace onlinemanager
{

/// Formats and parses every payload that travels inside the platform's messages. Implemented by `JsonSerialization`; each
/// service makes its own and shares its ownership. It has no state: every operation may be called from any thread.
///
/// Nothing throws on bad input: what cannot be read leaves its output as it was.
class ISerialization
{
public:
    virtual std::string FormatInviteUserMsg(const InviteData& data) = 0;

    /// Fills `*out` and returns `out`, whatever happened: judge the record by its contents.
    virtual InviteData* ParseInviteUserMsg(const std::string& json, InviteData* out) = 0;

    virtual std::string FormatAcceptInviteMsg(const quenda::TerminalType& terminalType) = 0;
    virtual std::string FormatRejectInviteMsg(const quenda::TerminalType& terminalType, int mode) = 0;

    /// The text that other users see with a terminal.
    virtual std::string FormatLoginExtInfo(const quenda::TerminalType& terminalType) = 0;

    /// The terminal type in such a text, 0 when there is none.
    virtual uint32_t ParseLoginExtInfo(const std::string& json) = 0;

    /// `info` and the elements of its lists must not be null.
    virtual std::string FormatAvQualityOverview(const std::shared_ptr<AVQualityInfo>& info) = 0;
    virtual std::string FormatAvQualityDetail(const std::shared_ptr<AVQualityInfo>& info) = 0;

    /// Transparent messages are passed on unparsed; this does nothing.
    virtual void ParseTMsgInfo(const std::string& json) = 0;

    /// The command of the monitoring service and the report that it is about.
    virtual void ParseMdsClientInfo(const std::string& json, std::string& command, std::string& subType) = 0;

    virtual ~ISerialization() = default;
};

} // namespace onlinemanager
