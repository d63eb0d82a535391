// Pixel surfaces: thin typed views of a rectangle of pixels in host memory.
// A surface owns no pixel memory; it knows how to fill a region of itself
// with one colour and how to copy a region of another surface into itself,
// converting on the way. This header holds the two roots of the class tree,
// the abstract RGB buffer surface, and the colour arithmetic they share.
//
// Families:
//  - block surfaces (CQxc<Format>Surface) address the picture in blocks of
//    16 pixels and whole lines; their conversion is CopyBlocksFrom;
//  - buffer surfaces (CQxc<Format>BufferSurface) address it in pixels, carry
//    a colour range and an RGB coefficient set; their conversion is CopyFrom.
//
// Working scale: the YUV values of the 16-bit formats are 10-bit values
// (0 to 1023) in 16-bit words; full key is 1023, the chroma midpoint 512.
// Between 8 and 10 bits:
//  - 10 -> 8: v >> 2, clamped to 0..255 (truncation);
//  - 8 -> 10: Y, Cb and Cr become v << 2 (16 -> 64, 128 -> 512, 235 -> 940),
//    the key becomes (k << 2) | (k >> 6), so that 255 is full opacity 1023
//    and 0 stays 0. Both are undone exactly by 10 -> 8, so 8 -> 16 -> 8 is
//    lossless.
//  - 16-bit words above 1023 are read as 1023.
//
// Calling order: create (CQxcSurfaceFactory), Initialize, SetPosition, then
// any number of Fill/FillBlocks/CopyFrom/CopyBlocksFrom calls. Each call
// reads the source at the source's cursor, writes the destination at its own
// cursor, and leaves the destination's cursors advanced: the block (or pixel)
// cursor by the width processed, the line cursor on the last line processed
// (a call over h lines from line y leaves it at y + h - 1), and the current
// position just past the last unit written on that line. The source's
// cursors are left as they were. Surfaces return bool and print nothing; a
// refused call writes nothing.
//
// Stores: unless the surface was created with cached stores, every 16-byte
// unit of a destination is written with a non-temporal store, so the
// destination's lines must start on 16-byte boundaries (buffer and pitch
// multiples of 16) wherever a kernel stores whole 16-byte units.
#ifndef QXBASE_QXCSURFACE_H
#define QXBASE_QXCSURFACE_H

#include <qxbase/qxcbufferenginecommon.h>
#include <qxbase/qxdefs.h>
#include <qxbase/qxenums.h>

#include <cstdint>

// Eight equal signed 16-bit lanes, the unit of every constant vector the
// kernels load. Aligned so that a kernel loads it with one aligned load.
struct alignas(16) SQxcLanes16 {
    int16_t ai16Lane[8];
};
static_assert(sizeof(SQxcLanes16) == 16, "SQxcLanes16 layout");

// One RGB<->YCbCr coefficient set, for one colorimetry and one RGB range.
// Forward coefficients are Q15 (32768 = 1.0), inverse ones Q14.
//   Y  =  YFromR R + YFromG G + YFromB B
//   Cb = -CbFromR R - CbFromG G + CbFromB B   (+ chroma midpoint)
//   Cr =  CrFromR R - CrFromG G - CrFromB B   (+ chroma midpoint)
//   R  = Y' + RFromCr Cr'
//   G  = Y' - GFromCr Cr' - GFromCb Cb'
//   B  = Y' + 2 BFromCbHalf Cb'                (Cb', Cr': chroma less 512)
// with Y' = YGain (Y - black) / 16384 for the graphics sets. The graphics
// sets fold 219/255 (luma) and 224/255 (chroma) into the forward weights.
struct SQxcRgbCoeff {
    SQxcLanes16 sYFromR, sYFromG, sYFromB;
    SQxcLanes16 sCbFromR, sCbFromG, sCbFromB;
    SQxcLanes16 sCrFromR, sCrFromG, sCrFromB;
    SQxcLanes16 sForwardOffset0, sForwardOffset1, sForwardOffset2;  // 0,0,0 video; 1024,2056,64 graphics
    SQxcLanes16 s0x8080, s8, s32, s8192;
    SQxcLanes16 sYGain;
    SQxcLanes16 sRFromCr, sGFromCr, sBFromCbHalf, sGFromCb;
    SQxcLanes16 sInverseOffset;  // 0 video, 4112 graphics
    SQxcLanes16 s128, s512, s16, s0, s1023a, s1023b, sAllOnes;
};

// The six coefficient sets (ITU-R BT.601, BT.709 and BT.2020, each at video
// and at graphics levels) and the table that selects one by
// range + 3 x colorimetry: colorimetry 1 is BT.601, 2 BT.709, 3 to 6 share
// BT.2020; range 2 (YUV) and colorimetries 0 and 7 select none. Two classes
// own identical families.
#define QXC_DECLARE_RGB_COEFF_FAMILY                                  \
    static const SQxcRgbCoeff ms_sVideoRgbCoeff;                      \
    static const SQxcRgbCoeff ms_sGraphicRgbCoeff;                    \
    static const SQxcRgbCoeff ms_sVideoRgbCoeff_ITUR_BT_709;          \
    static const SQxcRgbCoeff ms_sGraphicRgbCoeff_ITUR_BT_709;        \
    static const SQxcRgbCoeff ms_sVideoRgbCoeff_ITUR_BT_2020;         \
    static const SQxcRgbCoeff ms_sGraphicRgbCoeff_ITUR_BT_2020;       \
    static const SQxcRgbCoeff* const ms_apsRgbCoeffTable[24];

// The RGB range conversion: video = graphics x 219/255 + 16 and
// graphics = (video - 16) x 255/219, on 8 bits.
struct SQxcRgbToRgbCoeff {
    SQxcLanes16 sGraphicToVideo;  // 56283, unsigned Q16 (219/255)
    SQxcLanes16 sVideoToGraphic;  // 38154, unsigned Q15 (255/219)
    SQxcLanes16 s16;
    SQxcLanes16 s4112;
    SQxcLanes16 s128;
    SQxcLanes16 s64;
};

// The five-tap chroma filter (1/16, 3/16, 1/2, 3/16, 1/16) used when 4:4:4
// RGB is reduced to 4:2:2.
struct SQxcRgbFilteringCoeff {
    SQxcLanes16 sTapCentre;  // 16384, Q15 1/2
    SQxcLanes16 sTapNear;    // 6144, Q15 3/16
    SQxcLanes16 sTapFar;     // 2048, Q15 1/16
    SQxcLanes16 s16;
    SQxcLanes16 s4;
};

// Reciprocals for unshaping: entry a = floor(32736 / a + 0.5), entry 0 = 0
// (32736 = 1023 x 32, so a full key of 1023 gives 32).
struct SQxcUnshapeReciprocals {
    uint16_t aus16Entry[1024];
};

struct SQxcBlockJob;
typedef void (*PFNQxcBlockJob)(const SQxcBlockJob&);
// A pixel kernel of the buffer family: false when it refuses the call (a
// cursor off a unit of its layout, no coefficient set for a matrix), having
// written nothing.
typedef bool (*PFNQxcPixelJob)(const SQxcBlockJob&);

// The abstract root of every surface.
class QXBASE_API CQxcSurface {
public:
    virtual ~CQxcSurface();

    // Binds the surface to a picture and resets its cursors to the first
    // line and block. in_bKeyPresent says the picture carries a key: a
    // kernel reading a source without one uses full opacity instead.
    virtual bool Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                            long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry);

    // Fills in_uiWidthInBlocks blocks of in_uiHeight lines from the cursor
    // with one colour (10-bit scale).
    virtual bool FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                            unsigned int in_uiHeight) = 0;

    // Converts in_uiWidthInBlocks blocks of in_uiHeight lines of the source
    // (from its cursor) into this surface (at its cursor).
    virtual bool CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                                unsigned int in_uiHeight) = 0;

    // Moves the cursors to pixel in_uiX of line in_uiY: a block surface to
    // the 16-pixel block holding the pixel, a buffer surface to the pixel
    // itself (its block cursor follows as in_uiX / 16). The current position
    // becomes the start of the unit of the format that holds the pixel (for
    // v210, its 6-pixel group). Refused outside the picture.
    bool SetPosition(unsigned int in_uiX, unsigned int in_uiY);

    unsigned char* GetBuffer() const { return m_pucBuffer; }
    unsigned char* GetCurrentPosition() const { return m_pucCurrent; }
    unsigned int GetWidth() const { return m_uiWidth; }
    unsigned int GetWidthInBlocks() const { return m_uiWidthInBlocks; }
    unsigned int GetHeight() const { return m_uiHeight; }
    unsigned int GetCursorLine() const { return m_uiCursorLine; }
    unsigned int GetCursorBlock() const { return m_uiCursorBlock; }
    unsigned int GetBlockSize() const { return m_uiBlockSize; }
    EQxcSurfaceType GetSurfaceType() const { return m_eSurfaceType; }
    long GetPitch() const { return m_lPitch; }
    bool IsKeyPresent() const { return m_bKeyPresent; }
    bool HasCachedStores() const { return m_bCachedStores; }
    EQxColorimetry GetColorimetry() const { return m_eColorimetry; }

    static const SQxcUnshapeReciprocals ms_sUnshapeReciprocal;

    // Types 13 and above are those of the pixel-addressed (buffer) surfaces;
    // the block surfaces have 0 to 12.
    static bool IsBufferSurfaceType(EQxcSurfaceType in_eType)
    {
        return in_eType >= keQxcSurfaceTypeRGBA_8bits_Unshaped;
    }

protected:
    CQxcSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize, bool in_bCachedStores);

    // Range test of a block operation on this surface: cursor plus size
    // within the picture.
    bool BlockRangeFits(unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight) const;
    // Leaves the cursors as a block kernel over the given size does.
    void AdvanceBlocks(unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight);
    // Byte offset, within a line, of the unit of this format that holds a pixel.
    unsigned int UnitOffset(unsigned int in_uiPixel) const;

    // The block dispatcher of every block middle class: range tests on both
    // surfaces, then the table's kernel for the source's type.
    template <class TSurface>
    static bool DispatchCopyBlocks(TSurface* in_pSelf, typename TSurface::PFNCopyBlocks const* in_apfnTable,
                                   const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                                   unsigned int in_uiHeight)
    {
        if (in_uiWidthInBlocks == 0 || in_uiHeight == 0)
            return true;
        if (!in_pSelf->BlockRangeFits(in_uiWidthInBlocks, in_uiHeight) ||
            !in_pSource->BlockRangeFits(in_uiWidthInBlocks, in_uiHeight))
            return false;
        const int32_t iType = in_pSource->m_eSurfaceType;
        if (iType < 0 || iType >= kiQxcSurfaceTypeCount || in_apfnTable[iType] == nullptr)
            return false;
        return (in_pSelf->*in_apfnTable[iType])(in_pSource, in_uiWidthInBlocks, in_uiHeight);
    }

    // Runs a block kernel from the source's cursor to this surface's cursor
    // (the caller has tested the ranges) and advances this surface.
    bool RunBlockJob(PFNQxcBlockJob in_pfnJob, const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                     unsigned int in_uiHeight, const SQxcRgbCoeff* in_psCoeff = nullptr);
    // Range test, then a fill kernel, then the cursors.
    bool RunFillJob(PFNQxcBlockJob in_pfnJob, const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                    unsigned int in_uiHeight);

    unsigned char* m_pucBuffer;
    unsigned char* m_pucCurrent;
    unsigned int m_uiWidth;
    unsigned int m_uiWidthInBlocks;
    unsigned int m_uiHeight;
    unsigned int m_uiCursorLine;
    unsigned int m_uiCursorBlock;
    unsigned int m_uiBlockSize;
    EQxcSurfaceType m_eSurfaceType;
    long m_lPitch;
    bool m_bKeyPresent;
    bool m_bCachedStores;
    EQxColorimetry m_eColorimetry;

private:
    CQxcSurface(const CQxcSurface&) = delete;
    CQxcSurface& operator=(const CQxcSurface&) = delete;
};

// The abstract root of the pixel-addressed surfaces.
class QXBASE_API CQxcBufferSurface : public CQxcSurface {
public:
    ~CQxcBufferSurface() override;

    using CQxcSurface::Initialize;

    // Buffer surfaces convert with CopyFrom; the block entry does nothing.
    bool CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                        unsigned int in_uiHeight) override;

    // Fills the 16-pixel blocks from the cursor's block, the last one only
    // as far as the width: Fill over those pixels from the pixel cursor.
    // The range test is in blocks, as a block surface's.
    bool FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                    unsigned int in_uiHeight) override;

    // Binds the surface and picks the RGB coefficient set of the range and
    // colorimetry (none where the table holds none).
    virtual bool Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                            long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry,
                            EQxcColorRange in_eRange);

    virtual bool Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) = 0;

    virtual bool CopyFrom(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth,
                          unsigned int in_uiHeight) = 0;
    // The same conversion from a surface of either family: the 10-bit,
    // 16-bit, float, RGB24 and RGB36 formats read the 16-bit 4:2:2:4 hub,
    // which is a block surface and must not be passed where a buffer surface
    // is expected. A buffer source goes to the virtual CopyFrom; a block
    // source to the dispatcher of this surface's own class, which reads only
    // what every surface has.
    bool CopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight);

    void GetPosition(unsigned int* out_puiX, unsigned int* out_puiY) const;

    void SetInterpolate(bool in_bInterpolate) { m_bInterpolate = in_bInterpolate; }
    void SetFilter(bool in_bFilter) { m_bFilter = in_bFilter; }
    bool GetInterpolate() const { return m_bInterpolate; }
    bool GetFilter() const { return m_bFilter; }
    unsigned int GetCursorPixel() const { return m_uiCursorPixel; }
    unsigned int GetGroupBytes() const { return m_uiGroupBytes; }
    unsigned int GetGroupPixels() const { return m_uiGroupPixels; }
    EQxcColorRange GetColorRange() const { return m_eColorRange; }
    const SQxcRgbCoeff* GetRgbCoeff() const { return m_psRgbCoeff; }

    QXC_DECLARE_RGB_COEFF_FAMILY

    static const SQxcRgbFilteringCoeff ms_sRgbFilteringPrivate;
    // The filter's three tap weights, four 16-bit lanes each.
    static const int64_t ms_ki64HorizontalFilterCoeff0;
    static const int64_t ms_ki64HorizontalFilterCoeff1;
    static const int64_t ms_ki64HorizontalFilterCoeff2;

protected:
    CQxcBufferSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize, unsigned int in_uiGroupBytes,
                      unsigned int in_uiGroupPixels, bool in_bCachedStores);

    // Range test of a pixel operation on a surface of either family (a block
    // surface stands on pixel 16 x its block cursor).
    static bool PixelRangeFits(const CQxcSurface* in_pSurface, unsigned int in_uiWidth, unsigned int in_uiHeight);
    // The range tests and the chroma mode every CopyFrom dispatcher applies
    // before it picks its kernel; false when the call must be refused. A
    // zero size succeeds without a kernel (out_rbDone). An RGB destination
    // takes its mode from the interpolate flag, a YUV one from the filter.
    bool PrepareCopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight,
                         bool in_bRgbDestination, unsigned int& out_ruiMode, bool& out_rbDone) const;

    // The dispatcher of every buffer middle class with a table. Sources of
    // type in_iTypeByRange (an RGB destination's own format read at the
    // other level) take entry [type][0] into a graphics-range destination
    // and [type][1] into a video-range one; the others [type][mode].
    template <class TSurface>
    static bool DispatchCopy(TSurface* in_pSelf, typename TSurface::PFNCopy const (*in_apfnTable)[2],
                             const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight,
                             bool in_bRgbDestination, int32_t in_iTypeByRange)
    {
        unsigned int uiMode = 0;
        bool bDone = false;
        if (!in_pSelf->PrepareCopyFrom(in_pSource, in_uiWidth, in_uiHeight, in_bRgbDestination, uiMode, bDone))
            return false;
        if (bDone)
            return true;
        const int32_t iType = in_pSource->GetSurfaceType();
        if (iType < 0 || iType >= kiQxcSurfaceTypeCount)
            return false;
        if (iType == in_iTypeByRange) {
            if (in_pSelf->m_eColorRange != keQxcColorRangeGraphic && in_pSelf->m_eColorRange != keQxcColorRangeVideo)
                return false;
            uiMode = in_pSelf->m_eColorRange == keQxcColorRangeVideo ? 1 : 0;
        }
        // An empty entry is refused rather than called.
        if (in_apfnTable[iType][uiMode] == nullptr)
            return false;
        return (in_pSelf->*in_apfnTable[iType][uiMode])(in_pSource, in_uiWidth, in_uiHeight);
    }
    // Leaves the cursors as a pixel kernel over the given size does.
    void AdvancePixels(unsigned int in_uiWidth, unsigned int in_uiHeight);

    // Runs a pixel kernel from the source's cursor (a surface of either
    // family, or none for a fill) into this surface's cursor over in_uiWidth
    // pixels and in_uiHeight lines, with the coefficient set and colour range
    // of in_pRgbSide (the RGB surface of the pair), and advances this
    // surface's cursors. The caller has tested the ranges. False, with
    // nothing written and no cursor moved, when the kernel refuses, or when
    // in_pRgbSide is a block surface (it has no coefficient set to lend).
    bool RunPixelJob(PFNQxcPixelJob in_pfnJob, const CQxcSurface* in_pSource, unsigned int in_uiWidth,
                     unsigned int in_uiHeight, const CQxcSurface* in_pRgbSide);
    // A fill: zero sizes succeed, the range is tested, then the kernel runs
    // with the YUV colour (10-bit scale) and the RGB colour (at the
    // destination's depth).
    bool RunPixelFill(PFNQxcPixelJob in_pfnJob, const SQxcYuvaPixel& in_rsYuv, const SQxcRGBAPixel_16bits& in_rsRgb,
                      unsigned int in_uiWidth, unsigned int in_uiHeight);

    // The root positions both families.
    friend class CQxcSurface;

    unsigned int m_uiCursorPixel;
    unsigned int m_uiGroupBytes;
    unsigned int m_uiGroupPixels;
    bool m_bInterpolate;
    bool m_bFilter;
    EQxcColorRange m_eColorRange;
    const SQxcRgbCoeff* m_psRgbCoeff;
    const SQxcRgbFilteringCoeff* m_psRgbFilteringCoeff;
};

// The abstract root of the RGB buffer surfaces.
class QXBASE_API CQxcRgbBufferSurface : public CQxcBufferSurface {
public:
    ~CQxcRgbBufferSurface() override;

    using CQxcBufferSurface::Initialize;

    bool Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                    long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry,
                    EQxcColorRange in_eRange) override;

    virtual bool FillRgb(const SQxcRGBAPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) = 0;
    // Keeps the high byte of each component and fills with the 8-bit colour.
    virtual bool FillRgb(const SQxcRGBAPixel_16bits& in_rsColor, unsigned int in_uiWidth,
                         unsigned int in_uiHeight);

    const SQxcRgbToRgbCoeff* GetRgbToRgbCoeff() const { return m_psRgbToRgbCoeff; }

    static const SQxcRgbToRgbCoeff ms_sRgbToRgbCoeff;

protected:
    CQxcRgbBufferSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize, unsigned int in_uiGroupBytes,
                         unsigned int in_uiGroupPixels, bool in_bCachedStores);

    const SQxcRgbToRgbCoeff* m_psRgbToRgbCoeff;
};

#endif  // QXBASE_QXCSURFACE_H
