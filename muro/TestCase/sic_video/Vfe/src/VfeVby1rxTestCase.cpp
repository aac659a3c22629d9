#include "VfeVby1rxTestCase.h"

#include <cstdio>

#include "DriverTest.h"
#include "ReceiverPolling.h"
#include "k2v/vfe_vby1rx.h"

namespace {

DetectionState detection;

K2V_HDMI_TIMING_T AsHdmiTiming(const K2V_VBY1RX_TIMING_T& t) {
  K2V_HDMI_TIMING_T timing{};
  timing.format = t.format;
  timing.hFreq = t.h_freq;
  timing.vFreq = t.v_freq;
  timing.hTotal = t.h_total;
  timing.vTotal = t.v_total;
  timing.hPorch = t.h_porch;
  timing.vPorch = t.v_porch;
  timing.active = t.active;
  timing.scanType = t.scan_type;
  return timing;
}

int GetTiming(uint8_t, K2V_HDMI_TIMING_T& timing) {
  K2V_VBY1RX_TIMING_T record{};
  const int result = K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&record, K2V_VFE_TIMING_SOURCE_VBY1RX);
  timing = AsHdmiTiming(record);
  return result;
}

// Connecting an input replaces the previous one.
void ChangePort(uint8_t, uint8_t to) {
  K2V_RHAL_VFE_VBY1RX_Connect(to);
}

// Also ends the connection and closes the receiver.
void Uninitialize(uint8_t) {
  K2V_RHAL_VFE_VBY1RX_Uninitialize();
}

const Receiver kVby1rx = {
    .testName = "VfeVby1rxMUROTestCase",
    .portList = "Input port: 0(VBY1RX1); 1(VBY1RX2); 2(VBY1RX3);",
    .changeList = "VfeVby1rxMUROTestCase change port, 0(VBY1RX1); 1(VBY1RX2); 2(VBY1RX3); ",
    .timingTitle = "GetTimingInfo",
    .has3dTiming = false,
    .initialize = {[](uint8_t) { return K2V_RHAL_VFE_VBY1RX_Initialize(); },
                   "VBY1RX_Initialize fail", Uninitialize},
    .open = {[](uint8_t) { return K2V_RHAL_VFE_VBY1RX_Open(); }, "VBY1RX_Open fail", Uninitialize},
    .connect = {K2V_RHAL_VFE_VBY1RX_Connect, "VBY1RX_Connect fail", Uninitialize},
    .prepare = [] {},
    .getTiming = GetTiming,
    .changePort = ChangePort,
    .tearDown = Uninitialize,
    .detection = detection,
};

constexpr PollingTest kDisplay = {
    .question = "VfeVby1rxMUROTestCase Exit, 0(No) 1(YES) 2(Close)",
    .closeAnswer = 2,
    .changesPort = true,
};
constexpr PollingTest kChangeTiming = {
    .question = "VfeVby1rxMUROTestCase Exit, 0(No) 1(YES)",
};
constexpr DetectOnceTest kDetect = {
    .title = "VBY1RX GetInfo Again",
    .question = "ReDetect VBY1RX Again, 0(No), 1(YES)",
    .printsAnswer = false,
};

}  // namespace

int VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase1(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kVby1rx, kDisplay, __func__);
}

int VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase2(char*) {
  PrintTraceLine(__func__);
  return RunDetectOnce(kVby1rx, kDetect, __func__);
}

int VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase3(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kVby1rx, kChangeTiming, __func__);
}

int VfeVby1rxMUROTestCase::VfeVby1rxMURO_GetTimingInfo(char*) {
  // This trace line has no blank at its end.
  std::printf("\033[1;31m [muro]%s,%s ,%d\n\033[m", __FILE__, __func__, __LINE__);
  if (const int result = K2V_RHAL_VFE_VBY1RX_Initialize(); result != 0) {
    std::printf("VBY1RX_Initialize fail, return value: %d\n", result);
    K2V_RHAL_VFE_VBY1RX_Uninitialize();
    return 1;
  }
  K2V_HDMI_TIMING_T timing{};
  const int result = GetTiming(0, timing);
  std::printf("Get Timing Info, return value: %d\n", static_cast<uint8_t>(result));
  PrintTimingFields(timing, false);
  return 0;
}
