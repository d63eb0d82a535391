// The asynchronous host buffer engine and its factory.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxcengines.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxflexenginehelper.h>

#include <new>

#include "bufferengine/qxcengineframe.h"
#include "bufferengine/qxclogger.h"

using NQxcEngineFrame::kuiInfinite;

// --- Factory ------------------------------------------------------------------

CQxcBufferEngineFactory::CQxcBufferEngineFactory(IUnknown* in_pUnkOuter)
    : CQxUnknown(L"QueltoVideo Host Buffer Engine Factory", in_pUnkOuter)
{
}

CQxcBufferEngineFactory::~CQxcBufferEngineFactory() {}

CQxUnknown* CQxcBufferEngineFactory::CreateInstance(IUnknown* in_pUnkOuter, HRESULT* out_phr)
{
    CQxcBufferEngineFactory* pFactory = new (std::nothrow) CQxcBufferEngineFactory(in_pUnkOuter);
    if (out_phr) *out_phr = pFactory ? S_OK : E_OUTOFMEMORY;
    return pFactory;
}

HRESULT CQxcBufferEngineFactory::Register(bool in_bRegistering, const GUID* in_pClsid)
{
    return QxBaseCOMNamespace::QxInternalRegisterClass(in_bRegistering, in_pClsid);
}

HRESULT CQxcBufferEngineFactory::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxcBufferEngineFactory))
        return QxGetInterface(static_cast<IQxcBufferEngineFactory*>(this), ppv);
    return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CQxcBufferEngineFactory::CreateBufferEngine(IQxFlexEnginePrivate* in_pEngine,
                                                    IQxcBufferEngine** out_ppBufferEngine)
{
    if (!out_ppBufferEngine) return E_POINTER;
    *out_ppBufferEngine = nullptr;
    NQxcLogger::Refresh();
    CQxcBufferEngine* pEngine = NQxcEngineFrame::MakeEngine<CQxcBufferEngine>(in_pEngine);
    if (!pEngine) {
        NQxcLogger::Log(1, NQxcLogger::kiLevelError, "        qxcBufferEngine:CreateBufferEngine Failed. Error = 0x%x",
                        unsigned(QX_E_ENGINE_ALLOCATION_FAILED));
        return QX_E_ENGINE_ALLOCATION_FAILED;
    }
    // The reference that construction gave the engine is the caller's.
    *out_ppBufferEngine = pEngine;
    NQxcLogger::Log(1, NQxcLogger::kiLevelInfo, "        qxcBufferEngine:CreateBufferEngine Successful");
    return S_OK;
}

// --- Engine -------------------------------------------------------------------

CQxcBufferEngine::CQxcBufferEngine(IQxFlexEnginePrivate* in_pEngine)
    : CQxLightUnknown(L"QueltoVideo Host Buffer Engine", nullptr),
      m_psOptions(nullptr),
      m_bNotRefused(true),
      m_i32InFlight(0),
      m_oTurn(false),
      m_sCopy{},
      m_sClear{},
      m_sCombine{},
      m_sExtract{},
      m_sRotate{},
      m_bPlainCopy(false),
      m_bOpen(false)
{
    m_bOpen = SUCCEEDED(m_oCopyService.OpenServices(in_pEngine)) && SUCCEEDED(m_oClearService.OpenServices()) &&
              SUCCEEDED(m_oCombineService.OpenServices()) && SUCCEEDED(m_oExtractService.OpenServices());
}

CQxcBufferEngine::~CQxcBufferEngine() { m_oCopyService.CloseServices(); }

HRESULT CQxcBufferEngine::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxcBufferEngine)) return QxGetInterface(static_cast<IQxcBufferEngine*>(this), ppv);
    return CQxLightUnknown::NonDelegatingQueryInterface(riid, ppv);
}

void CQxcBufferEngine::Admit()
{
    m_bNotRefused.store(true, std::memory_order_relaxed);
    if (m_i32InFlight.fetch_add(1) + 1 > 1) {
        m_bNotRefused.store(false, std::memory_order_relaxed);
        NQxcEngineFrame::WaitQuietly(m_oTurn);
    }
}

void CQxcBufferEngine::Leave()
{
    if (m_i32InFlight.fetch_sub(1) - 1 > 0) NQxcEngineFrame::SetQuietly(m_oTurn);
}

HRESULT CQxcBufferEngine::GetContents(SOperation& io_rsOperation, IQxSurface* const* in_ppRead,
                                      unsigned int in_uiRead, IQxSurface* const* in_ppWritten,
                                      unsigned int in_uiWritten)
{
    io_rsOperation = SOperation{};
    for (unsigned int i = 0; i < in_uiRead; ++i)
        if (!in_ppRead[i]) return QX_E_INVALID_POINTER;
    for (unsigned int i = 0; i < in_uiWritten; ++i)
        if (!in_ppWritten[i]) return QX_E_INVALID_POINTER;
    for (unsigned int i = 0; i < in_uiRead; ++i) io_rsOperation.apReadSurfaces[i] = in_ppRead[i];
    for (unsigned int i = 0; i < in_uiWritten; ++i) io_rsOperation.apWrittenSurfaces[i] = in_ppWritten[i];
    auto fnGet = [](IQxSurface* in_pSurface, IQxAVContent*& out_rpContent) {
        const HRESULT hr = in_pSurface->GetAVContent(&out_rpContent);
        if (FAILED(hr)) out_rpContent = nullptr;
        return FAILED(hr) ? hr : out_rpContent ? S_OK : QX_E_INVALID_POINTER;
    };
    for (unsigned int i = 0; i < in_uiWritten; ++i)
        if (HRESULT hr = fnGet(in_ppWritten[i], io_rsOperation.apWritten[i])) return hr;
    for (unsigned int i = 0; i < in_uiRead; ++i)
        if (HRESULT hr = fnGet(in_ppRead[i], io_rsOperation.apRead[i])) return hr;
    return S_OK;
}

void CQxcBufferEngine::SignalError(SOperation& io_rsOperation, HRESULT in_hrError)
{
    // Whoever waits on the contents obtained so far learns of the failure
    // and is released.
    const SOperation s = io_rsOperation;
    io_rsOperation = SOperation{};
    for (IQxAVContent* p : s.apWritten)
        if (p) {
            p->SetErrorCode(in_hrError);
            p->SignalOperationCompletion();
            p->Release();
        }
    for (IQxAVContent* p : s.apRead)
        if (p) {
            p->SetErrorCode(in_hrError);
            p->SignalOperationCompletion();
            p->Release();
        }
}

template <class TUnlock>
void CQxcBufferEngine::Complete(SOperation& io_rsOperation, uint32_t in_uiFailures, TUnlock in_fnUnlock)
{
    // Local copies: once the next caller is let in, the members are its own.
    const SOperation s = io_rsOperation;
    io_rsOperation = SOperation{};
    for (IQxAVContent* p : s.apWritten)
        if (p) p->SignalWriteCompletion();
    const HRESULT hrError = !m_bNotRefused.load(std::memory_order_relaxed) ? QX_E_OPERATION_REFUSED
                            : in_uiFailures != 0                          ? QX_E_OPERATION_FAILED
                                                                          : S_OK;
    if (hrError != S_OK)
        for (IQxAVContent* p : s.apWritten)
            if (p) p->SetErrorCode(hrError);
    in_fnUnlock();
    Leave();
    for (IQxAVContent* p : s.apRead)
        if (p) {
            p->SignalReadCompletion();
            p->Release();
        }
    for (IQxAVContent* p : s.apWritten)
        if (p) {
            p->SignalOperationCompletion();
            p->Release();
        }
}

HRESULT CQxcBufferEngine::Fail(HRESULT in_hrError, int in_iArgument, const char* in_pszOperation)
{
    Leave();
    NQxcEngineFrame::LogResult(in_iArgument, in_pszOperation, in_hrError);
    return in_hrError;
}

HRESULT CQxcBufferEngine::Finish(HRESULT in_hrResult, int in_iArgument, const char* in_pszOperation)
{
    if (!m_bNotRefused.load(std::memory_order_relaxed)) in_hrResult = QX_E_OPERATION_REFUSED;
    NQxcEngineFrame::LogResult(in_iArgument, in_pszOperation, in_hrResult);
    return in_hrResult;
}

HRESULT CQxcBufferEngine::PassFrameInformation(IQxSurface* in_pFrom, IQxSurface* in_pTo)
{
    SQxFrameInformation sInformation{};
    sInformation.size = sizeof(sInformation);
    const HRESULT hr = in_pFrom->GetFrameInformation(&sInformation);
    return FAILED(hr) ? hr : in_pTo->SetFrameInformation(&sInformation);
}

HRESULT CQxcBufferEngine::SetConversionOptions(SQxConversionOptions* in_psOptions)
{
    m_psOptions = in_psOptions;
    NQxcLogger::Log(4, NQxcLogger::kiLevelInfo, "        qxcBufferEngine:SetConversionOptions Successful");
    return S_OK;
}

// --- Copy ---------------------------------------------------------------------

HRESULT CQxcBufferEngine::InitializeCopyAVContents(IQxSurface* in_pSource, IQxSurface* in_pDestination)
{
    return GetContents(m_sCopy, &in_pSource, 1, &in_pDestination, 1);
}

void CQxcBufferEngine::SignalCopyError(HRESULT in_hrError) { SignalError(m_sCopy, in_hrError); }

HRESULT CQxcBufferEngine::AsynchronousCopySurface()
{
    const HRESULT hr = m_oCopyService.MainThreadCaller(m_bPlainCopy ? keQxfBufferCopyServiceMainThreadGenericCopy
                                                                    : keQxfBufferCopyServiceMainThreadCopy);
    Complete(m_sCopy, m_oCopyService.GetErrorCount() + (FAILED(hr) ? 1 : 0),
             [this] { m_oCopyService.UnlockSurfaces(); });
    return hr;
}

HRESULT CQxcBufferEngine::CopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect, IQxSurface* in_pDestination,
                                      SQxRect* in_psDestinationRect, EQxFilterMode in_eFilter)
{
    Admit();
    HRESULT hr = InitializeCopyAVContents(in_pSource, in_pDestination);
    if (SUCCEEDED(hr)) {
        m_oCopyService.SetConversionOptions(m_psOptions);
        hr = m_oCopyService.ValidateAndInitializeCopyParams(in_pSource, in_psSourceRect, in_pDestination,
                                                            in_psDestinationRect,
                                                            NQxcEngineFrame::FilterOf(in_eFilter, m_psOptions),
                                                            m_bPlainCopy);
    }
    if (FAILED(hr)) {
        SignalCopyError(hr);
        return Fail(hr, 2, "CopySurface");
    }
    hr = PassFrameInformation(in_pSource, in_pDestination);
    AsynchronousCopySurface();
    return Finish(hr, 2, "CopySurface");
}

// --- Clear --------------------------------------------------------------------

HRESULT CQxcBufferEngine::InitializeClearAVContent(IQxSurface* in_pSurface)
{
    return GetContents(m_sClear, nullptr, 0, &in_pSurface, 1);
}

void CQxcBufferEngine::SignalClearError(HRESULT in_hrError) { SignalError(m_sClear, in_hrError); }

HRESULT CQxcBufferEngine::AsynchronousClearSurface()
{
    // An ancillary-data surface is cleared to the default header, as the
    // synchronous engine does.
    if (m_oClearService.NeedsDefaultQadHeader())
        NQxfFlexEngineHelper::InsertDefaultQadHeader(m_oClearService.GetBuffer(), m_oClearService.GetBufferSize(),
                                                     m_oClearService.GetPolarity());
    const HRESULT hr = m_oClearService.ClearMainThread();
    Complete(m_sClear, m_oClearService.GetErrorCount() + (FAILED(hr) ? 1 : 0),
             [this] { m_oClearService.UnlockSurface(); });
    return hr;
}

HRESULT CQxcBufferEngine::ClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha)
{
    Admit();
    HRESULT hr = InitializeClearAVContent(in_pSurface);
    if (SUCCEEDED(hr)) hr = m_oClearService.ValidateAndInitializeClearParams(in_pSurface, in_eColor, in_fAlpha);
    if (FAILED(hr)) {
        SignalClearError(hr);
        return Fail(hr, 3, "ClearSurface");
    }
    AsynchronousClearSurface();
    return Finish(S_OK, 3, "ClearSurface");
}

// --- Combine and extract ------------------------------------------------------

HRESULT CQxcBufferEngine::InitializeCombineAVContent(IQxSurface* in_pVideo, IQxSurface* in_pKey,
                                                     IQxSurface* in_pDestination)
{
    IQxSurface* const apRead[2] = {in_pVideo, in_pKey};
    return GetContents(m_sCombine, apRead, 2, &in_pDestination, 1);
}

void CQxcBufferEngine::SignalCombineError(HRESULT in_hrError) { SignalError(m_sCombine, in_hrError); }

HRESULT CQxcBufferEngine::AsynchronousCombineSurfaces()
{
    const HRESULT hr = m_oCombineService.CombineThread();
    Complete(m_sCombine, m_oCombineService.GetErrorCount() + (FAILED(hr) ? 1 : 0),
             [this] { m_oCombineService.UnlockSurfaces(); });
    return hr;
}

HRESULT CQxcBufferEngine::CombineVideoAndKeySurfaces(IQxSurface* in_pVideo, IQxSurface* in_pKey,
                                                     IQxSurface* in_pDestination, bool in_bAlphaScaling)
{
    Admit();
    HRESULT hr = InitializeCombineAVContent(in_pVideo, in_pKey, in_pDestination);
    if (SUCCEEDED(hr))
        hr = m_oCombineService.ValidateAndInitializeParams(in_pVideo, in_pKey, in_pDestination, in_bAlphaScaling);
    if (FAILED(hr)) {
        SignalCombineError(hr);
        return Fail(hr, 5, "CombineSurfaces");
    }
    hr = PassFrameInformation(in_pVideo, in_pDestination);
    AsynchronousCombineSurfaces();
    return Finish(hr, 5, "CombineSurfaces");
}

HRESULT CQxcBufferEngine::InitializeExtractAVContent(IQxSurface* in_pSource, IQxSurface* in_pVideo,
                                                     IQxSurface* in_pKey)
{
    IQxSurface* const apWritten[2] = {in_pVideo, in_pKey};
    return GetContents(m_sExtract, &in_pSource, 1, apWritten, 2);
}

void CQxcBufferEngine::SignalExtractError(HRESULT in_hrError) { SignalError(m_sExtract, in_hrError); }

HRESULT CQxcBufferEngine::AsynchronousExtractSurfaces()
{
    const HRESULT hr = m_oExtractService.ExtractThread();
    Complete(m_sExtract, m_oExtractService.GetErrorCount() + (FAILED(hr) ? 1 : 0),
             [this] { m_oExtractService.UnlockSurfaces(); });
    return hr;
}

HRESULT CQxcBufferEngine::ExtractVideoAndKeySurfaces(IQxSurface* in_pSource, IQxSurface* in_pVideo,
                                                     IQxSurface* in_pKey)
{
    Admit();
    HRESULT hr = InitializeExtractAVContent(in_pSource, in_pVideo, in_pKey);
    if (SUCCEEDED(hr)) hr = m_oExtractService.ValidateAndInitializeParams(in_pSource, in_pVideo, in_pKey);
    if (FAILED(hr)) {
        SignalExtractError(hr);
        return Fail(hr, 6, "ExtractSurfaces");
    }
    hr = PassFrameInformation(in_pSource, in_pVideo);
    if (SUCCEEDED(hr)) hr = PassFrameInformation(in_pSource, in_pKey);
    AsynchronousExtractSurfaces();
    return Finish(hr, 6, "ExtractSurfaces");
}

// --- Rotate -------------------------------------------------------------------

HRESULT CQxcBufferEngine::InitializeRotateSurfaces(IQxSurface* in_pSource, IQxSurface* in_pDestination)
{
    return GetContents(m_sRotate, &in_pSource, 1, &in_pDestination, 1);
}

void CQxcBufferEngine::signalRotateError(HRESULT in_hrError) { SignalError(m_sRotate, in_hrError); }

HRESULT CQxcBufferEngine::asynchronousRotateSurface()
{
    const HRESULT hr = m_oCopyService.MainThreadCaller(keQxfBufferCopyServiceMainThreadRotate);
    Complete(m_sRotate, m_oCopyService.GetErrorCount() + (FAILED(hr) ? 1 : 0),
             [this] { m_oCopyService.UnlockSurfaces(); });
    return hr;
}

HRESULT CQxcBufferEngine::RotateSurface(IQxSurface* in_pSource, IQxSurface* in_pDestination, EQxRotationAngle in_eAngle)
{
    NQxcLogger::Log(7, NQxcLogger::kiLevelDetail, "CQxcBufferEngine::RotateSurface(), rotationAngle:[%d]",
                    int(in_eAngle));
    Admit();
    HRESULT hr = InitializeRotateSurfaces(in_pSource, in_pDestination);
    if (SUCCEEDED(hr)) hr = m_oCopyService.validateAndInitializeRotateParams(in_pSource, in_pDestination, in_eAngle);
    if (FAILED(hr)) {
        signalRotateError(hr);
        return Fail(hr, 7, "RotateSurface");
    }
    hr = PassFrameInformation(in_pSource, in_pDestination);
    asynchronousRotateSurface();
    if (!m_bNotRefused.load(std::memory_order_relaxed)) {
        NQxcLogger::Log(2, NQxcLogger::kiLevelError, "        qxcBufferEngine:RotateSurface Failed. Error = 0x%x",
                        unsigned(QX_E_OPERATION_REFUSED));
        return QX_E_OPERATION_REFUSED;
    }
    return Finish(hr, 7, "RotateSurface");
}
