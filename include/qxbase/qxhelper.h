// Texts of the SDK's enumerations and of SMPTE ST 291 ancillary data packets,
// for logs and user interfaces, and the colorimetry that goes with a video
// resolution.
#ifndef QXBASE_QXHELPER_H
#define QXBASE_QXHELPER_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxdescriptions.h>
#include <qxbase/qxenums.h>

#include <cwchar>

namespace NQxHelper {

// Describes an ancillary data packet on one line, into out_pwszBuffer of
// in_uiLength characters (terminator included). A known packet reads
// "Line:9 DID:0x41 SDID:0x05 - AFD and Bar Data (S2016-3)", its identifiers
// as two upper-case hexadecimal digits (and no SDID for the DIDs whose SDID
// is not looked at); an unknown one reads
// "Line:10 DID:0x41 SDID-DBN:0x9 - Unknown", in plain lower-case hexadecimal.
// Only the exact DID and SDID pair is looked up. A text longer than the
// buffer is cut to in_uiLength - 1 characters and terminated; a length of 0
// writes nothing. Returns 0 for a null buffer, otherwise 1, whether or not
// the packet is known.
QXBASE_API int VancPacketTypeToStringEx(unsigned char in_ucLine, unsigned char in_ucDid,
                                        unsigned char in_ucSdid, wchar_t* out_pwszBuffer,
                                        unsigned int in_uiLength);

// The bare description of a packet ("AFD and Bar Data (S2016-3)"), a static
// string, or "Unknown type". Unlike the Ex variant, an SDID that the DID's own
// packets do not use is looked up in the packets of the DIDs that follow it
// in the order 0x08, 0x40, 0x41, 0x43, 0x44, 0x45, 0x50, 0x51, 0x60, 0x61,
// 0x62, and the first packet with that SDID names it: DID 0x41 with SDID
// 0x02 gives "SDP OP47 Teletext (RDD8)". Existing callers rely on this wider
// match, so it stays.
QXBASE_API const wchar_t* VancPacketTypeToString(unsigned char in_ucDid, unsigned char in_ucSdid);

// Texts of enumeration values, as static strings (qxenums.h gives the text
// next to each value). A value outside the enumeration gives "Invalid"; an
// unassigned surface format inside 1 to 81 gives "Reserved".
QXBASE_API const wchar_t* SurfaceFormatToString(EQxSurfaceFormat in_eFormat);
QXBASE_API const wchar_t* FrameRateToString(EQxFrameRate in_eFrameRate);
QXBASE_API const wchar_t* ScanModeToString(EQxScanMode in_eScanMode);
QXBASE_API const wchar_t* PolarityToString(EQxPolarity in_ePolarity);
QXBASE_API const wchar_t* ColorimetryToString(EQxColorimetry in_eColorimetry);
QXBASE_API const wchar_t* ChannelTypeToString(EQxChannelType in_eChannelType);
QXBASE_API const wchar_t* AudioBitsPerSampleToString(EQxAudioBitsPerSample in_eBitsPerSample);

// The colorimetry a signal of this size is produced in, from the frame's
// width W and height H (the resolution's height, of the whole frame):
// - W or H zero: keQxColorimetryInvalid (no picture);
// - W <= 1024 and H <= 576: standard definition, ITU-R BT.601
//   (720x486, 720x576, 640x480, 1024x576 square-pixel PAL widescreen);
// - otherwise W <= 2048 and H <= 1200: high definition, ITU-R BT.709
//   (1280x720, 960x720, 1440x1080, 1920x1080, 2048x1080, 1920x1200);
// - anything larger: ultra high definition, ITU-R BT.2020
//   (3840x2160, 4096x2160, 7680x4320).
// Frame rate and scan mode do not matter.
QXBASE_API EQxColorimetry GetColorimetryFromResolution(const SQxResolutionInfo& in_rsResolution);

}  // namespace NQxHelper

#endif  // QXBASE_QXHELPER_H
