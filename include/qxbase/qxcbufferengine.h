// The host buffer engine as other SDK modules and applications reach it: the
// interfaces of the two engines and of their factories, and the factory
// classes that libqxbase's class table creates by class identifier
// (CLSID_QxcBufferEngine, CLSID_QxcSyncBufferEngine).
//
//   IQxcBufferEngineFactory* pFactory;
//   CoCreateInstance(CLSID_QxcBufferEngine, nullptr, CLSCTX_INPROC_SERVER,
//                    IID_IQxcBufferEngineFactory, (void**)&pFactory);
//   IQxcBufferEngine* pEngine;
//   pFactory->CreateBufferEngine(pFlexEngine, &pEngine);
//   pFactory->Release();
//   pEngine->CopySurface(pSource, &sSourceRect, pDestination, &sDestinationRect,
//                        keQxFilterModeNearest);
//
// The asynchronous engine does the work inside the call too; it reports the
// outcome to the surfaces' content objects (read done, write done, error,
// completion) as well as to the caller. The synchronous engine only returns
// it.
#ifndef QXBASE_QXCBUFFERENGINE_H
#define QXBASE_QXCBUFFERENGINE_H

#include <qxbase/qxinterfaces.h>
#include <qxbase/qxunknown.h>

// The SDK's log entry point, which the engine looks up at run time under the
// name "QxLogger" (in the process or a module loaded with RTLD_GLOBAL) and
// calls only when present. The engine logs with package 6027; format strings
// use "%I64u" for 64-bit counts.
typedef void (*PFNQxLogger)(int in_iPackage, int in_iArgument, int in_iLevel, const char* in_pszFormat, ...);

class IQxcBufferEngine : public IUnknown {
public:
    // Copies (and converts) the source rectangle into the destination
    // rectangle. The rectangles' horizontal starts are taken down to a
    // multiple of 16 pixels.
    virtual HRESULT CopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect, IQxSurface* in_pDestination,
                                SQxRect* in_psDestinationRect, EQxFilterMode in_eFilter) = 0;
    // Fills the whole surface with a named colour and the given alpha (0..1).
    virtual HRESULT ClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha) = 0;
    // Keeps the pointer (not a copy); null is accepted.
    virtual HRESULT SetConversionOptions(SQxConversionOptions* in_psOptions) = 0;
    // Merges a fill and a key picture (4:2:2 without alpha) into a 4:2:2:4
    // picture. in_bAlphaScaling stretches the key's video-range luma to the
    // full alpha range instead of taking it as it is.
    virtual HRESULT CombineVideoAndKeySurfaces(IQxSurface* in_pVideo, IQxSurface* in_pKey,
                                               IQxSurface* in_pDestination, bool in_bAlphaScaling) = 0;
    // Splits a 4:2:2:4 picture into a fill picture and a grey key picture.
    virtual HRESULT ExtractVideoAndKeySurfaces(IQxSurface* in_pSource, IQxSurface* in_pVideo,
                                               IQxSurface* in_pKey) = 0;
    // Turns an 8-bit YUYV picture by 90, 180 or 270 degrees.
    virtual HRESULT RotateSurface(IQxSurface* in_pSource, IQxSurface* in_pDestination,
                                  EQxRotationAngle in_eAngle) = 0;
};

class IQxSyncBufferEngine : public IUnknown {
public:
    virtual HRESULT SyncCopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect, IQxSurface* in_pDestination,
                                    SQxRect* in_psDestinationRect, EQxFilterMode in_eFilter) = 0;
    virtual HRESULT SetSyncConversionOptions(SQxConversionOptions* in_psOptions) = 0;
    virtual HRESULT SyncClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha) = 0;
};

class IQxcBufferEngineFactory : public IUnknown {
public:
    // A new engine for the flex engine, with one reference for the caller.
    virtual HRESULT CreateBufferEngine(IQxFlexEnginePrivate* in_pEngine, IQxcBufferEngine** out_ppBufferEngine) = 0;
};

class IQxcSyncBufferEngineFactory : public IUnknown {
public:
    virtual HRESULT CreateSyncBufferEngine(IQxFlexEnginePrivate* in_pEngine,
                                           IQxSyncBufferEngine** out_ppBufferEngine) = 0;
};

class QXBASE_API CQxcBufferEngineFactory : public CQxUnknown, public IQxcBufferEngineFactory {
public:
    // The class table's creation function: *out_phr is 0, or 0x8007000E
    // when nothing could be allocated.
    static CQxUnknown* CreateInstance(IUnknown* in_pUnkOuter, HRESULT* out_phr);
    // The registration hook of the class (the module kit's shared one).
    static HRESULT Register(bool in_bRegistering, const GUID* in_pClsid);

    explicit CQxcBufferEngineFactory(IUnknown* in_pUnkOuter);
    ~CQxcBufferEngineFactory() override;

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;
    QX_DECLARE_IUNKNOWN

    // 0, or 0x89998043 when the engine could not be allocated.
    HRESULT CreateBufferEngine(IQxFlexEnginePrivate* in_pEngine, IQxcBufferEngine** out_ppBufferEngine) override;
};

class QXBASE_API CQxcSyncBufferEngineFactory : public CQxUnknown, public IQxcSyncBufferEngineFactory {
public:
    static CQxUnknown* CreateInstance(IUnknown* in_pUnkOuter, HRESULT* out_phr);
    static HRESULT Register(bool in_bRegistering, const GUID* in_pClsid);

    explicit CQxcSyncBufferEngineFactory(IUnknown* in_pUnkOuter);
    ~CQxcSyncBufferEngineFactory() override;

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;
    QX_DECLARE_IUNKNOWN

    HRESULT CreateSyncBufferEngine(IQxFlexEnginePrivate* in_pEngine,
                                   IQxSyncBufferEngine** out_ppBufferEngine) override;
};

#endif  // QXBASE_QXCBUFFERENGINE_H
