#include "trace/Commands.h"

#include <fnmatch.h>

#include <cstdio>

#include "reader/Text.h"

namespace record {

std::unique_ptr<Recording> OpenOrSay(const std::string& directory) {
  std::string error;
  auto recording = Recording::Open(directory, error);
  if (recording == nullptr) std::fprintf(stderr, "cvntrace: %s\n", error.c_str());
  return recording;
}

int SayProblems(const Recording& recording) {
  const std::vector<std::string> problems = recording.Problems();
  for (const std::string& problem : problems) {
    std::fprintf(stderr, "cvntrace: %s; read up to there\n", problem.c_str());
  }
  return problems.empty() ? kSame : kProblem;
}

std::string TextOf(const Call& call) {
  bool entryGood = false, backGood = true;
  const CallValues entered = ReadCall(*call.function, false, call.entry, entryGood);
  if (call.endNs == 0) return CallText(*call.function, entered, nullptr) + " did not return";
  const CallValues back = ReadCall(*call.function, true, call.back, backGood);
  return CallText(*call.function, entered, &back);
}

bool CallFilter::TakesTest(uint32_t number, const std::string& name) const {
  if (options_.test.empty()) return true;
  return std::to_string(number) == options_.test || name.find(options_.test) != std::string::npos;
}

bool CallFilter::Takes(const Call& call) {
  if (beginNs_ == 0) beginNs_ = call.beginNs;
  const double seconds =
      call.beginNs < beginNs_ ? 0 : static_cast<double>(call.beginNs - beginNs_) / 1e9;
  if (options_.fromS && seconds < *options_.fromS) return false;
  if (options_.toS && seconds > *options_.toS) return false;
  if (!options_.test.empty() &&
      (call.test == nullptr || !TakesTest(call.test->number, call.test->name))) {
    return false;
  }
  return options_.function.empty() ||
         fnmatch(options_.function.c_str(), call.function->name.c_str(), 0) == 0;
}

}  // namespace record
