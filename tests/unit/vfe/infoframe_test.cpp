// The receiver's records as text, compared as whole blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "InfoFrameText.h"
#include "Scripted.h"

namespace {

template <typename Print>
std::string TextOf(Print print) {
  return scripted::Play("", [&] { return print(), 0; }).output;
}

TEST(InfoFrameText, Avi) {
  const K2V_HAL_VFE_HDMI_AVI_INFO_T info = {97, 1,  3,  2,  13, 21, 22, 23, 24,    25,   26,  27,
                                            28, 29, 30, 31, 32, 33, 0,  34, 65535, 1036, 1037};
  EXPECT_EQ(TextOf([&] { PrintAviInfo(info); }),
            "VideoIdCode : 97\neHDMIMode : 1\nePixelEncoding : 3\nnVersion : 2\n"
            "nLength : 13 bytes\nbActiveFormat : 21\neBarInfo : 22\neScanInfo : 23\n"
            "eColorimetry : 24\neExtColorimetry : 25\nePictureAspect : 26\neActiveAspect : 27\n"
            "bItContent : 28\neItContentType : 29\neRgbRange : 30\neYccRange : 31\neScaling : 32\n"
            "nPixelRepetition : 33\nnTopBarEnd : 34 lines\nnBottomBarStart : 65535 lines\n"
            "nLeftBarEnd : 1036 pixels\nnRightBarStart : 1037 pixels\n");
}

TEST(InfoFrameText, Timing) {
  const K2V_HDMI_TIMING_T timing = {1, 2, 3, 4, 5, 6, 7, {8, 9, 10, 11}, 12, 13, 14, 15, 16, 17};
  EXPECT_EQ(TextOf([&] { PrintTimingInfo(timing); }),
            "format : 1\nhFreq : 2 x 0.01 kHz\nvFreq : 3 x 0.01 Hz\nhTotal : 4 pixels\n"
            "vTotal : 5 lines\nhPorch : 6 pixels\nvPorch : 7 lines\nactive.x : 8 pixels\n"
            "active.y : 9 lines\nactive.w : 10 pixels\nactive.h : 11 lines\nscanType : 12\n"
            "mode : 13\nfull_3d_timing : 15\nvideo_LR_order : 16\nextra : 17\n");
}

TEST(InfoFrameText, SpdWithNamesThatFillTheirFields) {
  K2V_HAL_VFE_HDMI_SPD_INFO_T info{};
  std::fill_n(info.VendorName, sizeof(info.VendorName), 'V');  // without a terminating zero byte
  std::fill_n(info.ProductDescription, sizeof(info.ProductDescription), 'P');
  info.nVersion = 1;
  info.nLength = 25;
  info.SourceDeviceInfo = 9;
  EXPECT_EQ(TextOf([&] { PrintSpdInfo(info); }),
            "VendorName : VVVVVVVV\nProductDescription : PPPPPPPPPPPPPPPP\nnVersion : 1\n"
            "nLength : 25 bytes\nSourceDeviceInfo : 9\n");
}

TEST(InfoFrameText, VsiAndSeveralVsi) {
  K2V_HAL_VFE_HDMI_VSI_INFO_T one{};
  one.nIeeeOui = 0x000C03;
  one.eVideoFormat = 1;
  one.nLength = 5;
  one.nHdmiVic = 3;
  one.e3DStructure = 8;
  one.e3DExtData = 2;
  one.nVersion = 4;
  one.b3DMetadata = 6;
  EXPECT_EQ(TextOf([&] { PrintVsiInfo(one); }),
            "nIeeeOui : 00-0C-03\neVideoFormat : 1\ne3DStructure : 8\ne3DExtData : 2\n"
            "nVersion : 4\nnLength : 5 bytes\nnHdmiVic : 3\nb3DMetadata : 6\n");

  K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T all{};
  all.nCount = 2;
  all.stVSI[0].nIeeeOui = 0x000C03;
  all.stVSI[0].nVersion = 1;
  all.stVSI[0].nLength = 5;
  all.stVSI[0].nData[0] = 0x20;
  all.stVSI[0].nData[1] = 3;
  all.stVSI[1].nIeeeOui = 0xC45DD8;
  all.stVSI[1].nLength = 2;  // shorter than its OUI
  EXPECT_EQ(TextOf([&] { _dump_multi_vsif(&all); }),
            "nCount : 2\nstVSI[0]\nnIeeeOui : 00-0C-03\nnVersion : 1\nnLength : 5 bytes\n"
            "nData : 20 03\nstVSI[1]\nnIeeeOui : C4-5D-D8\nnVersion : 0\nnLength : 2 bytes\n"
            "nData :\n");
  all.nCount = 1000;
  all.stVSI[3].nLength = 255;
  const std::string text = TextOf([&] { _dump_multi_vsif(&all); });
  EXPECT_NE(text.find("stVSI[3]"), std::string::npos);
  EXPECT_EQ(text.find("stVSI[4]"), std::string::npos) << "an invalid count is limited";
}

TEST(InfoFrameText, Drm) {
  K2V_HAL_VFE_HDMI_DRM_INFO_T info{};
  info.nVersion = 1;
  info.nLength = 26;
  info.eEOTFtype = 2;
  info.eMetadataId = 7;
  info.stDisplayPrimaries[0] = {1, 3};
  info.stDisplayPrimaries[1] = {6550, 2300};
  info.stWhitePoint = {15635, 16450};
  info.nMaxMasteringLuminance = 1000;
  info.nMinMasteringLuminance = 50;
  info.nMaxCLL = 65535;
  info.nMaxFALL = 400;
  EXPECT_EQ(TextOf([&] { _dump_drm_info(&info); }),
            "nVersion : 1\nnLength : 26 bytes\neEOTFtype : 2\neMetadataId : 7\n"
            "stDisplayPrimaries[0] : 1, 3 x 0.00002\nstDisplayPrimaries[1] : 6550, 2300 x 0.00002\n"
            "stDisplayPrimaries[2] : 0, 0 x 0.00002\nstWhitePoint : 15635, 16450 x 0.00002\n"
            "nMaxMasteringLuminance : 1000 cd/m2\nnMinMasteringLuminance : 50 x 0.0001 cd/m2\n"
            "nMaxCLL : 65535 cd/m2\nnMaxFALL : 400 cd/m2\n");
}

TEST(InfoFrameText, PacketsContainFourRecordsWithTheirNames) {
  K2V_HAL_VFE_HDMI_PACKET_INFO_T info{};
  info.stAVI.VideoIdCode = 97;
  std::copy_n("Vendor", 7, info.stSPD.VendorName);
  info.stVSI.nIeeeOui = 0x000C03;
  info.stDRM.eEOTFtype = 2;
  EXPECT_EQ(TextOf([&] { PrintPacketInfo(info); }),
            "stAVI\n" + TextOf([&] { PrintAviInfo(info.stAVI); }) + "stSPD\n" +
                TextOf([&] { PrintSpdInfo(info.stSPD); }) + "stVSI\n" +
                TextOf([&] { PrintVsiInfo(info.stVSI); }) + "stDRM\n" +
                TextOf([&] { _dump_drm_info(&info.stDRM); }));
}

}  // namespace
