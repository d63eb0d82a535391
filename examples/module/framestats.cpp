// A minimal component module: one class and the class table. The entry
// points (DllGetClassObject, DllRegisterServer ...), the class factory and
// the object counting come from qxbase's module kit through
// qxbase_add_module(). Register it with
//
//   PLWUTILS=/opt/QueltoVideo/PLW.utils qxregsvr libqxexample_framestats.so
#include "framestats.h"

namespace {

class CFrameStatistics : public CQxUnknown, public IExampleFrameStatistics {
public:
    CFrameStatistics(IUnknown* in_pOuter, HRESULT* out_phr)
        : CQxUnknown(L"Example Frame Statistics", in_pOuter, out_phr)
    {
    }

    QX_DECLARE_IUNKNOWN

    HRESULT NonDelegatingQueryInterface(const GUID& in_riid, void** out_ppv) override
    {
        if (IsEqualGUID(in_riid, IID_IExampleFrameStatistics))
            return QxGetInterface(static_cast<IExampleFrameStatistics*>(this), out_ppv);
        return CQxUnknown::NonDelegatingQueryInterface(in_riid, out_ppv);
    }

    HRESULT MeasureLuma(IQxSurface* in_pSurface, SExampleLumaStatistics* out_psStatistics) override
    {
        if (!in_pSurface || !out_psStatistics) return E_POINTER;
        SQxSurfaceDescription sDescription{};
        sDescription.size = sizeof(sDescription);
        HRESULT hr = in_pSurface->GetSurfaceDescription(&sDescription);
        if (FAILED(hr)) return hr;
        if (sDescription.eSurfaceFormat != keQxSurfaceFormatYUYV422 || sDescription.ulComponentBitCount != 8 ||
            sDescription.ulWidth == 0 || sDescription.ulHeight == 0)
            return E_INVALIDARG;
        void* pBuffer = nullptr;
        int32_t iPitch = 0;
        uint32_t uiSize = 0;
        hr = in_pSurface->LockBuffer(keQxBufferAccessRead, &pBuffer, &iPitch, &uiSize);
        if (FAILED(hr)) return hr;
        uint32_t uiMinimum = 255, uiMaximum = 0;
        uint64_t uSum = 0;
        for (uint32_t y = 0; y < sDescription.ulHeight; ++y) {
            const uint8_t* puc = static_cast<const uint8_t*>(pBuffer) + size_t(y) * size_t(iPitch);
            for (uint32_t x = 0; x < sDescription.ulWidth; ++x) {
                const uint32_t uiY = puc[2 * x];
                uiMinimum = uiY < uiMinimum ? uiY : uiMinimum;
                uiMaximum = uiY > uiMaximum ? uiY : uiMaximum;
                uSum += uiY;
            }
        }
        in_pSurface->UnlockBuffer();
        out_psStatistics->uiMinimum = uiMinimum;
        out_psStatistics->uiMaximum = uiMaximum;
        out_psStatistics->dMean = double(uSum) / (double(sDescription.ulWidth) * sDescription.ulHeight);
        return S_OK;
    }

    static CQxUnknown* CreateInstance(IUnknown* in_pOuter, HRESULT* out_phr)
    {
        return new CFrameStatistics(in_pOuter, out_phr);
    }
};

}  // namespace

// The module's class table: what qxregsvr registers and DllGetClassObject
// hands out.
extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {L"Example Frame Statistics", &CLSID_ExampleFrameStatistics, &CFrameStatistics::CreateInstance, nullptr, nullptr},
};
extern "C" int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);
