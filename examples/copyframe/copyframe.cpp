// A minimal application of the host buffer engine. It registers nothing:
// like every SDK application it asks the class registry for the engine by
// class identifier, so libqxbase must have been registered once, e.g.
//
//   sudo env PLWUTILS=/opt/QueltoVideo/PLW.utils qxregsvr /usr/local/lib/libqxbase.so
//
// It then copies one 1920x1080 frame from 8-bit YUYV to v210 and checks a
// few pixels of the result.
#include <qxbase/qxbase.h>

#include <cstdio>

int main()
{
    const uint32_t uiWidth = 1920, uiHeight = 1080;

    // The engine's factory, by class identifier, then an engine from it.
    IQxcBufferEngineFactory* pFactory = nullptr;
    HRESULT hr = CoCreateInstance(CLSID_QxcBufferEngine, nullptr, CLSCTX_INPROC_SERVER, IID_IQxcBufferEngineFactory,
                                  reinterpret_cast<void**>(&pFactory));
    if (FAILED(hr)) {
        std::fprintf(stderr,
                     "copyframe: the host buffer engine could not be created by class identifier (0x%08X); "
                     "register libqxbase with qxregsvr (the registry is %s)\n",
                     static_cast<uint32_t>(hr), QX_CLASS_REGISTRY_PATH);
        return 1;
    }
    IQxcBufferEngine* pEngine = nullptr;
    hr = pFactory->CreateBufferEngine(nullptr, &pEngine);
    pFactory->Release();
    if (FAILED(hr)) {
        std::fprintf(stderr, "copyframe: no engine from the factory (0x%08X)\n", static_cast<uint32_t>(hr));
        return 1;
    }

    // Two pictures in host memory that the surfaces allocate themselves.
    CQxcHostSurface* pSource = nullptr;
    CQxcHostSurface* pDestination = nullptr;
    CQxcHostSurface::CreateAllocated(
        CQxcHostSurface::MakeDescription(keQxSurfaceFormatYUYV422, 8, uiWidth, uiHeight), nullptr, &pSource);
    CQxcHostSurface::CreateAllocated(CQxcHostSurface::MakeDescription(keQxSurfaceFormatV210, 10, uiWidth, uiHeight),
                                     nullptr, &pDestination);
    if (!pSource || !pDestination) {
        std::fprintf(stderr, "copyframe: out of memory\n");
        return 1;
    }

    // A grey ramp, black at the left to white at the right.
    for (uint32_t y = 0; y < uiHeight; ++y) {
        uint8_t* puc = pSource->GetBuffer() + size_t(y) * pSource->GetPitch();
        for (uint32_t x = 0; x < uiWidth; ++x) {
            puc[2 * x] = uint8_t(16 + x * 219 / (uiWidth - 1));  // Y
            puc[2 * x + 1] = 128;                                // Cb or Cr
        }
    }

    SQxRect sRect = {0, 0, int32_t(uiWidth), int32_t(uiHeight)};
    hr = pEngine->CopySurface(pSource, &sRect, pDestination, &sRect, keQxFilterModeNearest);
    // The engine also reports to whoever waits on the destination's content.
    HRESULT hrContent = S_OK;
    pDestination->GetContent()->GetErrorCode(&hrContent);

    // v210 keeps six pixels in four 32-bit words; the first word holds
    // Cb0, Y0 and Cr0, the last word of the line's last group Y1919 in its
    // top field. 8-bit codes become 10-bit codes four times as large.
    const uint32_t* puiFirst = reinterpret_cast<const uint32_t*>(pDestination->GetBuffer());
    const uint32_t* puiLastGroup = puiFirst + (uiWidth / 6 - 1) * 4;
    const uint32_t uiY0 = (puiFirst[0] >> 10) & 1023, uiCb0 = puiFirst[0] & 1023;
    const uint32_t uiYLast = (puiLastGroup[3] >> 20) & 1023;
    const bool bRight = SUCCEEDED(hr) && SUCCEEDED(hrContent) && uiY0 == 64 && uiCb0 == 512 && uiYLast == 940;

    std::printf("copyframe: %ux%u YUYV -> v210: 0x%08X; first pixel Y %u Cb %u, last pixel Y %u%s\n", uiWidth,
                uiHeight, static_cast<uint32_t>(hr), uiY0, uiCb0, uiYLast, bRight ? "" : " (wrong)");
    pSource->Release();
    pDestination->Release();
    pEngine->Release();
    return bRight ? 0 : 1;
}
