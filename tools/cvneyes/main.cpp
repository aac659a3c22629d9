// cvneyes: looks at the panel and gives a verdict, for `cvntester --eyes`.
#include <exception>
#include <iostream>

#include "Commands.h"

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  try {
    return static_cast<int>(eyes::RunCommandLine({argv + 1, argv + argc}, std::cout));
  } catch (const std::exception& error) {
    // The harness reads the reason from standard output.
    std::cout << error.what() << '\n';
    return static_cast<int>(eyes::Answer::kCannotTell);
  }
}
