// Surfaces and engines for the engine tests: host surfaces over guarded
// memory or their own, pixels of valid values for each format, and engines
// made through their factories.
#ifndef QXBASE_TESTS_BUFFERENGINE_ENGINEKIT_H
#define QXBASE_TESTS_BUFFERENGINE_ENGINEKIT_H

#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxchostsurface.h>

#include <gtest/gtest.h>

#include <memory>

#include "bufferengine/guardedbuffer.h"

namespace NQxEngineKit {

inline SQxSurfaceDescription Describe(EQxSurfaceFormat in_eFormat, uint32_t in_uiBits, uint32_t in_uiWidth,
                                      uint32_t in_uiHeight, EQxPolarity in_ePolarity = keQxPolarityProgressive,
                                      EQxColorimetry in_eColorimetry = keQxColorimetryITUR_BT_709)
{
    return CQxcHostSurface::MakeDescription(in_eFormat, in_uiBits, in_uiWidth, in_uiHeight, in_ePolarity,
                                            in_eColorimetry);
}

struct SRelease {
    void operator()(IUnknown* p) const
    {
        if (p) p->Release();
    }
};
template <class T>
using TOwned = std::unique_ptr<T, SRelease>;

inline TOwned<CQxcHostSurface> Allocate(const SQxSurfaceDescription& in_rsDescription)
{
    CQxcHostSurface* pSurface = nullptr;
    EXPECT_EQ(CQxcHostSurface::CreateAllocated(in_rsDescription, nullptr, &pSurface), S_OK);
    return TOwned<CQxcHostSurface>(pSurface);
}

// A surface over memory with guard bytes around it, lines in_iPitch apart
// (0: the format's line bytes rounded up to 16), starting in_uOffset bytes
// past a 64-byte boundary.
class CGuardedSurface {
public:
    CGuardedSurface(SQxSurfaceDescription in_sDescription, int32_t in_iPitch = 0, size_t in_uOffset = 0,
                    unsigned char in_ucFill = 0xEE)
        : m_iPitch(in_iPitch ? in_iPitch
                             : int32_t((CQxcHostSurface::GetLineBytes(in_sDescription.eSurfaceFormat,
                                                                      in_sDescription.ulComponentBitCount,
                                                                      in_sDescription.ulWidth) +
                                        15) &
                                       ~15u)),
          m_oMemory(Bytes(in_sDescription, m_iPitch), in_uOffset, in_ucFill)
    {
        in_sDescription.lPitch = m_iPitch;
        in_sDescription.ulBufferSize = uint32_t(m_oMemory.Size());
        CQxcHostSurface* pSurface = nullptr;
        EXPECT_EQ(CQxcHostSurface::CreateOverMemory(in_sDescription, m_oMemory.Data(), nullptr, &pSurface), S_OK);
        m_pSurface.reset(pSurface);
    }
    CQxcHostSurface* operator->() const { return m_pSurface.get(); }
    CQxcHostSurface* Get() const { return m_pSurface.get(); }
    CGuardedBuffer& Memory() { return m_oMemory; }
    int32_t Pitch() const { return m_iPitch; }

private:
    static size_t Bytes(const SQxSurfaceDescription& in_rs, int32_t in_iPitch)
    {
        if (in_rs.ulBufferSize && !CQxcHostSurface::GetLineBytes(in_rs.eSurfaceFormat, in_rs.ulComponentBitCount,
                                                                 in_rs.ulWidth))
            return in_rs.ulBufferSize;  // data formats: the size asked for
        return size_t(in_iPitch) * in_rs.ulHeight;
    }

    int32_t m_iPitch;
    CGuardedBuffer m_oMemory;
    TOwned<CQxcHostSurface> m_pSurface;
};

// Random pixels of legal values: the unused top bits of 10-bit words clear.
inline void FillRandomPixels(CQxcHostSurface* in_pSurface, std::mt19937& io_oRandom)
{
    const SQxSurfaceDescription& s = in_pSurface->GetDescription();
    unsigned char* puc = in_pSurface->GetBuffer();
    for (uint32_t i = 0; i < in_pSurface->GetBufferSize(); ++i) puc[i] = static_cast<unsigned char>(io_oRandom());
    const bool bWords = s.eSurfaceFormat == keQxSurfaceFormatV210 ||
                        (s.eSurfaceFormat == keQxSurfaceFormatYUAYVA4224 && s.ulComponentBitCount == 10);
    if (bWords)
        for (uint32_t i = 3; i < in_pSurface->GetBufferSize(); i += 4) puc[i] &= 0x3F;
}

inline SQxRect Whole(const CQxcHostSurface* in_pSurface)
{
    return SQxRect{0, 0, int32_t(in_pSurface->GetDescription().ulWidth),
                   int32_t(in_pSurface->GetDescription().ulHeight)};
}

// An engine made the way the class table's factory makes it.
template <class TFactoryClass, class TFactory, class TEngine>
TOwned<TEngine> MakeThrough(const GUID& in_rIid, HRESULT (TFactory::*in_pfnCreate)(IQxFlexEnginePrivate*, TEngine**))
{
    HRESULT hr = E_FAIL;
    CQxUnknown* pUnknown = TFactoryClass::CreateInstance(nullptr, &hr);
    EXPECT_EQ(hr, S_OK);
    TFactory* pFactory = nullptr;
    pUnknown->NonDelegatingAddRef();
    EXPECT_EQ(pUnknown->NonDelegatingQueryInterface(in_rIid, reinterpret_cast<void**>(&pFactory)), S_OK);
    pUnknown->NonDelegatingRelease();
    TEngine* pEngine = nullptr;
    EXPECT_EQ((pFactory->*in_pfnCreate)(nullptr, &pEngine), S_OK);
    pFactory->Release();
    return TOwned<TEngine>(pEngine);
}

inline TOwned<IQxcBufferEngine> MakeEngine()
{
    return MakeThrough<CQxcBufferEngineFactory>(IID_IQxcBufferEngineFactory,
                                                &IQxcBufferEngineFactory::CreateBufferEngine);
}

inline TOwned<IQxSyncBufferEngine> MakeSyncEngine()
{
    return MakeThrough<CQxcSyncBufferEngineFactory>(IID_IQxcSyncBufferEngineFactory,
                                                    &IQxcSyncBufferEngineFactory::CreateSyncBufferEngine);
}

}  // namespace NQxEngineKit

#endif  // QXBASE_TESTS_BUFFERENGINE_ENGINEKIT_H
