// The host surface: layout of the memory it allocates, locking, failures a
// test can force, reference counting, and the content's observable signals.
#include <qxbase/qxchostsurface.h>

#include <gtest/gtest.h>

#include <thread>

#include "bufferengine/enginekit.h"

namespace {

using NQxEngineKit::Describe;

TEST(HostSurface, AllocatedMemoryIsAlignedZeroedAndPaddedToWholeBlocks)
{
    struct SCase {
        EQxSurfaceFormat eFormat;
        uint32_t uiBits, uiWidth, uiAlignment;
        int32_t iPitchAsked;
        int32_t iPitch;
    };
    const SCase asCases[] = {
        {keQxSurfaceFormatYUYV422, 8, 1920, 0, 0, 3840},
        {keQxSurfaceFormatYUYV422, 8, 1918, 0, 0, 3840},  // padded to 1920 pixels
        {keQxSurfaceFormatYUYV422, 8, 18, 0, 0, 64},
        {keQxSurfaceFormatYUYV422, 10, 1920, 0, 0, 4800},
        {keQxSurfaceFormatV210, 10, 1920, 0, 0, 5120},
        {keQxSurfaceFormatV210, 10, 1280, 0, 0, 3456},  // 48-pixel groups of 128 bytes
        {keQxSurfaceFormatV210, 10, 720, 0, 0, 1920},
        {keQxSurfaceFormatARGBGraphic, 8, 100, 128, 0, 512},
        {keQxSurfaceFormatRGBGraphic, 8, 16, 16, 0, 48},
        {keQxSurfaceFormatRGBGraphic, 12, 16, 16, 0, 80},  // 72 bytes of RGB36, aligned to 16
        {keQxSurfaceFormatYUAYVA4224, 8, 16, 16, 0, 48},
        {keQxSurfaceFormatYUAYVA4224, 10, 16, 16, 0, 64},
        {keQxSurfaceFormatABGR16, 16, 16, 16, 0, 128},
        {keQxSurfaceFormatYUYV422, 8, 64, 0, 1000, 1024},  // a larger pitch asked for is kept
    };
    for (const SCase& c : asCases) {
        SCOPED_TRACE(testing::Message() << "format " << c.eFormat << " bits " << c.uiBits << " width " << c.uiWidth);
        SQxSurfaceDescription sDescription = Describe(c.eFormat, c.uiBits, c.uiWidth, 3);
        sDescription.ulAlignment = c.uiAlignment;
        sDescription.lPitch = c.iPitchAsked;
        CQxcHostSurface* pSurface = nullptr;
        ASSERT_EQ(CQxcHostSurface::CreateAllocated(sDescription, nullptr, &pSurface), S_OK);
        EXPECT_EQ(pSurface->GetPitch(), c.iPitch);
        EXPECT_EQ(pSurface->GetBufferSize(), uint32_t(c.iPitch) * 3);
        const uint32_t uiAlignment = c.uiAlignment ? c.uiAlignment : 64;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pSurface->GetBuffer()) % uiAlignment, 0u);
        for (uint32_t i = 0; i < pSurface->GetBufferSize(); ++i) ASSERT_EQ(pSurface->GetBuffer()[i], 0);
        SQxSurfaceDescription sOut{};
        EXPECT_EQ(pSurface->GetSurfaceDescription(&sOut), S_OK);
        EXPECT_EQ(sOut.lPitch, c.iPitch);
        EXPECT_EQ(sOut.ulBufferSize, pSurface->GetBufferSize());
        EXPECT_EQ(sOut.ulWidth, c.uiWidth);
        pSurface->Release();
    }

    // Data formats take the size asked for; formats and alignments that
    // cannot be laid out are refused.
    SQxSurfaceDescription sData = Describe(keQxSurfaceFormatQueltoAncillaryData, 8, 0, 0);
    sData.ulBufferSize = 1000;
    CQxcHostSurface* pSurface = nullptr;
    ASSERT_EQ(CQxcHostSurface::CreateAllocated(sData, nullptr, &pSurface), S_OK);
    EXPECT_EQ(pSurface->GetBufferSize(), 1000u);
    pSurface->Release();
    sData.ulBufferSize = 0;
    EXPECT_EQ(CQxcHostSurface::CreateAllocated(sData, nullptr, &pSurface), E_INVALIDARG);
    EXPECT_EQ(pSurface, nullptr);
    EXPECT_EQ(CQxcHostSurface::CreateAllocated(Describe(keQxSurfaceFormatYUYV422, 12, 64, 2), nullptr, &pSurface),
              E_INVALIDARG);
    SQxSurfaceDescription sOddAlignment = Describe(keQxSurfaceFormatYUYV422, 8, 64, 2);
    sOddAlignment.ulAlignment = 24;
    EXPECT_EQ(CQxcHostSurface::CreateAllocated(sOddAlignment, nullptr, &pSurface), E_INVALIDARG);
    EXPECT_EQ(CQxcHostSurface::CreateAllocated(Describe(keQxSurfaceFormatV210, 10, 0x7FFFFFF0, 2), nullptr, &pSurface),
              E_INVALIDARG);
}

TEST(HostSurface, BackToBackSurfacesKnowWhereTheSecondFieldStarts)
{
    SQxSurfaceDescription s = Describe(keQxSurfaceFormatYUYV422, 8, 64, 10);
    s.ePolarity = keQxPolarityBackToBack;
    CQxcHostSurface* pSurface = nullptr;
    ASSERT_EQ(CQxcHostSurface::CreateAllocated(s, nullptr, &pSurface), S_OK);
    EXPECT_EQ(pSurface->GetDescription().ulSecondFieldOffset, 5u * 128);
    pSurface->Release();
}

TEST(HostSurface, LocksNestAndUnbalancedUnlocksFail)
{
    unsigned char aucMemory[256];
    SQxSurfaceDescription s = Describe(keQxSurfaceFormatYUYV422, 8, 16, 4);
    s.lPitch = 64;
    s.ulBufferSize = sizeof(aucMemory);
    CQxcHostSurface* pSurface = nullptr;
    ASSERT_EQ(CQxcHostSurface::CreateOverMemory(s, aucMemory, nullptr, &pSurface), S_OK);
    void* pBuffer = nullptr;
    int32_t i32Pitch = 0;
    uint32_t uiSize = 0;
    EXPECT_EQ(pSurface->LockBuffer(keQxBufferAccessRead, &pBuffer, &i32Pitch, &uiSize), S_OK);
    EXPECT_EQ(pBuffer, aucMemory);
    EXPECT_EQ(i32Pitch, 64);
    EXPECT_EQ(uiSize, 256u);
    EXPECT_EQ(pSurface->LockBuffer(keQxBufferAccessWrite, &pBuffer, &i32Pitch, &uiSize), S_OK);
    EXPECT_EQ(pSurface->GetLockCount(), 2);
    EXPECT_EQ(pSurface->LockBuffer(keQxBufferAccessInvalid, &pBuffer, &i32Pitch, &uiSize), E_INVALIDARG);
    EXPECT_EQ(pSurface->UnlockBuffer(), S_OK);
    EXPECT_EQ(pSurface->UnlockBuffer(), S_OK);
    EXPECT_EQ(pSurface->UnlockBuffer(), E_FAIL);
    EXPECT_EQ(pSurface->GetLockCount(), 0);

    // A forced failure is returned as it is and takes no lock.
    const HRESULT hrForced = QX_HRESULT(0x89990001u);
    pSurface->InjectFailure(keQxcHostSurfaceOperationLock, hrForced);
    EXPECT_EQ(pSurface->LockBuffer(keQxBufferAccessRead, &pBuffer, &i32Pitch, &uiSize), hrForced);
    EXPECT_EQ(pSurface->GetLockCount(), 0);
    pSurface->InjectFailure(keQxcHostSurfaceOperationGetDescription, hrForced);
    SQxSurfaceDescription sOut{};
    EXPECT_EQ(pSurface->GetSurfaceDescription(&sOut), hrForced);
    pSurface->InjectFailure(keQxcHostSurfaceOperationGetDescription, S_OK);
    EXPECT_EQ(pSurface->GetSurfaceDescription(&sOut), S_OK);
    pSurface->Release();
    EXPECT_EQ(CQxcHostSurface::CreateOverMemory(s, nullptr, nullptr, &pSurface), E_POINTER);
}

TEST(HostSurface, InterfacesReferencesAndSharedContent)
{
    const int32_t i32Objects = g_i32Objects;
    CQxcHostAVContent* pShared = CQxcHostAVContent::Create();
    CQxcHostSurface *pFirst = nullptr, *pSecond = nullptr;
    ASSERT_EQ(CQxcHostSurface::CreateAllocated(Describe(keQxSurfaceFormatYUYV422, 8, 16, 2), pShared, &pFirst), S_OK);
    ASSERT_EQ(CQxcHostSurface::CreateAllocated(Describe(keQxSurfaceFormatYUYV422, 8, 16, 2), pShared, &pSecond), S_OK);
    pShared->Release();  // the surfaces keep it
    EXPECT_EQ(pFirst->GetContent(), pSecond->GetContent());

    IQxSurface* pSurface = nullptr;
    ASSERT_EQ(pFirst->QueryInterface(IID_IQxSurface, reinterpret_cast<void**>(&pSurface)), S_OK);
    EXPECT_EQ(pSurface, static_cast<IQxSurface*>(pFirst));
    IQxAVContent* pContent = nullptr;
    ASSERT_EQ(pSurface->GetAVContent(&pContent), S_OK);
    IQxAVContent* pQueried = nullptr;
    EXPECT_EQ(pContent->QueryInterface(IID_IQxAVContent, reinterpret_cast<void**>(&pQueried)), S_OK);
    EXPECT_EQ(pQueried, pContent);
    void* pNothing = nullptr;
    EXPECT_EQ(pContent->QueryInterface(IID_IQxSurface, &pNothing), E_NOINTERFACE);
    pQueried->Release();
    pContent->Release();
    pSurface->Release();

    SQxFrameInformation sInformation{};
    sInformation.ui64FrameNumber = 42;
    sInformation.ulTimecode = 0x01020304;
    EXPECT_EQ(pFirst->SetFrameInformation(&sInformation), S_OK);
    SQxFrameInformation sOut{};
    EXPECT_EQ(pFirst->GetFrameInformation(&sOut), S_OK);
    EXPECT_EQ(sOut.ui64FrameNumber, 42u);
    EXPECT_EQ(sOut.ulTimecode, 0x01020304u);
    EXPECT_EQ(sOut.size, sizeof(SQxFrameInformation));

    pFirst->Release();
    pSecond->Release();
    EXPECT_EQ(g_i32Objects, i32Objects) << "a surface or content object leaked";
}

TEST(HostSurface, ContentSignalsAreCountedAndCanBeWaitedFor)
{
    CQxcHostAVContent* pContent = CQxcHostAVContent::Create();
    HRESULT hrError = E_FAIL;
    EXPECT_EQ(pContent->GetErrorCode(&hrError), S_OK);
    EXPECT_EQ(hrError, S_OK);
    EXPECT_FALSE(pContent->WaitForSignal(keQxcContentSignalWrite, 1, 10));

    std::thread oWriter([pContent] {
        pContent->SignalWriteCompletion();
        pContent->SetErrorCode(QX_HRESULT(0x8999802Fu));
        pContent->SignalOperationCompletion();
    });
    EXPECT_TRUE(pContent->WaitForSignal(keQxcContentSignalCompletion, 1, 4294967295u));
    oWriter.join();
    EXPECT_EQ(pContent->GetSignalCount(keQxcContentSignalWrite), 1u);
    EXPECT_EQ(pContent->GetSignalCount(keQxcContentSignalError), 1u);
    EXPECT_EQ(pContent->GetSignalCount(keQxcContentSignalRead), 0u);
    EXPECT_EQ(pContent->GetErrorCode(&hrError), S_OK);
    EXPECT_EQ(hrError, QX_HRESULT(0x8999802Fu));
    EXPECT_TRUE(pContent->WaitForSignal(keQxcContentSignalWrite, 1, 0));
    EXPECT_FALSE(pContent->WaitForSignal(keQxcContentSignalWrite, 2, 0));

    pContent->Reset();
    EXPECT_EQ(pContent->GetSignalCount(keQxcContentSignalCompletion), 0u);
    EXPECT_EQ(pContent->GetErrorCode(&hrError), S_OK);
    EXPECT_EQ(hrError, S_OK);
    pContent->Release();
}

}  // namespace
