// A component module with two classes, built with qxbase_add_module: the
// author writes the classes and the class table, nothing else.
#include "testmodule.h"

#include <qxbase/qxclassfactory.h>

namespace {

int32_t g_i32InitCalls = 0;

void CountInit(bool in_bLoading, const GUID*)
{
    if (in_bLoading) __atomic_add_fetch(&g_i32InitCalls, 1, __ATOMIC_SEQ_CST);
}

// Not aggregatable: refuses an outer object.
class CTestCounter : public CQxUnknown, public ITestCounter {
public:
    explicit CTestCounter(HRESULT* out_phr) : CQxUnknown(L"CTestCounter", nullptr, out_phr) {}
    QX_DECLARE_IUNKNOWN

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_ITestCounter))
            return QxGetInterface(static_cast<ITestCounter*>(this), ppv);
        return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    int32_t Increment() override { return ++m_i32Value; }
    int32_t ModuleObjects() override { return __atomic_load_n(&g_i32Objects, __ATOMIC_SEQ_CST); }
    int32_t ModuleInitCalls() override { return __atomic_load_n(&g_i32InitCalls, __ATOMIC_SEQ_CST); }

    static CQxUnknown* Create(IUnknown* in_pUnkOuter, HRESULT* out_phr)
    {
        if (in_pUnkOuter) {
            *out_phr = CLASS_E_NOAGGREGATION;
            return nullptr;
        }
        return new CTestCounter(out_phr);
    }

private:
    int32_t m_i32Value = 0;
};

// Aggregatable: its IUnknown methods reach the outer object when it has one.
class CTestGreeter : public CQxUnknown, public ITestGreeter {
public:
    CTestGreeter(IUnknown* in_pUnkOuter, HRESULT* out_phr)
        : CQxUnknown(L"CTestGreeter", in_pUnkOuter, out_phr)
    {
    }
    QX_DECLARE_IUNKNOWN

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_ITestGreeter))
            return QxGetInterface(static_cast<ITestGreeter*>(this), ppv);
        return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    const wchar_t* Greeting() override { return L"hello from the test module"; }

    static CQxUnknown* Create(IUnknown* in_pUnkOuter, HRESULT* out_phr)
    {
        return new CTestGreeter(in_pUnkOuter, out_phr);
    }
};

}  // namespace

extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {TESTMODULE_COUNTER_NAME, &CLSID_TestCounter, &CTestCounter::Create, &CountInit, nullptr},
    {TESTMODULE_GREETER_NAME, &CLSID_TestGreeter, &CTestGreeter::Create, &CountInit, nullptr},
};
extern "C" int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);
