// RGB24 (bytes B, G, R) and RGB36 (12-bit bit stream) buffer surfaces: only
// portable kernels, plain members that the middle classes' tables reach.
#include "surfaces/buffersurfacedefs.h"

typedef NQxcKernels::TXYccToRgbDeep<8> XToRgb8;
typedef NQxcKernels::TXYccToRgbDeep<12> XToRgb12;

// The tables hold the portable class's members as members of the middle
// class; only objects of the portable class are ever made.
#define QXC_ENTRY_CPP(Middle, Leaf, SourceType, Name) \
    ms_apfnCopyFunctions[SourceType][0] = ms_apfnCopyFunctions[SourceType][1] = static_cast<Middle::PFNCopy>(&Leaf::Name);
#define QXC_FILL_CPP_TABLE(Middle, Leaf, OwnType)                                                               \
    void Middle::InitializeCopyFunctionTable()                                                                   \
    {                                                                                                            \
        QXC_ENTRY_CPP(Middle, Leaf, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, CopyFromYCbCrA4224_16bits_Unshaped) \
        ms_apfnCopyFunctions[OwnType][0] = static_cast<Middle::PFNCopy>(&Leaf::CopyFromVideoRGBA_Unshaped);      \
        ms_apfnCopyFunctions[OwnType][1] = static_cast<Middle::PFNCopy>(&Leaf::CopyFromGraphicRGBA_Unshaped);    \
        QXC_ENTRY_CPP(Middle, Leaf, keQxcSurfaceTypeK64ARGB_Unshaped, CopyFromK64ARGB_Unshaped)                  \
        ms_bCopyFunctionTableInitialized = true;                                                                 \
    }

typedef CQxcRGB24_8bits_BufferSurfaceCPP CRgb24;
QXC_FILL_CPP_TABLE(CQxcRGB24_8bits_BufferSurface, CRgb24, keQxcSurfaceTypeRGB24_8bits)
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcRGB24_8bits_BufferSurfaceCPP, CQxcRGB24_8bits_BufferSurface)
QXC_DEFINE_RGB_FILLS(CRgb24, QXC_SCALAR_PIXEL_JOB, KFillRgb24, XToRgb8, 8)
QXC_DEFINE_BUFFER_KERNEL(CRgb24, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb24FromHub, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb24, CopyFromVideoRGBA_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb24FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb24, CopyFromGraphicRGBA_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb24FromGraphic, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb24, CopyFromK64ARGB_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb24FromK64, this)

typedef CQxcRGB36_12bits_BufferSurfaceCPP CRgb36;
QXC_FILL_CPP_TABLE(CQxcRGB36_12bits_BufferSurface, CRgb36, keQxcSurfaceTypeRGB36_12bits)
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcRGB36_12bits_BufferSurfaceCPP, CQxcRGB36_12bits_BufferSurface)
QXC_DEFINE_RGB_FILLS(CRgb36, QXC_SCALAR_PIXEL_JOB, KFillRgb36, XToRgb12, 12)
QXC_DEFINE_RGB16_FILL(CRgb36, QXC_SCALAR_PIXEL_JOB, KFillRgb36, NQxcBufferFill::From16(in_rsColor, 12))
QXC_DEFINE_BUFFER_KERNEL(CRgb36, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb36FromHub, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb36, CopyFromVideoRGBA_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb36FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb36, CopyFromGraphicRGBA_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb36FromGraphic, this)
QXC_DEFINE_BUFFER_KERNEL(CRgb36, CopyFromK64ARGB_Unshaped, QXC_SCALAR_PIXEL_JOB, KRgb36FromK64, this)
