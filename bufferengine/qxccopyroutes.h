// How the copy service converts each pair of surface types, and the byte
// layout facts it needs about each type. Private to the library.
//
// YUV path (both sides YUV, or 10-bit/16-bit RGB with YUV): every line goes
// from the source block surface into a 16-bit intermediate line and from
// there into the destination: the 16-bit 4:2:2 intermediate for a v210
// destination, the shaped 16-bit 4:2:2:4 one for a shaped destination, the
// unshaped one otherwise. The 8-bit YUYV/2VUY and v210/2VUY pairs convert
// directly; 10-bit RGB (A2R10G10B10) reaches YUV through the unshaped
// intermediate. RGB path: one CopyFrom between the buffer variants of the
// two types.
#ifndef QXBASE_BUFFERENGINE_QXCCOPYROUTES_H
#define QXBASE_BUFFERENGINE_QXCCOPYROUTES_H

#include <qxbase/qxcbufferenginecommon.h>

#include <cstdint>

class CQxcSurface;

namespace NQxcCopyRoutes {

enum ERoute : int32_t {
    keRouteNone = 0,
    keRouteDirect,          // destination block surface from the source block surface
    keRouteVia422_16bits,   // through the 16-bit 4:2:2 intermediate
    keRouteVia4224Unshaped, // through the unshaped 16-bit 4:2:2:4 intermediate
    keRouteVia4224Shaped,   // through the shaped 16-bit 4:2:2:4 intermediate
    keRouteBuffer           // destination buffer surface from the source buffer surface
};

// in_bYuvPath: the copy takes the YUV path (see above); the RGB path works
// on the buffer variants of the two types.
ERoute RouteOf(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination, bool in_bYuvPath);
inline bool HasRoute(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination, bool in_bYuvPath)
{
    return RouteOf(in_eSource, in_eDestination, in_bYuvPath) != keRouteNone;
}

// The picture carries a key (alpha) component.
bool HasKey(EQxcSurfaceType in_eType);
// An RGB type (a buffer surface of the RGB family).
bool IsRgb(EQxcSurfaceType in_eType);

// Bytes from a line's start to the unit (block, group or pixel) that holds
// pixel x, and the bytes of a line's first n pixels in whole units. Opaque
// data counts one byte a pixel.
uint64_t ByteOffsetOfPixel(EQxcSurfaceType in_eType, uint64_t in_uX);
uint64_t ByteEndOfPixels(EQxcSurfaceType in_eType, uint64_t in_uPixels);

// A new surface object of the type from the surface factory, or null for a
// type that has no surface class (reserved, alpha and opaque types).
CQxcSurface* CreateSurfaceOfType(EQxcSurfaceType in_eType, bool in_bCachedStores);

}  // namespace NQxcCopyRoutes

#endif  // QXBASE_BUFFERENGINE_QXCCOPYROUTES_H
