// Time from start to the first prompt and peak memory of the harness, compared with an empty C++
// program. The programs alternate, so that both run under the same conditions; medians are printed.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kRounds = 101;
constexpr std::string_view kPrompt = "Please enter a choice : ";

struct Sample {
  double milliseconds;
  long peakKib;
};

struct Program {
  const char* name;
  const char* path;
  std::vector<double> milliseconds{};
  long peakKib = 0;
};

/// Reads from `fd` until the prompt appears or the program ends. False if there was no prompt.
bool ReadToPrompt(int fd) {
  std::string seen;
  char block[65536];
  for (ssize_t got = 0; (got = read(fd, block, sizeof block)) > 0;) {
    seen.append(block, static_cast<std::size_t>(got));
    if (seen.find(kPrompt) != std::string::npos) return true;
  }
  return false;
}

bool Measure(const char* path, Sample& sample) {
  int output[2];
  int input[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(input, O_CLOEXEC) != 0) return false;
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    dup2(input[0], 0);
    dup2(output[1], 1);
    execl(path, path, nullptr);
    _exit(127);
  }
  close(output[1]);
  close(input[0]);
  const bool prompted = ReadToPrompt(output[0]);
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
  close(input[1]);  // end of input: the harness leaves its menu
  close(output[0]);
  rusage usage{};
  int status = 0;
  wait4(child, &status, 0, &usage);
  sample = {taken.count(), usage.ru_maxrss};
  return prompted;
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

int main() {
  Program programs[] = {{"empty C++ program", EMPTY_PROGRAM}, {"cvntester", HARNESS}};
  for (int round = 0; round < kRounds; ++round) {
    for (Program& program : programs) {
      Sample sample{};
      if (!Measure(program.path, sample)) {
        std::fprintf(stderr, "%s: no prompt\n", program.path);
        return 1;
      }
      program.milliseconds.push_back(sample.milliseconds);
      program.peakKib = std::max(program.peakKib, sample.peakKib);
    }
  }
  const double empty = Median(programs[0].milliseconds);
  std::printf("start to first prompt, median of %d rounds\n", kRounds);
  for (const Program& program : programs) {
    const double median = Median(program.milliseconds);
    std::printf("  %-18s %6.2f ms  %4.1f x  peak %5ld KiB\n", program.name, median, median / empty,
                program.peakKib);
  }
  return 0;
}
