#pragma once

#include "checks/Journal.h"
#include "common/frameworksdk/IUnknown.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace checks
{

/// What a recording object answers and does when one of its operations is called, set by the check before.
class Script
{
public:
    /// The result of an operation from now on; 0 without one.
    void SetResult(const std::string& operation, HRESULT result)
    {
        const std::lock_guard guard(m_mutex);
        m_results[operation] = result;
    }

    /// Done inside the operation, after its line was written, on the thread that called it.
    void SetHook(const std::string& operation, std::function<void()> hook)
    {
        const std::lock_guard guard(m_mutex);
        m_hooks[operation] = std::move(hook);
    }

protected:
    HRESULT Play(const std::string& operation)
    {
        std::function<void()> hook;
        HRESULT result = S_OK;
        {
            const std::lock_guard guard(m_mutex);
            if (const auto found = m_hooks.find(operation); found != m_hooks.end())
            {
                hook = found->second;
            }
            if (const auto found = m_results.find(operation); found != m_results.end())
            {
                result = found->second;
            }
        }
        if (hook)
        {
            hook();
        }
        return result;
    }

private:
    std::mutex m_mutex; ///< guards what is below
    std::map<std::string, HRESULT> m_results;
    std::map<std::string, std::function<void()>> m_hooks;
};

/// A recording object that writes its calls under a name.
class Recorder : public Script
{
public:
    Recorder(Journal& journal, std::string name) : m_journal(journal), m_name(std::move(name)) {}
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    const std::string& Name() const
    {
        return m_name;
    }

protected:
    template <typename... Parts>
    void Record(const Parts&... parts)
    {
        m_journal.Add(m_name, ".", parts...);
    }

    Journal& m_journal;

private:
    const std::string m_name;
};

/// A reference-counted recording object. It starts with one reference and is never deleted by a count: the check owns it,
/// so that a call after the last release can still be told.
template <typename Interface>
class RecordingUnknown : public Interface, public Recorder
{
public:
    using Recorder::Recorder;

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        Record("QueryInterface(", NameOf(iid), ")");
        return Query(iid, out);
    }

    uint32_t AddRef() override
    {
        const int32_t count = ++m_references;
        Record("AddRef() -> ", count);
        return static_cast<uint32_t>(count);
    }

    uint32_t Release() override
    {
        const int32_t count = --m_references;
        Record("Release() -> ", count);
        return static_cast<uint32_t>(count);
    }

    int32_t References() const
    {
        return m_references;
    }

    /// A reference that the host adds for somebody else; not recorded.
    void Hold()
    {
        ++m_references;
    }

    /// A reference that the host takes back; not recorded.
    void Drop()
    {
        --m_references;
    }

protected:
    virtual HRESULT Query(const GUID& /*iid*/, void** out)
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }

    /// Hands out `object`, an object of the host's, with a reference.
    template <typename Other>
    static HRESULT HandOut(RecordingUnknown<Other>& object, void** out)
    {
        object.Hold();
        *out = static_cast<Other*>(&object);
        return S_OK;
    }

private:
    std::atomic<int32_t> m_references{1};
};

} // namespace checks
