#pragma once

#include <cstdint>

namespace FRAMEWORKSDK
{

/// Base of every object that keeps the module loaded. It counts the live objects.
class CFrameBaseObject
{
public:
    /// `name` is not stored; a debugger shows it while the constructor runs.
    explicit CFrameBaseObject(const char* name);
    ~CFrameBaseObject();

    CFrameBaseObject(const CFrameBaseObject&) = delete;
    CFrameBaseObject& operator=(const CFrameBaseObject&) = delete;

    /// Number of live framework objects of this module. At 0 the host may unload the module. Every access is atomic.
    static int32_t m_cObjects;
};

} // namespace FRAMEWORKSDK
