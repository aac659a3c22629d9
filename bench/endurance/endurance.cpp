// Accelerated soak test on the simulated board: thousands of tests and of playback verifications,
// each kind in one process, which must not grow, slow down or leave anything behind, and whose
// reports must be exact.
#include <sys/prctl.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "Stages.h"
#include "TestFrame.h"
#include "runner/TestRun.h"

namespace {

using namespace endurance;

constexpr char kUsage[] =
    "usage: endurance [--tests N] [--verifications N] [--stage unattended|menus|playback]\n";

constexpr int kUsageError = 2;
constexpr int kNoSandbox = 77;

struct Options {
  std::size_t tests = 10000;
  std::size_t verifications = 1000;
  std::string_view stage{};  // empty: all
};

bool ParseNumber(std::string_view text, std::size_t& number) {
  constexpr std::size_t kMost = 1000000;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number <= kMost;
}

constexpr struct Stage {
  const char* name;
  StageResult (*run)(const Night&);
  std::size_t Options::*count;
  const char* what;
} kStages[] = {{"unattended", RunUnattended, &Options::tests, "tests"},
               {"menus", RunFromMenus, &Options::tests, "tests"},
               {"playback", RunPlayback, &Options::verifications, "verifications"}};

bool IsStage(std::string_view name) {
  return std::ranges::any_of(kStages, [&](const Stage& stage) { return name == stage.name; });
}

bool Parse(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    const std::string_view value = i + 1 < argc ? argv[i + 1] : "";
    const bool taken = (name == "--tests" && ParseNumber(value, options.tests)) ||
                       (name == "--verifications" && ParseNumber(value, options.verifications)) ||
                       (name == "--stage" && IsStage(value));
    if (!taken) return false;
    if (name == "--stage") options.stage = value;
  }
  return true;
}

void PrintTenths(const Tenths& tenths) {
  std::printf(
      "  tenth   done      s  cpu s  resident  peak KiB  private  fds  threads  processes"
      "  zombies  /tmp KiB\n");
  long cpuMs = 0;
  for (std::size_t i = 0; i < kTenths; ++i) {
    const Tenth& tenth = tenths[i];
    std::printf("  %5zu  %5zu  %5.0f  %5.1f  %8ld  %8ld  %7ld  %3ld  %7ld  %9ld  %7ld  %8ld\n",
                i + 1, tenth.tests, tenth.seconds,
                static_cast<double>(tenth.Last(kCpuMs) - cpuMs) / 1000, tenth.Median(kResident),
                tenth.Last(kPeak), tenth.Median(kPrivate), tenth.Least(kDescriptors),
                tenth.Least(kThreads), tenth.Least(kProcesses), tenth.Least(kZombies),
                tenth.Median(kBoardTmp));
    cpuMs = tenth.Last(kCpuMs);
  }
}

/// Runs a stage and prints its results. Returns false on failure.
bool Tell(const Stage& stage, const Night& night) {
  std::printf("%s: %zu %s\n", stage.name, night.count, stage.what);
  std::fflush(stdout);
  StageResult result;
  try {
    result = stage.run(night);
  } catch (const std::exception& error) {
    std::printf("  FAILED: %s\n", error.what());
    return false;
  }
  // If the harness ended early, some tenths have no samples.
  if (std::ranges::none_of(result.tenths, [](const Tenth& t) { return t.samples.empty(); })) {
    PrintTenths(result.tenths);
    result.problems.Add(Growth(result.tenths));
  } else {
    result.problems.Add("the run ended early");
  }
  const std::vector<std::string>& problems = result.problems.Lines();
  for (const std::string& problem : problems) std::printf("  WRONG: %s\n", problem.c_str());
  std::printf("  %zu %s; %ld lines in the report, %ld PASS, %ld FAIL%s\n", result.done, stage.what,
              static_cast<long>(result.report.total), static_cast<long>(result.report.pass),
              static_cast<long>(result.report.fail),
              problems.empty() ? "; nothing grew, every line is exact" : "");
  std::fflush(stdout);
  return problems.empty();
}

std::vector<runner::TestEntry> TestsOfHarness() {
  const runner::MutedOutput muted;
  TestFrame::GetInstance()->DoInit();
  return runner::AllTests();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!Parse(argc, argv, options)) {
    std::fputs(kUsage, stderr);
    return kUsageError;
  }
  // This program adopts and observes processes on the board that lose their parent.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  NightBoard board;
  if (!board.Prepare()) return kNoSandbox;
  std::vector<runner::AnswerRule> rules;
  if (const std::string wrong = runner::LoadAnswers(ANSWERS, rules); !wrong.empty()) {
    std::fprintf(stderr, "endurance: %s\n", wrong.c_str());
    return kUsageError;
  }
  const std::vector<runner::TestEntry> tests = TestsOfHarness();
  bool good = true;
  for (const Stage& stage : kStages) {
    const std::size_t count = options.*stage.count;
    const bool wanted = options.stage.empty() || options.stage == stage.name;
    if (wanted && count > 0) good = Tell(stage, {board, tests, rules, ANSWERS, count}) && good;
  }
  std::puts(good ? "The night passed." : "The night did not pass.");
  return good ? 0 : 1;
}
