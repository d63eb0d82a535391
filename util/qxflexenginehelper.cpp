#include <qxbase/qxflexenginehelper.h>
#include <qxbase/qxhelper.h>

#include <cstring>
#include <iterator>

namespace {

// Bytes of one channel for one frame and for one field, by frame rate.
struct SAudioChannelBytes {
    uint32_t uiFrame;
    uint32_t uiField;
};

// The 48 and 47.95 fps rows are not halved and the 59.94 field row is 1600:
// those are the buffer sizes the audio paths have always exchanged.
const SAudioChannelBytes g_asAudioChannelBytes[] = {
    {0, 0},            // invalid
    {8000, 4000},      // 24
    {8008, 4004},      // 23.98
    {7680, 3840},      // 25
    {6400, 3200},      // 30
    {6408, 3204},      // 29.97
    {4000, 4000},      // 48
    {4004, 4004},      // 47.95
    {3840, 1920},      // 50
    {3200, 1600},      // 60
    {3204, 1600},      // 59.94
    {192000, 96000},   // variable: one second
};
static_assert(std::size(g_asAudioChannelBytes) == keQxFrameRateLast, "one row per frame rate");

// The largest buffer of one channel over the fixed rates (23.98 fps).
constexpr uint32_t kuiLargestChannelFrameBytes = 8008;

constexpr unsigned char kaucDefaultQadHeaderStart[8] = {0x00, 0x01, 0x00, 0x00, 0xFE, 0x00, 0x00, 0x00};
constexpr unsigned int kuiQadHeaderLastWordOffset = 254;

bool IsFieldBased(EQxScanMode in_eScanMode)
{
    return in_eScanMode == keQxScanModeFirstFieldTop || in_eScanMode == keQxScanModeSecondFieldTop;
}

EQxPolarity PolarityFromScanMode(EQxScanMode in_eScanMode)
{
    if (IsFieldBased(in_eScanMode)) {
        return keQxPolarityF0;
    }
    if (in_eScanMode == keQxScanModeInterlacedFieldsInAFrame) {
        return keQxPolarityInterlaced;
    }
    return keQxPolarityProgressive;
}

// Channel count times bytes per channel, or 0 when the channel type counts no
// channels or the product does not fit a 32-bit size.
uint32_t AudioBufferSize(EQxChannelType in_eChannelType, uint32_t in_uiBytesPerChannel)
{
    if (in_eChannelType < 1) {
        return 0;
    }
    const uint64_t ui64Size = static_cast<uint64_t>(in_eChannelType) * in_uiBytesPerChannel;
    return ui64Size > UINT32_MAX ? 0 : static_cast<uint32_t>(ui64Size);
}

// The creation-only members, which no existing surface description carries.
void SetCreationDefaults(SQxCreateSurfaceDescription& out_rsCreate)
{
    out_rsCreate.aucReserved[0] = 0;
    out_rsCreate.aucReserved[1] = 0;
    out_rsCreate.ulMinimumBufferSize = 0;
    out_rsCreate.eInitialColor = keQxColorInvalid;
    out_rsCreate.fInitialAlpha = 1.0f;
    std::memset(out_rsCreate.aulReserved, 0, sizeof(out_rsCreate.aulReserved));
}

}  // namespace

namespace NQxfFlexEngineHelper {

uint32_t GetAudioBytesPerChannel(EQxFrameRate in_eFrameRate, EQxScanMode in_eScanMode)
{
    if (in_eFrameRate < 0 || in_eFrameRate >= static_cast<int32_t>(std::size(g_asAudioChannelBytes))) {
        return 0;
    }
    const SAudioChannelBytes& rsRow = g_asAudioChannelBytes[in_eFrameRate];
    return IsFieldBased(in_eScanMode) ? rsRow.uiField : rsRow.uiFrame;
}

void CopySurfaceDescriptionToCreateSurfaceDescription(SQxSurfaceDescription& in_rsDescription,
                                                      SQxCreateSurfaceDescription& out_rsCreate)
{
    out_rsCreate.size = sizeof(SQxCreateSurfaceDescription);
    out_rsCreate.eSurfaceFormat = in_rsDescription.eSurfaceFormat;
    out_rsCreate.ulWidth = in_rsDescription.ulWidth;
    out_rsCreate.ulHeight = in_rsDescription.ulHeight;
    out_rsCreate.ePolarity = in_rsDescription.ePolarity;
    out_rsCreate.eColorimetry = in_rsDescription.eColorimetry;
    out_rsCreate.ulComponentBitCount = in_rsDescription.ulComponentBitCount;
    out_rsCreate.eAspectRatio = in_rsDescription.eAspectRatio;
    out_rsCreate.eMemoryLocation = in_rsDescription.eMemoryLocation;
    out_rsCreate.ulAlignment = in_rsDescription.ulAlignment;
    out_rsCreate.eFrameRate = in_rsDescription.eFrameRate;
    out_rsCreate.ulUserData = in_rsDescription.ulUserData;
    out_rsCreate.bIsAlphaShaped = in_rsDescription.bIsAlphaShaped;
    out_rsCreate.bAllowHostConversion = in_rsDescription.bAllowHostConversion;
    SetCreationDefaults(out_rsCreate);
}

HRESULT CopyResolutionToCreateSurfaceDescription(const SQxResolutionInfo& in_rsResolution,
                                                 SQxCreateSurfaceDescription& out_rsCreate)
{
    const bool bFieldBased = IsFieldBased(in_rsResolution.eScanMode);
    out_rsCreate.size = sizeof(SQxCreateSurfaceDescription);
    out_rsCreate.eSurfaceFormat = keQxSurfaceFormatYUYV422;
    out_rsCreate.ulWidth = in_rsResolution.ulWidth;
    out_rsCreate.ulHeight = bFieldBased ? in_rsResolution.ulHeight / 2 : in_rsResolution.ulHeight;
    out_rsCreate.ePolarity = PolarityFromScanMode(in_rsResolution.eScanMode);
    out_rsCreate.eColorimetry = NQxHelper::GetColorimetryFromResolution(in_rsResolution);
    out_rsCreate.ulComponentBitCount = 8;
    out_rsCreate.eAspectRatio = keQxAspectRatioInvalid;
    out_rsCreate.eMemoryLocation = keQxMemoryLocationHost;
    out_rsCreate.ulAlignment = 16;
    out_rsCreate.eFrameRate = in_rsResolution.eFrameRate;
    out_rsCreate.ulUserData = 0;
    out_rsCreate.bIsAlphaShaped = false;
    out_rsCreate.bAllowHostConversion = true;
    SetCreationDefaults(out_rsCreate);
    return S_OK;
}

void CopyAudioSamplesDescriptionToCreateAudioSamplesDescription(SQxAudioSamplesDescription& in_rsDescription,
                                                                SQxCreateAudioSamplesDescription& out_rsCreate)
{
    out_rsCreate.size = sizeof(SQxCreateAudioSamplesDescription);
    out_rsCreate.ulBufferSize = AudioBufferSize(in_rsDescription.eChannelType, kuiLargestChannelFrameBytes);
    out_rsCreate.ePolarity = in_rsDescription.ePolarity;
    out_rsCreate.eMemoryLocation = in_rsDescription.eMemoryLocation;
    out_rsCreate.ulFirstChannel = in_rsDescription.ulFirstChannel;
    out_rsCreate.ulTransportBitsPerSample = in_rsDescription.ulTransportBitsPerSample;
    out_rsCreate.eChannelType = in_rsDescription.eChannelType;
    out_rsCreate.ulInterleaved = in_rsDescription.ulInterleaved;
    out_rsCreate.ulSampleRate = in_rsDescription.ulSampleRate;
    out_rsCreate.ulContainerBitsPerSample = in_rsDescription.ulContainerBitsPerSample;
    out_rsCreate.eBitsPerSample = in_rsDescription.eBitsPerSample;
    out_rsCreate.ulUserData = in_rsDescription.ulUserData;
    std::memset(out_rsCreate.aulReserved, 0, sizeof(out_rsCreate.aulReserved));
}

void CopyResolutionToCreateAudioSamplesDescription(SQxResolutionInfo& in_rsResolution,
                                                   EQxChannelType in_eChannelType,
                                                   EQxAudioBitsPerSample in_eBitsPerSample,
                                                   SQxCreateAudioSamplesDescription& out_rsCreate)
{
    const uint32_t uiBytesPerChannel = GetAudioBytesPerChannel(in_rsResolution.eFrameRate, in_rsResolution.eScanMode);
    out_rsCreate.size = sizeof(SQxCreateAudioSamplesDescription);
    out_rsCreate.ulBufferSize = AudioBufferSize(in_eChannelType, uiBytesPerChannel);
    out_rsCreate.ePolarity = PolarityFromScanMode(in_rsResolution.eScanMode);
    out_rsCreate.eMemoryLocation = keQxMemoryLocationHost;
    out_rsCreate.ulFirstChannel = 0;
    out_rsCreate.ulTransportBitsPerSample = 24;
    out_rsCreate.eChannelType = in_eChannelType;
    out_rsCreate.ulInterleaved = 1;
    out_rsCreate.ulSampleRate = 48000;
    out_rsCreate.ulContainerBitsPerSample = in_eBitsPerSample <= 16 ? 16 : 32;
    out_rsCreate.eBitsPerSample = in_eBitsPerSample;
    out_rsCreate.ulUserData = 0;
    std::memset(out_rsCreate.aulReserved, 0, sizeof(out_rsCreate.aulReserved));
}

void WriteDefaultQadHeader(void* io_pvBlock)
{
    if (io_pvBlock == nullptr) {
        return;
    }
    unsigned char* pucBlock = static_cast<unsigned char*>(io_pvBlock);
    std::memcpy(pucBlock, kaucDefaultQadHeaderStart, sizeof(kaucDefaultQadHeaderStart));
    pucBlock[kuiQadHeaderLastWordOffset] = 0;
    pucBlock[kuiQadHeaderLastWordOffset + 1] = 0;
}

void InsertDefaultQadHeader(void* io_pvBuffer, unsigned int in_uiSize, EQxPolarity in_ePolarity)
{
    if (io_pvBuffer == nullptr) {
        return;
    }
    unsigned char* pucBuffer = static_cast<unsigned char*>(io_pvBuffer);
    std::memset(pucBuffer, 0, in_uiSize);
    if (in_uiSize >= kuiQxDefaultQadHeaderSize) {
        WriteDefaultQadHeader(pucBuffer);
    }
    const unsigned int uiSecondOffset = in_uiSize / 2;
    if (in_ePolarity == keQxPolarityBackToBack && in_uiSize - uiSecondOffset >= kuiQxDefaultQadHeaderSize) {
        WriteDefaultQadHeader(pucBuffer + uiSecondOffset);
    }
}

}  // namespace NQxfFlexEngineHelper
