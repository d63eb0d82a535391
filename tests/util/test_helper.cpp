// Ancillary packet texts (both lookups, every known packet, truncation) and
// the enumeration texts and resolution colorimetry of NQxHelper.
#include <qxbase/qxbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

// Every known packet, independently of the library's table, in the order
// in which unknown SDIDs fall through them. The SDIDs from iSdidFirst to
// iSdidLast name a packet; -1: the SDID is not looked at.
struct SKnownPacket {
    int iDid, iSdidFirst, iSdidLast;
    const wchar_t* pwszDescription;
};
const SKnownPacket kasKnown[] = {
    {0x00, -1, -1, L"Undefined (S291)"},
    {0x80, -1, -1, L"Packet marked for deletion (S291)"},
    {0x84, -1, -1, L"End packet (S291)"},
    {0x88, -1, -1, L"Start packet (S291)"},
    {0xF0, -1, -1, L"Camera position (S315)"},
    {0x08, 0x08, 0x08, L"MPEG recoding data (S353)"},
    {0x40, 0x01, 0x01, L"SDTI transport in active frame space (S305)"},
    {0x40, 0x02, 0x02, L"HD-SDTI transport in active frame space (S348)"},
    {0x40, 0x04, 0x04, L"Link Encryption Message 1 (S427)"},
    {0x40, 0x05, 0x05, L"Link Encryption Message 2 (S427)"},
    {0x40, 0x06, 0x06, L"Link Encryption Metadata (S427)"},
    {0x41, 0x01, 0x01, L"Payload Identification (S352M)"},
    {0x41, 0x05, 0x05, L"AFD and Bar Data (S2016-3)"},
    {0x41, 0x06, 0x06, L"Pan-Scan Data (S2016-4)"},
    {0x41, 0x07, 0x07, L"ANSI/SCTE 104 messages (S2010)"},
    {0x41, 0x08, 0x08, L"DVB/SCTE VBI data (S2031)"},
    {0x43, 0x01, 0x01, L"Structure of inter-station control data (ITU-R BT.1685)"},
    {0x43, 0x02, 0x02, L"SDP OP47 Teletext (RDD8)"},
    {0x43, 0x03, 0x03, L"Multipacket OP47 Teletext (RDD8)"},
    {0x44, 0x04, 0x04, L"KLV Metadata (RP214)"},
    {0x44, 0x44, 0x44, L"Packing UMID and Program ID Label Data (RP214)"},
    {0x45, 0x01, 0x09, L"Compressed Audio Metadata (S2020-1)"},
    {0x50, 0x01, 0x01, L"WSS OP47 data (RDD8)"},
    {0x51, 0x01, 0x01, L"Film Codes (RP215)"},
    {0x60, 0x60, 0x60, L"ANC Time Code (S12M-2)"},
    {0x61, 0x01, 0x01, L"CEA708 Closed caption (S334-1)"},
    {0x61, 0x02, 0x02, L"CEA608 Closed caption (S334-1)"},
    {0x62, 0x01, 0x01, L"Program Description (RP207)"},
    {0x62, 0x02, 0x02, L"Data broadcast (DTV) (S334-1)"},
    {0x62, 0x03, 0x03, L"VBI data (RP208)"},
};

const SKnownPacket* FindKnown(int in_iDid, int in_iSdid)
{
    for (const SKnownPacket& rsKnown : kasKnown)
        if (rsKnown.iDid == in_iDid && (rsKnown.iSdidFirst < 0 || (in_iSdid >= rsKnown.iSdidFirst && in_iSdid <= rsKnown.iSdidLast)))
            return &rsKnown;
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

TEST(VancPacketTypeToStringEx, EveryPairIsEitherItsOwnPacketOrUnknown)
{
    // The Ex lookup never falls through to another DID's packets, and the
    // packets whose SDID is not looked at match every SDID.
    for (unsigned uiDid = 0; uiDid < 256; ++uiDid) {
        for (unsigned uiSdid = 0; uiSdid < 256; ++uiSdid) {
            const unsigned uiLine = (uiDid * 31 + uiSdid) & 0xFF;
            wchar_t awszExpected[128];
            const SKnownPacket* psKnown = FindKnown(int(uiDid), int(uiSdid));
            if (psKnown == nullptr)
                swprintf(awszExpected, 128, L"Line:%u DID:0x%x SDID-DBN:0x%x - Unknown", uiLine, uiDid, uiSdid);
            else if (psKnown->iSdidFirst < 0)
                swprintf(awszExpected, 128, L"Line:%u DID:0x%02X - %ls", uiLine, uiDid, psKnown->pwszDescription);
            else
                swprintf(awszExpected, 128, L"Line:%u DID:0x%02X SDID:0x%02X - %ls", uiLine, uiDid, uiSdid,
                         psKnown->pwszDescription);
            ASSERT_EQ(std::wstring(awszExpected), ExText(uiLine, uiDid, uiSdid)) << "DID " << uiDid << " SDID " << uiSdid;
        }
    }
    // Known packets in upper-case hex with two digits, unknown ones in
    // lower-case hex without leading zeros.
    EXPECT_EQ(L"Line:9 DID:0x08 SDID:0x08 - MPEG recoding data (S353)", ExText(9, 0x08, 0x08));
    EXPECT_EQ(L"Line:0 DID:0xF0 - Camera position (S315)", ExText(0, 0xF0, 0x17));
    EXPECT_EQ(L"Line:255 DID:0xf1 SDID-DBN:0x0 - Unknown", ExText(255, 0xF1, 0x00));
    EXPECT_EQ(L"Line:3 DID:0xff SDID-DBN:0xab - Unknown", ExText(3, 0xFF, 0xAB));
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
        EXPECT_EQ(0, NQxHelper::VancPacketTypeToStringEx(raucPacket[0], raucPacket[1], raucPacket[2], nullptr, 80));
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

TEST(VancPacketTypeToString, UnknownSdidFallsThroughToLaterDidsOnly)
{
    // The rule: from the DID's first packet on, in the order of the table
    // above, the first packet whose SDIDs hold the SDID, whatever its DID.
    for (int iDid = 0; iDid < 256; ++iDid) {
        for (int iSdid = 0; iSdid < 256; ++iSdid) {
            const SKnownPacket* psPacket = std::find_if(std::begin(kasKnown), std::end(kasKnown),
                                                        [&](const SKnownPacket& r) { return r.iDid == iDid; });
            while (psPacket != std::end(kasKnown) && psPacket->iSdidFirst >= 0 &&
                   (iSdid < psPacket->iSdidFirst || iSdid > psPacket->iSdidLast))
                ++psPacket;
            const std::wstring oExpected = psPacket == std::end(kasKnown) ? L"Unknown type" : psPacket->pwszDescription;
            ASSERT_EQ(oExpected, NQxHelper::VancPacketTypeToString(static_cast<unsigned char>(iDid),
                                                                   static_cast<unsigned char>(iSdid)))
                << "DID " << iDid << " SDID " << iSdid;
        }
    }
    // The rule's cases as plain examples.
    EXPECT_STREQ(L"SDP OP47 Teletext (RDD8)", NQxHelper::VancPacketTypeToString(0x41, 0x02));
    EXPECT_STREQ(L"ANC Time Code (S12M-2)", NQxHelper::VancPacketTypeToString(0x45, 0x60));
    EXPECT_STREQ(L"Payload Identification (S352M)", NQxHelper::VancPacketTypeToString(0x41, 0x01));
    EXPECT_STREQ(L"Undefined (S291)", NQxHelper::VancPacketTypeToString(0x00, 0x77));
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x45, 0x44));  // never looks back
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x62, 0x04));
    EXPECT_STREQ(L"Unknown type", NQxHelper::VancPacketTypeToString(0x63, 0x01));
}

// Every value of an enumeration, out-of-range values and the value one past
// the last give "Invalid".
template <class TEnum>
void ExpectTexts(const wchar_t* (*in_pfnText)(TEnum), const std::map<int, std::wstring>& in_roTexts, int in_iPastLast)
{
    for (int iValue = -1; iValue <= in_iPastLast + 1; ++iValue) {
        const auto it = in_roTexts.find(iValue);
        EXPECT_EQ(it == in_roTexts.end() ? L"Invalid" : it->second, in_pfnText(static_cast<TEnum>(iValue))) << iValue;
    }
    for (int iValue : {INT_MIN, 1000, INT_MAX}) EXPECT_STREQ(L"Invalid", in_pfnText(static_cast<TEnum>(iValue)));
}

TEST(EnumerationTexts, EveryValueAndOutOfRangeValues)
{
    ExpectTexts(&NQxHelper::FrameRateToString,
                {{0, L"Invalid"}, {1, L"24 fps"}, {2, L"23.98 fps"}, {3, L"25 fps"}, {4, L"30 fps"},
                 {5, L"29.97 fps"}, {6, L"48 fps"}, {7, L"47.95 fps"}, {8, L"50 fps"}, {9, L"60 fps"},
                 {10, L"59.94 fps"}, {11, L"Variable"}},
                keQxFrameRateLast);
    ExpectTexts(&NQxHelper::ScanModeToString,
                {{1, L"First field top"}, {2, L"Second field top"}, {3, L"Progressive"},
                 {4, L"Progressive segmented frame"}, {5, L"Interlaced fields in a frame"}},
                keQxScanModeLast);
    ExpectTexts(&NQxHelper::PolarityToString,
                {{1, L"F0"}, {2, L"F1"}, {3, L"Interlaced"}, {4, L"Progressive"}, {5, L"Back to back"}},
                keQxPolarityLast);
    ExpectTexts(&NQxHelper::ColorimetryToString,
                {{1, L"ITU-R BT.601"}, {2, L"ITU-R BT.709"}, {3, L"ITU-R BT.2020"}, {4, L"ITU-R BT.2100 PQ"},
                 {5, L"ITU-R BT.2100 HLG"}, {6, L"ITU-R BT.2020 Linear"}, {7, L"Unknown"}},
                keQxColorimetryLast);
    ExpectTexts(&NQxHelper::ChannelTypeToString,
                {{1, L"Mono"}, {2, L"Stereo"}, {4, L"4 Channels"}, {6, L"6 Channels"}, {8, L"8 Channels"},
                 {16, L"16 Channels"}},
                16);
    ExpectTexts(&NQxHelper::AudioBitsPerSampleToString,
                {{16, L"16 bits"}, {20, L"20 bits"}, {24, L"24 bits"}, {32, L"32 bits"}}, 32);

    // Surface formats: the names of the SDK, and a text of its own for every
    // assigned format.
    const std::map<int, std::wstring> oNamed = {
        {1, L"ARGB Graphic"},     {2, L"RGB Graphic"},       {3, L"ARGB Video"},         {4, L"RGB Video"},
        {5, L"YUYV 422"},         {6, L"YUAYVA 4224"},       {7, L"Alpha"},              {11, L"DVCAM 411"},
        {33, L"AYUV 4444"},       {37, L"Alpha Luminance"},  {38, L"BGRA Graphic"},      {52, L"DNxHD With Alpha"},
        {53, L"Uncompressed V210"}, {56, L"MPEG-4 SStP"},    {60, L"Quelto Ancillary Data"},
    };
    const std::set<int> oUnassigned = {8, 9, 10, 28, 29, 34, 39, 40, 46, 48, 49, 50, 55};
    std::set<std::wstring> oSeen;
    for (int i : {INT_MIN, -1, 0, 82, 1000, INT_MAX})
        EXPECT_STREQ(L"Invalid", NQxHelper::SurfaceFormatToString(static_cast<EQxSurfaceFormat>(i))) << i;
    for (int i = 1; i <= 81; ++i) {
        const std::wstring oText = NQxHelper::SurfaceFormatToString(static_cast<EQxSurfaceFormat>(i));
        if (oUnassigned.count(i) != 0 || (i >= 61 && i <= 79)) {
            EXPECT_EQ(L"Reserved", oText) << i;
        } else {
            EXPECT_TRUE(oSeen.insert(oText).second) << "duplicate text for format " << i;
            EXPECT_NE(L"Reserved", oText) << i;
            EXPECT_TRUE(oNamed.count(i) == 0 || oNamed.at(i) == oText) << i;
        }
    }
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
