// cvntrace: reads recordings of HAL calls.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "trace/Commands.h"

namespace {

using namespace record;

constexpr char kUsageText[] =
    "usage: cvntrace COMMAND [OPTION]... RECORDING [RECORDING]\n"
    "  print DIR       the calls, one a line, with the marks of the harness behind #\n"
    "  stats DIR       calls, total, median, 99th percentile and worst time by function and test\n"
    "  coverage DIR    functions that were never called; the values of the arguments of the "
    "others\n"
    "  json DIR        trace events (Chrome's format) for viewers of traces\n"
    "  diff DIR DIR    what the second recording does differently; status 1 when something is\n"
    "  drive DIR       makes the recorded calls again and reports what is answered differently\n"
    "options:\n"
    "  --test TEXT     only what tests with this number, or this in their name, called\n"
    "  --function GLOB only these functions\n"
    "  --from S, --to S  only what began then, in seconds since the beginning\n"
    "  --times         print: time, duration, process and thread in front of each line\n"
    "  --slower FACTOR diff, drive: how much slower a function has to be to be reported (2)\n"
    "  --library FILE  drive: the HAL (libcvn_k2vhal.so where the loader finds it)\n";

struct CommandRow {
  const char* name;
  int recordings;
  int (*run)(const std::vector<std::string>& recordings, const TraceOptions& options);
};

template <int (*command)(const std::string&, const TraceOptions&)>
int OnOne(const std::vector<std::string>& recordings, const TraceOptions& options) {
  return command(recordings[0], options);
}

int OnTwo(const std::vector<std::string>& recordings, const TraceOptions& options) {
  return Diff(recordings[0], recordings[1], options);
}

constexpr CommandRow kCommands[] = {
    {"print", 1, OnOne<Print>}, {"stats", 1, OnOne<Stats>}, {"coverage", 1, OnOne<Coverage>},
    {"json", 1, OnOne<Json>},   {"diff", 2, OnTwo},         {"drive", 1, OnOne<Drive>},
};

int UsageError(const std::string& what) {
  std::fprintf(stderr, "cvntrace: %s\n%s", what.c_str(), kUsageText);
  return kUsage;
}

bool ParseSeconds(const char* text, double& seconds) {
  char* end = nullptr;
  seconds = std::strtod(text, &end);
  return end != text && *end == '\0' && seconds >= 0;
}

/// Takes the option at `at` with its value; returns what is wrong, or nothing.
std::string TakeOption(int argc, char** argv, int& at, TraceOptions& options) {
  const std::string name = argv[at];
  if (name == "--times") {
    options.times = true;
    return {};
  }
  const char* const value = at + 1 < argc ? argv[++at] : nullptr;
  if (value == nullptr) return name + " needs a value, or is no option";
  double number = 0;
  if (name == "--test") {
    options.test = value;
  } else if (name == "--function") {
    options.function = value;
  } else if (name == "--library") {
    options.library = value;
  } else if (name != "--from" && name != "--to" && name != "--slower") {
    return name + " is no option";
  } else if (!ParseSeconds(value, number)) {
    return name + ": " + value + " is no number";
  } else if (name == "--slower") {
    options.factor = number;
  } else {
    (name == "--from" ? options.fromS : options.toS) = number;
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(kUsageText, stdout);
    return 0;
  }
  if (argc < 2) return UsageError("no command given");
  TraceOptions options;
  std::vector<std::string> recordings;
  for (int i = 2; i < argc; ++i) {
    if (std::strncmp(argv[i], "--", 2) != 0) {
      recordings.emplace_back(argv[i]);
      continue;
    }
    if (const std::string error = TakeOption(argc, argv, i, options); !error.empty()) {
      return UsageError(error);
    }
  }
  for (const CommandRow& command : kCommands) {
    if (std::strcmp(argv[1], command.name) != 0) continue;
    if (recordings.size() != static_cast<size_t>(command.recordings)) {
      return UsageError(std::string(command.name) + " needs " + std::to_string(command.recordings) +
                        (command.recordings == 1 ? " recording" : " recordings"));
    }
    return command.run(recordings, options);
  }
  return UsageError(std::string(argv[1]) + " is no command");
}
