#pragma once

#include "onlinemanager/ISerialization.h"

#include <rapidjson/document.h>

#include <list>

namespace onlinemanager
{

/// JSON as other clients and the monitoring service expect it: compact, members in a fixed order, every character
/// beyond ASCII escaped.
class JsonSerialization : public ISerialization
{
public:
    JsonSerialization();

    std::string FormatInviteUserMsg(const InviteData& data) override;
    InviteData* ParseInviteUserMsg(const std::string& json, InviteData* out) override;
    std::string FormatAcceptInviteMsg(const quenda::TerminalType& terminalType) override;
    std::string FormatRejectInviteMsg(const quenda::TerminalType& terminalType, int mode) override;
    std::string FormatLoginExtInfo(const quenda::TerminalType& terminalType) override;
    uint32_t ParseLoginExtInfo(const std::string& json) override;
    std::string FormatAvQualityOverview(const std::shared_ptr<AVQualityInfo>& info) override;
    std::string FormatAvQualityDetail(const std::shared_ptr<AVQualityInfo>& info) override;
    void ParseTMsgInfo(const std::string& json) override;
    void ParseMdsClientInfo(const std::string& json, std::string& command, std::string& subType) override;

    /// The envelope of a message: version, method and an empty "params" object. `memory` must outlive the document;
    /// with null the document allocates its own.
    rapidjson::Document BasicDocument(const std::string& method, rapidjson::Document::AllocatorType* memory = nullptr);

    /// 0 when the document's method is `method`, -1 when the document is not a message, otherwise the result of
    /// `std::string::compare`.
    int DocumentMethodCompare(const rapidjson::Value& document, const std::string& method);

    std::string ToString(const rapidjson::Document& document);

    /// Add the list as an array `name` to `target`; for an empty list they add nothing.
    void FormatAudioQuality(const std::list<std::shared_ptr<AudioQualityData>>& list, const std::string& name,
                            rapidjson::Document::AllocatorType& allocator, rapidjson::Value& target);
    void FormatVideoQuality(const std::list<std::shared_ptr<VideoQualityData>>& list, const std::string& name,
                            rapidjson::Document::AllocatorType& allocator, rapidjson::Value& target);

private:
    const std::string m_version_key;
    const std::string m_method_key;
    const std::string m_params_key;
    const std::string m_terminal_type_key;
    const std::string m_version;
};

} // namespace onlinemanager
