#include "tools/common/qxtoolengine.h"

#include "tools/common/qxtoolerror.h"

#include <qxbase/qxerrors.h>
#include <qxbase/qxguids.h>
#include <qxbase/qxregistry.h>

#include <algorithm>
#include <map>

namespace NQxTool {

namespace {

std::string Narrow(const std::wstring& in_str) { return std::string(in_str.begin(), in_str.end()); }

// Asks a factory object made by the linked library for its interface; the
// object comes without a reference of its own.
template <class TFactory>
TFactory* QueryFactory(CQxUnknown* in_pUnknown, const GUID& in_riid)
{
    TFactory* pFactory = nullptr;
    in_pUnknown->NonDelegatingAddRef();
    in_pUnknown->NonDelegatingQueryInterface(in_riid, reinterpret_cast<void**>(&pFactory));
    in_pUnknown->NonDelegatingRelease();
    return pFactory;
}

SQxRect WholeRect(const CQxToolPicture& in_r)
{
    return {0, 0, int32_t(in_r.GetWidth()), int32_t(in_r.GetHeight())};
}

}  // namespace

// --- Pictures ----------------------------------------------------------------

CQxToolPicture::CQxToolPicture(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth, uint32_t in_uiHeight,
                               EQxColorimetry in_eColorimetry)
    : m_psFormat(&in_rsFormat)
{
    CQxcHostSurface* pSurface = nullptr;
    const HRESULT hr = CQxcHostSurface::CreateAllocated(SurfaceDescription(in_rsFormat, in_uiWidth, in_uiHeight, in_eColorimetry),
                                                        nullptr, &pSurface);
    if (FAILED(hr) || !pSurface)
        throw CQxToolError("cannot make a " + std::to_string(in_uiWidth) + "x" + std::to_string(in_uiHeight) + " " +
                           in_rsFormat.pszName + " picture: " + DescribeHResult(hr));
    m_pSurface.reset(pSurface);
}

std::string CQxToolPicture::Describe() const
{
    return std::to_string(GetWidth()) + "x" + std::to_string(GetHeight()) + " " + m_psFormat->pszName;
}

// --- Engine ------------------------------------------------------------------

CQxToolEngine::CQxToolEngine(EQxToolEngineOrigin in_eOrigin, bool in_bSync)
    : m_pEngine(nullptr), m_pSyncEngine(nullptr)
{
    const GUID& rClsid = in_bSync ? CLSID_QxcSyncBufferEngine : CLSID_QxcBufferEngine;
    const GUID& rIid = in_bSync ? IID_IQxcSyncBufferEngineFactory : IID_IQxcBufferEngineFactory;
    const std::string strClass = Narrow(qxGuidToString(rClsid));
    IUnknown* pFactory = nullptr;
    if (in_eOrigin != keQxToolEngineFactory) {
        char szModule[QX_MAX_PATH] = "";
        const bool bRegistered = GetDllPath(rClsid, szModule);
        const HRESULT hr = bRegistered ? CoCreateInstance(rClsid, nullptr, CLSCTX_INPROC_SERVER, rIid,
                                                          reinterpret_cast<void**>(&pFactory))
                                       : CLASS_E_NOAGGREGATION;
        if (SUCCEEDED(hr) && pFactory) {
            m_strOrigin = "created by class identifier " + strClass + " from " + szModule;
        } else {
            pFactory = nullptr;
            const std::string strWhy =
                bRegistered ? std::string(QX_CLASS_REGISTRY_PATH) + " names " + szModule + " for the engine's class " +
                                  strClass + ", which failed with " + DescribeHResult(hr)
                            : std::string("the class registry ") + QX_CLASS_REGISTRY_PATH +
                                  " does not name the engine's class " + strClass;
            if (in_eOrigin == keQxToolEngineRegistry)
                throw CQxToolError(strWhy + "; register libqxbase with qxregsvr (its classes go to $PLWUTILS/CLSIDs)");
            m_strOrigin = "created through the factory of the linked libqxbase, as " + strWhy;
            // A registration that exists but does not work is worth a word
            // even when the linked library can stand in.
            if (bRegistered) m_strWarning = strWhy;
        }
    } else {
        m_strOrigin = "created through the factory of the linked libqxbase";
    }

    HRESULT hr = S_OK;
    if (!pFactory) {
        CQxUnknown* pUnknown = in_bSync ? CQxcSyncBufferEngineFactory::CreateInstance(nullptr, &hr)
                                        : CQxcBufferEngineFactory::CreateInstance(nullptr, &hr);
        if (!pUnknown || FAILED(hr)) throw CQxToolError("cannot create the engine's factory: " + DescribeHResult(hr));
        pFactory = in_bSync ? static_cast<IUnknown*>(QueryFactory<IQxcSyncBufferEngineFactory>(pUnknown, rIid))
                            : static_cast<IUnknown*>(QueryFactory<IQxcBufferEngineFactory>(pUnknown, rIid));
        if (!pFactory) throw CQxToolError("the engine's factory does not answer its own interface");
    }
    hr = in_bSync ? static_cast<IQxcSyncBufferEngineFactory*>(pFactory)->CreateSyncBufferEngine(nullptr, &m_pSyncEngine)
                  : static_cast<IQxcBufferEngineFactory*>(pFactory)->CreateBufferEngine(nullptr, &m_pEngine);
    pFactory->Release();
    if (FAILED(hr) || (!m_pEngine && !m_pSyncEngine))
        throw CQxToolError("the factory could not create an engine: " + DescribeHResult(hr));
}

CQxToolEngine::~CQxToolEngine()
{
    if (m_pEngine) m_pEngine->Release();
    if (m_pSyncEngine) m_pSyncEngine->Release();
}

void CQxToolEngine::Check(HRESULT in_hr, const std::string& in_strWhat,
                          std::initializer_list<const CQxToolPicture*> in_lstWritten) const
{
    HRESULT hr = in_hr;
    // The asynchronous engine reports failed slices only to the contents.
    for (const CQxToolPicture* p : in_lstWritten) {
        HRESULT hrContent = S_OK;
        p->GetSurface()->GetContent()->GetErrorCode(&hrContent);
        if (SUCCEEDED(hr) && FAILED(hrContent)) hr = hrContent;
        p->GetSurface()->GetContent()->Reset();
    }
    if (SUCCEEDED(hr)) return;
    std::string strHint;
    if (hr == QX_E_INVALID_WIDTH) strHint = "; 8-bit YUYV needs widths in multiples of 4, v210 and 10-bit YUYV of 16";
    if (hr == QX_E_COLORIMETRY_MISMATCH) strHint = "; give both pictures one colorimetry";
    throw CQxToolError("the engine could not " + in_strWhat + ": " + DescribeHResult(hr) + strHint);
}

HRESULT CQxToolEngine::CallCopy(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination,
                                EQxFilterMode in_eFilter)
{
    SQxRect sSource = WholeRect(in_rSource), sDestination = WholeRect(in_rDestination);
    return m_pEngine ? m_pEngine->CopySurface(in_rSource.GetSurface(), &sSource, in_rDestination.GetSurface(),
                                              &sDestination, in_eFilter)
                     : m_pSyncEngine->SyncCopySurface(in_rSource.GetSurface(), &sSource, in_rDestination.GetSurface(),
                                                      &sDestination, in_eFilter);
}

void CQxToolEngine::Copy(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination,
                         EQxFilterMode in_eFilter)
{
    const HRESULT hr = CallCopy(in_rSource, in_rDestination, in_eFilter);
    std::string strWhat = "convert " + in_rSource.Describe() + " to " + in_rDestination.GetFormat().pszName;
    if (hr == QX_E_CONVERSION_NOT_ALLOWED) {
        const std::vector<const SQxToolFormat*> vecRoute = 
            FindRoute(in_rSource.GetFormat(), in_rDestination.GetFormat());
        if (vecRoute.size() > 1)
            strWhat += " in one step (it can go through " + RouteText(vecRoute) + ")";
        else if (vecRoute.empty())
            strWhat += std::string(" (no chain of conversions leads from ") + in_rSource.GetFormat().pszName + " to " +
                       in_rDestination.GetFormat().pszName + ")";
    }
    Check(hr, strWhat, {&in_rDestination});
}

void CQxToolEngine::Clear(const CQxToolPicture& in_rPicture, EQxColor in_eColor, float in_fAlpha)
{
    const HRESULT hr = m_pEngine ? m_pEngine->ClearSurface(in_rPicture.GetSurface(), in_eColor, in_fAlpha)
                                 : m_pSyncEngine->SyncClearSurface(in_rPicture.GetSurface(), in_eColor, in_fAlpha);
    Check(hr, "clear a " + in_rPicture.Describe() + " picture", {&in_rPicture});
}

void CQxToolEngine::Rotate(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination,
                           EQxRotationAngle in_eAngle)
{
    if (!m_pEngine) throw UsageError("the synchronous engine only copies and clears; rotate with the other one");
    const HRESULT hr = m_pEngine->RotateSurface(in_rSource.GetSurface(), in_rDestination.GetSurface(), in_eAngle);
    Check(hr, "rotate a " + in_rSource.Describe() + " picture (the engine turns 8-bit YUYV pictures)",
          {&in_rDestination});
}

void CQxToolEngine::Combine(const CQxToolPicture& in_rVideo, const CQxToolPicture& in_rKey,
                            const CQxToolPicture& in_rDestination, bool in_bAlphaScaling)
{
    if (!m_pEngine) throw UsageError("the synchronous engine only copies and clears; combine with the other one");
    const HRESULT hr = m_pEngine->CombineVideoAndKeySurfaces(in_rVideo.GetSurface(), in_rKey.GetSurface(),
                                                             in_rDestination.GetSurface(), in_bAlphaScaling);
    Check(hr,
          "combine " + in_rVideo.Describe() + " video and " + in_rKey.Describe() + " key into " +
              in_rDestination.GetFormat().pszName + " (it combines yuyv8 into yuayva8 and v210 into yuayva10)",
          {&in_rDestination});
}

void CQxToolEngine::Extract(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rVideo,
                            const CQxToolPicture& in_rKey)
{
    if (!m_pEngine) throw UsageError("the synchronous engine only copies and clears; extract with the other one");
    const HRESULT hr =
        m_pEngine->ExtractVideoAndKeySurfaces(in_rSource.GetSurface(), in_rVideo.GetSurface(), in_rKey.GetSurface());
    Check(hr,
          "extract video and key from " + in_rSource.Describe() + " into " + in_rVideo.GetFormat().pszName +
              " (it splits yuayva8 into yuyv8 and yuayva10 into v210)",
          {&in_rVideo, &in_rKey});
}

// --- Routes ------------------------------------------------------------------

bool CQxToolEngine::CanConvert(const SQxToolFormat& in_rsFrom, const SQxToolFormat& in_rsTo)
{
    const auto key = std::make_pair(&in_rsFrom, &in_rsTo);
    const auto it = m_mapConverts.find(key);
    if (it != m_mapConverts.end()) return it->second;
    // 48 pixels are whole blocks of every layout; two lines, one colorimetry.
    std::unique_ptr<CQxToolPicture> apProbes[2];
    const CQxToolPicture* apPictures[2] = {nullptr, nullptr};
    const SQxToolFormat* apsFormats[2] = {&in_rsFrom, &in_rsTo};
    for (int i = 0; i < 2; ++i) {
        std::unique_ptr<CQxToolPicture>& rp = m_mapProbes[apsFormats[i]];
        // A second probe of one format (a same-format copy) needs its own.
        if (i == 1 && apsFormats[0] == apsFormats[1]) {
            apProbes[1].reset(new CQxToolPicture(in_rsTo, 48, 2, keQxColorimetryITUR_BT_709));
            apPictures[1] = apProbes[1].get();
            continue;
        }
        if (!rp) rp.reset(new CQxToolPicture(*apsFormats[i], 48, 2, keQxColorimetryITUR_BT_709));
        apPictures[i] = rp.get();
    }
    const bool bConverts = SUCCEEDED(CallCopy(*apPictures[0], *apPictures[1], keQxFilterModeNearest));
    apPictures[1]->GetSurface()->GetContent()->Reset();
    m_mapConverts[key] = bConverts;
    return bConverts;
}

std::vector<const SQxToolFormat*> CQxToolEngine::FindRoute(const SQxToolFormat& in_rsFrom, const SQxToolFormat& in_rsTo)
{
    if (&in_rsFrom == &in_rsTo)
        return CanConvert(in_rsFrom, in_rsTo) ? std::vector<const SQxToolFormat*>{&in_rsTo}
                                              : std::vector<const SQxToolFormat*>{};
    // Breadth first, one layer of conversions at a time. Of the routes of
    // one length, the one whose narrowest format has the most bits wins,
    // so that 10-bit pictures do not pass through 8 bits on the way.
    struct SReached {
        const SQxToolFormat* psFrom;
        uint32_t uiLayer;
        uint32_t uiNarrowest;
    };
    std::map<const SQxToolFormat*, SReached> mapReached{{&in_rsFrom, {nullptr, 0, ~0u}}};
    std::vector<const SQxToolFormat*> vecLayer{&in_rsFrom};
    for (uint32_t uiLayer = 1; !vecLayer.empty() && !mapReached.count(&in_rsTo); ++uiLayer) {
        std::vector<const SQxToolFormat*> vecNext;
        for (const SQxToolFormat* p : vecLayer)
            for (const SQxToolFormat& r : ToolFormats()) {
                const auto it = mapReached.find(&r);
                if ((it != mapReached.end() && it->second.uiLayer < uiLayer) || !CanConvert(*p, r)) continue;
                const uint32_t uiNarrowest = std::min(mapReached[p].uiNarrowest, r.uiBitCount);
                if (it == mapReached.end()) {
                    mapReached[&r] = {p, uiLayer, uiNarrowest};
                    vecNext.push_back(&r);
                } else if (uiNarrowest > it->second.uiNarrowest) {
                    it->second = {p, uiLayer, uiNarrowest};
                }
            }
        vecLayer.swap(vecNext);
    }
    std::vector<const SQxToolFormat*> vecRoute;
    if (!mapReached.count(&in_rsTo)) return vecRoute;
    for (const SQxToolFormat* p = &in_rsTo; p != &in_rsFrom; p = mapReached[p].psFrom)
        vecRoute.insert(vecRoute.begin(), p);
    return vecRoute;
}

std::string RouteText(const std::vector<const SQxToolFormat*>& in_vecRoute)
{
    std::string str;
    for (const SQxToolFormat* p : in_vecRoute) str += (str.empty() ? "" : ",") + std::string(p->pszName);
    return str;
}

}  // namespace NQxTool
