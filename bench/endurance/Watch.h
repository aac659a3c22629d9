// Samples a running harness from outside: memory, descriptors, threads and leftovers.
#pragma once

#include <sys/types.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace endurance {

enum Figure {
  kResident,     // KiB in memory, shared pages included
  kPeak,         // KiB, the maximum so far
  kPrivate,      // KiB that the process has written: its heap, stacks and data
  kDescriptors,  // open ones
  kThreads,
  kProcesses,  // all on the board, including the harness and the board's own
  kZombies,    // ended but not waited for, anywhere below this program
  kBoardTmp,   // KiB of files in the board's /tmp, without reports
  kCpuMs,      // processor time of the harness and of the children it waited for
  kFigureCount,
};

/// The figures at one moment.
using Sample = std::array<long, kFigureCount>;

constexpr std::size_t kTenths = 10;

/// A tenth of a run.
struct Tenth {
  std::size_t tests = 0;
  double seconds = 0;
  std::vector<Sample> samples{};

  /// The median, the smallest and the largest value in the tenth's samples.
  long Median(Figure figure) const;
  long Least(Figure figure) const;
  long Most(Figure figure) const;
  /// The value in the last sample.
  long Last(Figure figure) const { return samples.back()[figure]; }
};

using Tenths = std::array<Tenth, kTenths>;

/// The first process named `name` among `ancestor` and its descendants, or 0.
pid_t FindProgram(pid_t ancestor, const std::string& name);

/// The number of descendants of `ancestor`.
std::size_t CountDescendants(pid_t ancestor);

/// Samples the harness `harness`, all descendants of this program, and the directory `boardTmp`.
Sample Look(pid_t harness, const std::filesystem::path& boardTmp);

/// What grew from the second tenth to the last, one line each. The first tenth is ignored, because
/// everything happens for the first time there.
std::vector<std::string> Growth(const Tenths& tenths);

}  // namespace endurance
