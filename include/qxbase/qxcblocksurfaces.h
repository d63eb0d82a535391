// Block surfaces: the YUV 4:2:2, 4:2:2:4 and 4:4:4:4 formats, v210 and 2VUY,
// addressed in blocks of 16 pixels and whole lines. Each format is a middle
// class (constructor, dispatch table, dispatching CopyBlocksFrom, its kernels
// declared pure in slot order) and an SSE2 leaf class that supplies the
// kernels. Only leaves are instantiated (through CQxcSurfaceFactory).
//
// Memory layout of one line of 16 pixels ("block"); all multi-byte words are
// little-endian; Cb/Cr n is the chroma of pixels 2n and 2n+1:
//
//  YCbCr422_8bits (type 0, 32 bytes): Y0 Cb0 Y1 Cr0 Y2 Cb1 ... Y15 Cr7.
//  2VUY_8bits (type 12, 32 bytes): Cb0 Y0 Cr0 Y1 ... (the two bytes of every
//    16-bit word of YUYV exchanged).
//  YCbCr422_10bits (type 3, 40 bytes): bytes 0..31 the upper 8 bits of the
//    32 components in YUYV order; bytes 32..39 their low 2 bits, component k
//    in bits 2(k mod 4)..2(k mod 4)+1 of byte 32 + k/4.
//  YCbCrA4224_8bits (types 1 and 2, 48 bytes): two groups of 8 pixels, each
//    16 bytes of YUYV followed by the 8 key bytes of its pixels.
//  YCbCrA4224_10bits (types 4 and 5, 64 bytes): one 32-bit word a pixel,
//    (Y << 20) | (C << 10) | K, with C = Cb for an even pixel and Cr for an
//    odd one; bits 30 and 31 zero. The 10-bit combined format of the combine
//    and extract kernels uses this very word.
//  YCbCr422_16bits (type 6, 64 bytes): 16-bit words Y0..Y15, Cb0..Cb7,
//    Cr0..Cr7.
//  YCbCrA4224_16bits (types 7 and 8, 96 bytes): 16-bit words Y0..Y15,
//    Cb0..Cb7, Cr0..Cr7, K0..K15.
//  YCbCrA4444_16bits (type 9, 128 bytes): four 16-bit words a pixel, in the
//    order Y, Cb, Cr, K.
//  AYCbCr4444_8bits (type 10, 64 bytes): four bytes a pixel, K, Y, Cb, Cr.
//  V210_10bits (type 11): six pixels in four 32-bit words, 10-bit fields at
//    bits 0, 10 and 20: (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2) (Y4 Cr2 Y5); a
//    line holds ceil(width / 6) groups of 16 bytes. Its blocks are not whole
//    bytes: block b covers pixels 16b..16b+15, and the current position
//    rests on the start of the group that holds pixel 16 x (cursor block).
//    A v210 destination writes the groups its pixels fall in (merging into a
//    group shared with pixels outside the call) and never writes past the
//    line's last group; a v210 source reads pixels past the last group as 0.
//
// Conversions:
//  - 16-bit to 8-bit: v >> 2 clamped to 0..255; to 10-bit: v clamped to 1023.
//  - 4:4:4 chroma to 4:2:2: the sample of the first pixel of each pair;
//    4:2:2 to 4:4:4: each pair's sample for both pixels.
//  - A keyless source (format without key, or key-present flag false) reads
//    as key 1023; a keyless destination drops the key.
//  - Shaped source into unshaped destination: the key is divided out with
//    the reciprocal table r = CQxcSurface::ms_sUnshapeReciprocal[key]:
//      8-bit  Y = (Y r + 64) >> 7,  C = ((C - 512) r + 16448) >> 7
//      10-bit Y = (Y r + 16) >> 5,  C = ((C - 512) r + 16400) >> 5
//    clamped to the destination's range; the key itself is only
//    depth-reduced. Every other pair (unshaped into shaped, shaped into
//    shaped or keyless) only changes depth and layout: the key is never
//    multiplied in.
#ifndef QXBASE_QXCBLOCKSURFACES_H
#define QXBASE_QXCBLOCKSURFACES_H

#include <qxbase/qxcsurface.h>

// The signature of every block kernel.
#define QXC_BLOCK_KERNEL(Name) \
    bool Name(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight)

// What every block middle class declares around its kernels: the dispatching
// CopyBlocksFrom and the dispatch table indexed by the source's type.
#define QXC_DECLARE_BLOCK_DISPATCH(Class)                                                       \
public:                                                                                        \
    typedef bool (Class::*PFNCopyBlocks)(const CQxcSurface*, unsigned int, unsigned int);      \
    bool CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,        \
                        unsigned int in_uiHeight) override;                                    \
                                                                                               \
protected:                                                                                     \
    static PFNCopyBlocks ms_apfnCopyFunctions[kiQxcSurfaceTypeCount];                          \
    static bool ms_bCopyFunctionTableInitialized;                                              \
    static void InitializeCopyFunctionTable();                                                 \
                                                                                               \
public:

// What every block leaf class declares: its construction and its fill.
#define QXC_DECLARE_BLOCK_LEAF(Class)                                                            \
public:                                                                                         \
    explicit Class(bool in_bCachedStores);                                                      \
    ~Class() override;                                                                          \
    bool FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,           \
                    unsigned int in_uiHeight) override;

// Each block middle class's kernels in slot order, one source format each;
// the middle class declares them pure, its SSE2 leaf overrides them.
// Each entry names the kernel and the source type it converts from (its row
// of the class's dispatch table).
#define QXC_PURE_BLOCK_KERNEL(Name, SourceType) virtual QXC_BLOCK_KERNEL(Name) = 0;
#define QXC_OVERRIDE_BLOCK_KERNEL(Name, SourceType) QXC_BLOCK_KERNEL(Name) override;
#define QXC_KERNELS_YCbCr422_8bits(X)                                                 \
    X(CopyFromYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_16bits)                       \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)     \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromV210, keQxcSurfaceTypeV210_10bits)                                      \
    X(CopyFrom2VUY, keQxcSurfaceType2VUY_8bits)
#define QXC_KERNELS_YCbCrA4224_8bits_Unshaped(X)                                      \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_16bits)                       \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)
#define QXC_KERNELS_YCbCrA4224_8bits_Shaped(X)                                        \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)
#define QXC_KERNELS_YCbCr422_10bits(X)                                                \
    X(CopyFromYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_16bits)                       \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)     \
    X(CopyFromV210, keQxcSurfaceTypeV210_10bits)
#define QXC_KERNELS_YCbCrA4224_10bits_Unshaped(X)                                     \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_16bits)                       \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)
#define QXC_KERNELS_YCbCrA4224_10bits_Shaped(X)                                   \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)
#define QXC_KERNELS_YCbCr422_16bits(X)                                                \
    X(CopyFromYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_8bits)                         \
    X(CopyFromYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_10bits)                       \
    X(CopyFromYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped)   \
    X(CopyFromYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped) \
    X(CopyFromV210, keQxcSurfaceTypeV210_10bits)
#define QXC_KERNELS_YCbCrA4224_16bits_Unshaped(X)                                     \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFromYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_8bits)                         \
    X(CopyFromYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_10bits)                       \
    X(CopyFromYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped)   \
    X(CopyFromYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped)       \
    X(CopyFromYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped) \
    X(CopyFromYCbCrA4224_10bits_Shaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped)     \
    X(CopyFromAYCbCr4444_8bits_Shaped, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped)       \
    X(CopyFromA2R10G10B10_Unshaped, keQxcSurfaceTypeA2R10G10B10_Unshaped)             \
    X(CopyFromK64ARGB_Unshaped, keQxcSurfaceTypeK64ARGB_Unshaped)                     \
    X(CopyFromR4FL_Unshaped, keQxcSurfaceTypeR4FL_Unshaped)                           \
    X(CopyFromV210, keQxcSurfaceTypeV210_10bits)
#define QXC_KERNELS_YCbCrA4224_16bits_Shaped(X)                                       \
    X(CopyFromYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped)     \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_8bits)                         \
    X(CopyFromYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_10bits)                       \
    X(CopyFromYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped)   \
    X(CopyFromYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped)       \
    X(CopyFromYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped) \
    X(CopyFromYCbCrA4224_10bits_Shaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped)     \
    X(CopyFromAYCbCr4444_8bits_Shaped, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped)
#define QXC_KERNELS_YCbCrA4444_16bits_Unshaped(X)                                     \
    X(CopyFromYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped) \
    X(CopyFromYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_8bits)                         \
    X(CopyFromYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_10bits)                       \
    X(CopyFromYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped)   \
    X(CopyFromYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped)
#define QXC_KERNELS_V210_10bits(X)                                           \
    X(CopyFromYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_16bits)              \
    X(CopyFromYCbCrA4224_16bits, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) \
    X(CopyFrom2vuy_8bits, keQxcSurfaceType2VUY_8bits)
#define QXC_KERNELS_2VUY_8bits(X)                             \
    X(CopyFromYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_8bits) \
    X(CopyFromV210_10bits, keQxcSurfaceTypeV210_10bits)
// The signature of ReplaceBlockFrom of the 16-bit formats: replaces
// in_uiPixels (1 to 16) pixels of the block at the cursor with those of the
// source's block at its cursor, converted: the first pixels of the block
// when in_bAtEnd is false, the last ones when it is true. The 4:2:2 formats
// take the luma and key of those pixels and (in_uiPixels + 1) / 2 chroma
// pairs from the same end; 4:4:4:4 takes whole pixels. Advances the cursor
// by one block, as a one-block copy does.
#define QXC_REPLACE_BLOCK(Name) \
    bool Name(const CQxcSurface* in_pSource, unsigned int in_uiPixels, bool in_bAtEnd)

// ---------------------------------------------------------------- 8-bit YUYV
class QXBASE_API CQxcYCbCr422_8bitsSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCr422_8bitsSurface)
    explicit CQxcYCbCr422_8bitsSurface(bool in_bCachedStores);
    ~CQxcYCbCr422_8bitsSurface() override;
    QXC_KERNELS_YCbCr422_8bits(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCr422_8bitsSurfaceSSE2 : public CQxcYCbCr422_8bitsSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCr422_8bitsSurfaceSSE2)
    QXC_KERNELS_YCbCr422_8bits(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ------------------------------------------------------ 8-bit 4:2:2:4 unshaped
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_UnshapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_8bits_UnshapedSurface)
    explicit CQxcYCbCrA4224_8bits_UnshapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_8bits_UnshapedSurface() override;
    QXC_KERNELS_YCbCrA4224_8bits_Unshaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2 : public CQxcYCbCrA4224_8bits_UnshapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_8bits_Unshaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// -------------------------------------------------------- 8-bit 4:2:2:4 shaped
class QXBASE_API alignas(16) CQxcYCbCrA4224_8bits_ShapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_8bits_ShapedSurface)
    explicit CQxcYCbCrA4224_8bits_ShapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_8bits_ShapedSurface() override;
    QXC_KERNELS_YCbCrA4224_8bits_Shaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2 : public CQxcYCbCrA4224_8bits_ShapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_8bits_Shaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// -------------------------------------------------------- packed 10-bit YUYV
class QXBASE_API alignas(16) CQxcYCbCr422_10bitsSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCr422_10bitsSurface)
    explicit CQxcYCbCr422_10bitsSurface(bool in_bCachedStores);
    ~CQxcYCbCr422_10bitsSurface() override;
    QXC_KERNELS_YCbCr422_10bits(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCr422_10bitsSurfaceSSE2 : public CQxcYCbCr422_10bitsSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCr422_10bitsSurfaceSSE2)
    QXC_KERNELS_YCbCr422_10bits(QXC_OVERRIDE_BLOCK_KERNEL)

    // Writes one line of in_uiPixels pixels from three planes of 10-bit
    // values in 16-bit words (Y: in_uiPixels words, Cb and Cr: in_uiPixels / 2
    // each) as packed 10-bit YUYV at in_pucDestination. Refuses (false,
    // nothing written) unless in_uiPixels is a non-zero multiple of 16.
    // in_pucDestination needs no alignment.
    static bool _Convert_Planar_YUV422_16M_Pixels_10bit_To_Quelto_YUYV422_16M_Pixels_10bit_ASM(
        const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr,
        unsigned char* in_pucDestination, unsigned int in_uiPixels);

    // Converts one line of in_uiPixels pixels (a non-zero multiple of 16) of
    // v210 into packed 10-bit YUYV; false and nothing written otherwise.
    // in_pucDestination needs no alignment.
    static bool _PRV210_To_QueltoYUYV10bit(const unsigned char* in_pucSource, unsigned char* in_pucDestination,
                                           unsigned int in_uiPixels);
};

// ----------------------------------------------------- 10-bit 4:2:2:4 unshaped
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_UnshapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_10bits_UnshapedSurface)
    explicit CQxcYCbCrA4224_10bits_UnshapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_10bits_UnshapedSurface() override;
    QXC_KERNELS_YCbCrA4224_10bits_Unshaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2 : public CQxcYCbCrA4224_10bits_UnshapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_10bits_Unshaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ------------------------------------------------------- 10-bit 4:2:2:4 shaped
class QXBASE_API alignas(16) CQxcYCbCrA4224_10bits_ShapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_10bits_ShapedSurface)
    explicit CQxcYCbCrA4224_10bits_ShapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_10bits_ShapedSurface() override;
    QXC_KERNELS_YCbCrA4224_10bits_Shaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2 : public CQxcYCbCrA4224_10bits_ShapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_10bits_Shaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ------------------------------------------------------------- 16-bit 4:2:2
class QXBASE_API alignas(16) CQxcYCbCr422_16bitsSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCr422_16bitsSurface)
    explicit CQxcYCbCr422_16bitsSurface(bool in_bCachedStores);
    ~CQxcYCbCr422_16bitsSurface() override;
    QXC_KERNELS_YCbCr422_16bits(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCr422_16bitsSurfaceSSE2 : public CQxcYCbCr422_16bitsSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCr422_16bitsSurfaceSSE2)
    QXC_KERNELS_YCbCr422_16bits(QXC_OVERRIDE_BLOCK_KERNEL)
};

// -------------------------------------------- 16-bit 4:2:2:4 unshaped: the hub
class QXBASE_API alignas(16) CQxcYCbCrA4224_16bits_UnshapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_16bits_UnshapedSurface)
    explicit CQxcYCbCrA4224_16bits_UnshapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_16bits_UnshapedSurface() override;
    virtual QXC_REPLACE_BLOCK(ReplaceBlockFrom);
    // Binds the surface as the YUV side of a conversion with an RGB surface
    // of range in_eRange and colorimetry in_eRgbColorimetry, whose
    // coefficient set it picks.
    virtual bool InitializeRGB10(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                                 long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry,
                                 EQxcColorRange in_eRange, EQxColorimetry in_eRgbColorimetry);
    QXC_KERNELS_YCbCrA4224_16bits_Unshaped(QXC_PURE_BLOCK_KERNEL)

    EQxcColorRange GetColorRange() const { return m_eColorRange; }
    EQxColorimetry GetRgbColorimetry() const { return m_eRgbColorimetry; }
    const SQxcRgbCoeff* GetRgbCoeff() const { return m_psRgbCoeff; }

    QXC_DECLARE_RGB_COEFF_FAMILY
    // Its own copy of the chroma filter set, as of the coefficient sets.
    static const SQxcRgbFilteringCoeff ms_sRgbFilteringPrivate;

    // Byte masks, listed from the lowest address.
    static const SQxcLanes16 ms_ki128Zero;              // 00 x 16
    static const SQxcLanes16 ms_ki128w_Mask_CbCr422;   // (ff 00) x 8
    static const SQxcLanes16 ms_ki128b_Opaque;         // ff x 16
    static const SQxcLanes16 ms_ki128b_ffff;           // ff x 16
    static const SQxcLanes16 ms_ki128b_OpaqueForAlpha; // ff x 8, 00 x 8
    static const SQxcLanes16 ms_ki128w_Mask_bGra;      // (00 00 ff 00) x 4
    static const SQxcLanes16 ms_ki128w_Mask_bgRa;      // (00 ff 00 00) x 4
    static const SQxcLanes16 ms_ki128w_Mask_CbCr;      // (ff ff 00 00) x 4
    static const SQxcLanes16 ms_ki128w_Mask_FirstWord; // ff ff, 00 x 14
    static const SQxcLanes16 ms_ki128w_Mask_LastWord;  // 00 x 14, ff ff

protected:
    EQxcColorRange m_eColorRange;
    EQxColorimetry m_eRgbColorimetry;
    const SQxcRgbCoeff* m_psRgbCoeff;
};

class QXBASE_API CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2 : public CQxcYCbCrA4224_16bits_UnshapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_16bits_Unshaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ------------------------------------------------------- 16-bit 4:2:2:4 shaped
class QXBASE_API alignas(16) CQxcYCbCrA4224_16bits_ShapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4224_16bits_ShapedSurface)
    explicit CQxcYCbCrA4224_16bits_ShapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4224_16bits_ShapedSurface() override;
    virtual QXC_REPLACE_BLOCK(ReplaceBlockFrom);
    QXC_KERNELS_YCbCrA4224_16bits_Shaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2 : public CQxcYCbCrA4224_16bits_ShapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4224_16bits_Shaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ----------------------------------------------------- 16-bit 4:4:4:4 unshaped
class QXBASE_API alignas(16) CQxcYCbCrA4444_16bits_UnshapedSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcYCbCrA4444_16bits_UnshapedSurface)
    explicit CQxcYCbCrA4444_16bits_UnshapedSurface(bool in_bCachedStores);
    ~CQxcYCbCrA4444_16bits_UnshapedSurface() override;
    virtual QXC_REPLACE_BLOCK(ReplaceBlockFrom);
    QXC_KERNELS_YCbCrA4444_16bits_Unshaped(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2 : public CQxcYCbCrA4444_16bits_UnshapedSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2)
    QXC_KERNELS_YCbCrA4444_16bits_Unshaped(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ---------------------------------------------------------------------- v210
class QXBASE_API alignas(16) CQxcV210_10bitsSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxcV210_10bitsSurface)
    explicit CQxcV210_10bitsSurface(bool in_bCachedStores);
    ~CQxcV210_10bitsSurface() override;
    QXC_KERNELS_V210_10bits(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxcV210_10bitsSurfaceSSE2 : public CQxcV210_10bitsSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxcV210_10bitsSurfaceSSE2)
    QXC_KERNELS_V210_10bits(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ---------------------------------------------------------------- 8-bit 2VUY
class QXBASE_API CQxc2VUY_8bitsSurface : public CQxcSurface {
    QXC_DECLARE_BLOCK_DISPATCH(CQxc2VUY_8bitsSurface)
    explicit CQxc2VUY_8bitsSurface(bool in_bCachedStores);
    ~CQxc2VUY_8bitsSurface() override;
    QXC_KERNELS_2VUY_8bits(QXC_PURE_BLOCK_KERNEL)
};

class QXBASE_API CQxc2VUY_8bitsSurfaceSSE2 : public CQxc2VUY_8bitsSurface {
    QXC_DECLARE_BLOCK_LEAF(CQxc2VUY_8bitsSurfaceSSE2)
    QXC_KERNELS_2VUY_8bits(QXC_OVERRIDE_BLOCK_KERNEL)
};

// ------------------------------------------- 8-bit AYCbCr 4:4:4:4, a source
// Only ever a source of the block kernels: it fills, but converts nothing
// into itself.
class QXBASE_API CQxcAYCbCr4444_8bits_ShapedSurface : public CQxcSurface {
public:
    explicit CQxcAYCbCr4444_8bits_ShapedSurface(bool in_bCachedStores);
    ~CQxcAYCbCr4444_8bits_ShapedSurface() override;
    bool FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                    unsigned int in_uiHeight) override;
    bool CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                        unsigned int in_uiHeight) override;
};

#endif  // QXBASE_QXCBLOCKSURFACES_H
