// Every test of the harness with the names by which runs select it.
#pragma once

#include <string>
#include <vector>

#include "Case.h"

namespace runner {

struct TestEntry {
  TestCase* test;
  std::string moduleClass;      // "VscModule"
  std::string id;               // stable and without blanks: "VscModule/31", "VscModule/31.2"
  std::string menuPath;         // "Vido Manual Test > Vsc Function Test"
  std::string position;         // what is typed from the main menu on: "3 2 31"
  bool buildsOnOthers = false;  // depends on the preceding tests of its module

  /// True if a person is needed: to answer or, without eyes, to judge.
  bool NeedsOperator(bool hasEyes = false) const {
    return test->asks() || !(hasEyes || test->isAutoJudged());
  }
  /// The id with nothing but letters, digits, dots and minus signs: "VscModule.31".
  std::string DottedId() const;
};

/// All tests in module order. Requires the menu tree (`TestFrame::DoInit`).
std::vector<TestEntry> AllTests();

/// True if a glob, case-sensitive, matches the module class, "class/number", the id, the name or
/// the description.
bool Matches(const TestEntry& entry, const std::string& pattern);

/// True if a pattern is exactly the test's "class/number", id, name or description.
bool IsNamed(const TestEntry& entry, const std::vector<std::string>& patterns);

/// The tests that match a pattern and no pattern of `excluded`, in list order; all tests if there
/// is no pattern. A pattern that matches no test at all is added to `unmatched`.
std::vector<TestEntry> Select(const std::vector<TestEntry>& tests,
                              const std::vector<std::string>& patterns,
                              const std::vector<std::string>& excluded, std::string& unmatched);

/// The list as "text", "tsv" (with a title row) or "json" (one array).
std::string FormatList(const std::vector<TestEntry>& tests, const std::string& format);

}  // namespace runner
