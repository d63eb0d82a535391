// Turning the description of an existing surface, audio buffer or video
// resolution into the create description a new one is allocated from, and
// the default header of an audio block.
#ifndef QXBASE_QXFLEXENGINEHELPER_H
#define QXBASE_QXFLEXENGINEHELPER_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxdescriptions.h>
#include <qxbase/qxenums.h>

namespace NQxfFlexEngineHelper {

// The default header occupies the first 256 bytes of an audio block: all zero
// except byte 1 (0x01) and byte 4 (0xFE).
constexpr unsigned int kuiQxDefaultQadHeaderSize = 256;

// Bytes of one channel of audio for one buffer: 48000 Hz samples of 4 bytes
// over one video frame (rounded up at the 1000/1001 rates), half of it for a
// field-based scan mode. 48 and 47.95 fps are never halved, and a field at
// 59.94 fps is 1600 bytes (not 1602): buffers of those sizes are what the
// audio paths exchange. 0 for an invalid or unknown frame rate.
QXBASE_API uint32_t GetAudioBytesPerChannel(EQxFrameRate in_eFrameRate, EQxScanMode in_eScanMode);

// Sets the size to 96, copies the members shared with the surface
// description (format, width, height, polarity, colorimetry; bit count,
// aspect ratio, memory location, alignment, frame rate; user data; the shaped
// and host-conversion flags) and sets the creation-only members to their
// defaults: no minimum buffer size, no initial clear (alpha 1.0), reserved
// members zero.
QXBASE_API void CopySurfaceDescriptionToCreateSurfaceDescription(
    SQxSurfaceDescription& in_rsDescription, SQxCreateSurfaceDescription& out_rsCreate);

// Fills a create description for a picture of the resolution: size 96;
// width; height (halved for a field-based scan mode, where a buffer holds one
// field); the frame rate; polarity F0 for a field-based scan mode,
// Interlaced for "Interlaced fields in a frame", Progressive otherwise;
// colorimetry from NQxHelper::GetColorimetryFromResolution. Every other member
// takes its default: 8-bit "YUYV 422", aspect ratio not stated, host memory,
// 16-byte alignment (what the engine's 16-byte stores need), user data 0, not
// shaped, host conversion allowed, no minimum buffer size, no initial clear
// (alpha 1.0), reserved members zero. Returns S_OK.
QXBASE_API HRESULT CopyResolutionToCreateSurfaceDescription(const SQxResolutionInfo& in_rsResolution,
                                                            SQxCreateSurfaceDescription& out_rsCreate);

// Sets the size to 56, copies every member after the buffer size (polarity
// to user data), zeroes the reserved members, and sizes the buffer for the
// largest frame of any supported rate, whatever the description's own rate:
// channel count x 8008 bytes (2002 samples of 4 bytes at 23.98 fps). A
// channel type below 1, or one too large for a 32-bit size, gives size 0.
QXBASE_API void CopyAudioSamplesDescriptionToCreateAudioSamplesDescription(
    SQxAudioSamplesDescription& in_rsDescription, SQxCreateAudioSamplesDescription& out_rsCreate);

// Fills a create description for the audio of one buffer of the resolution:
// size 56; buffer size = channel count x GetAudioBytesPerChannel (0 when the
// frame rate is unknown or the channel type is below 1 or too large); the
// polarity as for surfaces; host memory, first channel 0, 24-bit transport,
// the channel type, interleaved, 48000 Hz; a 16-bit container for up to 16
// bits per sample, else 32; the bits per sample as given; the other members
// zero.
QXBASE_API void CopyResolutionToCreateAudioSamplesDescription(SQxResolutionInfo& in_rsResolution,
                                                              EQxChannelType in_eChannelType,
                                                              EQxAudioBitsPerSample in_eBitsPerSample,
                                                              SQxCreateAudioSamplesDescription& out_rsCreate);

// Writes the first eight bytes of the default header (00 01 00 00 FE 00 00 00)
// and zeroes bytes 254 and 255; the bytes between are left as they are. The
// block must hold at least 256 bytes. A null block is ignored.
QXBASE_API void WriteDefaultQadHeader(void* io_pvBlock);

// Zeroes in_uiSize bytes and writes the default header at the start and, for
// a "Back to back" buffer (both fields one after the other), again at
// in_uiSize / 2. A header is written only where its 256 bytes fit inside
// in_uiSize, so a short buffer is zeroed and never overrun. A null buffer is
// ignored.
QXBASE_API void InsertDefaultQadHeader(void* io_pvBuffer, unsigned int in_uiSize, EQxPolarity in_ePolarity);

}  // namespace NQxfFlexEngineHelper

#endif  // QXBASE_QXFLEXENGINEHELPER_H
