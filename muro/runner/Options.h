// The command line: one table that defines the parser, --help, the man page and the completion.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "RunSettings.h"

namespace runner {

enum class Mode {
  kInteractive,
  kHelp,
  kVersion,
  kDocument,
  kCheckHal,
  kList,
  kRun,
  kResume,
  kVerify
};

struct Options {
  Mode mode = Mode::kInteractive;
  std::vector<std::string> patterns;
  std::vector<std::string> excluded;
  std::string format = "text";
  std::string document;
  std::string checkedHal;  // library to check; empty: the one in use
  int repeat = 1;
  bool repeatGiven = false;
  bool untilFail = false;
  std::optional<uint32_t> shuffleSeed;
  bool stopOnFail = false;
  bool noOperator = false;
  bool disruptive = false;
  bool manualPlay = false;
  Shard shard;
  std::string shardTimes;
  std::string retryFrom;
  Limits limits;
  EyesSettings eyes;
  HealthSettings health;
  std::string answers;
  std::string record;
  Outputs outputs;
  std::string results;  // result directory, also of --resume
  std::string trace;
  std::vector<Label> labels;  // facts for the result directory
  std::string color = "auto";
  bool verbose = false;
  std::string verifyCase;
  std::string dump;
  std::string golden;
  std::string events;  // output for what happened to the frames, in addition to the results
  std::string strip;
};

/// Reads a command line (without the program's name). Returns a one-line error, empty on
/// success.
std::string ParseOptions(const std::vector<std::string>& words, Options& options);

/// The help text.
std::string HelpText();

/// A man page (roff) or a bash completion; `kind` is "man" or "bash".
std::string Document(const std::string& kind);

}  // namespace runner
