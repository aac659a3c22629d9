#include "VfeHdmiTestCase.h"

#include <cstdio>
#include <iterator>

#include "ConsoleInput.h"
#include "DriverTest.h"
#include "ReceiverPolling.h"
#include "TestCase/sic_video/HdmiEdid.h"
#include "k2v/vfe_hdmi.h"

namespace {

constexpr int kCloseAnswer = 3;

DetectionState detection;

int GetTiming(uint8_t port, K2V_HDMI_TIMING_T& timing) {
  return K2V_RHAL_VFE_HDMI_GetPortTimingInfo(port, &timing);
}

void ChangePort(uint8_t from, uint8_t to) {
  K2V_RHAL_VFE_HDMI_Disconnect(from);
  K2V_RHAL_VFE_HDMI_Connect(to);
}

void TearDown(uint8_t port) {
  K2V_RHAL_VFE_HDMI_Disconnect(port);
  K2V_RHAL_VFE_HDMI_Close();
  K2V_RHAL_VFE_HDMI_Uninitialize();
}

const Receiver kHdmi = {
    .testName = "VfeHdmiMUROTestCase",
    .portList = kHdmiPortList,
    .changeList = "VfeHdmiMUROTestCase change port, 0(HDMI1); 1(HDMI2); 2(HDMI3); ",
    .timingTitle = "GetPortTimingInfo",
    .has3dTiming = true,
    .initialize = {[](uint8_t) { return K2V_RHAL_VFE_HDMI_Initialize(); }, "HDMI_Initialize fail",
                   [](uint8_t) { K2V_RHAL_VFE_HDMI_Uninitialize(); }},
    .open = {[](uint8_t) { return K2V_RHAL_VFE_HDMI_Open(); }, "HDMI_Open fail",
             [](uint8_t) { K2V_RHAL_VFE_HDMI_Close(); }},
    .connect = {K2V_RHAL_VFE_HDMI_Connect, "HDMI_Connect fail",
                [](uint8_t port) { K2V_RHAL_VFE_HDMI_Disconnect(port); }},
    .prepare = StoreHdmiEdids,
    .getTiming = GetTiming,
    .changePort = ChangePort,
    .tearDown = TearDown,
    .detection = detection,
};

void PrintAvi(uint8_t port) {
  K2V_HAL_VFE_HDMI_AVI_INFO_T info{};
  K2V_RHAL_VFE_HDMI_GetPortAVIInfo(port, &info);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortAVIInfo->VideoIdCode:%d\n",
              static_cast<int>(info.VideoIdCode));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortAVIInfo->eHDMIMode:%d\n", static_cast<int>(info.eHDMIMode));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortAVIInfo->ePixelEncoding:%d\n",
              static_cast<int>(info.ePixelEncoding));
}

void PrintSpd(uint8_t port) {
  K2V_HAL_VFE_HDMI_SPD_INFO_T info{};
  K2V_RHAL_VFE_HDMI_GetPortSPDInfo(port, &info);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortSPDInfo->VendorName:%.8s\n", info.VendorName);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortSPDInfo->ProductDescription:%.16s\n",
              info.ProductDescription);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortSPDInfo->SourceDeviceInfo:%d\n",
              static_cast<int>(info.SourceDeviceInfo));
}

void PrintVsi(uint8_t port) {
  K2V_HAL_VFE_HDMI_VSI_INFO_T info{};
  K2V_RHAL_VFE_HDMI_GetPortVSIInfo(port, &info);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortVSIInfo->eVideoFormat:%d\n",
              static_cast<int>(info.eVideoFormat));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortVSIInfo->e3DStructure:%d\n",
              static_cast<int>(info.e3DStructure));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortVSIInfo->e3DExtData:%d\n",
              static_cast<int>(info.e3DExtData));
}

void PrintDrm(uint8_t port) {
  K2V_HAL_VFE_HDMI_DRM_INFO_T info{};
  if (K2V_RHAL_VFE_HDMI_GetDRMInfo(port, &info) != 0) {
    std::puts("Get DRM packet NG");
    return;
  }
  std::printf("K2V_RHAL_VFE_HDMI_GetDRMInfo->nVersion:%d\n", static_cast<int>(info.nVersion));
  std::printf("K2V_RHAL_VFE_HDMI_GetDRMInfo->nLength:%d\n", static_cast<int>(info.nLength));
  std::printf("K2V_RHAL_VFE_HDMI_GetDRMInfo->eEOTFtype:%d\n", static_cast<int>(info.eEOTFtype));
}

void PrintPackets(uint8_t port) {
  K2V_HAL_VFE_HDMI_PACKET_INFO_T info{};
  K2V_RHAL_VFE_HDMI_GetPortPacketInfo(port, &info);
  std::printf("K2V_RHAL_VFE_HDMI_GetPortPacketInfo.stAVI.VideoIdCode:%d\n",
              static_cast<int>(info.stAVI.VideoIdCode));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortPacketInfo.stAVI.eHDMIMode:%d\n",
              static_cast<int>(info.stAVI.eHDMIMode));
  std::printf("K2V_RHAL_VFE_HDMI_GetPortPacketInfo.stAVI.ePixelEncoding:%d\n",
              static_cast<int>(info.stAVI.ePixelEncoding));
}

/// Prints the info-frames that the operator asks for, until the operator ends it.
void ShowInfoFrames(uint8_t port) {
  static constexpr void (*kPrinters[])(uint8_t) = {PrintPackets, PrintAvi, PrintSpd, PrintVsi,
                                                   PrintDrm};
  constexpr int kPrinterCount = static_cast<int>(std::size(kPrinters));
  int again = 0;
  do {
    const int kind = console::AskNumber(
        "VfeHdmiMUROTestCase Get InfoFrame, 0(all) 1(AVI); 2(SPD); 3(VSI); 4(DRM);\n");
    if (kind >= 0 && kind < kPrinterCount) kPrinters[kind](port);
    again = console::AskNumber("VfeHdmiMUROTestCase Get InfoFrame again?, 0(YES) 1(No)\n");
  } while (again == 0);
}

constexpr PollingTest kChangePort = {
    .question = "VfeHdmiMUROTestCase Exit, 0(No) 1(YES) 2(Don't Change Port) 3(Close)",
    .closeAnswer = kCloseAnswer,
    .changesPort = true,
};
constexpr PollingTest kInfoFrames = {
    .question = "VfeHdmiMUROTestCase Exit, 0(No) 1(YES) 3(Close)",
    .closeAnswer = kCloseAnswer,
    .showPort = ShowInfoFrames,
};
constexpr PollingTest kChangeTiming = {
    .question = "VfeHdmiMUROTestCase Exit, 0(No) 1(YES)",
};
constexpr PollingTest kRepeatTiming = {
    .question = "VfeHdmiMUROTestCase Get timinginfo again?, 0(YES) 1(No) 3(Close)",
    .closeAnswer = kCloseAnswer,
    .repeatsTiming = true,
};
constexpr PollingTest kBackGround = {
    .question = "VfeHdmiMUROTestCase Exit, 0(No) 1(YES) 2(Don't Change Port)",
    .changesPort = true,
};
constexpr DetectOnceTest kSwitch = {
    .title = "HDMI GetInfo Again",
    .question = "ReDetect HDMI Again, 0(No), 1(YES)",
    .printsAnswer = true,
};

}  // namespace

int VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kHdmi, kChangePort, __func__);
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTestCase2(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kHdmi, kInfoFrames, __func__);
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTestCase3(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kHdmi, kChangeTiming, __func__);
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTestCase4(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kHdmi, kRepeatTiming, __func__);
}

int VfeHdmiMUROTestCase::VfeHdmiMURO_SwitchToHDMI(char*) {
  PrintTraceLine(__func__);
  return RunDetectOnce(kHdmi, kSwitch, __func__);
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTestBackGroundDetect(char*) {
  PrintTraceLine(__func__);
  return RunPolling(kHdmi, kBackGround, __func__);
}
