// cvnpanel: shows what the board's panel shows. It is started as `cvnsim camera` or `cvnsim panel`.
#include <cstdlib>
#include <exception>
#include <iostream>

#include "BoardFiles.h"
#include "Camera.h"
#include "PageServer.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr int kNoPicture = 1;
constexpr int kWrongCommand = 2;

void Run(sim::Words words) {
  const cvnsim::BoardFiles files = cvnsim::TakeFiles(words);
  const std::string task = words.empty() ? "" : words.front();
  if (!words.empty()) words.erase(words.begin());
  if (task == "camera") return panel::RunCamera(words, files);
  if (task == "panel") return panel::RunPage(words, files);
  sim::RefuseWord("unknown task", task, "camera or panel");
}

}  // namespace

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  try {
    Run({argv + 1, argv + argc});
    return EXIT_SUCCESS;
  } catch (const sim::CommandError& error) {
    std::cerr << "cvnsim: " << error.what() << '\n';
    return kWrongCommand;
  } catch (const std::exception& error) {
    std::cerr << "cvnsim: " << error.what() << '\n';
    return kNoPicture;
  }
}
