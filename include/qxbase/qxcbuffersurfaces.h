// Buffer surfaces: the pixel-addressed formats that convert to and from RGB.
// Each middle class holds the constructor, the dispatch table indexed by
// [source type][mode] (mode 0 the plain kernel, mode 1 the filtering or
// interpolating one) and the dispatching CopyFrom, and declares its kernels
// pure in slot order; its SSE2 (or, for RGB24 and RGB36, CPP) leaf class
// supplies them. The dispatcher does not test an entry for emptiness: callers
// request only the pairs listed with each class.
//
// Layouts the block hub (CQxcYCbCrA4224_16bits_UnshapedSurface) reads, so
// the kernels that write them must agree:
//  - A2R10G10B10: one little-endian 32-bit word a pixel, A (bits 30-31),
//    R (20-29), G (10-19), B (0-9); the 2-bit key a reads as a x 341.
//  - K64ARGB: four big-endian 16-bit words a pixel, A R G B, full 16-bit
//    scale (read as the top 10 bits).
//  - R4FL (float YCbCrA 4:4:4:4): four 32-bit floats a pixel, Y Cb Cr A;
//    Y 0..1 is black..white (10-bit 64 + 876 Y), chroma -0.5..0.5
//    (512 + 896 C), key 0..1 (1023 A).
//
// Same-format RGB sources ("VideoRGBA"/"GraphicRGBA" kernels) are chosen by
// the destination's colour range, not by the mode: a graphics-range
// destination (range 0) takes the CopyFromVideoRGBA_* kernel, which reads the
// source at video levels; a video-range destination (range 1) the
// CopyFromGraphicRGBA_* kernel. Their table rows hold them in that order.
#ifndef QXBASE_QXCBUFFERSURFACES_H
#define QXBASE_QXCBUFFERSURFACES_H

#include <qxbase/qxcsurface.h>

// The signature of every buffer kernel.
#define QXC_BUFFER_KERNEL(Name) \
    bool Name(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight)

// What every buffer middle class with a kernel table declares.
#define QXC_DECLARE_BUFFER_DISPATCH(Class)                                                      \
public:                                                                                        \
    typedef bool (Class::*PFNCopy)(const CQxcBufferSurface*, unsigned int, unsigned int);      \
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

// ------------------------------------------------------------ YUV buffers
// Sources: RGBA 8-bit unshaped (13), RGB24 (22).
class QXBASE_API CQxcYCbCr422_8bits_BufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCr422_8bits_BufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

// Packed 10-bit YUYV read and written as pixels. Sources: 13, 22.
class QXBASE_API alignas(16) CQxcYCbCr422_10bits_BufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCr422_10bits_BufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
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

// Sources: 13, 22.
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_UnshapedBufferSurface)
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXC_PURE_BUFFER_KERNEL)
};

// Sources: 13, BGRA 8-bit unshaped (26, one kernel), 22.
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_UnshapedBufferSurface)
    QXC_KERNELS_YCbCrA4224_8bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// Source: RGBA 8-bit shaped (14).
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_ShapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_ShapedBufferSurface)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_PURE_BUFFER_KERNEL)
};

// Source: 14.
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_ShapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_ShapedBufferSurface)
    QXC_KERNELS_ShapedYuvFromRgba(QXC_PURE_BUFFER_KERNEL)
};

// Source: 13.
class QXBASE_API alignas(16) CQxcYCbCrA4444_16bits_UnshapedBufferSurface : public CQxcBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcYCbCrA4444_16bits_UnshapedBufferSurface)
    QXC_KERNELS_YCbCrA4444_16bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// 8-bit 2VUY read as pixels. It reports the 8-bit YCbCr 4:2:2 buffer type
// (15), so that to every dispatch table it is an 8-bit 4:2:2 buffer. Its
// SSE2 class supplies CopyFrom and CopyBlocksFrom itself; it has no table.
class QXBASE_API qxc2VUY_8bits_BufferSurface : public CQxcBufferSurface {
public:
    explicit qxc2VUY_8bits_BufferSurface(bool in_bCachedStores);
    ~qxc2VUY_8bits_BufferSurface() override;
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

// Sources: 8-bit 4:2:2:4 shaped buffer (17), 10-bit 4:2:2:4 shaped buffer
// (20), itself (14, by range).
class QXBASE_API alignas(16) CQxcRGBA_8bits_ShapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGBA_8bits_ShapedBufferSurface)
    QXC_KERNELS_RGBA_8bits_ShapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// Sources: 8-bit 4:2:2:4 unshaped buffer (16), itself (26, by range).
class QXBASE_API alignas(16) CQxcBGRA_8bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcBGRA_8bits_UnshapedBufferSurface)
    QXC_KERNELS_BGRA_8bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// Sources: the 16-bit 4:2:2:4 unshaped block hub (7), itself (28, by range),
// K64ARGB (29).
class QXBASE_API alignas(16) CQxcA2R10G10B10_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcA2R10G10B10_UnshapedBufferSurface)
    QXC_KERNELS_Rgb10(QXC_PURE_BUFFER_KERNEL)
};

// Sources: 7, itself (34, by range), 29.
class QXBASE_API alignas(16) CQxcA2B10G10R10_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcA2B10G10R10_UnshapedBufferSurface)
    QXC_KERNELS_Rgb10(QXC_PURE_BUFFER_KERNEL)
};

// Sources: K64ARGB (29), the hub (7).
class QXBASE_API alignas(16) CQxcABGR_16bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcABGR_16bits_UnshapedBufferSurface)
    QXC_KERNELS_ABGR_16bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// Sources: ABGR 16-bit (32), the hub (7).
class QXBASE_API alignas(16) CQxcK64ARGB_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcK64ARGB_UnshapedBufferSurface)
    QXC_KERNELS_K64ARGB_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// 32-bit float YCbCrA 4:4:4:4. Source: the hub (7).
class QXBASE_API alignas(16) CQxcR4FL_YUYA_32bits_UnshapedBufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcR4FL_YUYA_32bits_UnshapedBufferSurface)
    QXC_KERNELS_R4FL_YUYA_32bits_UnshapedBuffer(QXC_PURE_BUFFER_KERNEL)
};

// RGB24 and RGB36 have scalar kernels only, kept as non-virtual members of
// their CPP classes and reached through the table, which those classes
// therefore fill.
class QXBASE_API alignas(16) CQxcRGB24_8bits_BufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGB24_8bits_BufferSurface)
};

class QXBASE_API alignas(16) CQxcRGB36_12bits_BufferSurface : public CQxcRgbBufferSurface {
    QXC_DECLARE_BUFFER_MIDDLE(CQxcRGB36_12bits_BufferSurface)
};

#endif  // QXBASE_QXCBUFFERSURFACES_H
