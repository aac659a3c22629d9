// The cost of a process and a terminal per test: an empty test, executed as in unattended runs,
// compared with a plain fork and with a direct call.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "runner/TestSession.h"

namespace {

constexpr int kRounds = 301;

int DoNothing(char*) {
  return 0;
}

const ST_THAL_TEST_CASE_T kRecord = {0, "nothing", "does nothing", DoNothing, true};
TestCase test(&kRecord);

void RunIsolated() {
  const runner::TestEntry entry{&test, "Bench", "Bench/0", "", ""};
  const auto outcome =
      runner::TestSession(entry, {}, {}, [](std::string_view) {}).Run([] { return false; });
  if (outcome.verdict != runner::Verdict::kPass) std::puts(outcome.message.c_str());
}

void RunForked() {
  const pid_t child = fork();
  if (child == 0) _exit(test.Execute());
  waitpid(child, nullptr, 0);
}

void RunHere() {
  test.Execute();
}

struct Way {
  const char* name;
  void (*run)();
  std::vector<double> milliseconds{};
};

double At(std::vector<double>& values, double share) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

}  // namespace

int main() {
  using Clock = std::chrono::steady_clock;
  Way ways[] = {{"called", RunHere}, {"forked", RunForked}, {"isolated", RunIsolated}};
  for (int round = 0; round < kRounds; ++round) {
    for (Way& way : ways) {
      const auto start = Clock::now();
      way.run();
      const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
      way.milliseconds.push_back(taken.count());
    }
  }
  std::printf("a test that does nothing, %d rounds\n", kRounds);
  for (Way& way : ways) {
    std::printf("  %-9s median %7.3f ms, 99 of 100 under %7.3f ms\n", way.name,
                At(way.milliseconds, 0.5), At(way.milliseconds, 0.99));
  }
  return 0;
}
