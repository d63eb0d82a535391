// The buffer engine as the tools use it: created by class identifier the
// way every SDK application creates it, or through its factory when
// libqxbase is not in the class registry; pictures in host surfaces; and
// every operation checked, both its result and what it reported to the
// surfaces' content objects, with errors that say what was asked.
#ifndef QXBASE_TOOLS_QXTOOLENGINE_H
#define QXBASE_TOOLS_QXTOOLENGINE_H

#include "tools/common/qxtoolformats.h"

#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxchostsurface.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace NQxTool {

struct SQxToolRelease {
    void operator()(IUnknown* in_p) const
    {
        if (in_p) in_p->Release();
    }
};

// A picture in a host surface of its own memory, with its tool format.
class CQxToolPicture {
public:
    // Throws a tool error when the surface cannot lay out the picture.
    CQxToolPicture(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth, uint32_t in_uiHeight,
                   EQxColorimetry in_eColorimetry);

    const SQxToolFormat& GetFormat() const { return *m_psFormat; }
    CQxcHostSurface* GetSurface() const { return m_pSurface.get(); }
    uint32_t GetWidth() const { return m_pSurface->GetDescription().ulWidth; }
    uint32_t GetHeight() const { return m_pSurface->GetDescription().ulHeight; }
    EQxColorimetry GetColorimetry() const { return m_pSurface->GetDescription().eColorimetry; }
    uint8_t* GetBuffer() const { return m_pSurface->GetBuffer(); }
    int32_t GetPitch() const { return m_pSurface->GetPitch(); }
    // Bytes of the pixels of one line, without the padding up to the pitch.
    uint32_t GetLineBytes() const { return PackedLineBytes(*m_psFormat, GetWidth()); }
    // "1920x1080 v210"
    std::string Describe() const;

private:
    const SQxToolFormat* m_psFormat;
    std::unique_ptr<CQxcHostSurface, SQxToolRelease> m_pSurface;
};

// Where the engine comes from.
enum EQxToolEngineOrigin : int32_t {
    // By class identifier; through the factory when the class registry
    // does not have libqxbase.
    keQxToolEngineAny = 0,
    // By class identifier only: an error when libqxbase is not registered.
    keQxToolEngineRegistry = 1,
    // Through the factory of the linked library only.
    keQxToolEngineFactory = 2
};

class CQxToolEngine {
public:
    // The asynchronous engine, or with in_bSync the synchronous one (copy
    // and clear only). Throws a tool error when it cannot be had.
    CQxToolEngine(EQxToolEngineOrigin in_eOrigin, bool in_bSync);
    ~CQxToolEngine();
    CQxToolEngine(const CQxToolEngine&) = delete;
    CQxToolEngine& operator=(const CQxToolEngine&) = delete;

    // How the engine was made, for a verbose line.
    const std::string& GetOrigin() const { return m_strOrigin; }
    // Non-empty when the class registry names a module that failed (the
    // engine then comes from the linked library).
    const std::string& GetWarning() const { return m_strWarning; }
    bool IsSync() const { return m_pSyncEngine != nullptr; }

    // Each throws a tool error that names the operation and its pictures.
    void Copy(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination, EQxFilterMode in_eFilter);
    void Clear(const CQxToolPicture& in_rPicture, EQxColor in_eColor, float in_fAlpha);
    void Rotate(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination, EQxRotationAngle in_eAngle);
    void Combine(const CQxToolPicture& in_rVideo, const CQxToolPicture& in_rKey, const CQxToolPicture& in_rDestination,
                 bool in_bAlphaScaling);
    void Extract(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rVideo, const CQxToolPicture& in_rKey);

    // Whether the engine converts the one format into the other in one
    // step. Learnt by trying it once on a small picture, so that the answer
    // is what this engine really does.
    bool CanConvert(const SQxToolFormat& in_rsFrom, const SQxToolFormat& in_rsTo);

    // The shortest chain of conversions from one format to another: the
    // formats after in_rsFrom, ending with in_rsTo; empty when there is none.
    // Among chains of one length, the one whose narrowest format has the
    // most bits wins, then the earlier formats of the list.
    std::vector<const SQxToolFormat*> FindRoute(const SQxToolFormat& in_rsFrom, const SQxToolFormat& in_rsTo);

private:
    HRESULT CallCopy(const CQxToolPicture& in_rSource, const CQxToolPicture& in_rDestination, EQxFilterMode in_eFilter);
    // Throws unless the call and every written content succeeded.
    void Check(HRESULT in_hr, const std::string& in_strWhat,
               std::initializer_list<const CQxToolPicture*> in_lstWritten) const;

    IQxcBufferEngine* m_pEngine;
    IQxSyncBufferEngine* m_pSyncEngine;
    std::string m_strOrigin;
    std::string m_strWarning;
    std::map<std::pair<const SQxToolFormat*, const SQxToolFormat*>, bool> m_mapConverts;
    std::map<const SQxToolFormat*, std::unique_ptr<CQxToolPicture>> m_mapProbes;
};

// "v210,argb": a route as a --to list.
std::string RouteText(const std::vector<const SQxToolFormat*>& in_vecRoute);

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLENGINE_H
