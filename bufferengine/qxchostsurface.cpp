// Host surfaces and their content objects.
#include <qxbase/qxchostsurface.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

constexpr uint32_t kInfinite = 4294967295u;

uint64_t RoundUp(uint64_t in_uValue, uint64_t in_uMultiple)
{
    return (in_uValue + in_uMultiple - 1) / in_uMultiple * in_uMultiple;
}

bool IsPowerOfTwo(uint32_t in_uiValue) { return in_uiValue != 0 && (in_uiValue & (in_uiValue - 1)) == 0; }

}  // namespace

// --- CQxcHostAVContent ------------------------------------------------------

CQxcHostAVContent::CQxcHostAVContent()
    : CQxLightUnknown(L"QueltoVideo Host AV Content", nullptr), m_auiCounts{}, m_hrError(S_OK)
{
}

CQxcHostAVContent::~CQxcHostAVContent() {}

CQxcHostAVContent* CQxcHostAVContent::Create() { return new (std::nothrow) CQxcHostAVContent(); }

HRESULT CQxcHostAVContent::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxAVContent)) return QxGetInterface(static_cast<IQxAVContent*>(this), ppv);
    return CQxLightUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CQxcHostAVContent::Count(EQxcContentSignal in_eSignal)
{
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        ++m_auiCounts[in_eSignal];
    }
    m_oChanged.notify_all();
    return S_OK;
}

HRESULT CQxcHostAVContent::SignalReadCompletion() { return Count(keQxcContentSignalRead); }

HRESULT CQxcHostAVContent::SignalWriteCompletion() { return Count(keQxcContentSignalWrite); }

HRESULT CQxcHostAVContent::SetErrorCode(HRESULT in_hrError)
{
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        m_hrError = in_hrError;
    }
    return Count(keQxcContentSignalError);
}

HRESULT CQxcHostAVContent::GetErrorCode(HRESULT* out_phrError)
{
    if (!out_phrError) return E_POINTER;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    *out_phrError = m_hrError;
    return S_OK;
}

HRESULT CQxcHostAVContent::SignalOperationCompletion() { return Count(keQxcContentSignalCompletion); }

uint32_t CQxcHostAVContent::GetSignalCount(EQxcContentSignal in_eSignal) const
{
    if (in_eSignal < 0 || in_eSignal >= keQxcContentSignalCount) return 0;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    return m_auiCounts[in_eSignal];
}

bool CQxcHostAVContent::WaitForSignal(EQxcContentSignal in_eSignal, uint32_t in_uiCount,
                                      uint32_t in_uiTimeoutMs) const
{
    if (in_eSignal < 0 || in_eSignal >= keQxcContentSignalCount) return false;
    std::unique_lock<std::mutex> oLock(m_oMutex);
    auto fnReached = [&] { return m_auiCounts[in_eSignal] >= in_uiCount; };
    if (in_uiTimeoutMs == kInfinite) {
        m_oChanged.wait(oLock, fnReached);
        return true;
    }
    return m_oChanged.wait_for(oLock, std::chrono::milliseconds(in_uiTimeoutMs), fnReached);
}

void CQxcHostAVContent::Reset()
{
    std::lock_guard<std::mutex> oLock(m_oMutex);
    std::memset(m_auiCounts, 0, sizeof(m_auiCounts));
    m_hrError = S_OK;
}

// --- CQxcHostSurface --------------------------------------------------------

SQxSurfaceDescription CQxcHostSurface::MakeDescription(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount,
                                                       uint32_t in_uiWidth, uint32_t in_uiHeight,
                                                       EQxPolarity in_ePolarity, EQxColorimetry in_eColorimetry)
{
    SQxSurfaceDescription s{};
    s.size = sizeof(s);
    s.eSurfaceFormat = in_eFormat;
    s.ulComponentBitCount = in_uiBitCount;
    s.ulWidth = in_uiWidth;
    s.ulHeight = in_uiHeight;
    s.ePolarity = in_ePolarity;
    s.eColorimetry = in_eColorimetry;
    s.eMemoryLocation = keQxMemoryLocationHost;
    s.bAllowHostConversion = true;
    return s;
}

uint32_t CQxcHostSurface::GetLineBytes(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount, uint32_t in_uiWidth)
{
    const uint64_t w = in_uiWidth;
    uint64_t uBytes = 0;
    switch (in_eFormat) {
    case keQxSurfaceFormatARGBGraphic:
    case keQxSurfaceFormatARGBVideo:
    case keQxSurfaceFormatBGRAGraphic:
    case keQxSurfaceFormatAYUV4444:
    case keQxSurfaceFormatA2R10G10B10Video:
    case keQxSurfaceFormatA2B10G10R10Graphic:
        uBytes = 4 * w;
        break;
    case keQxSurfaceFormatRGBGraphic:
        uBytes = in_uiBitCount == 8 ? 3 * w : (w + 7) / 8 * 36;
        break;
    case keQxSurfaceFormatYUYV422:
        if (in_uiBitCount == 8) uBytes = (w + 1) / 2 * 4;
        if (in_uiBitCount == 10) uBytes = (w + 15) / 16 * 40;
        break;
    case keQxSurfaceFormatYUAYVA4224:
        if (in_uiBitCount == 8) uBytes = (w + 7) / 8 * 24;
        if (in_uiBitCount == 10) uBytes = (w + 1) / 2 * 8;
        break;
    case keQxSurfaceFormatAlpha:
        uBytes = w;
        break;
    case keQxSurfaceFormatAlphaLuminance:
        uBytes = 2 * w;
        break;
    case keQxSurfaceFormatV210:
        if (in_uiBitCount == 10) uBytes = (w + 5) / 6 * 16;
        break;
    case keQxSurfaceFormat2VUY:
        if (in_uiBitCount == 8) uBytes = (w + 1) / 2 * 4;
        break;
    case keQxSurfaceFormatABGR16:
        uBytes = 8 * w;
        break;
    default:
        break;
    }
    return uBytes > std::numeric_limits<int32_t>::max() ? 0 : static_cast<uint32_t>(uBytes);
}

CQxcHostSurface::CQxcHostSurface(const SQxSurfaceDescription& in_sDescription, unsigned char* in_pucBuffer,
                                 bool in_bOwnsBuffer, CQxcHostAVContent* in_pContent)
    : CQxLightUnknown(L"QueltoVideo Host Surface", nullptr),
      m_sDescription(in_sDescription),
      m_pucBuffer(in_pucBuffer),
      m_bOwnsBuffer(in_bOwnsBuffer),
      m_pContent(in_pContent),
      m_i32Locks(0),
      m_sFrameInformation{},
      m_ahrFailures{}
{
    m_sDescription.size = sizeof(SQxSurfaceDescription);
    m_sFrameInformation.size = sizeof(SQxFrameInformation);
}

CQxcHostSurface::~CQxcHostSurface()
{
    if (m_pContent) m_pContent->Release();
    if (m_bOwnsBuffer) std::free(m_pucBuffer);
}

HRESULT CQxcHostSurface::CreateOverMemory(const SQxSurfaceDescription& in_sDescription, void* in_pBuffer,
                                          CQxcHostAVContent* in_pContent, CQxcHostSurface** out_ppSurface)
{
    if (!out_ppSurface) return E_POINTER;
    *out_ppSurface = nullptr;
    if (!in_pBuffer) return E_POINTER;
    CQxcHostAVContent* pContent = in_pContent;
    if (pContent)
        pContent->AddRef();
    else if (!(pContent = CQxcHostAVContent::Create()))
        return E_OUTOFMEMORY;
    CQxcHostSurface* pSurface = new (std::nothrow)
        CQxcHostSurface(in_sDescription, static_cast<unsigned char*>(in_pBuffer), false, pContent);
    if (!pSurface) {
        pContent->Release();
        return E_OUTOFMEMORY;
    }
    *out_ppSurface = pSurface;
    return S_OK;
}

HRESULT CQxcHostSurface::CreateAllocated(const SQxSurfaceDescription& in_sDescription,
                                         CQxcHostAVContent* in_pContent, CQxcHostSurface** out_ppSurface)
{
    if (!out_ppSurface) return E_POINTER;
    *out_ppSurface = nullptr;
    SQxSurfaceDescription sDescription = in_sDescription;
    const uint32_t uiAlignment = sDescription.ulAlignment ? sDescription.ulAlignment : 64;
    if (!IsPowerOfTwo(uiAlignment) || uiAlignment < 16 || sDescription.lPitch < 0) return E_INVALIDARG;
    sDescription.ulAlignment = uiAlignment;

    // Whole 16-pixel blocks (v210: 48-pixel groups of 128 bytes), so that a
    // kernel that writes its last block whole stays inside the line.
    const uint32_t uiPaddedWidth = static_cast<uint32_t>(
        RoundUp(sDescription.ulWidth, sDescription.eSurfaceFormat == keQxSurfaceFormatV210 ? 48 : 16));
    const uint32_t uiLineBytes =
        GetLineBytes(sDescription.eSurfaceFormat, sDescription.ulComponentBitCount, uiPaddedWidth);
    uint64_t uSize;
    if (uiLineBytes != 0) {
        const uint64_t uPitch = RoundUp(std::max<uint64_t>(uiLineBytes, uint64_t(sDescription.lPitch)), uiAlignment);
        uSize = uPitch * sDescription.ulHeight;
        if (uPitch > uint64_t(std::numeric_limits<int32_t>::max()) || uSize > 0xFFFFFFFFull) return E_INVALIDARG;
        sDescription.lPitch = static_cast<int32_t>(uPitch);
        sDescription.ulBufferSize = static_cast<uint32_t>(uSize);
        if (sDescription.ePolarity == keQxPolarityBackToBack && sDescription.ulSecondFieldOffset == 0)
            sDescription.ulSecondFieldOffset = static_cast<uint32_t>(uPitch * (sDescription.ulHeight / 2));
    } else {
        // Compressed and data formats: a buffer of the size asked for.
        if (sDescription.ulBufferSize == 0) return E_INVALIDARG;
        uSize = sDescription.ulBufferSize;
    }
    void* pBuffer = std::aligned_alloc(uiAlignment, RoundUp(std::max<uint64_t>(uSize, 1), uiAlignment));
    if (!pBuffer) return E_OUTOFMEMORY;
    std::memset(pBuffer, 0, uSize);
    CQxcHostAVContent* pContent = in_pContent;
    if (pContent) {
        pContent->AddRef();
    } else if (!(pContent = CQxcHostAVContent::Create())) {
        std::free(pBuffer);
        return E_OUTOFMEMORY;
    }
    CQxcHostSurface* pSurface = new (std::nothrow)
        CQxcHostSurface(sDescription, static_cast<unsigned char*>(pBuffer), true, pContent);
    if (!pSurface) {
        pContent->Release();
        std::free(pBuffer);
        return E_OUTOFMEMORY;
    }
    *out_ppSurface = pSurface;
    return S_OK;
}

HRESULT CQxcHostSurface::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    if (IsEqualGUID(riid, IID_IQxSurface)) return QxGetInterface(static_cast<IQxSurface*>(this), ppv);
    return CQxLightUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CQxcHostSurface::Failure(EQxcHostSurfaceOperation in_eOperation) const
{
    std::lock_guard<std::mutex> oLock(m_oMutex);
    return m_ahrFailures[in_eOperation];
}

void CQxcHostSurface::InjectFailure(EQxcHostSurfaceOperation in_eOperation, HRESULT in_hrFailure)
{
    if (in_eOperation < 0 || in_eOperation >= keQxcHostSurfaceOperationCount) return;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    m_ahrFailures[in_eOperation] = in_hrFailure;
}

HRESULT CQxcHostSurface::GetSurfaceDescription(SQxSurfaceDescription* out_psDescription)
{
    if (!out_psDescription) return E_POINTER;
    if (HRESULT hr = Failure(keQxcHostSurfaceOperationGetDescription)) return hr;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    *out_psDescription = m_sDescription;
    return S_OK;
}

HRESULT CQxcHostSurface::GetAVContent(IQxAVContent** out_ppContent)
{
    if (!out_ppContent) return E_POINTER;
    if (HRESULT hr = Failure(keQxcHostSurfaceOperationGetContent)) {
        *out_ppContent = nullptr;
        return hr;
    }
    return QxGetInterface(static_cast<IQxAVContent*>(m_pContent), reinterpret_cast<void**>(out_ppContent));
}

HRESULT CQxcHostSurface::LockBuffer(EQxBufferAccess in_eAccess, void** out_ppBuffer, int32_t* out_plPitch,
                                    uint32_t* out_pulSize)
{
    if (!out_ppBuffer || !out_plPitch || !out_pulSize) return E_POINTER;
    if (in_eAccess < keQxBufferAccessRead || in_eAccess > keQxBufferAccessReadWrite) return E_INVALIDARG;
    if (HRESULT hr = Failure(keQxcHostSurfaceOperationLock)) return hr;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    ++m_i32Locks;
    *out_ppBuffer = m_pucBuffer;
    *out_plPitch = m_sDescription.lPitch;
    *out_pulSize = m_sDescription.ulBufferSize;
    return S_OK;
}

HRESULT CQxcHostSurface::UnlockBuffer()
{
    std::lock_guard<std::mutex> oLock(m_oMutex);
    if (m_i32Locks == 0) return E_FAIL;
    --m_i32Locks;
    return S_OK;
}

int32_t CQxcHostSurface::GetLockCount() const
{
    std::lock_guard<std::mutex> oLock(m_oMutex);
    return m_i32Locks;
}

HRESULT CQxcHostSurface::GetFrameInformation(SQxFrameInformation* out_psInformation)
{
    if (!out_psInformation) return E_POINTER;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    *out_psInformation = m_sFrameInformation;
    return S_OK;
}

HRESULT CQxcHostSurface::SetFrameInformation(const SQxFrameInformation* in_psInformation)
{
    if (!in_psInformation) return E_POINTER;
    std::lock_guard<std::mutex> oLock(m_oMutex);
    m_sFrameInformation = *in_psInformation;
    m_sFrameInformation.size = sizeof(SQxFrameInformation);
    return S_OK;
}
