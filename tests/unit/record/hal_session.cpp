// A session of thirty calls with one fault: hal_session [argument|order|missing|surplus CALL]. With
// `endless PIPE` it calls on and on, and writes a byte to the pipe before each call.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "k2v/vfe_hdmi.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

namespace {

constexpr int kCalls = 30;

void Call(int number, bool isChanged) {
  const int value = number + (isChanged ? 100 : 0);
  const auto small = static_cast<uint16_t>(value);
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  edid[number] = static_cast<uint8_t>(value);
  switch (number % 5) {
    case 0:
      K2V_RHAL_VSC_SetWinBlank(0, 1, static_cast<uint32_t>(value));
      return;
    case 1:
      K2V_RHAL_VSC_SetInputRegion(0, {1, 2, 3, small});
      return;
    case 2:
      K2V_RHAL_VPQ_SetHue(value);
      return;
    case 3: {
      K2V_VPQ_PICTURE_CTRL_T record = {static_cast<uint8_t>(value), 0, 0, 0};
      K2V_RHAL_VPQ_SetPictureCtrl(isChanged ? nullptr : &record);
      return;
    }
    default:
      K2V_RHAL_VFE_HDMI_WriteEDID(1, edid);
  }
}

[[noreturn]] void CallForEver(int pipe) {
  for (uint32_t number = 0;; ++number) {
    if (write(pipe, &number, sizeof number) != sizeof number) _exit(1);
    K2V_RHAL_VSC_SetWinBlank(0, number, 0);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string fault = argc > 2 ? argv[1] : "";
  const int at = argc > 2 ? std::atoi(argv[2]) : -1;
  if (fault == "endless") CallForEver(at);
  for (int i = 0; i < kCalls; ++i) {
    const bool isHere = i == at;
    if (isHere && fault == "missing") continue;
    if (isHere && fault == "surplus") K2V_RHAL_VSC_DM_Open();
    if (isHere && fault == "order") {
      Call(i + 1, false);
      Call(i, false);
      ++i;
      continue;
    }
    Call(i, isHere && fault == "argument");
  }
  return 0;
}
