// Reference counting, identity and aggregation of the two component bases,
// and the owning interface pointer.
#include <qxbase/qxunknown.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

const GUID IID_ITestThing = {0x5a1e0001, 0x0002, 0x0003, {1, 2, 3, 4, 5, 6, 7, 8}};

class ITestThing : public IUnknown {
public:
    virtual int Value() = 0;
};

// A component answering ITestThing, aggregatable, counting its destructions.
template <class TBase>
class CThing : public TBase, public ITestThing {
public:
    CThing(IUnknown* outer, int* destroyed) : TBase(L"thing", outer), m_pDestroyed(destroyed) {}
    ~CThing() override { ++*m_pDestroyed; }
    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_ITestThing))
            return QxGetInterface(static_cast<ITestThing*>(this), ppv);
        return TBase::NonDelegatingQueryInterface(riid, ppv);
    }
    int Value() override { return 42; }
    int32_t Count() const { return this->m_i32RefCount; }

private:
    int* m_pDestroyed;
};

// A minimal outer object that counts the references reaching it.
class COuter : public IUnknown {
public:
    HRESULT QueryInterface(const GUID& riid, void** ppv) override
    {
        ++queries;
        if (IsEqualGUID(riid, IID_IUnknown)) {
            *ppv = this;
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override { return ++refs; }
    uint32_t Release() override { return --refs; }
    int refs = 1;
    int queries = 0;
};

TEST(Unknown, HeavyObjectStartsAtZeroAndDiesOnLastRelease)
{
    int destroyed = 0;
    int32_t before = g_i32Objects;
    auto* p = new CThing<CQxUnknown>(nullptr, &destroyed);
    EXPECT_EQ(p->Count(), 0);
    EXPECT_EQ(g_i32Objects, before + 1);
    EXPECT_EQ(p->NonDelegatingAddRef(), 1u);
    EXPECT_EQ(p->NonDelegatingRelease(), 0u);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(g_i32Objects, before);
}

TEST(Unknown, LightObjectStartsOwnedAndDiesOnOneRelease)
{
    int destroyed = 0;
    int32_t before = g_i32Objects;
    auto* p = new CThing<CQxLightUnknown>(nullptr, &destroyed);
    EXPECT_EQ(p->Count(), 1);
    EXPECT_EQ(p->NonDelegatingRelease(), 0u);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(g_i32Objects, before);
}

TEST(Unknown, ConstructorStoresOkBeforeAnythingElse)
{
    HRESULT hr = E_FAIL;
    int destroyed = 0;
    struct CWithHr : CQxUnknown {
        CWithHr(HRESULT* phr) : CQxUnknown(true, L"x", nullptr, phr) {}
    };
    auto* p = new CWithHr(&hr);
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(p->GetOwner(), reinterpret_cast<IUnknown*>(static_cast<INonDelegatingUnknown*>(p)));
    delete p;
    (void)destroyed;
}

TEST(Unknown, QueryInterfaceAnswersUnknownAndOwnInterfacesOnly)
{
    int destroyed = 0;
    auto* p = new CThing<CQxUnknown>(nullptr, &destroyed);
    p->NonDelegatingAddRef();

    void* pv = reinterpret_cast<void*>(0x1);
    const GUID other = {0xdeadbeef, 1, 2, {0, 0, 0, 0, 0, 0, 0, 1}};
    EXPECT_EQ(p->NonDelegatingQueryInterface(other, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);

    // A copy of the identifier (not the constant itself) compares by bytes.
    GUID unknownCopy = IID_IUnknown;
    EXPECT_EQ(p->NonDelegatingQueryInterface(unknownCopy, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<INonDelegatingUnknown*>(p));
    EXPECT_EQ(p->Count(), 2);

    ITestThing* thing = nullptr;
    EXPECT_EQ(p->QueryInterface(IID_ITestThing, reinterpret_cast<void**>(&thing)), S_OK);
    EXPECT_EQ(thing->Value(), 42);
    EXPECT_EQ(p->Count(), 3);
    thing->Release();
    static_cast<INonDelegatingUnknown*>(pv)->NonDelegatingRelease();
    EXPECT_EQ(destroyed, 0);
    p->NonDelegatingRelease();
    EXPECT_EQ(destroyed, 1);
}

TEST(Unknown, AggregatedObjectForwardsToOuterAndKeepsItsOwnCount)
{
    COuter outer;
    int destroyed = 0;
    auto* inner = new CThing<CQxUnknown>(&outer, &destroyed);
    inner->NonDelegatingAddRef();  // the outer's hold on the inner

    ITestThing* thing = nullptr;
    ASSERT_EQ(inner->NonDelegatingQueryInterface(IID_ITestThing, reinterpret_cast<void**>(&thing)),
              S_OK);
    // The query's AddRef went through the delegating side to the outer.
    EXPECT_EQ(outer.refs, 2);
    EXPECT_EQ(inner->Count(), 1);
    thing->AddRef();
    EXPECT_EQ(outer.refs, 3);
    void* pv = nullptr;
    thing->QueryInterface(IID_IUnknown, &pv);
    EXPECT_EQ(pv, &outer);
    EXPECT_EQ(outer.queries, 1);
    thing->Release();
    thing->Release();
    static_cast<IUnknown*>(pv)->Release();
    EXPECT_EQ(outer.refs, 1);
    EXPECT_EQ(inner->Count(), 1);
    inner->NonDelegatingRelease();
    EXPECT_EQ(destroyed, 1);
}

TEST(Unknown, ConcurrentAddRefReleaseDestroysExactlyOnce)
{
    for (int round = 0; round < 20; ++round) {
        int destroyed = 0;
        int32_t before = g_i32Objects;
        auto* p = new CThing<CQxUnknown>(nullptr, &destroyed);
        p->NonDelegatingAddRef();
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                while (!go.load()) {
                }
                for (int i = 0; i < 20000; ++i) {
                    ASSERT_GE(p->AddRef(), 1u);
                    p->Release();
                }
            });
        }
        go = true;
        for (auto& t : threads) t.join();
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(p->Count(), 1);
        p->NonDelegatingRelease();
        EXPECT_EQ(destroyed, 1);
        EXPECT_EQ(g_i32Objects, before);
    }
}

TEST(SmartPtr, MisuseThrowsWithTheExactMessages)
{
    TQxSmartPtr<ITestThing> empty;
    EXPECT_TRUE(!empty);
    try {
        empty->Value();
        FAIL();
    } catch (const CQxSmartPointerException& e) {
        EXPECT_EQ(e.m_strMessage, "TQxSmartPtr::operator-> -> Internal pointer is NULL!");
    }
    try {
        (*empty).Value();
        FAIL();
    } catch (const CQxBaseException& e) {
        EXPECT_EQ(e.m_strMessage, "TQxSmartPtr::operator* -> Internal pointer is NULL!");
    }

    int destroyed = 0;
    auto* p = new CThing<CQxLightUnknown>(nullptr, &destroyed);
    {
        TQxSmartPtr<ITestThing> sp;
        p->QueryInterface(IID_ITestThing, reinterpret_cast<void**>(&sp));  // fills the empty slot
        EXPECT_EQ(p->Count(), 2);
        try {
            (void)&sp;
            FAIL();
        } catch (const CQxSmartPointerException& e) {
            EXPECT_EQ(e.m_strMessage,
                      "TQxSmartPtr::operator& -> Internal pointer will be overriden!");
        }
        // Self-assignment keeps the object alive.
        ITestThing* raw = sp;
        sp = raw;
        EXPECT_EQ(p->Count(), 2);
        EXPECT_TRUE(sp == raw);
    }
    EXPECT_EQ(p->Count(), 1);
    p->NonDelegatingRelease();
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
