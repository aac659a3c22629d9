// The records of the HDMI receiver as text: every field on one line, with its unit.
#pragma once

#include "k2v/vfe_hdmi.h"

void PrintClockStatus(const K2V_HAL_VFE_HDMI_CLOCK_STATUS_T& status);
void PrintTimingInfo(const K2V_HDMI_TIMING_T& timing);
void PrintAviInfo(const K2V_HAL_VFE_HDMI_AVI_INFO_T& info);
void PrintSpdInfo(const K2V_HAL_VFE_HDMI_SPD_INFO_T& info);
void PrintVsiInfo(const K2V_HAL_VFE_HDMI_VSI_INFO_T& info);
void PrintPacketInfo(const K2V_HAL_VFE_HDMI_PACKET_INFO_T& info);

/// The valid vendor-specific info-frames, data included; `info` must not be null.
void _dump_multi_vsif(const K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T* info);

/// Dynamic range and mastering; `info` must not be null.
void _dump_drm_info(const K2V_HAL_VFE_HDMI_DRM_INFO_T* info);
