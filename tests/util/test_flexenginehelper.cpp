// Create descriptions made from surfaces, audio buffers and resolutions, the
// audio buffer size table, and the default audio block header.
#include <qxbase/qxbase.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

namespace {

using namespace NQxfFlexEngineHelper;

// The 32-bit words of a structure, to check member order against the byte
// layout other modules see.
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
    uint32_t auiWords[sizeof(T) / 4];
    for (uint32_t i = 0; i < sizeof(T) / 4; ++i) {
        auiWords[i] = in_uiBase + i;
    }
    T sValue;
    std::memcpy(&sValue, auiWords, sizeof(T));
    return sValue;
}

SQxResolutionInfo Resolution(uint32_t in_uiWidth, uint32_t in_uiHeight, int in_iFrameRate, int in_iScanMode)
{
    return {sizeof(SQxResolutionInfo), in_uiWidth, in_uiHeight, static_cast<EQxFrameRate>(in_iFrameRate),
            static_cast<EQxScanMode>(in_iScanMode)};
}

SQxCreateAudioSamplesDescription AudioFor(int in_iFrameRate, int in_iScanMode, int in_iChannels, int in_iBits)
{
    SQxCreateAudioSamplesDescription sCreate;
    std::memset(&sCreate, 0xAB, sizeof(sCreate));
    SQxResolutionInfo sResolution = Resolution(1920, 1080, in_iFrameRate, in_iScanMode);
    CopyResolutionToCreateAudioSamplesDescription(sResolution,
                                                  static_cast<EQxChannelType>(in_iChannels),
                                                  static_cast<EQxAudioBitsPerSample>(in_iBits), sCreate);
    return sCreate;
}

// Modules built against the SDK's headers link to these functions by their
// exported names, which carry the exact parameter types: only the resolution
// of CopyResolutionToCreateSurfaceDescription is taken as const.
TEST(FlexEngineHelperExports, FunctionsCarryTheSdkParameterTypes)
{
    static_assert(std::is_same<decltype(&CopySurfaceDescriptionToCreateSurfaceDescription),
                               void (*)(SQxSurfaceDescription&, SQxCreateSurfaceDescription&)>::value,
                  "surface copy");
    static_assert(std::is_same<decltype(&CopyResolutionToCreateSurfaceDescription),
                               HRESULT (*)(const SQxResolutionInfo&, SQxCreateSurfaceDescription&)>::value,
                  "surface from a resolution");
    static_assert(std::is_same<decltype(&CopyAudioSamplesDescriptionToCreateAudioSamplesDescription),
                               void (*)(SQxAudioSamplesDescription&, SQxCreateAudioSamplesDescription&)>::value,
                  "audio copy");
    static_assert(std::is_same<decltype(&CopyResolutionToCreateAudioSamplesDescription),
                               void (*)(SQxResolutionInfo&, EQxChannelType, EQxAudioBitsPerSample,
                                        SQxCreateAudioSamplesDescription&)>::value,
                  "audio from a resolution");
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

TEST(AudioBytesPerChannel, WholeTableForFramesAndFields)
{
    // frame rate -> bytes per channel for a frame and for a field
    const uint32_t aauiTable[12][2] = {
        {0, 0},       {8000, 4000}, {8008, 4004}, {7680, 3840}, {6400, 3200}, {6408, 3204},
        {4000, 4000}, {4004, 4004}, {3840, 1920}, {3200, 1600}, {3204, 1600}, {192000, 96000},
    };
    for (int iRate = 0; iRate < 12; ++iRate) {
        const EQxFrameRate eRate = static_cast<EQxFrameRate>(iRate);
        for (int iScan : {0, 3, 4, 5, -1, 6, 1000}) {
            EXPECT_EQ(aauiTable[iRate][0], GetAudioBytesPerChannel(eRate, static_cast<EQxScanMode>(iScan)))
                << "rate " << iRate << " scan " << iScan;
        }
        for (int iScan : {1, 2}) {
            EXPECT_EQ(aauiTable[iRate][1], GetAudioBytesPerChannel(eRate, static_cast<EQxScanMode>(iScan)))
                << "rate " << iRate << " scan " << iScan;
        }
    }
    for (int iRate : {INT_MIN, -1, 12, 13, 1000, INT_MAX}) {
        EXPECT_EQ(0u, GetAudioBytesPerChannel(static_cast<EQxFrameRate>(iRate), keQxScanModeProgressive));
        EXPECT_EQ(0u, GetAudioBytesPerChannel(static_cast<EQxFrameRate>(iRate), keQxScanModeFirstFieldTop));
    }
}

TEST(CopyResolutionToCreateAudioSamplesDescription, FieldsInOrder)
{
    // size, buffer size, polarity, host memory, first channel, transport bits,
    // channel type, interleaved, sample rate, container, bits, user data,
    // reserved.
    const std::vector<uint32_t> oExpected = {56, 7680, 1, 1, 0, 24, 2, 1, 48000, 32, 24, 0, 0, 0};
    EXPECT_EQ(oExpected, Words(AudioFor(keQxFrameRate25, keQxScanModeFirstFieldTop, 2, 24)));
    // An unknown rate still fills every other member.
    const std::vector<uint32_t> oNoRate = {56, 0, 4, 1, 0, 24, 2, 1, 48000, 32, 24, 0, 0, 0};
    EXPECT_EQ(oNoRate, Words(AudioFor(keQxFrameRateInvalid, keQxScanModeProgressive, 2, 24)));
}

TEST(CopyResolutionToCreateAudioSamplesDescription, SizesPolaritiesAndContainers)
{
    struct {
        int iRate, iScan, iChannels, iBits;
        uint32_t uiSize;
        EQxPolarity ePolarity;
        uint32_t uiContainer;
    } const asCases[] = {
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
    for (const auto& rsCase : asCases) {
        const SQxCreateAudioSamplesDescription sCreate =
            AudioFor(rsCase.iRate, rsCase.iScan, rsCase.iChannels, rsCase.iBits);
        EXPECT_EQ(rsCase.uiSize, sCreate.ulBufferSize) << rsCase.iRate << "/" << rsCase.iChannels;
        EXPECT_EQ(rsCase.ePolarity, sCreate.ePolarity) << rsCase.iScan;
        EXPECT_EQ(rsCase.uiContainer, sCreate.ulContainerBitsPerSample) << rsCase.iBits;
        EXPECT_EQ(rsCase.iBits, sCreate.eBitsPerSample);
        EXPECT_EQ(rsCase.iChannels, sCreate.eChannelType);
    }
}

TEST(CopyAudioSamplesDescriptionToCreateAudioSamplesDescription, CopiesMembersAndSizesForTheLargestFrame)
{
    SQxAudioSamplesDescription sDescription = Numbered<SQxAudioSamplesDescription>(0x1000);
    sDescription.eChannelType = keQxChannelType6Channels;
    sDescription.eFrameRate = keQxFrameRate60;

    SQxCreateAudioSamplesDescription sCreate;
    std::memset(&sCreate, 0xAB, sizeof(sCreate));
    CopyAudioSamplesDescriptionToCreateAudioSamplesDescription(sDescription, sCreate);
    const std::vector<uint32_t> oExpected = {56,     6 * 8008, 0x1002, 0x1003, 0x1004, 0x1005, 6,
                                             0x1007, 0x1008,   0x1009, 0x100A, 0x100B, 0,      0};
    EXPECT_EQ(oExpected, Words(sCreate));

    for (int iChannels : {0, -2, INT_MAX}) {
        sDescription.eChannelType = static_cast<EQxChannelType>(iChannels);
        CopyAudioSamplesDescriptionToCreateAudioSamplesDescription(sDescription, sCreate);
        EXPECT_EQ(0u, sCreate.ulBufferSize) << iChannels;
    }
}

// The members that only a create description has, as every helper leaves
// them: no minimum size, no initial clear, reserved bytes zero.
void ExpectCreationDefaults(const SQxCreateSurfaceDescription& in_rsCreate)
{
    EXPECT_EQ(0, in_rsCreate.aucReserved[0]);
    EXPECT_EQ(0, in_rsCreate.aucReserved[1]);
    EXPECT_EQ(0u, in_rsCreate.ulMinimumBufferSize);
    EXPECT_EQ(keQxColorInvalid, in_rsCreate.eInitialColor);
    EXPECT_EQ(1.0f, in_rsCreate.fInitialAlpha);
    for (uint32_t uiReserved : in_rsCreate.aulReserved) {
        EXPECT_EQ(0u, uiReserved);
    }
}

SQxSurfaceDescription NumberedSurfaceDescription()
{
    // The last word holds the flags, set to valid bool values here.
    SQxSurfaceDescription sDescription = Numbered<SQxSurfaceDescription>(0x2000);
    sDescription.bIsAlphaShaped = true;
    sDescription.bAllowHostConversion = false;
    sDescription.aucReserved[0] = 0x77;
    sDescription.aucReserved[1] = 0x77;
    return sDescription;
}

TEST(CopySurfaceDescriptionToCreateSurfaceDescription, SharedRunsLandAtTheirPlaces)
{
    SQxSurfaceDescription sDescription = NumberedSurfaceDescription();
    SQxCreateSurfaceDescription sCreate;
    std::memset(&sCreate, 0xCD, sizeof(sCreate));
    CopySurfaceDescriptionToCreateSurfaceDescription(sDescription, sCreate);

    const std::vector<uint32_t> oWords = Words(sCreate);
    // size; the first run (description words 1-5); the second run (words
    // 8-12; the pitch and buffer size are not copied); the user data (word
    // 14; the second-field offset is not copied).
    const std::vector<uint32_t> oExpectedHead = {96,     0x2001, 0x2002, 0x2003, 0x2004, 0x2005,
                                                 0x2008, 0x2009, 0x200A, 0x200B, 0x200C, 0x200E};
    EXPECT_EQ(oExpectedHead, std::vector<uint32_t>(oWords.begin(), oWords.begin() + 12));
    EXPECT_TRUE(sCreate.bIsAlphaShaped);
    EXPECT_FALSE(sCreate.bAllowHostConversion);
    ExpectCreationDefaults(sCreate);

    // The flags themselves, both ways.
    SQxSurfaceDescription sFlags = sDescription;
    sFlags.bIsAlphaShaped = false;
    sFlags.bAllowHostConversion = true;
    CopySurfaceDescriptionToCreateSurfaceDescription(sFlags, sCreate);
    EXPECT_FALSE(sCreate.bIsAlphaShaped);
    EXPECT_TRUE(sCreate.bAllowHostConversion);
}

TEST(CopyResolutionToCreateSurfaceDescription, FieldsFramesAndDefaults)
{
    SQxCreateSurfaceDescription sCreate;
    std::memset(&sCreate, 0xCD, sizeof(sCreate));
    EXPECT_EQ(S_OK, CopyResolutionToCreateSurfaceDescription(
                        Resolution(1920, 1080, keQxFrameRate2997, keQxScanModeFirstFieldTop), sCreate));
    EXPECT_EQ(96u, sCreate.size);
    EXPECT_EQ(1920u, sCreate.ulWidth);
    EXPECT_EQ(540u, sCreate.ulHeight);
    EXPECT_EQ(keQxPolarityF0, sCreate.ePolarity);
    EXPECT_EQ(keQxColorimetryITUR_BT_709, sCreate.eColorimetry);
    EXPECT_EQ(keQxFrameRate2997, sCreate.eFrameRate);
    // Defaults.
    EXPECT_EQ(keQxSurfaceFormatYUYV422, sCreate.eSurfaceFormat);
    EXPECT_EQ(8u, sCreate.ulComponentBitCount);
    EXPECT_EQ(keQxAspectRatioInvalid, sCreate.eAspectRatio);
    EXPECT_EQ(keQxMemoryLocationHost, sCreate.eMemoryLocation);
    EXPECT_EQ(16u, sCreate.ulAlignment);
    EXPECT_EQ(0u, sCreate.ulUserData);
    EXPECT_FALSE(sCreate.bIsAlphaShaped);
    EXPECT_TRUE(sCreate.bAllowHostConversion);
    ExpectCreationDefaults(sCreate);

    CopyResolutionToCreateSurfaceDescription(Resolution(720, 487, keQxFrameRate2997, keQxScanModeSecondFieldTop),
                                             sCreate);
    EXPECT_EQ(243u, sCreate.ulHeight);
    EXPECT_EQ(keQxPolarityF0, sCreate.ePolarity);
    EXPECT_EQ(keQxColorimetryITUR_BT_601, sCreate.eColorimetry);

    CopyResolutionToCreateSurfaceDescription(
        Resolution(720, 576, keQxFrameRate25, keQxScanModeInterlacedFieldsInAFrame), sCreate);
    EXPECT_EQ(576u, sCreate.ulHeight);
    EXPECT_EQ(keQxPolarityInterlaced, sCreate.ePolarity);

    for (int iScan : {0, 3, 4, 6, -1}) {
        CopyResolutionToCreateSurfaceDescription(Resolution(3840, 2160, 99, iScan), sCreate);
        EXPECT_EQ(2160u, sCreate.ulHeight) << iScan;
        EXPECT_EQ(keQxPolarityProgressive, sCreate.ePolarity) << iScan;
        EXPECT_EQ(keQxColorimetryITUR_BT_2020, sCreate.eColorimetry) << iScan;
        EXPECT_EQ(99, sCreate.eFrameRate) << iScan;
    }
}

// The default header's bytes as a little-endian 64-bit value.
constexpr uint64_t kui64HeaderStart = 0x000000FE00000100ull;

uint64_t FirstEightBytes(const unsigned char* in_pucBlock)
{
    uint64_t ui64Value = 0;
    for (int i = 7; i >= 0; --i) {
        ui64Value = (ui64Value << 8) | in_pucBlock[i];
    }
    return ui64Value;
}

TEST(DefaultQadHeader, WriteTouchesOnlyTheFirstEightBytesAndTheLastWord)
{
    std::vector<unsigned char> oBlock(512, 0x5A);
    WriteDefaultQadHeader(oBlock.data());
    EXPECT_EQ(kui64HeaderStart, FirstEightBytes(oBlock.data()));
    const unsigned char aucStart[8] = {0x00, 0x01, 0x00, 0x00, 0xFE, 0x00, 0x00, 0x00};
    EXPECT_EQ(0, std::memcmp(aucStart, oBlock.data(), 8));
    for (size_t i = 8; i < 254; ++i) {
        ASSERT_EQ(0x5A, oBlock[i]) << i;
    }
    EXPECT_EQ(0, oBlock[254]);
    EXPECT_EQ(0, oBlock[255]);
    for (size_t i = 256; i < oBlock.size(); ++i) {
        ASSERT_EQ(0x5A, oBlock[i]) << i;
    }
    WriteDefaultQadHeader(nullptr);
}

// Checks that the buffer is zero except for a default header at each offset
// given.
void ExpectHeadersAt(const std::vector<unsigned char>& in_roBuffer, std::vector<size_t> in_oOffsets)
{
    std::vector<unsigned char> oExpected(in_roBuffer.size(), 0);
    for (size_t uiOffset : in_oOffsets) {
        oExpected[uiOffset + 1] = 0x01;
        oExpected[uiOffset + 4] = 0xFE;
    }
    for (size_t i = 0; i < in_roBuffer.size(); ++i) {
        ASSERT_EQ(oExpected[i], in_roBuffer[i]) << "byte " << i;
    }
}

TEST(DefaultQadHeader, InsertZeroesAndWritesOneOrTwoHeaders)
{
    std::vector<unsigned char> oBuffer(4096, 0x5A);
    InsertDefaultQadHeader(oBuffer.data(), 4096, keQxPolarityBackToBack);
    ExpectHeadersAt(oBuffer, {0, 2048});
    EXPECT_EQ(kui64HeaderStart, FirstEightBytes(oBuffer.data() + 2048));

    for (int iPolarity : {0, 1, 2, 3, 4, 6, -5}) {
        std::fill(oBuffer.begin(), oBuffer.end(), 0x5A);
        InsertDefaultQadHeader(oBuffer.data(), 4096, static_cast<EQxPolarity>(iPolarity));
        ExpectHeadersAt(oBuffer, {0});
    }

    // Odd size: the second header starts at size / 2, rounded down.
    std::vector<unsigned char> oOdd(4097, 0x5A);
    InsertDefaultQadHeader(oOdd.data(), 4097, keQxPolarityBackToBack);
    ExpectHeadersAt(oOdd, {0, 2048});
}

TEST(DefaultQadHeader, InsertStaysInsideTheGivenSize)
{
    // Each buffer is exactly the size given, so an overrun is also caught by
    // the address sanitizer; the guard bytes catch it in a plain build.
    struct {
        unsigned uiSize;
        int iPolarity;
        std::vector<size_t> oHeaders;
    } const asCases[] = {
        {0, keQxPolarityBackToBack, {}},
        {100, keQxPolarityProgressive, {}},
        {255, keQxPolarityBackToBack, {}},
        {256, keQxPolarityProgressive, {0}},
        {256, keQxPolarityBackToBack, {0}},
        {300, keQxPolarityBackToBack, {0}},
        {510, keQxPolarityBackToBack, {0}},
        {511, keQxPolarityBackToBack, {0, 255}},
        {512, keQxPolarityBackToBack, {0, 256}},
    };
    for (const auto& rsCase : asCases) {
        std::vector<unsigned char> oStorage(rsCase.uiSize + 64, 0x5A);
        InsertDefaultQadHeader(oStorage.data(), rsCase.uiSize, static_cast<EQxPolarity>(rsCase.iPolarity));
        ExpectHeadersAt(std::vector<unsigned char>(oStorage.begin(), oStorage.begin() + rsCase.uiSize),
                        rsCase.oHeaders);
        for (size_t i = rsCase.uiSize; i < oStorage.size(); ++i) {
            ASSERT_EQ(0x5A, oStorage[i]) << "size " << rsCase.uiSize << " byte " << i;
        }
        std::vector<unsigned char> oExact(rsCase.uiSize);
        InsertDefaultQadHeader(oExact.empty() ? nullptr : oExact.data(), rsCase.uiSize,
                               static_cast<EQxPolarity>(rsCase.iPolarity));
    }
    InsertDefaultQadHeader(nullptr, 4096, keQxPolarityBackToBack);
}

}  // namespace
