#include "UTVfeHdmiModule.h"

#include "UTVfeHdmiTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "UTVFE HDMI Func Test", "Initialize", UTVfeHdmiTestCase::UTVfeHdmiTest_Initialize, true},
    {20, "UTVFE HDMI Func Test", "GetRxPortCount", UTVfeHdmiTestCase::UTVfeHdmiTest_GetRxPortCount,
     true},
    {20, "UTVFE HDMI Func Test", "GetARCChannel", UTVfeHdmiTestCase::UTVfeHdmiTest_GetARCChannel,
     true},
    {20, "UTVFE HDMI Func Test", "IsHDMI20Supported",
     UTVfeHdmiTestCase::UTVfeHdmiTest_IsHDMI20Supported, true},
    {9, "UTVFE HDMI Func Test", "Open", UTVfeHdmiTestCase::UTVfeHdmiTest_Open, true},
    {10, "UTVFE HDMI Func Test", "Connect", UTVfeHdmiTestCase::UTVfeHdmiTest_Connect, true, kAsks},
    {18, "UTVFE HDMI Func Test", "Disconnect", UTVfeHdmiTestCase::UTVfeHdmiTest_Disconnect, true},
    {19, "UTVFE HDMI Func Test", "Close ", UTVfeHdmiTestCase::UTVfeHdmiTest_Close, true},
    {4, "UTVFE HDMI HPD/Connect Test", "GetConnectionState",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetConnectionState, true},
    {5, "UTVFE HDMI HDP/Connect Test", "HDP Enable/Disable",
     UTVfeHdmiTestCase::UTVfeHdmiTest_EnableHPD, true},
    {2, "UTVFE HDMI EDID Test", "ReadEDID", UTVfeHdmiTestCase::UTVfeHdmiTest_ReadEDID, true},
    {3, "UTVFE HDMI EDID Test", "WriteEDID", UTVfeHdmiTestCase::UTVfeHdmiTest_WriteEDID, true},
    {11, "UTVFE HDMI Status Test", "GetClockStatus",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetClockStatus, true},
    {12, "UTVFE HDMI Status Test", "GetPortTimingInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortTimingInfo, true, kAsks},
    {12, "UTVFE HDMI Status Test", "GetColorDepth", UTVfeHdmiTestCase::UTVfeHdmiTest_GetColorDepth,
     true, kAsks},
    {12, "UTVFE HDMI Status Test", "GetAvMute", UTVfeHdmiTestCase::UTVfeHdmiTest_GetAVMute, true,
     kAsks},
    {12, "UTVFE HDMI Status Test", "GetScdcStatus", UTVfeHdmiTestCase::UTVfeHdmiTest_GetScdcStatus,
     true, kAsks},
    {13, "UTVFE HDMI Info Frame Test", "GetPortDRMInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortDRMInfo, true, kAsks},
    {13, "UTVFE HDMI Info Frame Test", "GetPortVSIInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortVSIInfo, true, kAsks},
    {14, "UTVFE HDMI Info Frame Test", "GetPortSPDInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortSPDInfo, true, kAsks},
    {15, "UTVFE HDMI Info Frame Test", "GetPortAVIInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortAVIInfo, true, kAsks},
    {16, "UTVFE HDMI Info Frame Test", "GetPortPacketInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortPacketInfo, true, kAsks},
    {17, "UTVFE HDMI Info Frame Test", "GetPortMultiVSIInfo",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortMultiVSIInfo, true, kAsks},
    {7, "UTVFE HDMI HDCP Test", "ReadHDCP", UTVfeHdmiTestCase::UTVfeHdmiTest_ReadHDCP, true},
    {8, "UTVFE HDMI HDCP Test", "WriteHDCP", UTVfeHdmiTestCase::UTVfeHdmiTest_WriteHDCP, true},
    {17, "UTVFE HDMI HDCP Test", "IsHDCP22Supported",
     UTVfeHdmiTestCase::UTVfeHdmiTest_IsHDCP22Supported, true},
    {17, "UTVFE HDMI HDCP Test", "GetHDCPVersion", UTVfeHdmiTestCase::UTVfeHdmiTest_GetHDCPVersion,
     true},
    {17, "UTVFE HDMI HDCP Test", "GetSourceKSVData",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetSourceKSVData, true},
    {17, "UTVFE HDMI HDCP Test", "GetHDCPReseiverID",
     UTVfeHdmiTestCase::UTVfeHdmiTest_GetHDCPReceiverId, true},
};

}  // namespace

UTVfeHdmiModule::UTVfeHdmiModule() {
  Declare(EN_MURO_UT_VFE_HDMI, kUnit, "UTVfe HDMI Function Test", "for example ****", kTests);
}
