// sim_client STEP…: does HAL calls in a row and prints each one's result; "signal" prints the
// active size of port 0, "nap" waits 50 ms, "wait" waits for the end of the standard input,
// "loop N" repeats the HDMI initialisation N times.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "HalSteps.h"

int main(int argc, char** argv) {
  alarm(20);  // a board that never comes free again ends the client, and with it the test
  for (int i = 1; i < argc; ++i) {
    const std::string step = argv[i];
    if (step == "signal") {
      const K2V_VIDEO_RECT_T active = TimingOf(0).active;
      std::cout << active.w << 'x' << active.h << '\n';
    } else if (step == "nap") {
      usleep(50'000);
    } else if (step == "wait") {
      std::cin.get();
    } else if (step == "loop" && i + 1 < argc) {
      for (long left = std::atol(argv[++i]); left > 0; --left) K2V_RHAL_VFE_HDMI_Initialize();
    } else {
      std::cout << HalSteps().at(step)() << '\n';
    }
  }
}
