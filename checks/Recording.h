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

/// The results and the actions of a recording object's operations, which the check sets beforehand. All operations are
/// [any].
class Script
{
public:
    /// Sets the result of an operation from now on; it is 0 otherwise.
    void SetResult(const std::string& operation, HRESULT result)
    {
        const std::lock_guard guard(m_mutex);
        m_results[operation] = result;
    }

    /// Sets an action that the operation runs on its caller's thread, after it has written its line.
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
    std::mutex m_mutex; ///< guards the members below
    std::map<std::string, HRESULT> m_results;
    std::map<std::string, std::function<void()>> m_hooks;
};

/// A recording object, which writes its calls to the journal under its name.
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

/// A recording object with a reference count, which starts at 1. The check owns the object and destroys it whatever the
/// count is, so that the journal also shows a call after the last release.
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

    /// Adds a reference that the host passes to its partner; not recorded.
    void Hold()
    {
        ++m_references;
    }

    /// Takes such a reference back; not recorded.
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

    /// Returns `object`, which belongs to the host, with a reference.
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
