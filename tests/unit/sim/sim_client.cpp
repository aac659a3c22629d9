// sim_client STEP…: makes HAL calls in order and prints each result. "signal" prints the active
// size of port 0, "nap" waits 50 ms, "wait" waits for the end of standard input, "loop N" repeats
// the HDMI initialisation N times. "ring" opens a session of the link, creates a ring buffer and
// prints its handle; "ring-used" prints the number of bytes in it; "fill HANDLE" makes the slave
// put 30 bytes into the buffer with that handle.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "HalSteps.h"
#include "rlink.h"

namespace {

RLink* rlink = nullptr;
RLNK_HOST_SESSION session{};
RLNK_BUFFER* buffer = nullptr;

void OpenLink() {
  if (rlink != nullptr) return;
  rlink = RLink::Create();
  rlink->OpenSession(1, &session);
}

void MakeRing() {
  OpenLink();
  buffer = rlink->AllocateBuffer(&session, 100, RLNK_BUFFER_RECEIVE);
  std::cout << buffer->handle << std::endl;
}

int Fill(uint32_t handle) {
  OpenLink();
  RLNK_CMD_PARAMS put{0x1006, 0x211, {{handle, 30}, {}, {}, {}}};
  return rlink->Send(&session, &put);
}

}  // namespace

int main(int argc, char** argv) {
  alarm(20);  // ends the client, and so the test, if the board stays locked
  for (int i = 1; i < argc; ++i) {
    const std::string step = argv[i];
    if (step == "signal") {
      const K2V_VIDEO_RECT_T active = TimingOf(0).active;
      std::cout << active.w << 'x' << active.h << '\n';
    } else if (step == "nap") {
      usleep(50'000);
    } else if (step == "wait") {
      std::cin.get();
    } else if (step == "ring") {
      MakeRing();
    } else if (step == "ring-used") {
      std::cout << rlink->QueryBufferDataSize(&session, buffer) << '\n';
    } else if (step == "fill" && i + 1 < argc) {
      std::cout << Fill(static_cast<uint32_t>(std::atol(argv[++i]))) << '\n';
    } else if (step == "loop" && i + 1 < argc) {
      for (long left = std::atol(argv[++i]); left > 0; --left) K2V_RHAL_VFE_HDMI_Initialize();
    } else {
      std::cout << HalSteps().at(step)() << '\n';
    }
  }
}
