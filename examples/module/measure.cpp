// Uses the example module the way any SDK application uses a component: by
// class identifier, once the module is registered. It measures the luma of
// a picture of four grey bars (16, 70, 126 and 235).
#include "framestats.h"

#include <cstdio>

int main()
{
    IExampleFrameStatistics* pStatistics = nullptr;
    const HRESULT hrCreate = CoCreateInstance(CLSID_ExampleFrameStatistics, nullptr, CLSCTX_INPROC_SERVER,
                                              IID_IExampleFrameStatistics, reinterpret_cast<void**>(&pStatistics));
    if (FAILED(hrCreate)) {
        std::fprintf(stderr,
                     "measure: the example module's class is not available (0x%08X); register "
                     "libqxexample_framestats.so with qxregsvr\n",
                     static_cast<uint32_t>(hrCreate));
        return 1;
    }

    const uint32_t uiWidth = 64, uiHeight = 8;
    CQxcHostSurface* pSurface = nullptr;
    CQxcHostSurface::CreateAllocated(CQxcHostSurface::MakeDescription(keQxSurfaceFormatYUYV422, 8, uiWidth, uiHeight),
                                     nullptr, &pSurface);
    if (!pSurface) {
        pStatistics->Release();
        return 1;
    }
    const uint8_t aucBars[4] = {16, 70, 126, 235};
    for (uint32_t y = 0; y < uiHeight; ++y)
        for (uint32_t x = 0; x < uiWidth; ++x) {
            uint8_t* puc = pSurface->GetBuffer() + size_t(y) * pSurface->GetPitch() + 2 * x;
            puc[0] = aucBars[x * 4 / uiWidth];
            puc[1] = 128;
        }

    SExampleLumaStatistics s{};
    const HRESULT hr = pStatistics->MeasureLuma(pSurface, &s);
    const bool bRight = hr == S_OK && s.uiMinimum == 16 && s.uiMaximum == 235 && s.dMean == (16 + 70 + 126 + 235) / 4.0;
    std::printf("measure: luma minimum %u, maximum %u, mean %.2f%s\n", s.uiMinimum, s.uiMaximum, s.dMean,
                bRight ? "" : " (wrong)");
    pSurface->Release();
    pStatistics->Release();
    return bRight ? 0 : 1;
}
