// Compares two calls of a function and words their differences.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "reader/Value.h"
#include "trace/Histogram.h"

namespace record {

/// A call with copies of its bytes.
struct KeptCall {
  const Function* function;
  std::string where;  // test, thread and number
  std::vector<uint8_t> entry;
  std::vector<uint8_t> back;
  uint64_t durationNs;
  bool hasReturned;
};

/// The text of a call, as `print` shows it.
std::string TextOf(const KeptCall& call);
/// A text that is equal for calls with the same arguments.
std::string ArgumentsKey(const KeptCall& call);
/// The first argument in which two calls of one function differ: "argument wid: 0, now 1".
std::string ArgumentDifference(const KeptCall& one, const KeptCall& two);
/// The difference between the results of two calls: "result 0, now -3"; empty if there is none.
std::string AnswerDifference(const KeptCall& one, const KeptCall& two);

/// Prints differences, and functions that became slower.
class DifferenceReport {
 public:
  explicit DifferenceReport(double factor) : factor_(factor) {}

  void Say(const std::string& where, const std::string& what);
  /// Adds the durations of two corresponding calls.
  void Time(const std::string& function, uint64_t beforeNs, uint64_t nowNs);
  /// Prints the functions that became slower and the number of differences; true if there are any.
  bool End();

 private:
  struct Times {
    Histogram before, now;
  };
  double factor_;
  unsigned count_ = 0;
  std::map<std::string, Times> times_;
};

}  // namespace record
