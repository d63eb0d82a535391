// Ancillary packet texts (both lookups, every known packet, truncation) and
// the enumeration texts and resolution colorimetry of NQxHelper.
#include <qxbase/qxbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct SKnownPacket {
    unsigned char ucDid;
    unsigned char ucSdid;
    bool bAnySdid;
    const wchar_t* pwszTail;  // the Ex text after "Line:<n> "
};

// The bare description: what follows " - " in the Ex text.
std::wstring Description(const SKnownPacket& in_rsKnown)
{
    const std::wstring oTail = in_rsKnown.pwszTail;
    return oTail.substr(oTail.find(L" - ") + 3);
}

// Written out in full, independently of the library's table.
const SKnownPacket kasKnown[] = {
    {0x00, 0, true, L"DID:0x00 - Undefined (S291)"},
    {0x80, 0, true, L"DID:0x80 - Packet marked for deletion (S291)"},
    {0x84, 0, true, L"DID:0x84 - End packet (S291)"},
    {0x88, 0, true, L"DID:0x88 - Start packet (S291)"},
    {0xF0, 0, true, L"DID:0xF0 - Camera position (S315)"},
    {0x08, 0x08, false, L"DID:0x08 SDID:0x08 - MPEG recoding data (S353)"},
    {0x40, 0x01, false, L"DID:0x40 SDID:0x01 - SDTI transport in active frame space (S305)"},
    {0x40, 0x02, false, L"DID:0x40 SDID:0x02 - HD-SDTI transport in active frame space (S348)"},
    {0x40, 0x04, false, L"DID:0x40 SDID:0x04 - Link Encryption Message 1 (S427)"},
    {0x40, 0x05, false, L"DID:0x40 SDID:0x05 - Link Encryption Message 2 (S427)"},
    {0x40, 0x06, false, L"DID:0x40 SDID:0x06 - Link Encryption Metadata (S427)"},
    {0x41, 0x01, false, L"DID:0x41 SDID:0x01 - Payload Identification (S352M)"},
    {0x41, 0x05, false, L"DID:0x41 SDID:0x05 - AFD and Bar Data (S2016-3)"},
    {0x41, 0x06, false, L"DID:0x41 SDID:0x06 - Pan-Scan Data (S2016-4)"},
    {0x41, 0x07, false, L"DID:0x41 SDID:0x07 - ANSI/SCTE 104 messages (S2010)"},
    {0x41, 0x08, false, L"DID:0x41 SDID:0x08 - DVB/SCTE VBI data (S2031)"},
    {0x43, 0x01, false, L"DID:0x43 SDID:0x01 - Structure of inter-station control data (ITU-R BT.1685)"},
    {0x43, 0x02, false, L"DID:0x43 SDID:0x02 - SDP OP47 Teletext (RDD8)"},
    {0x43, 0x03, false, L"DID:0x43 SDID:0x03 - Multipacket OP47 Teletext (RDD8)"},
    {0x44, 0x04, false, L"DID:0x44 SDID:0x04 - KLV Metadata (RP214)"},
    {0x44, 0x44, false, L"DID:0x44 SDID:0x44 - Packing UMID and Program ID Label Data (RP214)"},
    {0x45, 0x01, false, L"DID:0x45 SDID:0x01 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x02, false, L"DID:0x45 SDID:0x02 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x03, false, L"DID:0x45 SDID:0x03 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x04, false, L"DID:0x45 SDID:0x04 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x05, false, L"DID:0x45 SDID:0x05 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x06, false, L"DID:0x45 SDID:0x06 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x07, false, L"DID:0x45 SDID:0x07 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x08, false, L"DID:0x45 SDID:0x08 - Compressed Audio Metadata (S2020-1)"},
    {0x45, 0x09, false, L"DID:0x45 SDID:0x09 - Compressed Audio Metadata (S2020-1)"},
    {0x50, 0x01, false, L"DID:0x50 SDID:0x01 - WSS OP47 data (RDD8)"},
    {0x51, 0x01, false, L"DID:0x51 SDID:0x01 - Film Codes (RP215)"},
    {0x60, 0x60, false, L"DID:0x60 SDID:0x60 - ANC Time Code (S12M-2)"},
    {0x61, 0x01, false, L"DID:0x61 SDID:0x01 - CEA708 Closed caption (S334-1)"},
    {0x61, 0x02, false, L"DID:0x61 SDID:0x02 - CEA608 Closed caption (S334-1)"},
    {0x62, 0x01, false, L"DID:0x62 SDID:0x01 - Program Description (RP207)"},
    {0x62, 0x02, false, L"DID:0x62 SDID:0x02 - Data broadcast (DTV) (S334-1)"},
    {0x62, 0x03, false, L"DID:0x62 SDID:0x03 - VBI data (RP208)"},
};

const SKnownPacket* FindKnown(unsigned in_uiDid, unsigned in_uiSdid)
{
    for (const SKnownPacket& rsKnown : kasKnown) {
        if (rsKnown.ucDid == in_uiDid && (rsKnown.bAnySdid || rsKnown.ucSdid == in_uiSdid)) {
            return &rsKnown;
        }
    }
    return nullptr;
}

std::wstring ExText(unsigned in_uiLine, unsigned in_uiDid, unsigned in_uiSdid)
{
    wchar_t awszBuffer[256];
    EXPECT_EQ(1, NQxHelper::VancPacketTypeToStringEx(static_cast<unsigned char>(in_uiLine),
                                                     static_cast<unsigned char>(in_uiDid),
                                                     static_cast<unsigned char>(in_uiSdid), awszBuffer, 256));
    return awszBuffer;
}

std::wstring ExpectedUnknown(unsigned in_uiLine, unsigned in_uiDid, unsigned in_uiSdid)
{
    std::wostringstream oText;
    oText << L"Line:" << std::dec << in_uiLine << L" DID:0x" << std::hex << in_uiDid << L" SDID-DBN:0x" << in_uiSdid
          << L" - Unknown";
    return oText.str();
}

TEST(VancPacketTypeToStringEx, EveryKnownPacketOnSeveralLines)
{
    for (const SKnownPacket& rsKnown : kasKnown) {
        for (unsigned uiLine : {0u, 9u, 21u, 255u}) {
            const std::wstring oExpected = L"Line:" + std::to_wstring(uiLine) + L" " + rsKnown.pwszTail;
            EXPECT_EQ(oExpected, ExText(uiLine, rsKnown.ucDid, rsKnown.ucSdid));
        }
    }
    EXPECT_EQ(L"Line:9 DID:0x41 SDID:0x05 - AFD and Bar Data (S2016-3)", ExText(9, 0x41, 0x05));
}

TEST(VancPacketTypeToStringEx, EveryPairIsEitherItsOwnPacketOrUnknown)
{
    // The Ex lookup never falls through to another DID's packets, and the
    // packets whose SDID is not looked at match every SDID.
    for (unsigned uiDid = 0; uiDid < 256; ++uiDid) {
        for (unsigned uiSdid = 0; uiSdid < 256; ++uiSdid) {
            const SKnownPacket* psKnown = FindKnown(uiDid, uiSdid);
            const std::wstring oExpected = psKnown != nullptr ? std::wstring(L"Line:7 ") + psKnown->pwszTail
                                                              : ExpectedUnknown(7, uiDid, uiSdid);
            ASSERT_EQ(oExpected, ExText(7, uiDid, uiSdid)) << "DID " << uiDid << " SDID " << uiSdid;
        }
    }
}

TEST(VancPacketTypeToStringEx, UnknownPacketsUseLowerCaseHexWithoutLeadingZeros)
{
    EXPECT_EQ(L"Line:10 DID:0x41 SDID-DBN:0x9 - Unknown", ExText(10, 0x41, 0x09));
    EXPECT_EQ(L"Line:255 DID:0xf1 SDID-DBN:0x0 - Unknown", ExText(255, 0xF1, 0x00));
    EXPECT_EQ(L"Line:0 DID:0x62 SDID-DBN:0x4 - Unknown", ExText(0, 0x62, 0x04));
    EXPECT_EQ(L"Line:3 DID:0xff SDID-DBN:0xab - Unknown", ExText(3, 0xFF, 0xAB));
    // A SDID inside another DID's range is still unknown for this DID.
    EXPECT_EQ(L"Line:1 DID:0x44 SDID-DBN:0x5 - Unknown", ExText(1, 0x44, 0x05));
    EXPECT_EQ(L"Line:1 DID:0x45 SDID-DBN:0xa - Unknown", ExText(1, 0x45, 0x0A));
}

TEST(VancPacketTypeToStringEx, NullBufferReturnsZero)
{
    EXPECT_EQ(0, NQxHelper::VancPacketTypeToStringEx(9, 0x41, 0x05, nullptr, 0));
    EXPECT_EQ(0, NQxHelper::VancPacketTypeToStringEx(9, 0x41, 0x05, nullptr, 80));
    EXPECT_EQ(0, NQxHelper::VancPacketTypeToStringEx(9, 0xF1, 0x05, nullptr, 80));
}

TEST(VancPacketTypeToStringEx, ShortBuffersHoldATerminatedPrefixAndNothingBeyond)
{
    const wchar_t kwcGuard = L'\x2603';
    const unsigned char aaucPackets[][3] = {
        {255, 0x43, 0x01},  // the longest known text, 86 characters
        {9, 0x41, 0x05},
        {0, 0x00, 0x77},
        {255, 0xF1, 0xFF},  // unknown
    };
    for (const auto& raucPacket : aaucPackets) {
        const std::wstring oFull = ExText(raucPacket[0], raucPacket[1], raucPacket[2]);
        ASSERT_GT(oFull.size(), 30u);
        for (unsigned uiLength = 0; uiLength <= 80; ++uiLength) {
            std::vector<wchar_t> oBuffer(100, kwcGuard);
            ASSERT_EQ(1, NQxHelper::VancPacketTypeToStringEx(raucPacket[0], raucPacket[1], raucPacket[2],
                                                             oBuffer.data(), uiLength));
            for (size_t i = uiLength; i < oBuffer.size(); ++i) {
                ASSERT_EQ(kwcGuard, oBuffer[i]) << "written past length " << uiLength;
            }
            if (uiLength == 0) {
                continue;
            }
            const size_t uiKept = std::min<size_t>(oFull.size(), uiLength - 1);
            ASSERT_EQ(L'\0', oBuffer[uiKept]) << "length " << uiLength;
            ASSERT_EQ(oFull.substr(0, uiKept), std::wstring(oBuffer.data())) << "length " << uiLength;
        }
    }
}

TEST(VancPacketTypeToString, KnownPairsGiveTheirOwnDescription)
{
    for (const SKnownPacket& rsKnown : kasKnown) {
        EXPECT_EQ(Description(rsKnown), NQxHelper::VancPacketTypeToString(rsKnown.ucDid, rsKnown.ucSdid));
    }
}

TEST(VancPacketTypeToString, DidsWhoseSdidIsIgnoredMatchEverySdid)
{
    for (unsigned uiSdid = 0; uiSdid < 256; ++uiSdid) {
        const unsigned char ucSdid = static_cast<unsigned char>(uiSdid);
        ASSERT_STREQ(L"Undefined (S291)", NQxHelper::VancPacketTypeToString(0x00, ucSdid));
        ASSERT_STREQ(L"Packet marked for deletion (S291)", NQxHelper::VancPacketTypeToString(0x80, ucSdid));
        ASSERT_STREQ(L"End packet (S291)", NQxHelper::VancPacketTypeToString(0x84, ucSdid));
        ASSERT_STREQ(L"Start packet (S291)", NQxHelper::VancPacketTypeToString(0x88, ucSdid));
        ASSERT_STREQ(L"Camera position (S315)", NQxHelper::VancPacketTypeToString(0xF0, ucSdid));
    }
}

TEST(VancPacketTypeToString, UnknownSdidFallsThroughToLaterDids)
{
    struct {
        unsigned char ucDid, ucSdid;
        const wchar_t* pwszExpected;
    } const asCases[] = {
        {0x41, 0x02, L"SDP OP47 Teletext (RDD8)"},
        {0x41, 0x09, L"Compressed Audio Metadata (S2020-1)"},
        {0x45, 0x60, L"ANC Time Code (S12M-2)"},
        {0x08, 0x01, L"SDTI transport in active frame space (S305)"},
        {0x08, 0x09, L"Compressed Audio Metadata (S2020-1)"},
        {0x08, 0x44, L"Packing UMID and Program ID Label Data (RP214)"},
        {0x40, 0x03, L"Multipacket OP47 Teletext (RDD8)"},
        {0x40, 0x08, L"DVB/SCTE VBI data (S2031)"},
        {0x43, 0x04, L"KLV Metadata (RP214)"},
        {0x44, 0x01, L"Compressed Audio Metadata (S2020-1)"},
        {0x50, 0x02, L"CEA608 Closed caption (S334-1)"},
        {0x51, 0x60, L"ANC Time Code (S12M-2)"},
        {0x61, 0x03, L"VBI data (RP208)"},
        {0x60, 0x01, L"CEA708 Closed caption (S334-1)"},
        // The first match in table order wins: SDID 0x01 of DID 0x41's chain
        // is its own packet, not DID 0x43's.
        {0x41, 0x01, L"Payload Identification (S352M)"},
        {0x44, 0x02, L"Compressed Audio Metadata (S2020-1)"},
    };
    for (const auto& rsCase : asCases) {
        EXPECT_STREQ(rsCase.pwszExpected, NQxHelper::VancPacketTypeToString(rsCase.ucDid, rsCase.ucSdid))
            << std::hex << "DID 0x" << unsigned(rsCase.ucDid) << " SDID 0x" << unsigned(rsCase.ucSdid);
    }
}

TEST(VancPacketTypeToString, NoLaterMatchOrUnknownDidGivesUnknownType)
{
    // No packet looks back to an earlier DID of the chain.
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x62, 0x04));
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x62, 0x60));
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x61, 0x08));
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x45, 0x44));
    const std::set<unsigned> oChain = {0x08, 0x40, 0x41, 0x43, 0x44, 0x45, 0x50, 0x51, 0x60, 0x61, 0x62};
    for (unsigned uiDid : oChain) {
        EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(static_cast<unsigned char>(uiDid), 0x00));
        EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(static_cast<unsigned char>(uiDid), 0xFF));
    }
    const std::set<unsigned> oIgnoringSdid = {0x00, 0x80, 0x84, 0x88, 0xF0};
    for (unsigned uiDid = 0; uiDid < 256; ++uiDid) {
        if (oChain.count(uiDid) != 0 || oIgnoringSdid.count(uiDid) != 0) {
            continue;
        }
        for (unsigned uiSdid = 0; uiSdid < 256; ++uiSdid) {
            ASSERT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(static_cast<unsigned char>(uiDid),
                                                                            static_cast<unsigned char>(uiSdid)))
                << "DID " << uiDid << " SDID " << uiSdid;
        }
    }
}

TEST(EnumerationTexts, FrameRatesScanModesPolarities)
{
    const wchar_t* const apwszRates[] = {L"Invalid", L"24 fps", L"23.98 fps", L"25 fps", L"30 fps", L"29.97 fps",
                                         L"48 fps", L"47.95 fps", L"50 fps", L"60 fps", L"59.94 fps", L"Variable"};
    for (int i = 0; i < 12; ++i) {
        EXPECT_STREQ(apwszRates[i], NQxHelper::FrameRateToString(static_cast<EQxFrameRate>(i)));
    }
    const wchar_t* const apwszScans[] = {L"Invalid", L"First field top", L"Second field top", L"Progressive",
                                         L"Progressive segmented frame", L"Interlaced fields in a frame"};
    const wchar_t* const apwszPolarities[] = {L"Invalid",    L"F0",          L"F1",
                                              L"Interlaced", L"Progressive", L"Back to back"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_STREQ(apwszScans[i], NQxHelper::ScanModeToString(static_cast<EQxScanMode>(i)));
        EXPECT_STREQ(apwszPolarities[i], NQxHelper::PolarityToString(static_cast<EQxPolarity>(i)));
    }
    EXPECT_STREQ(L"ITU-R BT.709", NQxHelper::ColorimetryToString(keQxColorimetryITUR_BT_709));
    EXPECT_STREQ(L"Unknown", NQxHelper::ColorimetryToString(keQxColorimetryUnknown));
    EXPECT_STREQ(L"Stereo", NQxHelper::ChannelTypeToString(keQxChannelTypeStereo));
    EXPECT_STREQ(L"16 Channels", NQxHelper::ChannelTypeToString(keQxChannelType16Channels));
    EXPECT_STREQ(L"24 bits", NQxHelper::AudioBitsPerSampleToString(keQxAudioBitsPerSample24));
}

TEST(EnumerationTexts, SurfaceFormats)
{
    struct {
        int iFormat;
        const wchar_t* pwszText;
    } const asNamed[] = {
        {1, L"ARGB Graphic"},     {2, L"RGB Graphic"},       {3, L"ARGB Video"},         {4, L"RGB Video"},
        {5, L"YUYV 422"},         {6, L"YUAYVA 4224"},       {7, L"Alpha"},              {11, L"DVCAM 411"},
        {33, L"AYUV 4444"},       {37, L"Alpha Luminance"},  {38, L"BGRA Graphic"},      {52, L"DNxHD With Alpha"},
        {53, L"Uncompressed V210"}, {56, L"MPEG-4 SStP"},    {60, L"Quelto Ancillary Data"},
    };
    for (const auto& rsNamed : asNamed) {
        EXPECT_STREQ(rsNamed.pwszText, NQxHelper::SurfaceFormatToString(static_cast<EQxSurfaceFormat>(rsNamed.iFormat)));
    }
    // Every assigned format has a text of its own.
    const std::set<int> oUnassigned = {8, 9, 10, 28, 29, 34, 39, 40, 46, 48, 49, 50, 55};
    std::set<std::wstring> oSeen;
    for (int i = 1; i <= 81; ++i) {
        const std::wstring oText = NQxHelper::SurfaceFormatToString(static_cast<EQxSurfaceFormat>(i));
        if (oUnassigned.count(i) != 0 || (i >= 61 && i <= 79)) {
            EXPECT_EQ(L"Reserved", oText) << i;
        } else {
            EXPECT_TRUE(oSeen.insert(oText).second) << "duplicate text for format " << i;
            EXPECT_NE(L"Reserved", oText) << i;
        }
    }
}

TEST(EnumerationTexts, OutOfRangeValuesGiveInvalid)
{
    for (int iValue : {INT_MIN, -1, 82, 1000, INT_MAX}) {
        EXPECT_STREQ(L"Invalid", NQxHelper::SurfaceFormatToString(static_cast<EQxSurfaceFormat>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::FrameRateToString(static_cast<EQxFrameRate>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::ScanModeToString(static_cast<EQxScanMode>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::PolarityToString(static_cast<EQxPolarity>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::ColorimetryToString(static_cast<EQxColorimetry>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::ChannelTypeToString(static_cast<EQxChannelType>(iValue)));
        EXPECT_STREQ(L"Invalid", NQxHelper::AudioBitsPerSampleToString(static_cast<EQxAudioBitsPerSample>(iValue)));
    }
    // Each enumeration's one-past-the-last value too.
    EXPECT_STREQ(L"Invalid", NQxHelper::FrameRateToString(keQxFrameRateLast));
    EXPECT_STREQ(L"Invalid", NQxHelper::ScanModeToString(keQxScanModeLast));
    EXPECT_STREQ(L"Invalid", NQxHelper::PolarityToString(keQxPolarityLast));
    EXPECT_STREQ(L"Invalid", NQxHelper::ColorimetryToString(keQxColorimetryLast));
    EXPECT_STREQ(L"Invalid", NQxHelper::ChannelTypeToString(static_cast<EQxChannelType>(3)));
    EXPECT_STREQ(L"Invalid", NQxHelper::AudioBitsPerSampleToString(static_cast<EQxAudioBitsPerSample>(8)));
}

TEST(GetColorimetryFromResolution, SizesAndBoundaries)
{
    struct {
        uint32_t uiWidth, uiHeight;
        EQxColorimetry eExpected;
    } const asCases[] = {
        {720, 486, keQxColorimetryITUR_BT_601},     {720, 576, keQxColorimetryITUR_BT_601},
        {1024, 576, keQxColorimetryITUR_BT_601},    {1, 1, keQxColorimetryITUR_BT_601},
        {1025, 576, keQxColorimetryITUR_BT_709},    {1024, 577, keQxColorimetryITUR_BT_709},
        {960, 720, keQxColorimetryITUR_BT_709},     {1280, 720, keQxColorimetryITUR_BT_709},
        {1920, 1080, keQxColorimetryITUR_BT_709},   {2048, 1200, keQxColorimetryITUR_BT_709},
        {2049, 1080, keQxColorimetryITUR_BT_2020},  {1920, 1201, keQxColorimetryITUR_BT_2020},
        {3840, 2160, keQxColorimetryITUR_BT_2020},  {7680, 4320, keQxColorimetryITUR_BT_2020},
        {UINT32_MAX, UINT32_MAX, keQxColorimetryITUR_BT_2020},
        {0, 1080, keQxColorimetryInvalid},          {1920, 0, keQxColorimetryInvalid},
    };
    for (const auto& rsCase : asCases) {
        // Rate and scan mode do not matter, valid or not.
        for (int iScan : {1, 3, -4}) {
            const SQxResolutionInfo sResolution = {sizeof(SQxResolutionInfo), rsCase.uiWidth, rsCase.uiHeight,
                                                   static_cast<EQxFrameRate>(iScan * 3),
                                                   static_cast<EQxScanMode>(iScan)};
            EXPECT_EQ(rsCase.eExpected, NQxHelper::GetColorimetryFromResolution(sResolution))
                << rsCase.uiWidth << "x" << rsCase.uiHeight;
        }
    }
}

}  // namespace
