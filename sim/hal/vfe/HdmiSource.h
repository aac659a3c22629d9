// What an HDMI source of the simulation sends beside its picture, by its kind and timing.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// Rate of TMDS characters / 1000.
uint32_t TmdsClockKHz(const HdmiPort& port);

/// K2V_HDMI_DEPTH_*.
uint32_t ColorDepth(const HdmiPort& port);

/// What protects the picture: K2V_HDMI_HDCP_*.
int HdcpVersion(const HdmiPort& port);

/// The scrambling that rates above 340 MHz need.
bool IsScrambled(const HdmiPort& port);

/// Sets AV mute before it changes its timing.
bool MutesChanges(const HdmiPort& port);

// The info-frames. Each returns 0, or K2V_RHAL_ERR_FAIL when the source sends none of its kind.
int MakeAvi(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info);
int MakeSpd(const HdmiPort& port, K2V_HAL_VFE_HDMI_SPD_INFO_T& info);
int MakeVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_VSI_INFO_T& info);
int MakeAllVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& info);
int MakeDrm(const HdmiPort& port, K2V_HAL_VFE_HDMI_DRM_INFO_T& info);
int MakePackets(const HdmiPort& port, K2V_HAL_VFE_HDMI_PACKET_INFO_T& info);

/// The source's key selection vector, K2V_HDMI_HDCP_ID_BYTES; none without content protection.
int CopyKeySelection(const HdmiPort& port, uint8_t* ksv);

}  // namespace sim
