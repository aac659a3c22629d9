#include "Health.h"

#include "Command.h"
#include "Text.h"

namespace runner {

std::string BoardProblem(const HealthSettings& health, const std::string& lastTest,
                         bool (*interrupted)()) {
  if (health.command.empty()) return "";
  const CommandEnd end = RunCommand({"/bin/sh", "-c", health.command}, {"CVN_TEST=" + lastTest},
                                    health.limitS, interrupted);
  if (end.Succeeded() || end.kind == CommandEnd::kInterrupted) return "";
  const std::string line = LastLine(CleanText(end.output));
  const std::string how = end.Text(health.limitS);
  return line.empty() ? how : line + " (" + how + ")";
}

}  // namespace runner
