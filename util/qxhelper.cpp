#include <qxbase/qxhelper.h>

#include <cwchar>
#include <iterator>

namespace {

// One known ancillary packet. The SDIDs from ucSdidFirst to ucSdidLast name
// it; bAnySdid marks the packets whose SDID is not looked at.
struct SVancPacket {
    unsigned char ucDid;
    unsigned char ucSdidFirst;
    unsigned char ucSdidLast;
    bool bAnySdid;
    const wchar_t* pwszDescription;
};

// The packets whose SDID is not looked at come first; the rest are grouped
// by DID in the order that VancPacketTypeToString falls through them, so
// the fall-through is a forward scan from the DID's first packet.
const SVancPacket g_asVancPackets[] = {
    {0x00, 0, 0, true, L"Undefined (S291)"},
    {0x80, 0, 0, true, L"Packet marked for deletion (S291)"},
    {0x84, 0, 0, true, L"End packet (S291)"},
    {0x88, 0, 0, true, L"Start packet (S291)"},
    {0xF0, 0, 0, true, L"Camera position (S315)"},
    {0x08, 0x08, 0x08, false, L"MPEG recoding data (S353)"},
    {0x40, 0x01, 0x01, false, L"SDTI transport in active frame space (S305)"},
    {0x40, 0x02, 0x02, false, L"HD-SDTI transport in active frame space (S348)"},
    {0x40, 0x04, 0x04, false, L"Link Encryption Message 1 (S427)"},
    {0x40, 0x05, 0x05, false, L"Link Encryption Message 2 (S427)"},
    {0x40, 0x06, 0x06, false, L"Link Encryption Metadata (S427)"},
    {0x41, 0x01, 0x01, false, L"Payload Identification (S352M)"},
    {0x41, 0x05, 0x05, false, L"AFD and Bar Data (S2016-3)"},
    {0x41, 0x06, 0x06, false, L"Pan-Scan Data (S2016-4)"},
    {0x41, 0x07, 0x07, false, L"ANSI/SCTE 104 messages (S2010)"},
    {0x41, 0x08, 0x08, false, L"DVB/SCTE VBI data (S2031)"},
    {0x43, 0x01, 0x01, false, L"Structure of inter-station control data (ITU-R BT.1685)"},
    {0x43, 0x02, 0x02, false, L"SDP OP47 Teletext (RDD8)"},
    {0x43, 0x03, 0x03, false, L"Multipacket OP47 Teletext (RDD8)"},
    {0x44, 0x04, 0x04, false, L"KLV Metadata (RP214)"},
    {0x44, 0x44, 0x44, false, L"Packing UMID and Program ID Label Data (RP214)"},
    {0x45, 0x01, 0x09, false, L"Compressed Audio Metadata (S2020-1)"},
    {0x50, 0x01, 0x01, false, L"WSS OP47 data (RDD8)"},
    {0x51, 0x01, 0x01, false, L"Film Codes (RP215)"},
    {0x60, 0x60, 0x60, false, L"ANC Time Code (S12M-2)"},
    {0x61, 0x01, 0x01, false, L"CEA708 Closed caption (S334-1)"},
    {0x61, 0x02, 0x02, false, L"CEA608 Closed caption (S334-1)"},
    {0x62, 0x01, 0x01, false, L"Program Description (RP207)"},
    {0x62, 0x02, 0x02, false, L"Data broadcast (DTV) (S334-1)"},
    {0x62, 0x03, 0x03, false, L"VBI data (RP208)"},
};

bool SdidMatches(const SVancPacket& in_rsPacket, unsigned char in_ucSdid)
{
    return in_rsPacket.bAnySdid ||
           (in_ucSdid >= in_rsPacket.ucSdidFirst && in_ucSdid <= in_rsPacket.ucSdidLast);
}

const SVancPacket* FindExactPacket(unsigned char in_ucDid, unsigned char in_ucSdid)
{
    for (const SVancPacket& rsPacket : g_asVancPackets) {
        if (rsPacket.ucDid == in_ucDid && SdidMatches(rsPacket, in_ucSdid)) {
            return &rsPacket;
        }
    }
    return nullptr;
}

// Copies as much of in_pwszText as fits, always terminated. Formatting into
// the caller's buffer directly would leave it unterminated on truncation
// (swprintf returns -1 and does not write the terminator).
void CopyTruncated(const wchar_t* in_pwszText, wchar_t* out_pwszBuffer, unsigned int in_uiLength)
{
    if (in_uiLength == 0) {
        return;
    }
    size_t uiCount = std::wcslen(in_pwszText);
    if (uiCount > in_uiLength - 1) {
        uiCount = in_uiLength - 1;
    }
    std::wmemcpy(out_pwszBuffer, in_pwszText, uiCount);
    out_pwszBuffer[uiCount] = L'\0';
}

// Text of an enumeration whose values run from 0 without gaps.
template <size_t N>
const wchar_t* DenseText(const wchar_t* const (&in_apwszTexts)[N], int32_t in_iValue)
{
    if (in_iValue < 0 || static_cast<size_t>(in_iValue) >= N) {
        return in_apwszTexts[0];
    }
    return in_apwszTexts[in_iValue];
}

const wchar_t* const g_apwszSurfaceFormats[] = {
    L"Invalid",                     // 0
    L"ARGB Graphic",                // 1
    L"RGB Graphic",                 // 2
    L"ARGB Video",                  // 3
    L"RGB Video",                   // 4
    L"YUYV 422",                    // 5
    L"YUAYVA 4224",                 // 6
    L"Alpha",                       // 7
    L"Reserved",                    // 8
    L"Reserved",                    // 9
    L"Reserved",                    // 10
    L"DVCAM 411",                   // 11
    L"DVCAM 420",                   // 12
    L"DV-Based 25 411",             // 13
    L"DV-Based 50 422",             // 14
    L"DV-Based 100 HD",             // 15
    L"MPEG-2 I-Frame",              // 16
    L"MPEG-2 IBP Field 1",          // 17
    L"MPEG-2 IBP Field 2",          // 18
    L"D-10",                        // 19
    L"MPEG-2 Long GOP 420 HD",      // 20
    L"MPEG-2 Long GOP 422 HD",      // 21
    L"MPEG-2 Long GOP 420 HD VBR",  // 22
    L"H.264 Intra 50",              // 23
    L"H.264 Intra 100",             // 24
    L"H.264",                       // 25
    L"MPEG-2 Long GOP",             // 26
    L"DNxHD",                       // 27
    L"Reserved",                    // 28
    L"Reserved",                    // 29
    L"H.264 Intra 200",             // 30
    L"H.264 Intra 444",             // 31
    L"HEVC",                        // 32
    L"AYUV 4444",                   // 33
    L"Reserved",                    // 34
    L"Motion JPEG",                 // 35
    L"JPEG 2000",                   // 36
    L"Alpha Luminance",             // 37
    L"BGRA Graphic",                // 38
    L"Reserved",                    // 39
    L"Reserved",                    // 40
    L"DV25 Field 1",                // 41
    L"DV25 Field 2",                // 42
    L"RDD 36 422",                  // 43
    L"RDD 36 4444",                 // 44
    L"JPEG XS",                     // 45
    L"Reserved",                    // 46
    L"VC-3 UHD",                    // 47
    L"Reserved",                    // 48
    L"Reserved",                    // 49
    L"Reserved",                    // 50
    L"A2R10G10B10 Video",           // 51
    L"DNxHD With Alpha",            // 52
    L"Uncompressed V210",           // 53
    L"2VUY 422",                    // 54
    L"Reserved",                    // 55
    L"MPEG-4 SStP",                 // 56
    L"H.264 UHD",                   // 57
    L"Timecode Data",               // 58
    L"ABGR 16-bit Graphic",         // 59
    L"Quelto Ancillary Data",       // 60
    L"Reserved", L"Reserved", L"Reserved", L"Reserved", L"Reserved",  // 61-65
    L"Reserved", L"Reserved", L"Reserved", L"Reserved", L"Reserved",  // 66-70
    L"Reserved", L"Reserved", L"Reserved", L"Reserved", L"Reserved",  // 71-75
    L"Reserved", L"Reserved", L"Reserved", L"Reserved",               // 76-79
    L"Closed Caption Data",         // 80
    L"A2B10G10R10 Graphic",         // 81
};
static_assert(std::size(g_apwszSurfaceFormats) == keQxSurfaceFormatLast, "one text per format");

const wchar_t* const g_apwszFrameRates[] = {
    L"Invalid", L"24 fps", L"23.98 fps", L"25 fps", L"30 fps", L"29.97 fps",
    L"48 fps", L"47.95 fps", L"50 fps", L"60 fps", L"59.94 fps", L"Variable",
};
static_assert(std::size(g_apwszFrameRates) == keQxFrameRateLast, "one text per frame rate");

const wchar_t* const g_apwszScanModes[] = {
    L"Invalid", L"First field top", L"Second field top", L"Progressive",
    L"Progressive segmented frame", L"Interlaced fields in a frame",
};
static_assert(std::size(g_apwszScanModes) == keQxScanModeLast, "one text per scan mode");

const wchar_t* const g_apwszPolarities[] = {
    L"Invalid", L"F0", L"F1", L"Interlaced", L"Progressive", L"Back to back",
};
static_assert(std::size(g_apwszPolarities) == keQxPolarityLast, "one text per polarity");

const wchar_t* const g_apwszColorimetries[] = {
    L"Invalid", L"ITU-R BT.601", L"ITU-R BT.709", L"ITU-R BT.2020", L"ITU-R BT.2100 PQ",
    L"ITU-R BT.2100 HLG", L"ITU-R BT.2020 Linear", L"Unknown",
};
static_assert(std::size(g_apwszColorimetries) == keQxColorimetryLast, "one text per colorimetry");

// The largest frame that is still standard definition, and still high
// definition (see GetColorimetryFromResolution in the header).
constexpr uint32_t kuiSdMaxWidth = 1024;
constexpr uint32_t kuiSdMaxHeight = 576;
constexpr uint32_t kuiHdMaxWidth = 2048;
constexpr uint32_t kuiHdMaxHeight = 1200;

}  // namespace

namespace NQxHelper {

int VancPacketTypeToStringEx(unsigned char in_ucLine, unsigned char in_ucDid, unsigned char in_ucSdid,
                             wchar_t* out_pwszBuffer, unsigned int in_uiLength)
{
    if (out_pwszBuffer == nullptr) {
        return 0;
    }
    // The longest text ("Line:255 DID:0x43 SDID:0x01 - Structure of ...") is
    // 86 characters.
    wchar_t awszText[128];
    const SVancPacket* psPacket = FindExactPacket(in_ucDid, in_ucSdid);
    if (psPacket == nullptr) {
        std::swprintf(awszText, std::size(awszText), L"Line:%d DID:0x%x SDID-DBN:0x%x - Unknown",
                      static_cast<int>(in_ucLine), static_cast<unsigned int>(in_ucDid),
                      static_cast<unsigned int>(in_ucSdid));
    } else if (psPacket->bAnySdid) {
        std::swprintf(awszText, std::size(awszText), L"Line:%d DID:0x%02X - %ls", static_cast<int>(in_ucLine),
                      static_cast<unsigned int>(in_ucDid), psPacket->pwszDescription);
    } else {
        std::swprintf(awszText, std::size(awszText), L"Line:%d DID:0x%02X SDID:0x%02X - %ls",
                      static_cast<int>(in_ucLine), static_cast<unsigned int>(in_ucDid),
                      static_cast<unsigned int>(in_ucSdid), psPacket->pwszDescription);
    }
    CopyTruncated(awszText, out_pwszBuffer, in_uiLength);
    return 1;
}

const wchar_t* VancPacketTypeToString(unsigned char in_ucDid, unsigned char in_ucSdid)
{
    const SVancPacket* psBegin = std::begin(g_asVancPackets);
    const SVancPacket* psEnd = std::end(g_asVancPackets);
    const SVancPacket* psFirstOfDid = psBegin;
    while (psFirstOfDid != psEnd && psFirstOfDid->ucDid != in_ucDid) {
        ++psFirstOfDid;
    }
    if (psFirstOfDid == psEnd) {
        return L"Unknown type";
    }
    if (psFirstOfDid->bAnySdid) {
        return psFirstOfDid->pwszDescription;
    }
    for (const SVancPacket* psPacket = psFirstOfDid; psPacket != psEnd; ++psPacket) {
        if (SdidMatches(*psPacket, in_ucSdid)) {
            return psPacket->pwszDescription;
        }
    }
    return L"Unknown type";
}

const wchar_t* SurfaceFormatToString(EQxSurfaceFormat in_eFormat)
{
    return DenseText(g_apwszSurfaceFormats, in_eFormat);
}

const wchar_t* FrameRateToString(EQxFrameRate in_eFrameRate)
{
    return DenseText(g_apwszFrameRates, in_eFrameRate);
}

const wchar_t* ScanModeToString(EQxScanMode in_eScanMode)
{
    return DenseText(g_apwszScanModes, in_eScanMode);
}

const wchar_t* PolarityToString(EQxPolarity in_ePolarity)
{
    return DenseText(g_apwszPolarities, in_ePolarity);
}

const wchar_t* ColorimetryToString(EQxColorimetry in_eColorimetry)
{
    return DenseText(g_apwszColorimetries, in_eColorimetry);
}

const wchar_t* ChannelTypeToString(EQxChannelType in_eChannelType)
{
    switch (in_eChannelType) {
    case keQxChannelTypeMono: return L"Mono";
    case keQxChannelTypeStereo: return L"Stereo";
    case keQxChannelType4Channels: return L"4 Channels";
    case keQxChannelType6Channels: return L"6 Channels";
    case keQxChannelType8Channels: return L"8 Channels";
    case keQxChannelType16Channels: return L"16 Channels";
    case keQxChannelTypeInvalid: break;
    }
    return L"Invalid";
}

const wchar_t* AudioBitsPerSampleToString(EQxAudioBitsPerSample in_eBitsPerSample)
{
    switch (in_eBitsPerSample) {
    case keQxAudioBitsPerSample16: return L"16 bits";
    case keQxAudioBitsPerSample20: return L"20 bits";
    case keQxAudioBitsPerSample24: return L"24 bits";
    case keQxAudioBitsPerSample32: return L"32 bits";
    case keQxAudioBitsPerSampleInvalid: break;
    }
    return L"Invalid";
}

EQxColorimetry GetColorimetryFromResolution(const SQxResolutionInfo& in_rsResolution)
{
    const uint32_t uiWidth = in_rsResolution.ulWidth;
    const uint32_t uiHeight = in_rsResolution.ulHeight;
    if (uiWidth == 0 || uiHeight == 0) {
        return keQxColorimetryInvalid;
    }
    if (uiWidth <= kuiSdMaxWidth && uiHeight <= kuiSdMaxHeight) {
        return keQxColorimetryITUR_BT_601;
    }
    if (uiWidth <= kuiHdMaxWidth && uiHeight <= kuiHdMaxHeight) {
        return keQxColorimetryITUR_BT_709;
    }
    return keQxColorimetryITUR_BT_2020;
}

}  // namespace NQxHelper
