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
  kPeak,         // KiB, the most so far
  kPrivate,      // KiB that the process has written: its heap, stacks and data
  kDescriptors,  // open ones
  kThreads,
  kProcesses,  // all that run on the board, the harness and the board's own included
  kZombies,    // ended and not waited for, anywhere below this program
  kBoardTmp,   // KiB of files in the board's /tmp, without reports
  kCpuMs,      // processor time of the harness and of what it waited for
  kFigureCount,
};

/// What was seen at one moment.
using Sample = std::array<long, kFigureCount>;

constexpr std::size_t kTenths = 10;

/// A tenth of a run.
struct Tenth {
  std::size_t tests = 0;
  double seconds = 0;
  std::vector<Sample> samples{};

  /// The figure in the middle of the tenth's samples, the smallest and the largest one.
  long Median(Figure figure) const;
  long Least(Figure figure) const;
  long Most(Figure figure) const;
  /// The last sample's figure.
  long Last(Figure figure) const { return samples.back()[figure]; }
};

using Tenths = std::array<Tenth, kTenths>;

/// The first program named `name`, `ancestor` or below it; or 0.
pid_t FindProgram(pid_t ancestor, const std::string& name);

/// How many processes `ancestor` has below it.
std::size_t CountDescendants(pid_t ancestor);

/// Looks at the harness `harness`, at all that descends from this program, and at the directory
/// `boardTmp`.
Sample Look(pid_t harness, const std::filesystem::path& boardTmp);

/// What grew from the second tenth to the last, one line each. The first tenth is not looked at: in
/// it everything is done for the first time.
std::vector<std::string> Growth(const Tenths& tenths);

}  // namespace endurance
