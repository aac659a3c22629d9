#include "Eyes.h"

#include <filesystem>

#include "Command.h"
#include "Text.h"

namespace runner {
namespace {

constexpr const char* kNames[] = {"yes", "no", "cannot tell"};

}  // namespace

std::string Sight::Text() const {
  return std::string("eyes: ") + kNames[kind] + (reason.empty() ? "" : ", " + reason);
}

Sight Look(const EyesSettings& eyes, const std::string& testId, const std::string& question,
           bool (*interrupted)()) {
  std::error_code error;
  std::filesystem::create_directories(eyes.evidence, error);
  if (error)
    return {Sight::kCannotTell, "cannot create the directory for evidence: " + error.message()};
  const CommandEnd end = RunCommand(
      {"/bin/sh", "-c", eyes.command},
      {"CVN_TEST=" + testId, "CVN_QUESTION=" + question, "CVN_EVIDENCE=" + eyes.evidence},
      eyes.limitS, interrupted);
  std::filesystem::remove(eyes.evidence, error);  // only if it is empty
  Sight sight;
  if (end.kind == CommandEnd::kExited && end.value < 2)
    sight.kind = end.value == 0 ? Sight::kYes : Sight::kNo;
  sight.reason = LastLine(CleanText(end.output));
  if (sight.kind == Sight::kCannotTell) {
    const std::string why = end.Text(eyes.limitS);
    sight.reason = sight.reason.empty() ? why : sight.reason + " (" + why + ")";
  }
  return sight;
}

}  // namespace runner
