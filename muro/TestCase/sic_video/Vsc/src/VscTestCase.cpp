#include "VscTestCase.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "ConsoleInput.h"
#include "DriverTest.h"
#include "Shell.h"
#include "commonVsc.h"
#include "k2v/vsc.h"

namespace {

constexpr uint16_t kFrameBufferWidth = 720;   // maximum width of a frame-buffer test, in pixels
constexpr uint16_t kFrameBufferHeight = 576;  // lines
constexpr std::size_t kFrameBufferPixels = std::size_t{kFrameBufferWidth} * kFrameBufferHeight;

uint16_t AskUint16(const char* text) {
  return static_cast<uint16_t>(console::AskNumber(text));
}
uint32_t AskUint32(const char* text) {
  return static_cast<uint32_t>(console::AskNumber(text));
}

__K2V_VIDEO_WID_T AskWindow() {
  return AskUint32("Set Win Index\n0(K2V_VIDEO_WID_0); 1(K2V_VIDEO_WID_1);\n");
}

/// The four prompts of a region in the order x, y, w, h.
K2V_VIDEO_RECT_T AskRegion(const char* const (&prompts)[4]) {
  K2V_VIDEO_RECT_T region;
  region.x = AskUint16(prompts[0]);
  region.y = AskUint16(prompts[1]);
  region.w = AskUint16(prompts[2]);
  region.h = AskUint16(prompts[3]);
  return region;
}

K2V_VIDEO_RECT_T AskPlainRegion() {
  return AskRegion({"x=", "y=", "w=", "h="});
}

K2V_VIDEO_RECT_T AskFrameBufferRegion() {
  K2V_VIDEO_RECT_T region =
      AskRegion({"Set Input x\n", "Set Input y\n", "Set Input w\n", "Set Input h\n"});
  region.w = std::min(region.w, kFrameBufferWidth);
  region.h = std::min(region.h, kFrameBufferHeight);
  return region;
}

K2V_VSC_INPUT_SRC_T AskSource() {
  std::puts("vsc src info  (ex: 3, 0, 0 for playback)");
  const uint32_t type = AskUint32("type=");
  const uint32_t resourceIndex = AskUint32("resourceIndex=");
  const uint32_t attr = AskUint32("attr=");
  return {type, static_cast<uint16_t>((resourceIndex << 8) + (attr & 0xff)),
          K2V_VSC_OUTPUT_DISPLAY_MODE};
}

int Verdict(int halResult) {
  if (halResult == 0) return 0;
  std::printf("Result : %d\n", halResult);
  return 1;
}

struct FileTexts {
  const char* opened;
  const char* failed;
};

/// Prompts for a path and writes `bytes` bytes to that file. Returns the number of bytes written,
/// -1 if the file could not be opened.
int SaveAs(const FileTexts& texts, const void* data, std::size_t bytes) {
  console::Prompt("\nPress file path name:\n");
  const std::string path = console::ReadAnswer();
  std::printf("You set FILE is %s !!\n", path.c_str());
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                             &std::fclose);
  if (!file) {
    std::puts(texts.failed);
    return -1;
  }
  std::puts(texts.opened);
  std::size_t written = std::fwrite(data, 1, bytes, file.get());
  if (std::fflush(file.get()) != 0) written = 0;
  if (written != bytes) std::puts("write fail!");
  return static_cast<int>(written);
}

/// Prompts for one overscan percentage. False, after a message, for more than 100.
bool AskOverScan(const char* axis, int16_t* percent) {
  console::Prompt("Set %s OverscanValue\n", axis);
  const int value = console::ReadNumber();
  if (value > 100) {
    std::printf("%s OverscanValue Abnormal : %d\n", axis, value);
    return false;
  }
  std::printf("%s OverscanValue : %d\n", axis, value);
  *percent = static_cast<int16_t>(value);
  return true;
}

int OverScan() {
  K2V_VIDEO_RECT_T region{};
  K2V_RHAL_VSC_GetInputRegion(K2V_VIDEO_WID_0, &region);
  std::printf("VIDEO_RECT_Param, x : %x, y : %x, w : %x, h : %x\n", region.x, region.y, region.w,
              region.h);
  int16_t horizontal = 0;
  int16_t vertical = 0;
  if (!AskOverScan("H", &horizontal) || !AskOverScan("V", &vertical)) return 1;
  K2V_RHAL_VSC_SetInputRegion(K2V_VIDEO_WID_0, OverScanRegion(region, horizontal, vertical));
  K2V_RHAL_VSC_SetOutputRegion(K2V_VIDEO_WID_0, {0, 0, 1920, 1080});
  return 0;
}

unsigned Address(const void* p) {
  return static_cast<unsigned>(reinterpret_cast<uintptr_t>(p));
}

}  // namespace

K2V_VIDEO_RECT_T OverScanRegion(K2V_VIDEO_RECT_T region, int16_t horizontal, int16_t vertical) {
  const int cutWidth = region.w - horizontal * region.w / 100;
  const int keptHeight = region.h * vertical / 100;
  return {static_cast<uint16_t>(region.x + cutWidth / 2),
          static_cast<uint16_t>(region.y + (region.h - keptHeight) / 2),
          static_cast<uint16_t>(region.w - cutWidth), static_cast<uint16_t>(keptHeight)};
}

int VscTestCase::Vsc_OverScan_Check_Chip_Limit(char*) {
  const __K2V_VIDEO_WID_T wid = AskUint32("\033[0;32;34mSet video wid:0(wid_0),1(wid_1)\n\033[m");
  Api_vsc_Misc_SetWinBlank(1, 0);

  std::puts("Please Set InputRegion:");
  const K2V_VIDEO_RECT_T input = AskRegion({"\033[0;32;34mSet input H_start Value\n\033[m",
                                            "\033[0;32;34mSet input V_start Value\n\033[m",
                                            "\033[0;32;34mSet input H_wid Value\n\033[m",
                                            "\033[0;32;34mSet input V_len Value\n\033[m"});
  std::printf("VIDEO_RECT_Input_Param(x,y,w,h)=%d,%d,%d,%d\n", input.x, input.y, input.w, input.h);
  K2V_RHAL_VSC_SetInputRegion(wid, input);

  std::puts("Please Set OutputRegion:");
  const K2V_VIDEO_RECT_T display = AskRegion({"\033[0;32;34mSet Display H_start Value\n\033[m",
                                              "\033[0;32;34mSet Display V_start Value\n\033[m",
                                              "\033[0;32;34mSet Display H_wid Value\n\033[m",
                                              "\033[0;32;34mSet Display V_len Value\n\033[m"});
  std::printf("VIDEO_RECT_Display_Param(x,y,w,h)=%d,%d,%d,%d\n", display.x, display.y, display.w,
              display.h);
  K2V_RHAL_VSC_SetOutputRegion(wid, display);

  Api_vsc_Misc_SetWinBlank(0, 0);
  return 0;
}

int VscTestCase::Vsc_OverScan_Trans_Garbage(char*) {
  PrintTraceLine(__func__);
  return OverScan();
}

int VscTestCase::Vsc_OverScan_Check_in_3D_mode(char*) {
  PrintTraceLine(__func__);
  Api_vsc_Misc_SetWinBlank(1, 0);
  const int result = OverScan();
  Api_vsc_Misc_SetWinBlank(0, 0);
  return result;
}

int VscTestCase::Vsc_OverScan_PIP(char*) {
  PrintTraceLine(__func__);
  return 0;
}

int VscTestCase::Vsc_PatternSize_PIP(char*) {
  PrintTraceLine(__func__);
  return 0;
}

int VscTestCase::Vsc_MuteFun_MuteColorPIP(char*) {
  PrintTraceLine(__func__);
  const __K2V_VIDEO_WID_T wid = AskWindow();
  const uint32_t on = AskUint32("Win Blank, 0(Off); 1(On)\n");
  K2V_RHAL_VSC_SetWinBlank(wid, on, AskBlankColor());
  return 0;
}

int VscTestCase::Vsc_StillFun_VideoStell(char*) {
  PrintTraceLine(__func__);
  const __K2V_VIDEO_WID_T wid = AskWindow();
  K2V_RHAL_VSC_SetWinFreeze(wid, AskUint32("Win Blank, 0(Off); 1(On)\n"));
  return 0;
}

int VscTestCase::Vsc_ChgSclaerOutput_By3DFormat(char*) {
  return 0;
}

int VscTestCase::Vsc_RGB444_RGB444InHDMI(char*) {
  PrintTraceLine(__func__);
  return Verdict(K2V_RHAL_VSC_SetRGB444Mode(AskUint32("RGB444, 0(Off); 1(On)\n")));
}

int VscTestCase::Vsc_3DPattern_Detect3DMode(char*) {
  return 0;
}

int VscTestCase::Vsc_3DPattern_During3D_Change(char*) {
  return 0;
}

int VscTestCase::Vsc_self_diagnosis_InoutVideo_Freeze(char*) {
  PrintTraceLine(__func__);
  const __K2V_VIDEO_WID_T wid = AskWindow();
  const uint32_t on = AskUint32("bFreezeOn, 0(Off); 1(On)\n");
  return Verdict(K2V_RHAL_VSC_FreezeVideoFrameBuffer(wid, on));
}

int VscTestCase::Vsc_self_diagnosis_InoutVideo_Read(char*) {
  PrintTraceLine(__func__);
  const __K2V_VIDEO_WID_T wid = AskWindow();
  K2V_VIDEO_RECT_T region = AskFrameBufferRegion();
  std::vector<K2V_VIDEO_PIXEL_T> pixels(kFrameBufferPixels);
  uint32_t colorStandard = 0;
  uint32_t pixelColorFormat = 0;
  if (Verdict(K2V_RHAL_VSC_ReadVideoFrameBuffer(wid, &region, pixels.data(), &colorStandard,
                                                &pixelColorFormat)) != 0) {
    return 1;
  }
  std::printf("In, x:%d, y:%d, w:%d, h:%d\n", region.x, region.y, region.w, region.h);
  std::printf("color_standard:%d\n", static_cast<int>(colorStandard));
  std::printf("PixelColorFormat:%d\n", static_cast<int>(pixelColorFormat));

  // The HAL may have changed the region: the buffer's size is the limit.
  pixels.resize(std::min(pixels.size(), std::size_t{region.w} * region.h));
  std::vector<uint16_t> luma;
  luma.reserve(pixels.size());
  for (const K2V_VIDEO_PIXEL_T& pixel : pixels) luma.push_back(pixel.y);
  SaveAs({"[VSC_FunctionTest_HAL_VSC_ReadVideoFrameBuffer] /mnt/Y.raw open ok",
          "[VSC_FunctionTest_HAL_VSC_ReadVideoFrameBuffer]/mnt/Y.raw open fail "},
         luma.data(), luma.size() * sizeof luma[0]);
  RunShell("sync");
  return 0;
}

int VscTestCase::Vsc_self_diagnosis_InoutVideo_Write(char*) {
  PrintTraceLine(__func__);
  const __K2V_VIDEO_WID_T wid = AskWindow();
  K2V_VIDEO_RECT_T region = AskFrameBufferRegion();
  K2V_VIDEO_PIXEL_T color{};
  color.y = AskUint16("Set Input Y\n");
  color.cb = AskUint16("Set Input Cb\n");
  color.cr = AskUint16("Set Input Cr\n");
  std::vector<K2V_VIDEO_PIXEL_T> pixels(kFrameBufferPixels);
  std::fill_n(pixels.begin(), region.w * region.h, color);
  return Verdict(K2V_RHAL_VSC_WriteVideoFrameBuffer(wid, &region, pixels.data()));
}

int VscTestCase::Vsc_Capture_DataVerify(char*) {
  PrintTraceLine(__func__);
  const K2V_VIDEO_DDI_CAPTURE_PLACE_T place = AskUint32(
      "Set CaptureVideoFrame place\n"
      "0(K2V_VIDEO_DDI_SCALER_OUTPUT); 1(K2V_VIDEO_DDI_DISPLAY_OUTPUT);\n");
  std::vector<uint8_t> frame(K2V_CAPTURE_BYTES);
  K2V_VSC_CAPTURE_INFO_T info{frame.data(), K2V_CAPTURE_BYTES, 0, 0};
  std::printf("DataY addr = %x\n", Address(frame.data()));
  std::printf("CaptureInfo.pData addr = %x\n", Address(info.pData));
  std::printf("CaptureInfo addr = %x\n", Address(&info));
  K2V_RHAL_VSC_CaptureVideoFrame(place, &info);
  const int written = SaveAs({"RGB.raw open ok", "RGB.raw open fail "}, frame.data(), frame.size());
  if (written >= 0) std::printf("fwrite =%d\n", written);
  RunShell("sync");
  return 0;
}

int VscTestCase::Vsc_V2G_DataVerify(char*) {
  std::puts("The V2G interface is intentionally left empty");
  PrintTraceLine(__func__);
  return 0;
}

int VscTestCase::VSC_Initialize(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_Initialize();
  return 0;
}

int VscTestCase::VSC_Open(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_Open(K2V_VIDEO_WID_0);
  return 0;
}

int VscTestCase::VSC_Connect(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_Connect(K2V_VIDEO_WID_0, AskSource());
  return 0;
}

int VscTestCase::VSC_SetInputRegion(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_SetInputRegion(K2V_VIDEO_WID_0, AskPlainRegion());
  return 0;
}

int VscTestCase::VSC_Disconnect(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_Disconnect(K2V_VIDEO_WID_0, AskSource());
  return 0;
}

int VscTestCase::VSC_SetOutputRegion(char*) {
  PrintTraceLine(__func__);
  K2V_RHAL_VSC_SetOutputRegion(K2V_VIDEO_WID_0, AskPlainRegion());
  return 0;
}

int VscTestCase::VSC_SetWinBlank(char*) {
  PrintTraceLine(__func__);
  const uint32_t on = AskUint32("VSC_SetWinBlank 0(Disable), 1(Enable)=");
  K2V_RHAL_VSC_SetWinBlank(K2V_VIDEO_WID_0, on, K2V_VIDEO_DDI_WIN_COLOR_BLACK);
  return 0;
}

int VscTestCase::VSC_GetInputRegion(char*) {
  PrintTraceLine(__func__);
  K2V_VIDEO_RECT_T region{};
  K2V_RHAL_VSC_GetInputRegion(K2V_VIDEO_WID_0, &region);
  std::printf(
      "vsctestcase.cpp VSC_GetInputRegion  VIDEO_RECT_Param, x : %x, y : %x, w : %x, h : %x\n",
      region.x, region.y, region.w, region.h);
  return 0;
}

int VscTestCase::VSC_SetHDMI_Preview(char*) {
  PrintTraceLine(__func__);
  const uint32_t on = AskUint32("VSC_SetHDMI_Preview 0(Disable), 1(Enable)=");
  K2V_RHAL_VSC_SetHDMI_Preview(K2V_VIDEO_WID_0, on);
  return 0;
}
