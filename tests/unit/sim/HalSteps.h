// HAL calls under short names, so that tests and the client process can pass them as words.
#pragma once

#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

constexpr K2V_VSC_INPUT_SRC_T kHdmiSource = {K2V_VSC_INPUTSRC_HDMI, 0, 0};
constexpr K2V_VSC_INPUT_SRC_T kPlayback = {5, 0, 0};

inline int ReadOnePixel(K2V_VIDEO_RECT_T rect) {
  K2V_VIDEO_PIXEL_T pixel = {};
  uint32_t standard = 0, format = 0;
  return K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, &pixel, &standard, &format);
}

inline int CaptureInto(uint32_t place, uint8_t* data, uint32_t size) {
  K2V_VSC_CAPTURE_INFO_T info = {data, size, 0, 0};
  return K2V_RHAL_VSC_CaptureVideoFrame(place, &info);
}

inline K2V_HDMI_TIMING_T TimingOf(uint8_t port) {
  K2V_HDMI_TIMING_T timing = {};
  K2V_RHAL_VFE_HDMI_GetPortTimingInfo(port, &timing);
  return timing;
}

inline const std::map<std::string, std::function<int()>>& HalSteps() {
  static const uint8_t kEdid[K2V_HDMI_EDID_BYTES] = {0x00, 0xff};
  static K2V_HDMI_TIMING_T timing;
  static K2V_VIDEO_RECT_T rect;
  static K2V_VIDEO_PIXEL_T pixels[4];
  static uint8_t frame[K2V_CAPTURE_BYTES];
  static const std::map<std::string, std::function<int()>> kSteps = {
      {"h-init", K2V_RHAL_VFE_HDMI_Initialize},
      {"h-uninit", K2V_RHAL_VFE_HDMI_Uninitialize},
      {"h-open", K2V_RHAL_VFE_HDMI_Open},
      {"h-close", K2V_RHAL_VFE_HDMI_Close},
      {"h-hpd", K2V_RHAL_VFE_HDMI_EnableHPD},
      {"h-edid", [] { return K2V_RHAL_VFE_HDMI_WriteEDID(0, kEdid); }},
      {"h-edid4", [] { return K2V_RHAL_VFE_HDMI_WriteEDID(4, kEdid); }},
      {"h-edid-null", [] { return K2V_RHAL_VFE_HDMI_WriteEDID(0, nullptr); }},
      {"h-conn0", [] { return K2V_RHAL_VFE_HDMI_Connect(0); }},
      {"h-conn1", [] { return K2V_RHAL_VFE_HDMI_Connect(1); }},
      {"h-conn4", [] { return K2V_RHAL_VFE_HDMI_Connect(4); }},
      {"h-disc0", [] { return K2V_RHAL_VFE_HDMI_Disconnect(0); }},
      {"h-time0", [] { return K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing); }},
      {"h-time4", [] { return K2V_RHAL_VFE_HDMI_GetPortTimingInfo(4, &timing); }},
      {"h-time-null", [] { return K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, nullptr); }},
      {"s-init", K2V_RHAL_VSC_Initialize},
      {"s-open", [] { return K2V_RHAL_VSC_Open(0); }},
      {"s-open2", [] { return K2V_RHAL_VSC_Open(2); }},
      {"s-conn", [] { return K2V_RHAL_VSC_Connect(0, kHdmiSource); }},
      {"s-conn-play", [] { return K2V_RHAL_VSC_Connect(0, kPlayback); }},
      {"s-conn-type6",
       [] {
         return K2V_RHAL_VSC_Connect(0, {6, 0, 0});
       }},
      {"s-conn-mode4",
       [] {
         return K2V_RHAL_VSC_Connect(0, {2, 0, 4});
       }},
      {"s-disc", [] { return K2V_RHAL_VSC_Disconnect(0, kHdmiSource); }},
      {"s-in",
       [] {
         return K2V_RHAL_VSC_SetInputRegion(0, {0, 0, 1, 1});
       }},
      {"s-in-get", [] { return K2V_RHAL_VSC_GetInputRegion(0, &rect); }},
      {"s-in-null", [] { return K2V_RHAL_VSC_GetInputRegion(0, nullptr); }},
      {"s-out",
       [] {
         return K2V_RHAL_VSC_SetOutputRegion(0, {0, 0, 3840, 2160});
       }},
      {"s-blank", [] { return K2V_RHAL_VSC_SetWinBlank(0, 1, 2); }},
      {"s-blank-on2", [] { return K2V_RHAL_VSC_SetWinBlank(0, 2, 0); }},
      {"s-blank-color3", [] { return K2V_RHAL_VSC_SetWinBlank_Sync_memc(0, 1, 3); }},
      {"s-freeze", [] { return K2V_RHAL_VSC_SetWinFreeze(0, 1); }},
      {"s-freeze-fb", [] { return K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 1); }},
      {"s-read",
       [] {
         return ReadOnePixel({0, 0, 1, 1});
       }},
      {"s-write",
       [] {
         return rect = {0, 0, 2, 2}, K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, pixels);
       }},
      {"s-cap", [] { return CaptureInto(K2V_VIDEO_DDI_SCALER_OUTPUT, frame, sizeof(frame)); }},
      {"s-cap-panel",
       [] { return CaptureInto(K2V_VIDEO_DDI_DISPLAY_OUTPUT, frame, sizeof(frame)); }},
      {"s-cap-small", [] { return CaptureInto(1, frame, sizeof(frame) - 1); }},
      {"s-cap-place2", [] { return CaptureInto(2, frame, sizeof(frame)); }},
      {"s-rgb", [] { return K2V_RHAL_VSC_SetRGB444Mode(1); }},
      {"s-rgb2", [] { return K2V_RHAL_VSC_SetRGB444Mode(2); }},
      {"s-preview", [] { return K2V_RHAL_VSC_SetHDMI_Preview(1, 1); }},
      {"s-dm-open", K2V_RHAL_VSC_DM_Open},
      {"s-dm-conn", K2V_RHAL_VSC_DM_Connect},
  };
  return kSteps;
}

/// Makes the named calls in order and returns the result of the last one.
inline int DoSteps(const std::string& names) {
  std::istringstream words(names);
  int result = 0;
  for (std::string name; words >> name;) result = HalSteps().at(name)();
  return result;
}

constexpr char kHdmiOn[] = "h-init h-hpd h-open h-conn0";
