// Helpers of the surface tests: pictures with guard bytes around them and
// padding between lines, deterministic random content, and the block job a
// surface builds, so that a scalar reference can be run on the same memory.
#ifndef QXBASE_TESTS_SURFACES_SURFACETESTHELPERS_H
#define QXBASE_TESTS_SURFACES_SURFACETESTHELPERS_H

#include <qxbase/qxcsurfacefactory.h>

#include <cmath>

#include "surfaces/kernels/blockmatrix.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace NQxTest {

const uint8_t kucGuard = 0xA5;
const size_t kuiGuardBytes = 64;

// A picture of in_uiLines lines of in_lPitch bytes, 16-byte aligned, with
// guard bytes before and after it. Everything starts as the guard pattern.
class CPicture {
public:
    CPicture(long in_lPitch, unsigned in_uiLines)
        : m_lPitch(in_lPitch), m_uiLines(in_uiLines), m_vucStorage(2 * kuiGuardBytes + in_lPitch * in_uiLines + 16, kucGuard)
    {
        uintptr_t ui = reinterpret_cast<uintptr_t>(m_vucStorage.data()) + kuiGuardBytes;
        ui = (ui + 15) & ~uintptr_t(15);
        m_pucPicture = reinterpret_cast<uint8_t*>(ui);
    }
    CPicture(const CPicture& in_r) : CPicture(in_r.m_lPitch, in_r.m_uiLines) { CopyFrom(in_r); }
    CPicture& operator=(const CPicture&) = delete;

    uint8_t* Data() const { return m_pucPicture; }
    uint8_t* Line(unsigned in_ui) const { return m_pucPicture + in_ui * m_lPitch; }
    long Pitch() const { return m_lPitch; }
    unsigned Lines() const { return m_uiLines; }
    size_t Bytes() const { return m_lPitch * m_uiLines; }

    // The whole storage, guards included.
    const std::vector<uint8_t>& Storage() const { return m_vucStorage; }
    void CopyFrom(const CPicture& in_r)
    {
        std::memcpy(m_vucStorage.data() + (m_pucPicture - m_vucStorage.data()) - kuiGuardBytes,
                    in_r.m_pucPicture - kuiGuardBytes, Bytes() + 2 * kuiGuardBytes);
    }
    bool GuardsIntact() const
    {
        for (size_t ui = 0; ui < kuiGuardBytes; ++ui)
            if (m_pucPicture[-1 - static_cast<long>(ui)] != kucGuard || m_pucPicture[Bytes() + ui] != kucGuard)
                return false;
        return true;
    }
    // Bytes of the picture equal to another picture's, guards included.
    bool SameAs(const CPicture& in_r) const
    {
        return std::memcmp(m_pucPicture - kuiGuardBytes, in_r.m_pucPicture - kuiGuardBytes,
                           Bytes() + 2 * kuiGuardBytes) == 0;
    }

private:
    long m_lPitch;
    unsigned m_uiLines;
    std::vector<uint8_t> m_vucStorage;
    uint8_t* m_pucPicture;
};

inline void FillRandom(uint8_t* out_puc, size_t in_uiBytes, std::mt19937& io_rRandom)
{
    for (size_t ui = 0; ui < in_uiBytes; ++ui)
        out_puc[ui] = static_cast<uint8_t>(io_rRandom());
}

// Every block type, in type order.
const EQxcSurfaceType kaeBlockTypes[] = {
    keQxcSurfaceTypeYCbCr422_8bits,             keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped,
    keQxcSurfaceTypeYCbCrA4224_8bits_Shaped,    keQxcSurfaceTypeYCbCr422_10bits,
    keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped,
    keQxcSurfaceTypeYCbCr422_16bits,            keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped,
    keQxcSurfaceTypeYCbCrA4224_16bits_Shaped,   keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped,
    keQxcSurfaceTypeAYCbCr4444_8bits_Shaped,    keQxcSurfaceTypeV210_10bits,
    keQxcSurfaceType2VUY_8bits};

// A test leaf's kernel that is never called.
#define QXT_NO_KERNEL(Name) \
    bool Name(const CQxcSurface*, unsigned int, unsigned int) override { return false; }
#define QXT_NOT_HERE(Name) QXT_NO_KERNEL(Name)

// Creates an unbound surface of any type through the factory: the block
// types, the hub (7), the buffer types, and 33 for the 2VUY buffer surface
// (which reports type 15).
inline std::unique_ptr<CQxcSurface> CreateSurface(int in_iType, bool in_bCached)
{
    const CQxcSurfaceFactory o;
    CQxcSurface* p = nullptr;
#define QXT_MAKE(Type, Method) \
    case Type: p = o.Method(in_bCached); break;
    switch (in_iType) {
    QXT_MAKE(keQxcSurfaceTypeYCbCr422_8bits, CreateYCbCr422_8bitsSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, CreateYCbCrA4224_8bits_UnshapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, CreateYCbCrA4224_8bits_ShapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCr422_10bits, CreateYCbCr422_10bitsSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, CreateYCbCrA4224_10bits_UnshapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, CreateYCbCrA4224_10bits_ShapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCr422_16bits, CreateYCbCr422_16bitsSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, CreateYCbCrA4224_16bits_UnshapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, CreateYCbCrA4224_16bits_ShapedSurface)
    QXT_MAKE(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, CreateYCbCrA4444_16bits_UnshapedSurface)
    QXT_MAKE(keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, CreateAYCbCr4444_8bits_ShapedSurface)
    QXT_MAKE(keQxcSurfaceTypeV210_10bits, CreateV210_10bitsSurface)
    QXT_MAKE(keQxcSurfaceType2VUY_8bits, Create2VUY_8bitsSurface)
    QXT_MAKE(13, CreateRGBA_8bits_UnshapedBufferSurface)
    QXT_MAKE(14, CreateRGBA_8bits_ShapedBufferSurface)
    QXT_MAKE(15, CreateYCbCr422_8bits_BufferSurface)
    QXT_MAKE(16, CreateYCbCrA4224_8bits_UnshapedBufferSurface)
    QXT_MAKE(17, CreateYCbCrA4224_8bits_ShapedBufferSurface)
    QXT_MAKE(18, CreateYCbCr422_10bits_BufferSurface)
    QXT_MAKE(19, CreateYCbCrA4224_10bits_UnshapedBufferSurface)
    QXT_MAKE(20, CreateYCbCrA4224_10bits_ShapedBufferSurface)
    QXT_MAKE(21, CreateYCbCrA4444_16bits_UnshapedBufferSurface)
    QXT_MAKE(22, CreateRGB24_8bits_BufferSurface)
    QXT_MAKE(26, CreateBGRA_8bits_UnshapedBufferSurface)
    QXT_MAKE(28, CreateA2R10G10B10_UnshapedBufferSurface)
    QXT_MAKE(29, CreateK64ARGB_UnshapedBufferSurface)
    QXT_MAKE(30, CreateR4FL_YUVA4444_32bits_UnshapedBufferSurface)
    QXT_MAKE(31, CreateV210_10bits_BufferSurface)
    QXT_MAKE(32, CreateABGR_16bits_UnshapedBufferSurface)
    QXT_MAKE(33, Create2VUY_8bits_BufferSurface)
    QXT_MAKE(34, CreateA2B10G10R10_UnshapedBufferSurface)
    QXT_MAKE(36, CreateRGB36_12bits_BufferSurface)
    default: break;
    }
#undef QXT_MAKE
    return std::unique_ptr<CQxcSurface>(p);
}

// Bytes of one line a block type needs for in_uiWidth pixels.
inline long LineBytes(EQxcSurfaceType in_eType, unsigned in_uiWidth)
{
    const unsigned uiBlocks = (in_uiWidth + 15) / 16;
    switch (in_eType) {
    case keQxcSurfaceTypeYCbCr422_8bits:
    case keQxcSurfaceType2VUY_8bits: return 32 * uiBlocks;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped: return 48 * uiBlocks;
    case keQxcSurfaceTypeYCbCr422_10bits: return 40 * uiBlocks;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped:
    case keQxcSurfaceTypeYCbCr422_16bits:
    case keQxcSurfaceTypeAYCbCr4444_8bits_Shaped:
    case keQxcSurfaceTypeA2R10G10B10_Unshaped: return 64 * uiBlocks;
    case keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_16bits_Shaped: return 96 * uiBlocks;
    case keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped:
    case keQxcSurfaceTypeK64ARGB_Unshaped: return 128 * uiBlocks;
    case keQxcSurfaceTypeR4FL_Unshaped: return 256 * uiBlocks;
    case keQxcSurfaceTypeV210_10bits: return NQxcKernels::V210LinePixels(in_uiWidth) / 6 * 16;
    default: return 0;
    }
}

// The job a block surface builds for a call from its cursor, so that a
// reference can run the same call on other memory.
inline SQxcBlockJob MakeJob(const CQxcSurface& in_rDestination, const CQxcSurface& in_rSource, unsigned in_uiBlocks,
                            unsigned in_uiLines)
{
    SQxcBlockJob sJob = {};
    sJob.pucSource = in_rSource.GetCurrentPosition();
    sJob.lSourcePitch = in_rSource.GetPitch();
    sJob.uiSourceFirstPixel = in_rSource.GetSurfaceType() >= keQxcSurfaceTypeRGBA_8bits_Unshaped
                                  ? static_cast<const CQxcBufferSurface&>(in_rSource).GetCursorPixel()
                                  : 16 * in_rSource.GetCursorBlock();
    sJob.uiSourceLinePixels = in_rSource.GetSurfaceType() == keQxcSurfaceTypeV210_10bits
                                  ? NQxcKernels::V210LinePixels(in_rSource.GetWidth())
                                  : in_rSource.GetWidth();
    sJob.pucDestination = in_rDestination.GetCurrentPosition();
    sJob.lDestinationPitch = in_rDestination.GetPitch();
    sJob.uiDestinationFirstPixel = 16 * in_rDestination.GetCursorBlock();
    sJob.uiDestinationLinePixels = in_rDestination.GetSurfaceType() == keQxcSurfaceTypeV210_10bits
                                       ? NQxcKernels::V210LinePixels(in_rDestination.GetWidth())
                                       : in_rDestination.GetWidth();
    sJob.uiBlocks = in_uiBlocks;
    sJob.uiLines = in_uiLines;
    sJob.bSourceKeyPresent = in_rSource.IsKeyPresent();
    sJob.bCachedStores = in_rDestination.HasCachedStores();
    if (in_rDestination.GetSurfaceType() == keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped)
        sJob.psCoeff = static_cast<const CQxcYCbCrA4224_16bits_UnshapedSurface&>(in_rDestination).GetRgbCoeff();
    return sJob;
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_SURFACES_SURFACETESTHELPERS_H
