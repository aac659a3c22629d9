// The settings of a run, as plain data: limits of its tests and destinations of its results.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace runner {

/// Limits of one test, in seconds; 0 means no limit.
struct Limits {
  double timeoutS = 600;  // in all
  double idleS = 60;      // without output
};

/// Eyes in place of the operator; not used if there is no command.
struct EyesSettings {
  std::string command;   // for the shell
  bool always = false;   // also at the end of tests that judge themselves
  bool before = false;   // before every test, for a later comparison
  double limitS = 30;    // of one look; 0 means no limit
  std::string evidence;  // directory for the command's files
};

/// How a run checks whether the board is healthy; it does not if there is no command.
struct HealthSettings {
  std::string command;  // for the shell
  double limitS = 60;   // 0 means no limit
};

/// One part of a selection, for one of several boards.
struct Shard {
  std::size_t number = 1;  // from 1 to `of`
  std::size_t of = 1;

  /// "2/3"; empty if the selection is not split.
  std::string Text() const {
    return of == 1 ? "" : std::to_string(number) + "/" + std::to_string(of);
  }
};

/// A fact about a run that its operator states, such as board=lab-7.
struct Label {
  std::string name;
  std::string value;
};

/// The formats of results, in the order of their list.
enum ResultFormat : std::size_t {
#define RESULT_FORMAT(name, option, help) k##name,
#include "ResultFormats.def"
  kResultFormatCount,
};

/// Destinations of results, by format; "-" is standard output, empty means none.
using Outputs = std::array<std::string, kResultFormatCount>;

}  // namespace runner
