#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

/// The host's measurements of a meeting's audio and video. Measured values are texts: the host chooses units and
/// precision, and the reports carry the texts unchanged.

namespace onlinemanager
{

/// One audio stream.
struct AudioQualityData
{
    uint32_t userId = 0;
    std::string userName;
    std::string protocol;
    std::string bitrate;
    std::string pktlr; ///< packet loss rate
    std::string rtt;   ///< round-trip time
    std::string jitter;
};

/// One video stream.
struct VideoQualityData
{
    uint32_t userId = 0;
    uint32_t mediaId = 0; ///< video source of the user
    std::string userName;
    std::string protocol;
    std::string bitrate;
    std::string resolve; ///< resolution
    std::string framerate;
    std::string pktlr; ///< packet loss rate
    std::string rtt;   ///< round-trip time
    std::string jitter;
};

/// One measurement. No list may hold a null pointer.
struct AVQualityInfo
{
    int32_t avQualityLevel = 0; ///< overall level; the report carries it as an unsigned number
    uint32_t userId = 0;
    uint32_t roomId = 0;
    std::string groupId;
    std::string appId;
    std::list<std::shared_ptr<AudioQualityData>> sendAudio;
    std::list<std::shared_ptr<AudioQualityData>> receiveAudio;
    std::list<std::shared_ptr<VideoQualityData>> sendVideo;
    std::list<std::shared_ptr<VideoQualityData>> receiveVideo;
};

} // namespace onlinemanager
