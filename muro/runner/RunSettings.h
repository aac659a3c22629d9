// What a run is given, as plain data: limits of its tests and places for its results.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace runner {

/// Limits of one test, in seconds; 0 is none.
struct Limits {
  double timeoutS = 600;  // in all
  double idleS = 60;      // without output
};

/// Eyes in place of the operator's; without a command there are none.
struct EyesSettings {
  std::string command;   // for the shell
  bool always = false;   // at the end of tests that judge themselves, too
  bool before = false;   // before every test, to compare with afterwards
  double limitS = 30;    // of one look; 0 is none
  std::string evidence;  // directory for what the command leaves
};

/// How a run looks whether the board is well; without a command it does not.
struct HealthSettings {
  std::string command;  // for the shell
  double limitS = 60;   // 0 is none
};

/// One part of a selection, for one of several boards.
struct Shard {
  std::size_t number = 1;  // from 1 to `of`
  std::size_t of = 1;

  /// "2/3"; empty where the selection is not cut.
  std::string Text() const {
    return of == 1 ? "" : std::to_string(number) + "/" + std::to_string(of);
  }
};

/// A fact about a run that its operator knows, such as board=lab-7.
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

/// Where results go, by format; "-" is standard output, empty nowhere.
using Outputs = std::array<std::string, kResultFormatCount>;

}  // namespace runner
