#include "poolmanager.h"

#include <qxbase/qxclassfactory.h>
#include <qxbase/qxguids.h>

#include <atomic>

namespace {

std::atomic<int32_t> g_i32Priority{keQxThreadPoolRelativePriorityNormal};
std::atomic<int32_t> g_i32Queries{0};
std::atomic<int32_t> g_i32Live{0};

class CTestPoolManager : public CQxUnknown, public IQxThreadPoolManager, public ITestPoolProbe {
public:
    explicit CTestPoolManager(HRESULT* out_phr) : CQxUnknown(L"CTestPoolManager", nullptr, out_phr) { ++g_i32Live; }
    ~CTestPoolManager() override { --g_i32Live; }
    QX_DECLARE_IUNKNOWN

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_IQxThreadPoolManager))
            return QxGetInterface(static_cast<IQxThreadPoolManager*>(this), ppv);
        if (IsEqualGUID(riid, IID_ITestPoolProbe)) return QxGetInterface(static_cast<ITestPoolProbe*>(this), ppv);
        return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
    }

    HRESULT SetRelativePriority(EQxThreadPoolRelativePriority in_ePriority) override
    {
        g_i32Priority = in_ePriority;
        return S_OK;
    }
    HRESULT SetMaximumThreadCount(uint32_t) override { return E_NOTIMPL; }
    HRESULT GetMaximumThreadCount(uint32_t*) override { return E_NOTIMPL; }
    EQxThreadPoolRelativePriority GetRelativePriority() override
    {
        ++g_i32Queries;
        return static_cast<EQxThreadPoolRelativePriority>(g_i32Priority.load());
    }

    int32_t PriorityQueries() override { return g_i32Queries.load(); }
    int32_t LiveManagers() override { return g_i32Live.load(); }

    static CQxUnknown* Create(IUnknown* in_pUnkOuter, HRESULT* out_phr)
    {
        if (in_pUnkOuter) {
            *out_phr = CLASS_E_NOAGGREGATION;
            return nullptr;
        }
        return new CTestPoolManager(out_phr);
    }
};

}  // namespace

extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {L"qxbase Test Thread-Pool Manager", &CLSID_QxThreadPoolManager, &CTestPoolManager::Create, nullptr, nullptr},
};
extern "C" int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);
