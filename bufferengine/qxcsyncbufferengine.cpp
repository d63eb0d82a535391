// The synchronous host buffer engine and its factory.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxcengines.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxflexenginehelper.h>

#include <new>

#include "bufferengine/qxcengineframe.h"
#include "bufferengine/qxclogger.h"

// --- Factory ------------------------------------------------------------------

CQxcSyncBufferEngineFactory::CQxcSyncBufferEngineFactory(IUnknown* in_pUnkOuter)
    : CQxUnknown(L"QueltoVideo Synchronous Host Buffer Engine Factory", in_pUnkOuter)
{
}

CQxcSyncBufferEngineFactory::~CQxcSyncBufferEngineFactory() {}

CQxUnknown* CQxcSyncBufferEngineFactory::CreateInstance(IUnknown* in_pUnkOuter, HRESULT* out_phr)
{
    CQxcSyncBufferEngineFactory* pFactory = new (std::nothrow) CQxcSyncBufferEngineFactory(in_pUnkOuter);
    if (out_phr) *out_phr = pFactory ? S_OK : E_OUTOFMEMORY;
    return pFactory;
}

HRESULT CQxcSyncBufferEngineFactory::Register(bool in_bRegistering, const GUID* in_pClsid)
{
    return QxBaseCOMNamespace::QxInternalRegisterClass(in_bRegistering, in_pClsid);
}

HRESULT CQxcSyncBufferEngineFactory::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxcSyncBufferEngineFactory))
        return QxGetInterface(static_cast<IQxcSyncBufferEngineFactory*>(this), ppv);
    return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CQxcSyncBufferEngineFactory::CreateSyncBufferEngine(IQxFlexEnginePrivate* in_pEngine,
                                                            IQxSyncBufferEngine** out_ppBufferEngine)
{
    if (!out_ppBufferEngine) return E_POINTER;
    *out_ppBufferEngine = nullptr;
    NQxcLogger::Refresh();
    CQxcSyncBufferEngine* pEngine = NQxcEngineFrame::MakeEngine<CQxcSyncBufferEngine>(in_pEngine);
    if (!pEngine) {
        NQxcLogger::Log(1, NQxcLogger::kiLevelError,
                        "        qxcBufferEngine:CreateSyncBufferEngine Failed. Error = 0x%x",
                        unsigned(QX_E_ENGINE_ALLOCATION_FAILED));
        return QX_E_ENGINE_ALLOCATION_FAILED;
    }
    *out_ppBufferEngine = pEngine;
    // The same text as the asynchronous factory's: log readers key on it.
    NQxcLogger::Log(1, NQxcLogger::kiLevelInfo, "        qxcBufferEngine:CreateBufferEngine Successful");
    return S_OK;
}

// --- Engine -------------------------------------------------------------------

CQxcSyncBufferEngine::CQxcSyncBufferEngine(IQxFlexEnginePrivate* in_pEngine)
    : CQxLightUnknown(L"QueltoVideo Synchronous Host Buffer Engine", nullptr),
      m_psOptions(nullptr),
      m_bNotRefused(true),
      m_i32InFlight(0),
      m_aoEvents{CQxEvent(false), CQxEvent(false), CQxEvent(false), CQxEvent(false), CQxEvent(false),
                 CQxEvent(false), CQxEvent(false)},
      m_pSource(nullptr),
      m_pDestination(nullptr),
      m_pClearSurface(nullptr),
      m_bPlainCopy(false),
      m_bOpen(false)
{
    m_bOpen = SUCCEEDED(m_oCopyService.OpenServices(in_pEngine)) && SUCCEEDED(m_oClearService.OpenServices());
}

CQxcSyncBufferEngine::~CQxcSyncBufferEngine()
{
    m_oClearService.CloseServices();
    m_oCopyService.CloseServices();
}

HRESULT CQxcSyncBufferEngine::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxSyncBufferEngine))
        return QxGetInterface(static_cast<IQxSyncBufferEngine*>(this), ppv);
    return CQxLightUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CQxcSyncBufferEngine::SetSyncConversionOptions(SQxConversionOptions* in_psOptions)
{
    m_psOptions = in_psOptions;
    NQxcLogger::Log(4, NQxcLogger::kiLevelInfo, "        qxcBufferEngine:SetConversionOptions Successful");
    return S_OK;
}

HRESULT CQxcSyncBufferEngine::SynchronousCopySurface()
{
    const HRESULT hr = m_oCopyService.MainThreadCaller(m_bPlainCopy ? keQxfBufferCopyServiceMainThreadGenericCopy
                                                                    : keQxfBufferCopyServiceMainThreadCopy);
    m_oCopyService.UnlockSurfaces();
    m_pSource = m_pDestination = nullptr;
    return (FAILED(hr) || m_oCopyService.GetErrorCount() != 0) ? QX_E_OPERATION_FAILED : S_OK;
}

bool CQxcSyncBufferEngine::Enter(int in_iArgument, const char* in_pszOperation)
{
    if (m_i32InFlight.fetch_add(1) + 1 <= 1) return true;
    m_bNotRefused.store(false, std::memory_order_relaxed);
    NQxcEngineFrame::LogResult(in_iArgument, in_pszOperation, QX_E_OPERATION_REFUSED);
    m_i32InFlight.fetch_sub(1);
    return false;
}

HRESULT CQxcSyncBufferEngine::Leave(HRESULT in_hrResult, int in_iArgument, const char* in_pszOperation)
{
    NQxcEngineFrame::LogResult(in_iArgument, in_pszOperation, in_hrResult);
    m_i32InFlight.fetch_sub(1);
    return in_hrResult;
}

HRESULT CQxcSyncBufferEngine::SyncCopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect,
                                              IQxSurface* in_pDestination, SQxRect* in_psDestinationRect,
                                              EQxFilterMode in_eFilter)
{
    m_bNotRefused.store(true, std::memory_order_relaxed);
    CQxAutoLock oLock(&m_oLock);
    if (!Enter(2, "CopySurface")) return QX_E_OPERATION_REFUSED;
    // The count stays raised on this path: the engine refuses from now on.
    if (!in_pSource || !in_pDestination) return QX_E_INVALID_POINTER;
    m_pSource = in_pSource;
    m_pDestination = in_pDestination;
    m_oCopyService.SetConversionOptions(m_psOptions);
    HRESULT hr = m_oCopyService.ValidateAndInitializeCopyParams(in_pSource, in_psSourceRect, in_pDestination,
                                                                in_psDestinationRect,
                                                                NQxcEngineFrame::FilterOf(in_eFilter, m_psOptions),
                                                                m_bPlainCopy);
    if (SUCCEEDED(hr)) hr = SynchronousCopySurface();
    m_pSource = m_pDestination = nullptr;
    return Leave(hr, 2, "CopySurface");
}

HRESULT CQxcSyncBufferEngine::SynchronousClearSurface()
{
    const HRESULT hr = m_oClearService.ClearMainThread();
    m_oClearService.UnlockSurface();
    m_pClearSurface = nullptr;
    return (FAILED(hr) || m_oClearService.GetErrorCount() != 0) ? QX_E_OPERATION_FAILED : S_OK;
}

HRESULT CQxcSyncBufferEngine::SyncClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha)
{
    m_bNotRefused.store(true, std::memory_order_relaxed);
    CQxAutoLock oLock(&m_oLock);
    if (!Enter(3, "ClearSurface")) return QX_E_OPERATION_REFUSED;
    if (!in_pSurface) return QX_E_INVALID_POINTER;
    m_pClearSurface = in_pSurface;
    HRESULT hr = m_oClearService.ValidateAndInitializeClearParams(in_pSurface, in_eColor, in_fAlpha);
    if (SUCCEEDED(hr)) {
        if (m_oClearService.NeedsDefaultQadHeader())
            NQxfFlexEngineHelper::InsertDefaultQadHeader(m_oClearService.GetBuffer(), m_oClearService.GetBufferSize(),
                                                         m_oClearService.GetPolarity());
        hr = SynchronousClearSurface();
    }
    m_pClearSurface = nullptr;
    return Leave(hr, 3, "ClearSurface");
}
