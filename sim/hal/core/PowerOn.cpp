// Starts the board when the library is loaded, so that an invalid scenario is reported before any
// menu.
#include <unistd.h>

#include <cstdio>
#include <exception>

#include "core/SharedBoard.h"
#include "core/Trace.h"
#include "device/BroadcastClock.h"

namespace sim {
namespace {

__attribute__((constructor)) void StartWithTheProcess() {
  try {
    OpenTraceFile();
    PowerOn();
    ServeRegisterFile();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "simulated board: %s\n", error.what());
    _exit(2);
  }
}

}  // namespace
}  // namespace sim
