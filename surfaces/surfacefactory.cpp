// The surface factory. Object alignment comes from the
// classes themselves (16 bytes, except the 8-bit 4:2:2, 2VUY and AYCbCr block
// surfaces, which need none beyond the allocator's), so a plain new-expression
// allocates each correctly and frees it again if its constructor throws.
#include <qxbase/qxcsurfacefactory.h>

CQxcSurfaceFactory::CQxcSurfaceFactory() = default;
CQxcSurfaceFactory::~CQxcSurfaceFactory() = default;

#define QXC_DEFINE_CREATE(Method, Middle, Leaf) \
    Middle* CQxcSurfaceFactory::Method(bool in_bCachedStores) const { return new Leaf(in_bCachedStores); }

QXC_DEFINE_CREATE(CreateYCbCr422_8bitsSurface, CQxcYCbCr422_8bitsSurface, CQxcYCbCr422_8bitsSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_8bits_UnshapedSurface, CQxcYCbCrA4224_8bits_UnshapedSurface,
                  CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_8bits_ShapedSurface, CQxcYCbCrA4224_8bits_ShapedSurface,
                  CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2)
QXC_DEFINE_CREATE(Create2VUY_8bitsSurface, CQxc2VUY_8bitsSurface, CQxc2VUY_8bitsSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCr422_10bitsSurface, CQxcYCbCr422_10bitsSurface, CQxcYCbCr422_10bitsSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_10bits_UnshapedSurface, CQxcYCbCrA4224_10bits_UnshapedSurface,
                  CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_10bits_ShapedSurface, CQxcYCbCrA4224_10bits_ShapedSurface,
                  CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCr422_16bitsSurface, CQxcYCbCr422_16bitsSurface, CQxcYCbCr422_16bitsSurfaceSSE2)
QXC_DEFINE_CREATE(CreateV210_10bitsSurface, CQxcV210_10bitsSurface, CQxcV210_10bitsSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_16bits_UnshapedSurface, CQxcYCbCrA4224_16bits_UnshapedSurface,
                  CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_16bits_ShapedSurface, CQxcYCbCrA4224_16bits_ShapedSurface,
                  CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4444_16bits_UnshapedSurface, CQxcYCbCrA4444_16bits_UnshapedSurface,
                  CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2)
QXC_DEFINE_CREATE(CreateAYCbCr4444_8bits_ShapedSurface, CQxcAYCbCr4444_8bits_ShapedSurface,
                  CQxcAYCbCr4444_8bits_ShapedSurface)

QXC_DEFINE_CREATE(CreateYCbCr422_8bits_BufferSurface, CQxcYCbCr422_8bits_BufferSurface,
                  CQxcYCbCr422_8bits_BufferSurfaceSSE2)
QXC_DEFINE_CREATE(Create2VUY_8bits_BufferSurface, qxc2VUY_8bits_BufferSurface, qxc2VUY_8bits_BufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_8bits_UnshapedBufferSurface, CQxcYCbCrA4224_8bits_UnshapedBufferSurface,
                  CQxcYCbCrA4224_8bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_8bits_ShapedBufferSurface, CQxcYCbCrA4224_8bits_ShapedBufferSurface,
                  CQxcYCbCrA4224_8bits_ShapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCr422_10bits_BufferSurface, CQxcYCbCr422_10bits_BufferSurface,
                  CQxcYCbCr422_10bits_BufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_10bits_UnshapedBufferSurface, CQxcYCbCrA4224_10bits_UnshapedBufferSurface,
                  CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4224_10bits_ShapedBufferSurface, CQxcYCbCrA4224_10bits_ShapedBufferSurface,
                  CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateYCbCrA4444_16bits_UnshapedBufferSurface, CQxcYCbCrA4444_16bits_UnshapedBufferSurface,
                  CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateV210_10bits_BufferSurface, CQxcV210_10bits_BufferSurface, CQxcV210_10bits_BufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateRGBA_8bits_UnshapedBufferSurface, CQxcRGBA_8bits_UnshapedBufferSurface,
                  CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateRGBA_8bits_ShapedBufferSurface, CQxcRGBA_8bits_ShapedBufferSurface,
                  CQxcRGBA_8bits_ShapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateBGRA_8bits_UnshapedBufferSurface, CQxcBGRA_8bits_UnshapedBufferSurface,
                  CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateRGB24_8bits_BufferSurface, CQxcRGB24_8bits_BufferSurface, CQxcRGB24_8bits_BufferSurfaceCPP)
QXC_DEFINE_CREATE(CreateRGB36_12bits_BufferSurface, CQxcRGB36_12bits_BufferSurface, CQxcRGB36_12bits_BufferSurfaceCPP)
QXC_DEFINE_CREATE(CreateA2R10G10B10_UnshapedBufferSurface, CQxcA2R10G10B10_UnshapedBufferSurface,
                  CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateA2B10G10R10_UnshapedBufferSurface, CQxcA2B10G10R10_UnshapedBufferSurface,
                  CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateABGR_16bits_UnshapedBufferSurface, CQxcABGR_16bits_UnshapedBufferSurface,
                  CQxcABGR_16bits_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateK64ARGB_UnshapedBufferSurface, CQxcK64ARGB_UnshapedBufferSurface,
                  CQxcK64ARGB_UnshapedBufferSurfaceSSE2)
QXC_DEFINE_CREATE(CreateR4FL_YUVA4444_32bits_UnshapedBufferSurface, CQxcR4FL_YUYA_32bits_UnshapedBufferSurface,
                  CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2)
