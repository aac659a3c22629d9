#include "VfeHdmiModule.h"

#include "VfeHdmiTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Vfe MURO 0", "HDMI Display change port ", VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1, true,
     kAsks},
    {1, "Vfe MURO 1", "HDMI Display get InfoFrame ", VfeHdmiMUROTestCase::VfeHdmiMUROTestCase2,
     true, kAsks},
    {2, "Vfe MURO 2", "HDMI Display change timing", VfeHdmiMUROTestCase::VfeHdmiMUROTestCase3, true,
     kAsks},
    {3, "Vfe MURO 3", "HDMI Display change timing_2", VfeHdmiMUROTestCase::VfeHdmiMUROTestCase4,
     true, kAsks},
    {4, "Vfe MURO 4", "Switch To HDMI", VfeHdmiMUROTestCase::VfeHdmiMURO_SwitchToHDMI, true, kAsks},
    {5, "Vfe MURO 6", "VfeHdmiMUROTestBackGroundDetect",
     VfeHdmiMUROTestCase::VfeHdmiMUROTestBackGroundDetect, true, kAsks},
    {6, "Vfe MURO 7", "HDMI Get RxPortCnt", VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetRxPortCnt,
     true},
    {7, "Vfe MURO 8", "HDMI IsConnected", VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetIsConnected, true,
     kAsks},
    {8, "Vfe MURO 9", "HDMI get EDID", VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetEDID, true, kAsks},
    {9, "Vfe MURO 10", "HDMI Is HDMI 2.p support",
     VfeHdmiMUROTestCase::VfeHdmiMUROTest_isHDMI20Supported, true},
    {10, "Vfe MURO 11", "HDMI Get HDCP Ver", VfeHdmiMUROTestCase::VfeHdmiMUROTest_HDCP_Version,
     true, kAsks},
    {11, "Vfe MURO 12", "HDMI Set HotPlug", VfeHdmiMUROTestCase::VfeHdmiMUROTest_Set_HotPlug, true,
     kAsks},
    {12, "Vfe MURO 13", "HDMI Get Logical Port",
     VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetLogicalPort, true},
    {13, "Vfe MURO 14", "HDMI Get Color Depth", VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetColorDepth,
     true, kAsks},
    {14, "Vfe MURO 15", "Is support HDCP 2.2",
     VfeHdmiMUROTestCase::VfeHdmiMUROTest_IsHDCP22Supported, true, kAsks},
    {15, "Vfe MURO 16", "Get HDCP Receiver Id",
     VfeHdmiMUROTestCase::VfeHdmiMUROTest_getHDCPReceiverId, true},
    {16, "Vfe MURO 17", "HDCP KSV", VfeHdmiMUROTestCase::VfeHdmiMUROTest_getHDCPKSV, true, kAsks},
};

}  // namespace

VfeHdmiModule::VfeHdmiModule() {
  Declare(EN_MURO_VFE_HDMI, kVideo, "Vfe Hdmi Function Test", "Test HDMI MURO ", kTests);
}
