// The surface factory: one method per creatable surface class. Each takes the
// cached-stores flag (false: destinations are written with non-temporal
// stores, as the engine's services want; true: ordinary stores, for small
// intermediates that are read back at once) and returns a new, unbound
// surface; the caller deletes it through its virtual destructor. Allocation
// failure propagates as std::bad_alloc. The factory makes no processor
// feature test.
#ifndef QXBASE_QXCSURFACEFACTORY_H
#define QXBASE_QXCSURFACEFACTORY_H

#include <qxbase/qxcblocksurfaces.h>
#include <qxbase/qxcbuffersurfaces.h>

class QXBASE_API CQxcSurfaceFactory {
public:
    CQxcSurfaceFactory();
    ~CQxcSurfaceFactory();

    // Block family.
    CQxcYCbCr422_8bitsSurface* CreateYCbCr422_8bitsSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_8bits_UnshapedSurface* CreateYCbCrA4224_8bits_UnshapedSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_8bits_ShapedSurface* CreateYCbCrA4224_8bits_ShapedSurface(bool in_bCachedStores) const;
    CQxc2VUY_8bitsSurface* Create2VUY_8bitsSurface(bool in_bCachedStores) const;
    CQxcYCbCr422_10bitsSurface* CreateYCbCr422_10bitsSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_10bits_UnshapedSurface* CreateYCbCrA4224_10bits_UnshapedSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_10bits_ShapedSurface* CreateYCbCrA4224_10bits_ShapedSurface(bool in_bCachedStores) const;
    CQxcYCbCr422_16bitsSurface* CreateYCbCr422_16bitsSurface(bool in_bCachedStores) const;
    CQxcV210_10bitsSurface* CreateV210_10bitsSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_16bits_UnshapedSurface* CreateYCbCrA4224_16bits_UnshapedSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_16bits_ShapedSurface* CreateYCbCrA4224_16bits_ShapedSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4444_16bits_UnshapedSurface* CreateYCbCrA4444_16bits_UnshapedSurface(bool in_bCachedStores) const;
    CQxcAYCbCr4444_8bits_ShapedSurface* CreateAYCbCr4444_8bits_ShapedSurface(bool in_bCachedStores) const;

    // Buffer family.
    CQxcYCbCr422_8bits_BufferSurface* CreateYCbCr422_8bits_BufferSurface(bool in_bCachedStores) const;
    qxc2VUY_8bits_BufferSurface* Create2VUY_8bits_BufferSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_8bits_UnshapedBufferSurface* CreateYCbCrA4224_8bits_UnshapedBufferSurface(
        bool in_bCachedStores) const;
    CQxcYCbCrA4224_8bits_ShapedBufferSurface* CreateYCbCrA4224_8bits_ShapedBufferSurface(
        bool in_bCachedStores) const;
    CQxcYCbCr422_10bits_BufferSurface* CreateYCbCr422_10bits_BufferSurface(bool in_bCachedStores) const;
    CQxcYCbCrA4224_10bits_UnshapedBufferSurface* CreateYCbCrA4224_10bits_UnshapedBufferSurface(
        bool in_bCachedStores) const;
    CQxcYCbCrA4224_10bits_ShapedBufferSurface* CreateYCbCrA4224_10bits_ShapedBufferSurface(
        bool in_bCachedStores) const;
    CQxcYCbCrA4444_16bits_UnshapedBufferSurface* CreateYCbCrA4444_16bits_UnshapedBufferSurface(
        bool in_bCachedStores) const;
    CQxcV210_10bits_BufferSurface* CreateV210_10bits_BufferSurface(bool in_bCachedStores) const;
    CQxcRGBA_8bits_UnshapedBufferSurface* CreateRGBA_8bits_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcRGBA_8bits_ShapedBufferSurface* CreateRGBA_8bits_ShapedBufferSurface(bool in_bCachedStores) const;
    CQxcBGRA_8bits_UnshapedBufferSurface* CreateBGRA_8bits_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcRGB24_8bits_BufferSurface* CreateRGB24_8bits_BufferSurface(bool in_bCachedStores) const;
    CQxcRGB36_12bits_BufferSurface* CreateRGB36_12bits_BufferSurface(bool in_bCachedStores) const;
    CQxcA2R10G10B10_UnshapedBufferSurface* CreateA2R10G10B10_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcA2B10G10R10_UnshapedBufferSurface* CreateA2B10G10R10_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcABGR_16bits_UnshapedBufferSurface* CreateABGR_16bits_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcK64ARGB_UnshapedBufferSurface* CreateK64ARGB_UnshapedBufferSurface(bool in_bCachedStores) const;
    CQxcR4FL_YUYA_32bits_UnshapedBufferSurface* CreateR4FL_YUVA4444_32bits_UnshapedBufferSurface(
        bool in_bCachedStores) const;
};

#endif  // QXBASE_QXCSURFACEFACTORY_H
