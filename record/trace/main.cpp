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
    "  print DIR       print the calls, one per line, with the marks of the harness after #\n"
    "  stats DIR       print calls, total, median, 99th percentile and worst time by function and\n"
    "                  test\n"
    "  coverage DIR    list the functions that were never called, and the values of the arguments\n"
    "                  of the others\n"
    "  json DIR        print trace events (Chrome's format) for trace viewers\n"
    "  diff DIR DIR    print the differences of the second recording; exit status 1 if there are "
    "any\n"
    "  drive DIR       make the recorded calls again and print different results\n"
    "options:\n"
    "  --test TEXT     only calls of tests with this number, or with TEXT in their name\n"
    "  --function GLOB only calls of these functions\n"
    "  --from S, --to S  only calls that began then, in seconds since the start\n"
    "  --times         print: time, duration, process and thread before each line\n"
    "  --slower FACTOR diff, drive: report functions slower by this factor (default 2)\n"
    "  --library FILE  drive: the HAL library (default: libcvn_k2vhal.so, as found by the "
    "loader)\n";

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

/// Parses the option at `at` and its value; returns an error message, or nothing.
std::string TakeOption(int argc, char** argv, int& at, TraceOptions& options) {
  const std::string name = argv[at];
  if (name == "--times") {
    options.times = true;
    return {};
  }
  const char* const value = at + 1 < argc ? argv[++at] : nullptr;
  if (value == nullptr) return "unknown option " + name + ", or a missing value";
  double number = 0;
  if (name == "--test") {
    options.test = value;
  } else if (name == "--function") {
    options.function = value;
  } else if (name == "--library") {
    options.library = value;
  } else if (name != "--from" && name != "--to" && name != "--slower") {
    return "unknown option " + name;
  } else if (!ParseSeconds(value, number)) {
    return name + ": invalid value '" + value + "': expected a number";
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
      return UsageError(std::string(command.name) + " requires " +
                        std::to_string(command.recordings) +
                        (command.recordings == 1 ? " recording" : " recordings"));
    }
    return command.run(recordings, options);
  }
  return UsageError(std::string("unknown command ") + argv[1]);
}
