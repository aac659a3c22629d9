// The commands of cvntrace.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reader/CallList.h"

namespace record {

/// What is asked for beside the recordings.
struct TraceOptions {
  std::string test{};                    // number, or part of the name
  std::string function{};                // pattern as of the shell
  std::optional<double> fromS{}, toS{};  // since the recording's begin
  double factor = 2;                     // slower by this counts
  bool times = false;
  std::string library = "libcvn_k2vhal.so";
};

/// Whether a call is one of those that were asked for.
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

/// Opens a recording, or says why not.
std::unique_ptr<Recording> OpenOrSay(const std::string& directory);
/// Says what could not be read; returns the exit status.
int SayProblems(const Recording& recording);
/// A call's text, with what is known of one whose bytes are not those of its function.
std::string TextOf(const Call& call);

/// The commands; each returns an exit status.
int Print(const std::string& directory, const TraceOptions& options);
int Stats(const std::string& directory, const TraceOptions& options);
int Coverage(const std::string& directory, const TraceOptions& options);
int Json(const std::string& directory, const TraceOptions& options);
int Diff(const std::string& one, const std::string& two, const TraceOptions& options);
int Drive(const std::string& directory, const TraceOptions& options);

}  // namespace record
