// What a simulated HDMI source sends in addition to its picture, by its kind and timing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/Board.h"
#include "core/Command.h"

namespace sim {

/// What a source is to send.
struct SourceOrder {
  SourceKind kind = SourceKind::kSdrVideo;
  Stereo stereo = Stereo::kNone;
  K2V_HDMI_TIMING_T timing = {};
};

/// The arguments of `plug`, for help texts; ParseSource parses those after the port.
inline constexpr std::string_view kPlugArguments =
    "PORT TIMING [sdr|hdr|hlg|deep|pc|dvi] [frame-packing|side-by-side|top-and-bottom|"
    "field-alternative|line-alternative|side-by-side-full|line-interleave|column-interleave|"
    "checkerboard|frame-sequential]";
inline constexpr std::string_view kSourceWords = kPlugArguments.substr(sizeof("PORT"));

/// Parses the words of a source, starting at `first`. Throws CommandError.
SourceOrder ParseSource(const Words& words, size_t first);

/// A timing with the pictures of both eyes packed into it. Throws CommandError if that is not
/// possible.
K2V_HDMI_TIMING_T Packed(const K2V_HDMI_TIMING_T& timing, Stereo stereo);

/// The words for a source's kind and stereo, such as "hdr" or "sdr side-by-side".
std::string SourceName(const HdmiPort& port);

/// Whether the link can carry what the source is to send, in any encoding that the source supports.
bool FitsLink(const HdmiPort& port);

/// Colours of the source's picture: K2V_COLOR_STANDARD_*.
uint32_t ColorStandard(const HdmiPort& port);

/// K2V_HDMI_EOTF_*.
uint32_t Eotf(const HdmiPort& port);

/// Rate of TMDS characters in kHz; 0 if the picture does not fit.
uint32_t TmdsClockKHz(const HdmiPort& port);

/// K2V_HDMI_DEPTH_*.
uint32_t ColorDepth(const HdmiPort& port);

/// The content protection: K2V_HDMI_HDCP_*.
int HdcpVersion(const HdmiPort& port);

/// Whether the source scrambles, as rates above 340 MHz require.
bool IsScrambled(const HdmiPort& port);

/// Whether the source sends general control packets, which contain AV mute.
bool SendsControlPackets(const HdmiPort& port);

/// Whether the source sets AV mute before it changes its timing.
bool MutesChanges(const HdmiPort& port);

// The info-frames. Each returns 0, or K2V_RHAL_ERR_FAIL if the source sends none of that kind.
int MakeAvi(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info);
int MakeSpd(const HdmiPort& port, K2V_HAL_VFE_HDMI_SPD_INFO_T& info);
int MakeVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_VSI_INFO_T& info);
int MakeAllVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& info);
int MakeDrm(const HdmiPort& port, K2V_HAL_VFE_HDMI_DRM_INFO_T& info);
int MakePackets(const HdmiPort& port, K2V_HAL_VFE_HDMI_PACKET_INFO_T& info);

/// The source's key selection vector, K2V_HDMI_HDCP_ID_BYTES; zeros if it does not support
/// HDCP 1.x.
int CopyKeySelection(const HdmiPort& port, uint8_t* ksv);

}  // namespace sim
