#include "common/frameworksdk/frameunknown.h"

#include <gtest/gtest.h>

using FRAMEWORKSDK::CFrameBaseObject;
using FRAMEWORKSDK::CFrameUnknown;

namespace
{

/// A component whose destructor adds a reference and releases it, as happens when a component unregisters itself.
class Component : public CFrameUnknown
{
public:
    explicit Component(int* ends, IUnknown* outer = nullptr) : CFrameUnknown("Component", outer, nullptr), m_ends(ends)
    {
    }

    ~Component() override
    {
        ++*m_ends;
        m_pUnknown->AddRef();
        m_pUnknown->Release();
    }

    IUnknown* Controlling() const
    {
        return m_pUnknown;
    }

private:
    int* m_ends;
};

class Outer : public IUnknown
{
public:
    HRESULT QueryInterface(const GUID& /*iid*/, void** /*out*/) override
    {
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override
    {
        return ++references;
    }
    uint32_t Release() override
    {
        return --references;
    }

    uint32_t references = 1;
};

} // namespace

TEST(FrameUnknown, ReleaseToZeroWithAPairInTheDestructorDestroysOnce)
{
    int ends = 0;
    auto* const component = new Component(&ends);
    EXPECT_EQ(1u, component->NonDelegatingAddRef());
    EXPECT_EQ(0u, component->NonDelegatingRelease());
    EXPECT_EQ(1, ends);
}

TEST(FrameUnknown, EveryObjectCountsFromConstructionToDestruction)
{
    int ends = 0;
    const int32_t before = CFrameBaseObject::m_cObjects;
    auto* const first = new Component(&ends);
    auto* const second = new Component(&ends);
    EXPECT_EQ(before + 2, CFrameBaseObject::m_cObjects);
    first->NonDelegatingAddRef();
    first->NonDelegatingRelease();
    EXPECT_EQ(before + 1, CFrameBaseObject::m_cObjects);
    second->NonDelegatingAddRef();
    second->NonDelegatingRelease();
    EXPECT_EQ(before, CFrameBaseObject::m_cObjects);
}

TEST(FrameUnknown, TheCountIsReturnedByBothOperations)
{
    int ends = 0;
    auto* const component = new Component(&ends);
    EXPECT_EQ(1u, component->NonDelegatingAddRef());
    EXPECT_EQ(2u, component->NonDelegatingAddRef());
    EXPECT_EQ(1u, component->NonDelegatingRelease());
    EXPECT_EQ(0, ends);
    EXPECT_EQ(0u, component->NonDelegatingRelease());
}

TEST(FrameUnknown, AloneItControlsItself)
{
    int ends = 0;
    auto* const component = new Component(&ends);
    component->NonDelegatingAddRef();
    EXPECT_EQ(2u, component->Controlling()->AddRef());
    EXPECT_EQ(1u, component->Controlling()->Release());
    void* self = nullptr;
    EXPECT_EQ(S_OK, component->Controlling()->QueryInterface(IID_IUnknown, &self));
    EXPECT_EQ(static_cast<void*>(component->Controlling()), self);
    component->NonDelegatingRelease();
    component->NonDelegatingRelease();
    EXPECT_EQ(1, ends);
}

TEST(FrameUnknown, InAnAggregateTheOuterObjectControls)
{
    int ends = 0;
    Outer outer;
    auto* const component = new Component(&ends, &outer);
    EXPECT_EQ(&outer, component->Controlling());
    component->NonDelegatingAddRef();
    EXPECT_EQ(1u, outer.references);
    component->NonDelegatingRelease();
    EXPECT_EQ(1, ends);
    EXPECT_EQ(1u, outer.references);
}

TEST(FrameUnknown, ItAnswersForItsOwnIdentityOnly)
{
    int ends = 0;
    auto* const component = new Component(&ends);
    component->NonDelegatingAddRef();
    void* out = component;
    EXPECT_EQ(E_POINTER, component->NonDelegatingQueryInterface(IID_IUnknown, nullptr));
    EXPECT_EQ(E_NOINTERFACE, component->NonDelegatingQueryInterface(IID{}, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(S_OK, component->NonDelegatingQueryInterface(IID_IUnknown, &out));
    EXPECT_EQ(static_cast<FRAMEWORKSDK::INonDelegatingUnknown*>(component), out);
    component->NonDelegatingRelease();
    EXPECT_EQ(0, ends);
    component->NonDelegatingRelease();
    EXPECT_EQ(1, ends);
}
