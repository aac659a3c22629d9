// Scenarios of the simulated board: every line is executed or rejected with one line of text.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "core/Areas.h"
#include "core/Command.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const auto kBoard = std::make_unique<sim::Board>();
  std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
  for (std::string line; std::getline(lines, line);) {
    try {
      sim::Apply(*kBoard, line);
    } catch (const sim::CommandError& error) {
      fuzz::Require(std::string_view(error.what()).find('\n') == std::string_view::npos,
                    "an error is not one line");
    }
  }
  sim::Describe(*kBoard);
  fuzz::Plant("other timing at a second port",
              kBoard->hdmi.ports[1].cable && kBoard->hdmi.ports[1].timing.vFreq != 6000);
  return 0;
}
