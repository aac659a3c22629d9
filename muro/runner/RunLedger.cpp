#include "RunLedger.h"

#include "Text.h"

namespace runner {

void RunLedger::List(const PlannedTest& test) {
  ++totals_.listed;
  due_.insert(test.id);
}

void RunLedger::Store(const TestResult& result) {
  ++totals_.of[static_cast<std::size_t>(result.verdict)];
  totals_.seconds += result.seconds;
  const auto due = due_.find(result.test.id);
  if (due == due_.end()) {
    unexpected_.push_back(result.test.id);
  } else {
    due_.erase(due);
  }
}

std::string RunLedger::Difference() const {
  std::vector<std::string> parts;
  if (!due_.empty()) parts.push_back("no result for " + Joined({due_.begin(), due_.end()}, ", "));
  if (!unexpected_.empty())
    parts.push_back("more than one result for " + Joined(unexpected_, ", "));
  if (parts.empty() && !totals_.AddUp()) parts.emplace_back("the totals do not add up");
  return Joined(parts, "; ");
}

}  // namespace runner
