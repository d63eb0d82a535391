// Create descriptions made from surfaces, audio buffers and resolutions, the
// audio buffer size table, and the default audio block header. Descriptions
// are compared word by word, so every member, its place and the reserved
// words are checked at once.
#include <qxbase/qxbase.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <climits>
#include <cstring>
#include <vector>

namespace {

using namespace NQxfFlexEngineHelper;

template <class T>
std::vector<uint32_t> Words(const T& in_rsValue)
{
    static_assert(sizeof(T) % 4 == 0, "whole words");
    std::vector<uint32_t> oWords(sizeof(T) / 4);
    std::memcpy(oWords.data(), &in_rsValue, sizeof(T));
    return oWords;
}

// A structure whose 32-bit word i holds in_uiBase + i, so that a copied
// member shows where it came from.
template <class T>
T Numbered(uint32_t in_uiBase)
{
    std::vector<uint32_t> oWords(sizeof(T) / 4);
    for (uint32_t i = 0; i < oWords.size(); ++i) oWords[i] = in_uiBase + i;
    T sValue;
    std::memcpy(&sValue, oWords.data(), sizeof(T));
    return sValue;
}

// Output structures start as garbage: every member must be written.
template <class T>
T Garbage()
{
    T sValue;
    std::memset(&sValue, 0xCD, sizeof(sValue));
    return sValue;
}

SQxResolutionInfo Resolution(uint32_t in_uiWidth, uint32_t in_uiHeight, int in_iFrameRate, int in_iScanMode)
{
    return {sizeof(SQxResolutionInfo), in_uiWidth, in_uiHeight, static_cast<EQxFrameRate>(in_iFrameRate),
            static_cast<EQxScanMode>(in_iScanMode)};
}

// Modules built against the SDK's headers link to these functions by their
// exported names, which carry the exact parameter types: only the resolution
// of CopyResolutionToCreateSurfaceDescription is taken as const.
TEST(FlexEngineHelper, FunctionsAreExportedWithTheSdkParameterTypes)
{
    for (const char* pszName :
         {"_ZN20NQxfFlexEngineHelper48CopySurfaceDescriptionToCreateSurfaceDescriptionER21SQxSurfaceDescription"
          "R27SQxCreateSurfaceDescription",
          "_ZN20NQxfFlexEngineHelper40CopyResolutionToCreateSurfaceDescriptionERK17SQxResolutionInfo"
          "R27SQxCreateSurfaceDescription",
          "_ZN20NQxfFlexEngineHelper58CopyAudioSamplesDescriptionToCreateAudioSamplesDescription"
          "ER26SQxAudioSamplesDescriptionR32SQxCreateAudioSamplesDescription",
          "_ZN20NQxfFlexEngineHelper45CopyResolutionToCreateAudioSamplesDescriptionER17SQxResolutionInfo"
          "14EQxChannelType21EQxAudioBitsPerSampleR32SQxCreateAudioSamplesDescription"}) {
        EXPECT_NE(nullptr, dlsym(RTLD_DEFAULT, pszName)) << pszName;
    }
}

TEST(FlexEngineHelper, AudioBytesPerChannelForFramesAndFields)
{
    // frame rate -> bytes per channel for a frame and for a field
    const uint32_t aauiTable[12][2] = {
        {0, 0},       {8000, 4000}, {8008, 4004}, {7680, 3840}, {6400, 3200}, {6408, 3204},
        {4000, 4000}, {4004, 4004}, {3840, 1920}, {3200, 1600}, {3204, 1600}, {192000, 96000},
    };
    for (int iRate : {INT_MIN, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, INT_MAX}) {
        for (int iScan : {0, 1, 2, 3, 4, 5, -1, 6, 1000}) {
            const bool bKnown = iRate >= 0 && iRate < 12;
            EXPECT_EQ(bKnown ? aauiTable[iRate][iScan == 1 || iScan == 2] : 0u,
                      GetAudioBytesPerChannel(static_cast<EQxFrameRate>(iRate), static_cast<EQxScanMode>(iScan)))
                << "rate " << iRate << " scan " << iScan;
        }
    }
}

TEST(FlexEngineHelper, AudioDescriptionFromAResolution)
{
    struct {
        int iRate, iScan, iChannels, iBits;
        uint32_t uiSize, uiPolarity, uiContainer;
    } const asCases[] = {
        {keQxFrameRate25, 1, 2, 24, 7680, keQxPolarityF0, 32},
        {keQxFrameRateInvalid, 3, 2, 24, 0, keQxPolarityProgressive, 32},  // the other members still set
        {keQxFrameRate5994, 2, 8, 16, 8 * 1600, keQxPolarityF0, 16},
        {keQxFrameRate2997, 5, 16, 20, 16 * 6408, keQxPolarityInterlaced, 32},
        {keQxFrameRate4795, 1, 1, 8, 4004, keQxPolarityF0, 16},
        {keQxFrameRate50, 0, 4, 32, 4 * 3840, keQxPolarityProgressive, 32},
        {keQxFrameRate50, 4, 4, 17, 4 * 3840, keQxPolarityProgressive, 32},
        {keQxFrameRate50, 6, 4, -1, 4 * 3840, keQxPolarityProgressive, 16},
        {keQxFrameRate50, -7, 4, 24, 4 * 3840, keQxPolarityProgressive, 32},
        {keQxFrameRate24, 3, 0, 24, 0, keQxPolarityProgressive, 32},
        {keQxFrameRate24, 3, -1, 24, 0, keQxPolarityProgressive, 32},
        {keQxFrameRate24, 3, INT_MIN, 24, 0, keQxPolarityProgressive, 32},
        {99, 3, 2, 24, 0, keQxPolarityProgressive, 32},
        // 192000 bytes a channel: 22369 channels fit a 32-bit size, 22370 do not.
        {keQxFrameRateVariable, 3, 22369, 24, 22369u * 192000u, keQxPolarityProgressive, 32},
        {keQxFrameRateVariable, 3, 22370, 24, 0, keQxPolarityProgressive, 32},
    };
    for (const auto& r : asCases) {
        SCOPED_TRACE(::testing::Message() << "rate " << r.iRate << " scan " << r.iScan << " channels " << r.iChannels
                                          << " bits " << r.iBits);
        auto sCreate = Garbage<SQxCreateAudioSamplesDescription>();
        SQxResolutionInfo sResolution = Resolution(1920, 1080, r.iRate, r.iScan);
        CopyResolutionToCreateAudioSamplesDescription(sResolution, static_cast<EQxChannelType>(r.iChannels),
                                                      static_cast<EQxAudioBitsPerSample>(r.iBits), sCreate);
        // size, buffer size, polarity, host memory, first channel, transport
        // bits, channel type, interleaved, sample rate, container, bits,
        // user data, reserved.
        const std::vector<uint32_t> oExpected = {
            56, r.uiSize, r.uiPolarity, 1, 0, 24, uint32_t(r.iChannels), 1, 48000, r.uiContainer, uint32_t(r.iBits),
            0,  0,        0};
        EXPECT_EQ(oExpected, Words(sCreate));
    }
}

TEST(FlexEngineHelper, AudioDescriptionCopiesMembersAndSizesForTheLargestFrame)
{
    SQxAudioSamplesDescription sDescription = Numbered<SQxAudioSamplesDescription>(0x1000);
    sDescription.eFrameRate = keQxFrameRate60;
    for (int iChannels : {6, 0, -2, INT_MAX}) {
        sDescription.eChannelType = static_cast<EQxChannelType>(iChannels);
        auto sCreate = Garbage<SQxCreateAudioSamplesDescription>();
        CopyAudioSamplesDescriptionToCreateAudioSamplesDescription(sDescription, sCreate);
        const std::vector<uint32_t> oExpected = {
            56,     iChannels == 6 ? 6u * 8008u : 0u, 0x1002, 0x1003, 0x1004, 0x1005, uint32_t(iChannels),
            0x1007, 0x1008, 0x1009, 0x100A, 0x100B, 0, 0};
        EXPECT_EQ(oExpected, Words(sCreate)) << iChannels;
    }
}

// The words of a create description: the given head (words 0-12), then the
// members that only a create description has, as every helper leaves them:
// no minimum size, no initial clear, alpha 1, reserved words zero.
std::vector<uint32_t> CreateWords(std::vector<uint32_t> in_oHead)
{
    in_oHead.insert(in_oHead.end(), {0, keQxColorInvalid, 0x3F800000u, 0, 0, 0, 0, 0, 0, 0, 0});
    return in_oHead;
}

TEST(FlexEngineHelper, SurfaceDescriptionCopiesItsSharedRuns)
{
    // size; the first run (description words 1-5); the second run (words
    // 8-12; the pitch and buffer size are not copied); the user data (word
    // 14; the second-field offset is not copied); the two flags, both ways,
    // and zero reserved bytes.
    SQxSurfaceDescription sDescription = Numbered<SQxSurfaceDescription>(0x2000);
    sDescription.aucReserved[0] = sDescription.aucReserved[1] = 0x77;
    for (bool bShaped : {true, false}) {
        sDescription.bIsAlphaShaped = bShaped;
        sDescription.bAllowHostConversion = !bShaped;
        auto sCreate = Garbage<SQxCreateSurfaceDescription>();
        CopySurfaceDescriptionToCreateSurfaceDescription(sDescription, sCreate);
        EXPECT_EQ(CreateWords({96, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2008, 0x2009, 0x200A, 0x200B, 0x200C,
                               0x200E, bShaped ? 0x001u : 0x100u}),
                  Words(sCreate));
    }
}

TEST(FlexEngineHelper, SurfaceDescriptionFromAResolution)
{
    struct {
        uint32_t uiWidth, uiHeight;
        int iRate, iScan;
        uint32_t uiHeightExpected, uiPolarity, uiColorimetry;
    } const asCases[] = {
        {1920, 1080, keQxFrameRate2997, 1, 540, keQxPolarityF0, keQxColorimetryITUR_BT_709},
        {720, 487, keQxFrameRate2997, 2, 243, keQxPolarityF0, keQxColorimetryITUR_BT_601},
        {720, 576, keQxFrameRate25, 5, 576, keQxPolarityInterlaced, keQxColorimetryITUR_BT_601},
        {3840, 2160, 99, 0, 2160, keQxPolarityProgressive, keQxColorimetryITUR_BT_2020},
        {3840, 2160, 99, 3, 2160, keQxPolarityProgressive, keQxColorimetryITUR_BT_2020},
        {3840, 2160, 99, 4, 2160, keQxPolarityProgressive, keQxColorimetryITUR_BT_2020},
        {3840, 2160, 99, 6, 2160, keQxPolarityProgressive, keQxColorimetryITUR_BT_2020},
        {3840, 2160, 99, -1, 2160, keQxPolarityProgressive, keQxColorimetryITUR_BT_2020},
    };
    for (const auto& r : asCases) {
        SCOPED_TRACE(::testing::Message() << r.uiWidth << "x" << r.uiHeight << " scan " << r.iScan);
        auto sCreate = Garbage<SQxCreateSurfaceDescription>();
        EXPECT_EQ(S_OK, CopyResolutionToCreateSurfaceDescription(
                            Resolution(r.uiWidth, r.uiHeight, r.iRate, r.iScan), sCreate));
        // 8-bit YUYV in host memory, 16-byte aligned, no aspect ratio, no
        // user data, not shaped, host conversion allowed.
        EXPECT_EQ(CreateWords({96, keQxSurfaceFormatYUYV422, r.uiWidth, r.uiHeightExpected, r.uiPolarity,
                               r.uiColorimetry, 8, keQxAspectRatioInvalid, keQxMemoryLocationHost, 16,
                               uint32_t(r.iRate), 0, 0x100}),
                  Words(sCreate));
    }
}

// The buffer, with a default header (its first eight bytes, all else zero)
// at each offset given.
std::vector<unsigned char> WithHeaders(std::vector<unsigned char> in_oBuffer, std::vector<size_t> in_oOffsets)
{
    for (size_t uiOffset : in_oOffsets) {
        const unsigned char aucStart[8] = {0x00, 0x01, 0x00, 0x00, 0xFE, 0x00, 0x00, 0x00};
        std::memcpy(in_oBuffer.data() + uiOffset, aucStart, 8);
    }
    return in_oBuffer;
}

TEST(DefaultQadHeader, WriteTouchesOnlyTheFirstEightBytesAndTheLastWord)
{
    std::vector<unsigned char> oBlock(512, 0x5A);
    WriteDefaultQadHeader(oBlock.data());
    std::vector<unsigned char> oExpected = WithHeaders(std::vector<unsigned char>(512, 0x5A), {0});
    oExpected[254] = oExpected[255] = 0;
    EXPECT_EQ(oExpected, oBlock);
    WriteDefaultQadHeader(nullptr);
}

TEST(DefaultQadHeader, InsertZeroesTheGivenSizeAndWritesOneOrTwoHeaders)
{
    // Each buffer is exactly the size given, so an overrun is also caught by
    // the address sanitizer; the guard bytes catch it in a plain build. The
    // second header starts at size / 2, rounded down.
    struct {
        unsigned uiSize;
        std::vector<int> oPolarities;
        std::vector<size_t> oHeaders;
    } const asCases[] = {
        {4096, {keQxPolarityBackToBack}, {0, 2048}},
        {4096, {0, 1, 2, 3, 4, 6, -5}, {0}},
        {4097, {keQxPolarityBackToBack}, {0, 2048}},
        {0, {keQxPolarityBackToBack}, {}},
        {100, {keQxPolarityProgressive}, {}},
        {255, {keQxPolarityBackToBack}, {}},
        {256, {keQxPolarityProgressive, keQxPolarityBackToBack}, {0}},
        {300, {keQxPolarityBackToBack}, {0}},
        {510, {keQxPolarityBackToBack}, {0}},
        {511, {keQxPolarityBackToBack}, {0, 255}},
        {512, {keQxPolarityBackToBack}, {0, 256}},
    };
    for (const auto& r : asCases) {
        for (int iPolarity : r.oPolarities) {
            SCOPED_TRACE(::testing::Message() << "size " << r.uiSize << " polarity " << iPolarity);
            std::vector<unsigned char> oStorage(r.uiSize + 64, 0x5A);
            InsertDefaultQadHeader(oStorage.data(), r.uiSize, static_cast<EQxPolarity>(iPolarity));
            std::vector<unsigned char> oExpected = WithHeaders(std::vector<unsigned char>(r.uiSize, 0), r.oHeaders);
            oExpected.resize(r.uiSize + 64, 0x5A);
            EXPECT_EQ(oExpected, oStorage);
            std::vector<unsigned char> oExact(r.uiSize);
            InsertDefaultQadHeader(oExact.empty() ? nullptr : oExact.data(), r.uiSize,
                                   static_cast<EQxPolarity>(iPolarity));
        }
    }
    InsertDefaultQadHeader(nullptr, 4096, keQxPolarityBackToBack);
}

}  // namespace
