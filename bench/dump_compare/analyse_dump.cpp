// analyse_dump STAGE GOLDEN SAMPLE: the analysis of frames of one stage as a program of its own.
// Exit status 0: no events, 1: events, 2: invalid usage.
#include <cstdio>
#include <string_view>

#include "TestCase/CrossModule/verify/src/StageAnalysis.h"

int main(int argc, char** argv) {
  for (const Stage& stage : kStages) {
    if (argc != 4 || std::string_view(stage.simpleName) != argv[1]) continue;
    const StageEvents found = AnalyseStage(stage.module, argv[2], argv[3]);
    std::printf("events: %zu\n", found.events.size());
    return found.events.empty() ? 0 : 1;
  }
  std::fprintf(stderr, "usage: analyse_dump STAGE GOLDEN SAMPLE\n");
  return 2;
}
