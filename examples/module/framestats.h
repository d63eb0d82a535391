// What the example module and its users agree on: the class identifier, the
// interface and its identifier. A module ships a header like this one.
#ifndef QXBASE_EXAMPLES_FRAMESTATS_H
#define QXBASE_EXAMPLES_FRAMESTATS_H

#include <qxbase/qxbase.h>

struct SExampleLumaStatistics {
    uint32_t uiMinimum;
    uint32_t uiMaximum;
    double dMean;
};

// Measures the luma of an 8-bit YUYV picture.
class IExampleFrameStatistics : public IUnknown {
public:
    virtual HRESULT MeasureLuma(IQxSurface* in_pSurface, SExampleLumaStatistics* out_psStatistics) = 0;
};

inline constexpr GUID CLSID_ExampleFrameStatistics = {
    0x5C3A9E10, 0x41D2, 0x4B7F, {0x9A, 0x61, 0x0E, 0x2D, 0x47, 0x88, 0x13, 0x01}};
inline constexpr GUID IID_IExampleFrameStatistics = {
    0x5C3A9E10, 0x41D2, 0x4B7F, {0x9A, 0x61, 0x0E, 0x2D, 0x47, 0x88, 0x13, 0x02}};

#endif
