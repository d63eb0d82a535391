// The buffer-family middle classes: constants, dispatch tables and the
// dispatching CopyFrom. Their kernels are supplied by the SSE2 and CPP leaf
// classes of each format.
#include <qxbase/qxcbuffersurfaces.h>

#include "surfaces/kernels/v210.h"

// Statics, constructor and destructor. The table is filled when the library
// is loaded, before any thread can make a surface (a constructor that runs
// earlier, from another static initializer, fills it itself).
#define QXC_DEFINE_BUFFER_MIDDLE_BASE(Class, Base, Type, BlockSize, GroupBytes, GroupPixels)             \
    Class::PFNCopy Class::ms_apfnCopyFunctions[kiQxcSurfaceTypeCount][2];                                 \
    bool Class::ms_bCopyFunctionTableInitialized = (InitializeCopyFunctionTable(), true);                 \
    Class::Class(bool in_bCachedStores) : Base(Type, BlockSize, GroupBytes, GroupPixels, in_bCachedStores) \
    {                                                                                                     \
        if (!ms_bCopyFunctionTableInitialized)                                                            \
            InitializeCopyFunctionTable();                                                                \
    }                                                                                                     \
    Class::~Class() = default;                                                                            \
    bool Class::CopyFrom(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight) \
    {                                                                                                     \
        return CopyFrom(static_cast<const CQxcSurface*>(in_pSource), in_uiWidth, in_uiHeight);            \
    }

// ... and the dispatcher: bRgb says the destination is RGB, TypeByRange is
// the source type chosen by the destination's range (-1 for none).
#define QXC_DEFINE_BUFFER_MIDDLE(Class, Base, Type, BlockSize, GroupBytes, GroupPixels, bRgb, TypeByRange)  \
    QXC_DEFINE_BUFFER_MIDDLE_BASE(Class, Base, Type, BlockSize, GroupBytes, GroupPixels)                     \
    bool Class::CopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight)    \
    {                                                                                                        \
        return DispatchCopy(this, ms_apfnCopyFunctions, in_pSource, in_uiWidth, in_uiHeight, bRgb, TypeByRange); \
    }

// One kernel for both modes, and a plain/filtering pair.
#define QXC_ENTRY_ONE(Class, SourceType, Name) \
    ms_apfnCopyFunctions[SourceType][0] = ms_apfnCopyFunctions[SourceType][1] = &Class::Name;
#define QXC_ENTRY_TWO(Class, SourceType, Plain, Filtering) \
    ms_apfnCopyFunctions[SourceType][0] = &Class::Plain;    \
    ms_apfnCopyFunctions[SourceType][1] = &Class::Filtering;

// The four kernels of the YUV buffers that take RGBA and RGB24.
#define QXC_ENTRIES_RGBA_RGB24(Class)                                                                   \
    QXC_ENTRY_TWO(Class, keQxcSurfaceTypeRGBA_8bits_Unshaped, CopyFromRGBA_8bits_Unshaped,               \
                  CopyFromRGBA_8bits_Unshaped_Filter)                                                   \
    QXC_ENTRY_TWO(Class, keQxcSurfaceTypeRGB24_8bits, CopyFromRGB24_8bits, CopyFromRGB24_8bits_Filter)

// ------------------------------------------------------------ YUV buffers
QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCr422_8bits_BufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCr422_8bits_Buffer, 32, 4, 2, false, -1)
void CQxcYCbCr422_8bits_BufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGBA_RGB24(CQxcYCbCr422_8bits_BufferSurface)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCr422_10bits_BufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCr422_10bits_Buffer, 48, 48, 16, false, -1)
void CQxcYCbCr422_10bits_BufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGBA_RGB24(CQxcYCbCr422_10bits_BufferSurface)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcV210_10bits_BufferSurface, CQxcBufferSurface, keQxcSurfaceTypeV210_10bits_Buffer, 48,
                         48, 16, false, -1)
void CQxcV210_10bits_BufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGBA_RGB24(CQxcV210_10bits_BufferSurface)
    ms_bCopyFunctionTableInitialized = true;
}

bool CQxcV210_10bits_BufferSurface::Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth,
                                         unsigned int in_uiHeight)
{
    if (in_uiWidth == 0 || in_uiHeight == 0)
        return true;
    if (!PixelRangeFits(this, in_uiWidth, in_uiHeight))
        return false;
    const NQxcKernels::SV210Fill sFill(in_rsColor, in_uiWidth);
    NQxcKernels::V210FillLines(NQxcKernels::CSse2(), sFill, m_pucCurrent, m_lPitch, in_uiHeight,
                               m_bCachedStores ? NQxcKernels::keStoreCached : NQxcKernels::keStoreStream);
    AdvancePixels(in_uiWidth, in_uiHeight);
    return true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_UnshapedBufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer, 64, 8, 2, false, -1)
void CQxcYCbCrA4224_10bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGBA_RGB24(CQxcYCbCrA4224_10bits_UnshapedBufferSurface)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_UnshapedBufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer, 48, 24, 8, false, -1)
void CQxcYCbCrA4224_8bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcYCbCrA4224_8bits_UnshapedBufferSurface C;
    QXC_ENTRIES_RGBA_RGB24(C)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeBGRA_8bits_Unshaped, CopyFromBGRA_8bits_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCrA4224_8bits_ShapedBufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer, 48, 24, 8, false, -1)
void CQxcYCbCrA4224_8bits_ShapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRY_ONE(CQxcYCbCrA4224_8bits_ShapedBufferSurface, keQxcSurfaceTypeRGBA_8bits_Shaped,
                  CopyFromRGBA_8bits_Shaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCrA4224_10bits_ShapedBufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer, 64, 8, 2, false, -1)
void CQxcYCbCrA4224_10bits_ShapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRY_ONE(CQxcYCbCrA4224_10bits_ShapedBufferSurface, keQxcSurfaceTypeRGBA_8bits_Shaped,
                  CopyFromRGBA_8bits_Shaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcYCbCrA4444_16bits_UnshapedBufferSurface, CQxcBufferSurface,
                         keQxcSurfaceTypeYCbCrA4444_16bits_UnshapedBuffer, 128, 8, 1, false, -1)
void CQxcYCbCrA4444_16bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRY_ONE(CQxcYCbCrA4444_16bits_UnshapedBufferSurface, keQxcSurfaceTypeRGBA_8bits_Unshaped,
                  CopyFromRGBA_8bits_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

// It reports the 8-bit YCbCr 4:2:2 buffer type on purpose.
qxc2VUY_8bits_BufferSurface::qxc2VUY_8bits_BufferSurface(bool in_bCachedStores)
    : CQxcBufferSurface(keQxcSurfaceTypeYCbCr422_8bits_Buffer, 32, 4, 2, in_bCachedStores)
{
}
qxc2VUY_8bits_BufferSurface::~qxc2VUY_8bits_BufferSurface() = default;

// ------------------------------------------------------------ RGB buffers
QXC_DEFINE_BUFFER_MIDDLE_BASE(CQxcRGBA_8bits_UnshapedBufferSurface, CQxcRgbBufferSurface,
                              keQxcSurfaceTypeRGBA_8bits_Unshaped, 64, 4, 1)
CQxcRGBA_8bits_UnshapedBufferSurface::PFNCopy CQxcRGBA_8bits_UnshapedBufferSurface::ms_apfnCopyRGBFunctions[2];

void CQxcRGBA_8bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcRGBA_8bits_UnshapedBufferSurface C;
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeYCbCr422_8bits_Buffer, CopyFromYCbCr422_8bits, CopyFromYCbCr422_8bits_Interp)
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer, CopyFromYCbCrA4224_8bits_Unshaped,
                  CopyFromYCbCrA4224_8bits_Interp_Unshaped)
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeYCbCr422_10bits_Buffer, CopyFromYCbCr422_10bits, CopyFromYCbCr422_10bits_Interp)
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer, CopyFromYCbCrA4224_10bits_Unshaped,
                  CopyFromYCbCrA4224_10bits_Interp_Unshaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeK64ARGB_Unshaped, CopyFromK64ARGB_Unshaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeV210_10bits_Buffer, CopyFromV210)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeA2B10G10R10_Unshaped, CopyFromA2B10G10R10_Unshaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeRGB24_8bits, CopyFromRGB8bit)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeRGB36_12bits, CopyFromRGB12bit)
    // Its own format, by the destination's range.
    ms_apfnCopyRGBFunctions[keQxcColorRangeGraphic] = &C::CopyFromVideoRGBA_Unshaped;
    ms_apfnCopyRGBFunctions[keQxcColorRangeVideo] = &C::CopyFromGraphicRGBA_Unshaped;
    ms_bCopyFunctionTableInitialized = true;
}

bool CQxcRGBA_8bits_UnshapedBufferSurface::CopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth,
                                                    unsigned int in_uiHeight)
{
    const EQxcSurfaceType eType = in_pSource->GetSurfaceType();
    if (eType == keQxcSurfaceTypeRGBA_8bits_Unshaped) {
        // The range tests first; the table of its own format stands in for
        // the [type][range] entries.
        unsigned int uiMode = 0;
        bool bDone = false;
        if (!PrepareCopyFrom(in_pSource, in_uiWidth, in_uiHeight, true, uiMode, bDone))
            return false;
        if (bDone)
            return true;
        if (m_eColorRange != keQxcColorRangeGraphic && m_eColorRange != keQxcColorRangeVideo)
            return false;
        return (this->*ms_apfnCopyRGBFunctions[m_eColorRange])(in_pSource, in_uiWidth, in_uiHeight);
    }
    return DispatchCopy(this, ms_apfnCopyFunctions, in_pSource, in_uiWidth, in_uiHeight, true, -1);
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcRGBA_8bits_ShapedBufferSurface, CQxcRgbBufferSurface, keQxcSurfaceTypeRGBA_8bits_Shaped,
                         64, 4, 1, true, keQxcSurfaceTypeRGBA_8bits_Shaped)
void CQxcRGBA_8bits_ShapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcRGBA_8bits_ShapedBufferSurface C;
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer, CopyFromYCbCrA4224_8bits_Shaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer, CopyFromYCbCrA4224_10bits_Shaped)
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeRGBA_8bits_Shaped, CopyFromVideoRGBA_Shaped, CopyFromGraphicRGBA_Shaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcBGRA_8bits_UnshapedBufferSurface, CQxcRgbBufferSurface,
                         keQxcSurfaceTypeBGRA_8bits_Unshaped, 64, 4, 1, true, keQxcSurfaceTypeBGRA_8bits_Unshaped)
void CQxcBGRA_8bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcBGRA_8bits_UnshapedBufferSurface C;
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer, CopyFromYCbCrA4224_8bits_Unshaped)
    QXC_ENTRY_TWO(C, keQxcSurfaceTypeBGRA_8bits_Unshaped, CopyFromVideoRGBA_Unshaped, CopyFromGraphicRGBA_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

// The 10-bit RGB formats: from the hub, from themselves by range, from
// K64ARGB.
#define QXC_ENTRIES_RGB10(Class, OwnType)                                                                   \
    QXC_ENTRY_ONE(Class, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, CopyFromYCbCrA4224_16bits_Unshaped)     \
    QXC_ENTRY_TWO(Class, OwnType, CopyFromVideoRGBA_Unshaped, CopyFromGraphicRGBA_Unshaped)                  \
    QXC_ENTRY_ONE(Class, keQxcSurfaceTypeK64ARGB_Unshaped, CopyFromK64ARGB_Unshaped)

QXC_DEFINE_BUFFER_MIDDLE(CQxcA2R10G10B10_UnshapedBufferSurface, CQxcRgbBufferSurface,
                         keQxcSurfaceTypeA2R10G10B10_Unshaped, 64, 4, 1, true, keQxcSurfaceTypeA2R10G10B10_Unshaped)
void CQxcA2R10G10B10_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGB10(CQxcA2R10G10B10_UnshapedBufferSurface, keQxcSurfaceTypeA2R10G10B10_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcA2B10G10R10_UnshapedBufferSurface, CQxcRgbBufferSurface,
                         keQxcSurfaceTypeA2B10G10R10_Unshaped, 64, 4, 1, true, keQxcSurfaceTypeA2B10G10R10_Unshaped)
void CQxcA2B10G10R10_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRIES_RGB10(CQxcA2B10G10R10_UnshapedBufferSurface, keQxcSurfaceTypeA2B10G10R10_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcABGR_16bits_UnshapedBufferSurface, CQxcRgbBufferSurface,
                         keQxcSurfaceTypeABGR_16bits_Unshaped, 128, 120, 1, true, -1)
void CQxcABGR_16bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcABGR_16bits_UnshapedBufferSurface C;
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeK64ARGB_Unshaped, CopyFromK64ARGB_Unshaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, CopyFromYCbCrA4224_16bits_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcK64ARGB_UnshapedBufferSurface, CQxcRgbBufferSurface, keQxcSurfaceTypeK64ARGB_Unshaped,
                         128, 120, 1, true, -1)
void CQxcK64ARGB_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    typedef CQxcK64ARGB_UnshapedBufferSurface C;
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeABGR_16bits_Unshaped, CopyFromABGR_16bits_Unshaped)
    QXC_ENTRY_ONE(C, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, CopyFromYCbCrA4224_16bits_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

QXC_DEFINE_BUFFER_MIDDLE(CQxcR4FL_YUYA_32bits_UnshapedBufferSurface, CQxcRgbBufferSurface,
                         keQxcSurfaceTypeR4FL_Unshaped, 256, 16, 1, true, -1)
void CQxcR4FL_YUYA_32bits_UnshapedBufferSurface::InitializeCopyFunctionTable()
{
    QXC_ENTRY_ONE(CQxcR4FL_YUYA_32bits_UnshapedBufferSurface, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped,
                  CopyFromYCbCrA4224_16bits_Unshaped)
    ms_bCopyFunctionTableInitialized = true;
}

// RGB24 and RGB36: their portable leaf classes fill the tables.
QXC_DEFINE_BUFFER_MIDDLE(CQxcRGB24_8bits_BufferSurface, CQxcRgbBufferSurface, keQxcSurfaceTypeRGB24_8bits, 48, 12, 4,
                         true, keQxcSurfaceTypeRGB24_8bits)
QXC_DEFINE_BUFFER_MIDDLE(CQxcRGB36_12bits_BufferSurface, CQxcRgbBufferSurface, keQxcSurfaceTypeRGB36_12bits, 72, 36, 8,
                         true, keQxcSurfaceTypeRGB36_12bits)

// ------------------------------------------------- a source of either family
// The formats whose rows read the 16-bit 4:2:2:4 hub, by their type values,
// each of which names one class.
#define QXC_HUB_READERS(X)                                                        \
    X(keQxcSurfaceTypeA2R10G10B10_Unshaped, CQxcA2R10G10B10_UnshapedBufferSurface) \
    X(keQxcSurfaceTypeA2B10G10R10_Unshaped, CQxcA2B10G10R10_UnshapedBufferSurface) \
    X(keQxcSurfaceTypeABGR_16bits_Unshaped, CQxcABGR_16bits_UnshapedBufferSurface) \
    X(keQxcSurfaceTypeK64ARGB_Unshaped, CQxcK64ARGB_UnshapedBufferSurface)         \
    X(keQxcSurfaceTypeR4FL_Unshaped, CQxcR4FL_YUYA_32bits_UnshapedBufferSurface)   \
    X(keQxcSurfaceTypeRGB24_8bits, CQxcRGB24_8bits_BufferSurface)                  \
    X(keQxcSurfaceTypeRGB36_12bits, CQxcRGB36_12bits_BufferSurface)
#define QXC_HUB_READER_CASE(Type, Class) \
    case Type:                           \
        return static_cast<Class*>(this)->CopyFrom(in_pSource, in_uiWidth, in_uiHeight);

bool CQxcBufferSurface::CopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    if (IsBufferSurfaceType(in_pSource->GetSurfaceType()))
        return CopyFrom(static_cast<const CQxcBufferSurface*>(in_pSource), in_uiWidth, in_uiHeight);
    switch (m_eSurfaceType) {
        QXC_HUB_READERS(QXC_HUB_READER_CASE)
    default: {
        // No kernel of this format reads a block surface: only an empty call
        // succeeds, as it does for any source.
        unsigned int uiMode = 0;
        bool bDone = false;
        return PrepareCopyFrom(in_pSource, in_uiWidth, in_uiHeight, false, uiMode, bDone) && bDone;
    }
    }
}
