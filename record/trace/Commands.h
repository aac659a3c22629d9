// The commands of cvntrace.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reader/CallList.h"

namespace record {

/// The options, in addition to the recordings.
struct TraceOptions {
  std::string test{};                    // number, or part of the name
  std::string function{};                // shell pattern
  std::optional<double> fromS{}, toS{};  // since the beginning of the recording
  double factor = 2;                     // functions slower by this are reported
  bool times = false;
  std::string library = "libcvn_k2vhal.so";
};

/// Selects the calls that the options ask for.
class CallFilter {
 public:
  explicit CallFilter(const TraceOptions& options) : options_(options) {}
  bool Takes(const Call& call);
  bool TakesTest(uint32_t number, const std::string& name) const;

 private:
  const TraceOptions& options_;
  uint64_t beginNs_ = 0;
};

/// Exit statuses.
enum : int { kSame = 0, kProblem = 1, kUsage = 2 };

/// Opens a recording; prints the reason and returns null if it cannot.
std::unique_ptr<Recording> OpenOrSay(const std::string& directory);
/// Prints what could not be read; returns the exit status.
int SayProblems(const Recording& recording);
/// A call's text; if its bytes are malformed, with what could be decoded of them.
std::string TextOf(const Call& call);

/// The commands; each returns an exit status.
int Print(const std::string& directory, const TraceOptions& options);
int Stats(const std::string& directory, const TraceOptions& options);
int Coverage(const std::string& directory, const TraceOptions& options);
int Json(const std::string& directory, const TraceOptions& options);
int Diff(const std::string& one, const std::string& two, const TraceOptions& options);
int Drive(const std::string& directory, const TraceOptions& options);

}  // namespace record
