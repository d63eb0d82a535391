// Buffer surfaces: the pixel-addressed formats that convert to and from RGB.
// Each middle class holds the constructor, the dispatch table indexed by
// [source type][mode] (mode 0 the plain kernel, mode 1 the filtering or
// interpolating one) and the dispatching CopyFrom, and declares its kernels
// pure in slot order; its SSE2 (or, for RGB24 and RGB36, CPP) leaf class
// supplies them. A source whose entry is empty is refused (false, nothing
// written) rather than called.
//
// Memory layouts, lowest address first; multi-byte words little-endian unless
// said otherwise; lines follow each other at the pitch:
//  - RGBA_8bits (types 13, 14): bytes B, G, R, A. BGRA_8bits (26): A, R, G, B.
//  - RGB24_8bits (22): bytes B, G, R, no key; four pixels are the three
//    32-bit words of a group.
//  - RGB36_12bits (36): 12-bit components; the B, G, R of pixel 0, then of
//    pixel 1 ..., form a little-endian bit stream, component k of a group of
//    8 pixels (36 bytes) in bits 12k to 12k + 11; no key.
//  - A2R10G10B10 (28): one 32-bit word a pixel, A (bits 30-31), R (20-29),
//    G (10-19), B (0-9). A2B10G10R10 (34): the same with R and B exchanged.
//    The 2-bit key a reads as a x 341 (3 is 1023); a key k is written as the
//    nearest of the four, round(k x 3 / 1023) on the 10-bit scale.
//  - ABGR_16bits (32): four 16-bit words a pixel, A, B, G, R.
//  - K64ARGB (29): four big-endian 16-bit words a pixel, A, R, G, B (the byte
//    order of the 64-bit ARGB format of desktop video tools).
//  - R4FL (30, float YCbCrA 4:4:4:4): four 32-bit floats a pixel, Y, Cb, Cr,
//    A, with Y 0..1 from black to white (10-bit 64 + 876 Y), chroma -0.5..0.5
//    (512 + 896 C) and the key 0..1 (1023 A).
//  - YCbCr422_8bits buffer (15): YUYV, as the block format; 2VUY buffer:
//    UYVY. YCbCr422_10bits buffer (18): the packed 10-bit YUYV of the block
//    format (40 bytes a 16-pixel group). V210 buffer (31): v210. 8-bit
//    4:2:2:4 (16, 17): groups of 8 pixels, 16 bytes of YUYV then the 8 keys.
//    10-bit 4:2:2:4 (19, 20): a word a pixel, (Y << 20) | (C << 10) | K.
//    16-bit 4:4:4:4 (21): 16-bit Y, Cb, Cr, K a pixel (10-bit values).
//
// Levels and depths: RGB at graphics levels spans 0 to 2^n - 1 on n bits; at
// video levels 16 to 235 on 8 bits, scaled by powers of two on more (64..940
// on 10 bits, 256..3760 on 12, 4096..60160 on 16). A conversion between two
// RGB depths keeps the levels: at graphics levels full scale maps to full
// scale (255 is 1023, 4095, 65535), at video levels by the power of two; the
// key always full scale to full scale. YCbCr values are on the 10-bit scale.
//
// The RGB side of a pair (the RGB surface, or this surface when the source is
// the 16-bit 4:2:2:4 block hub) supplies the coefficient set and the levels;
// a kernel that needs a matrix refuses (false, nothing written) when that
// surface holds none (range 2, or colorimetry 0 or 7).
//
// Positions: a call may start at any pixel that begins a unit of each side's
// layout: any pixel of the RGB formats and of 16-bit 4:4:4:4 and R4FL, an
// even pixel of YUYV, 2VUY, 10-bit 4:2:2:4, v210 and RGB36, a multiple of 8
// of 8-bit 4:2:2:4 and of 16 of packed 10-bit YUYV; other cursors are
// refused. Any width: pixels of a destination unit outside the call keep
// their values (a pair's chroma belongs to its first pixel).
//
// Chroma: 4:4:4 to 4:2:2 takes the first pixel of each pair, or with the
// filter flag the five-tap filter (1, 3, 8, 3, 1) / 16 centred on it, the
// first and last pixel of the call repeated past its ends. 4:2:2 to RGB gives
// both pixels the pair's chroma, or with the interpolate flag the odd pixel
// the rounded mean of its pair and the next (the last pair's next is itself).
//
// Same-format RGB sources ("VideoRGBA"/"GraphicRGBA" kernels) are chosen by
// the destination's colour range, not by the mode: a graphics-range
// destination (range 0) takes the CopyFromVideoRGBA_* kernel, which reads the
// source at video levels; a video-range destination (range 1) the
// CopyFromGraphicRGBA_* kernel. Their table rows hold them in that order.
#ifndef QXBASE_QXCBUFFERSURFACES_H
#define QXBASE_QXCBUFFERSURFACES_H

#include <qxbase/qxcsurface.h>

// The signature of every buffer kernel. The source is a surface of either
// family: the kernels that read the hub are given a block surface.
#define QXC_BUFFER_KERNEL(Name) \
    bool Name(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight)

// What every buffer middle class with a kernel table declares: the
// dispatcher, which takes a source of either family, and the virtual slot,
// which forwards to it.
#define QXC_DECLARE_BUFFER_DISPATCH(Class)                                                      \
public:                                                                                        \
    typedef bool (Class::*PFNCopy)(const CQxcSurface*, unsigned int, unsigned int);            \
    bool CopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight); \
    bool CopyFrom(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth,                \
                  unsigned int in_uiHeight) override;                                          \
                                                                                               \
protected:                                                                                     \
    static PFNCopy ms_apfnCopyFunctions[kiQxcSurfaceTypeCount][2];                             \
    static bool ms_bCopyFunctionTableInitialized;                                              \
    static void InitializeCopyFunctionTable();                                                 \
                                                                                               \
public:

// The middle classes whose kernels are RGB 4:4:4 into YUV 4:2:2, and their
// constructors.
#define QXC_DECLARE_BUFFER_MIDDLE(Class) \
    QXC_DECLARE_BUFFER_DISPATCH(Class)   \
    explicit Class(bool in_bCachedStores); \
    ~Class() override;

// Each buffer middle class's kernels in slot order; the middle class
// declares them pure (QXC_PURE_BUFFER_KERNEL) and its leaf overrides them
// (QXC_OVERRIDE_BUFFER_KERNEL). Formats with the same sources share a list.
#define QXC_PURE_BUFFER_KERNEL(Name) virtual QXC_BUFFER_KERNEL(Name) = 0;
#define QXC_OVERRIDE_BUFFER_KERNEL(Name) QXC_BUFFER_KERNEL(Name) override;
#define QXC_KERNELS_YuvFromRgbaAndRgb24(X) \
    X(CopyFromRGBA_8bits_Unshaped)         \
    X(CopyFromRGBA_8bits_Unshaped_Filter)  \
    X(CopyFromRGB24_8bits)                 \
    X(CopyFromRGB24_8bits_Filter)
#define QXC_KERNELS_YCbCrA4224_8bits_UnshapedBuffer(X) \
    X(CopyFromRGBA_8bits_Unshaped)                            \
    X(CopyFromRGBA_8bits_Unshaped_Filter)                     \
    X(CopyFromBGRA_8bits_Unshaped)                            \
    X(CopyFromRGB24_8bits)                                    \
    X(CopyFromRGB24_8bits_Filter)
#define QXC_KERNELS_ShapedYuvFromRgba(X) \
    X(CopyFromRGBA_8bits_Shaped)
#define QXC_KERNELS_YCbCrA4444_16bits_UnshapedBuffer(X) \
    X(CopyFromRGBA_8bits_Unshaped)
#define QXC_KERNELS_RGBA_8bits_UnshapedBuffer(X) \
    X(CopyFromYCbCr422_8bits)                           \
    X(CopyFromYCbCr422_8bits_Interp)                    \
    X(CopyFromYCbCrA4224_8bits_Unshaped)                \
    X(CopyFromYCbCrA4224_8bits_Interp_Unshaped)         \
    X(CopyFromYCbCr422_10bits)                          \
    X(CopyFromYCbCr422_10bits_Interp)                   \
    X(CopyFromYCbCrA4224_10bits_Unshaped)               \
    X(CopyFromYCbCrA4224_10bits_Interp_Unshaped)        \
    X(CopyFromVideoRGBA_Unshaped)                       \
    X(CopyFromGraphicRGBA_Unshaped)                     \
    X(CopyFromK64ARGB_Unshaped)                         \
    X(CopyFromV210)                                     \
    X(CopyFromA2B10G10R10_Unshaped)                     \
    X(CopyFromRGB8bit)                                  \
    X(CopyFromRGB12bit)
#define QXC_KERNELS_RGBA_8bits_ShapedBuffer(X) \
    X(CopyFromYCbCrA4224_8bits_Shaped)                \
    X(CopyFromYCbCrA4224_10bits_Shaped)               \
    X(CopyFromVideoRGBA_Shaped)                       \
    X(CopyFromGraphicRGBA_Shaped)
#define QXC_KERNELS_BGRA_8bits_UnshapedBuffer(X) \
    X(CopyFromYCbCrA4224_8bits_Unshaped)                \
    X(CopyFromVideoRGBA_Unshaped)                       \
    X(CopyFromGraphicRGBA_Unshaped)
#define QXC_KERNELS_Rgb10(X)              \
    X(CopyFromYCbCrA4224_16bits_Unshaped) \
    X(CopyFromVideoRGBA_Unshaped)         \
    X(CopyFromGraphicRGBA_Unshaped)       \
    X(CopyFromK64ARGB_Unshaped)
#define QXC_KERNELS_ABGR_16bits_UnshapedBuffer(X) \
    X(CopyFromK64ARGB_Unshaped)                          \
    X(CopyFromYCbCrA4224_16bits_Unshaped)
#define QXC_KERNELS_K64ARGB_UnshapedBuffer(X) \
    X(CopyFromABGR_16bits_Unshaped)                  \
    X(CopyFromYCbCrA4224_16bits_Unshaped)
#define QXC_KERNELS_R4FL_YUYA_32bits_UnshapedBuffer(X) \
    X(CopyFromYCbCrA4224_16bits_Unshaped)

// What a leaf class declares: its construction and its fill (an RGB leaf
// also its 8-bit RGB fill).
#define QXC_DECLARE_BUFFER_LEAF(Class)                                                             \
public:                                                                                            \
    explicit Class(bool in_bCachedStores);                                                         \
    ~Class() override;                                                                             \
    bool Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) override;
#define QXC_DECLARE_RGB_BUFFER_LEAF(Class)                                                        \
    QXC_DECLARE_BUFFER_LEAF(Class)                                                                \
    using CQxcRgbBufferSurface::FillRgb;                                                          \
    bool FillRgb(const SQxcRGBAPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) override;
// The 16-bit RGB fill of the formats deeper than 8 bits, which write the
// components as they are (A2R10G10B10 and A2B10G10R10: 10-bit values).
#define QXC_DECLARE_RGB16_FILL                                                                    \
    bool FillRgb(const SQxcRGBAPixel_16bits& in_rsColor, unsigned int in_uiWidth,                 \
                 unsigned int in_uiHeight) override;
// The kernels of the portable classes are plain members, reached only through
// the middle class's table.
#define QXC_MEMBER_BUFFER_KERNEL(Name) QXC_BUFFER_KERNEL(Name);

// ------------------------------------------------------------ YUV buffers
// Sources: RGBA 8-bit unshaped (13), RGB24 (22).
class QXBASE_API alignas(16) CQxcYCbCr422_8bits_BufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCr422_8bits_BufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCr422_8bits_BufferSurfaceSSE2 : public CQxcYCbCr422_8bits_BufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCr422_8bits_BufferSurfaceSSE2)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Packed 10-bit YUYV read and written as pixels. Sources: 13, 22.
class QXBASE_API alignas(16) CQxcYCbCr422_10bits_BufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCr422_10bits_BufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCr422_10bits_BufferSurfaceSSE2 : public CQxcYCbCr422_10bits_BufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCr422_10bits_BufferSurfaceSSE2)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 13, 22.
class QXBASE_API alignas(16) CQxcV210_10bits_BufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcV210_10bits_BufferSurface)
    // Fills w pixels of h lines from the cursor, in whole 16-byte groups from
    // the current position: every group full of the colour, except, for a
    // width that is not a multiple of 6, a last group holding only the fields
    // of its remaining pixels (the rest zero; one pixel gets Cb and Y, no
    // Cr). The components are shifted and added without masking: they must
    // be 10-bit values. Leaves the cursors as every operation does.
    bool Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) override;
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcV210_10bits_BufferSurfaceSSE2 : public CQxcV210_10bits_BufferSurface {
    public:
    explicit CQxcV210_10bits_BufferSurfaceSSE2(bool in_bCachedStores);
    ~CQxcV210_10bits_BufferSurfaceSSE2() override;
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 13, 22.
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_UnshapedBufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2 : public CQxcYCbCrA4224_10bits_UnshapedBufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 13, BGRA 8-bit unshaped (26, one kernel), 22.
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_UnshapedBufferSurface)
    QXC_KERNELS_YCbCrA4224_8bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_8bits_UnshapedBufferSurfaceSSE2 : public CQxcYCbCrA4224_8bits_UnshapedBufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCrA4224_8bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_8bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Source: RGBA 8-bit shaped (14).
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_ShapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_ShapedBufferSurface)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_8bits_ShapedBufferSurfaceSSE2 : public CQxcYCbCrA4224_8bits_ShapedBufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCrA4224_8bits_ShapedBufferSurfaceSSE2)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Source: 14.
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_ShapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_ShapedBufferSurface)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2 : public CQxcYCbCrA4224_10bits_ShapedBufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Source: 13.
class QXBASE_API alignas(16) CQxcYCbCrA4444_16bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4444_16bits_UnshapedBufferSurface)
    QXC_KERNELS_YCbCrA4444_16bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2 : public CQxcYCbCrA4444_16bits_UnshapedBufferSurface {
    QXC_DECLARE_BUFFER_LEAF(CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_YCbCrA4444_16bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// 8-bit 2VUY read as pixels. It reports the 8-bit YCbCr 4:2:2 buffer type
// (15), so that to every dispatch table it is an 8-bit 4:2:2 buffer. Its
// SSE2 class supplies CopyFrom and CopyBlocksFrom itself; it has no table.
class QXBASE_API alignas(16) qxc2VUY_8bits_BufferSurface : public CQxcBufferSurface {
public:
    explicit qxc2VUY_8bits_BufferSurface(bool in_bCachedStores);
    ~qxc2VUY_8bits_BufferSurface() override;
};

// Sources of CopyFrom: an 8-bit 4:2:2 buffer (15: bytes exchanged) or another
// 2VUY buffer (copied), RGBA 8-bit unshaped (13) and RGB24 (22), plain or
// filtered; of CopyBlocksFrom: the 8-bit YUYV (0) and 2VUY (12) block
// surfaces, from their block cursor, over the blocks as far as both widths.
class QXBASE_API qxc2VUY_8bits_BufferSurfaceSSE2 : public qxc2VUY_8bits_BufferSurface {
    QXC_DECLARE_BUFFER_LEAF(qxc2VUY_8bits_BufferSurfaceSSE2)
    using qxc2VUY_8bits_BufferSurface::CopyFrom;
    bool CopyFrom(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight) override;
    bool CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                        unsigned int in_uiHeight) override;
};

// ------------------------------------------------------------ RGB buffers
// Sources: YUYV 8-bit buffer (15), 8-bit 4:2:2:4 unshaped buffer (16), packed
// 10-bit buffer (18), 10-bit 4:2:2:4 unshaped buffer (19), each plain and
// interpolating; itself (13, by range through ms_apfnCopyRGBFunctions);
// K64ARGB (29, always CopyFromK64ARGB_Unshaped); v210 buffer (31);
// A2B10G10R10 (34); RGB24 (22); RGB36 (36).
class QXBASE_API alignas(16) CQxcRGBA_8bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGBA_8bits_UnshapedBufferSurface)
    QXC_KERNELS_RGBA_8bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)

protected:
    // Same-format copies, indexed by the destination's colour range.
    static PFNCopy ms_apfnCopyRGBFunctions[2];
};

class QXBASE_API CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2 : public CQxcRGBA_8bits_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_RGBA_8bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 8-bit 4:2:2:4 shaped buffer (17), 10-bit 4:2:2:4 shaped buffer
// (20), itself (14, by range).
class QXBASE_API alignas(16) CQxcRGBA_8bits_ShapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGBA_8bits_ShapedBufferSurface)
    QXC_KERNELS_RGBA_8bits_ShapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcRGBA_8bits_ShapedBufferSurfaceSSE2 : public CQxcRGBA_8bits_ShapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcRGBA_8bits_ShapedBufferSurfaceSSE2)
    QXC_KERNELS_RGBA_8bits_ShapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 8-bit 4:2:2:4 unshaped buffer (16), itself (26, by range).
class QXBASE_API alignas(16) CQxcBGRA_8bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcBGRA_8bits_UnshapedBufferSurface)
    QXC_KERNELS_BGRA_8bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2 : public CQxcBGRA_8bits_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_BGRA_8bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: the 16-bit 4:2:2:4 unshaped block hub (7), itself (28, by range),
// K64ARGB (29).
class QXBASE_API alignas(16) CQxcA2R10G10B10_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcA2R10G10B10_UnshapedBufferSurface)
    QXC_KERNELS_Rgb10(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2 : public CQxcA2R10G10B10_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2)
    QXC_DECLARE_RGB16_FILL
    QXC_KERNELS_Rgb10(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: 7, itself (34, by range), 29.
class QXBASE_API alignas(16) CQxcA2B10G10R10_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcA2B10G10R10_UnshapedBufferSurface)
    QXC_KERNELS_Rgb10(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2 : public CQxcA2B10G10R10_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2)
    QXC_DECLARE_RGB16_FILL
    QXC_KERNELS_Rgb10(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: K64ARGB (29), the hub (7).
class QXBASE_API alignas(16) CQxcABGR_16bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcABGR_16bits_UnshapedBufferSurface)
    QXC_KERNELS_ABGR_16bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcABGR_16bits_UnshapedBufferSurfaceSSE2 : public CQxcABGR_16bits_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcABGR_16bits_UnshapedBufferSurfaceSSE2)
    QXC_DECLARE_RGB16_FILL
    QXC_KERNELS_ABGR_16bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// Sources: ABGR 16-bit (32), the hub (7).
class QXBASE_API alignas(16) CQxcK64ARGB_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcK64ARGB_UnshapedBufferSurface)
    QXC_KERNELS_K64ARGB_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
    // Rescales in_uiWidth pixels of in_uiHeight lines from the cursor, in
    // place, from graphics levels (0..65535) to video levels (4096..60160);
    // the key is kept. Range test and cursors as a copy's.
    virtual bool ScaleToVideoB64A(unsigned int in_uiWidth, unsigned int in_uiHeight) = 0;
};

class QXBASE_API CQxcK64ARGB_UnshapedBufferSurfaceSSE2 : public CQxcK64ARGB_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcK64ARGB_UnshapedBufferSurfaceSSE2)
    QXC_DECLARE_RGB16_FILL
    bool ScaleToVideoB64A(unsigned int in_uiWidth, unsigned int in_uiHeight) override;
    QXC_KERNELS_K64ARGB_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// 32-bit float YCbCrA 4:4:4:4. Source: the hub (7).
class QXBASE_API alignas(16) CQxcR4FL_YUYA_32bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcR4FL_YUYA_32bits_UnshapedBufferSurface)
    QXC_KERNELS_R4FL_YUYA_32bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

class QXBASE_API CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2 : public CQxcR4FL_YUYA_32bits_UnshapedBufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2)
    QXC_KERNELS_R4FL_YUYA_32bits_UnshapedBuffer(QXC_OVERRIDE_BUFFER_KERNEL)
};

// RGB24 and RGB36 have scalar kernels only, kept as non-virtual members of
// their CPP classes and reached through the table, which those classes
// therefore fill. Sources: the hub (7), themselves (by range), K64ARGB (29).
class QXBASE_API alignas(16) CQxcRGB24_8bits_BufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGB24_8bits_BufferSurface)
};

class QXBASE_API alignas(16) CQxcRGB36_12bits_BufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGB36_12bits_BufferSurface)
};

class QXBASE_API CQxcRGB24_8bits_BufferSurfaceCPP : public CQxcRGB24_8bits_BufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcRGB24_8bits_BufferSurfaceCPP)
    QXC_KERNELS_Rgb10(QXC_MEMBER_BUFFER_KERNEL)
};

class QXBASE_API CQxcRGB36_12bits_BufferSurfaceCPP : public CQxcRGB36_12bits_BufferSurface {
    QXC_DECLARE_RGB_BUFFER_LEAF(CQxcRGB36_12bits_BufferSurfaceCPP)
    QXC_DECLARE_RGB16_FILL
    QXC_KERNELS_Rgb10(QXC_MEMBER_BUFFER_KERNEL)
};

#endif  // QXBASE_QXCBUFFERSURFACES_H
