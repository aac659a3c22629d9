#include "Round.h"

#include <algorithm>
#include <stdexcept>

namespace endurance {
namespace {

using runner::TestEntry;

// They have a stage of their own, never end, need a cable to be pulled, which an unattended run
// cannot do, or leave the receiver open, so that every later receiver test fails.
const std::vector<std::string> kLeftOut = {"CMplaybackModule",     "CMAutoTest",
                                           "K2vHalDeviceModule/3", "UTVfeHdmiModule/10",
                                           "VscModule/29",         "VscModule/30"};
}  // namespace

std::vector<TestEntry> RoundOf(const Night& night) {
  std::string ignored;
  std::vector<TestEntry> all = runner::Select(night.tests, {}, kLeftOut, ignored);
  std::erase_if(all, [](const TestEntry& entry) { return !entry.test->hasFunction(); });
  const std::size_t due = std::clamp<std::size_t>(night.count / kTenths, 1, all.size());
  std::vector<TestEntry> round;
  for (std::size_t i = 0; i < due; ++i) round.push_back(all[i * all.size() / due]);
  return round;
}

const TestEntry& Find(const std::vector<TestEntry>& tests, const std::string& id) {
  const auto found = std::ranges::find(tests, id, &TestEntry::id);
  if (found == tests.end()) throw std::runtime_error("no test " + id);
  return *found;
}

}  // namespace endurance
