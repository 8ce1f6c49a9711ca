#pragma once

#include <cstdint>

namespace FRAMEWORKSDK
{

/// Base of every object that keeps the module loaded: counts how many of them live.
class CFrameBaseObject
{
public:
    /// `name` is for debuggers only and is not stored.
    explicit CFrameBaseObject(const char* name);
    ~CFrameBaseObject();

    CFrameBaseObject(const CFrameBaseObject&) = delete;
    CFrameBaseObject& operator=(const CFrameBaseObject&) = delete;

    /// Number of live framework objects in this module; 0 means that it may be unloaded. Every access is atomic.
    static int32_t m_cObjects;
};

} // namespace FRAMEWORKSDK
