// The command line, the selection and the order of runs. Invalid command lines are in
// commands/errors.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "TestFrame.h"
#include "runner/Options.h"
#include "runner/TestList.h"
#include "runner/TestRun.h"
#include "runner/Text.h"

namespace {

using runner::Options;

TEST(OptionsTest, HelpShowsWholeDescriptionsInEightyColumns) {
  const std::string help = runner::HelpText();
  std::string words;
  for (const std::string& line : runner::Split(help, '\n')) {
    if (line.starts_with("  ")) {
      EXPECT_LE(line.size(), 80U) << line;
    }
    for (const std::string& word : runner::Split(line, ' '))
      words += word.empty() ? "" : " " + word;
  }
  for (const char* option : {" --resume DIR resume the interrupted run in DIR after the last test "
                             "recorded in its journal --retry-from DIR run ",
                             " --exclude PATTERN... exclude these tests from the selection --no-"})
    EXPECT_NE(words.find(option), std::string::npos) << words;
}

TEST(OptionsTest, PatternsAndValuesMayBeMixed) {
  Options options;
  EXPECT_EQ(runner::ParseOptions({"--run", "A", "B/1", "--tap=-", "--exclude", "C", "D", "--repeat",
                                  "3", "--run", "E"},
                                 options),
            "");
  EXPECT_EQ(options.patterns, (std::vector<std::string>{"A", "B/1", "E"}));
  EXPECT_EQ(options.excluded, (std::vector<std::string>{"C", "D"}));
  EXPECT_EQ(options.outputs[runner::kTap], "-");
  EXPECT_EQ(options.repeat, 3);
}

TEST(OptionsTest, OnlyOneFormatCanUseStandardOutput) {
  constexpr const char* kFormats[] = {
#define RESULT_FORMAT(name, option, help) option,
#include "runner/ResultFormats.def"
  };
  for (const char* first : kFormats) {
    for (const char* second : kFormats) {
      Options options;
      const std::string said = runner::ParseOptions(
          {"--run", "A", first, "-", second, first == second ? "-" : "/tmp/x"}, options);
      EXPECT_EQ(said, "") << first << ' ' << second;
      EXPECT_EQ(std::ranges::count(options.outputs, "-"), 1);
      if (first == second) continue;
      EXPECT_EQ(runner::ParseOptions({"--run", "A", first, "-", second, "-"}, options = {}),
                "only one result format can be written to standard output")
          << first << ' ' << second;
    }
  }
}

std::vector<std::string> Selected(const std::vector<std::string>& patterns,
                                  const std::vector<std::string>& excluded = {}) {
  std::string unmatched;
  std::vector<std::string> ids;
  for (const auto& entry : runner::Select(runner::AllTests(), patterns, excluded, unmatched))
    ids.push_back(entry.id);
  if (!unmatched.empty()) ids.push_back("unmatched " + unmatched);
  return ids;
}

TEST(SelectionTest, PatternsSelectModulesNumbersNamesAndDescriptions) {
  TestFrame::GetInstance()->DoInit();
  using Ids = std::vector<std::string>;
  EXPECT_EQ(Selected({"VscModule/31"}), Ids{"VscModule/31"});
  EXPECT_EQ(Selected({"UTVfeHdmiModule/20"}),
            (Ids{"UTVfeHdmiModule/20", "UTVfeHdmiModule/20.2", "UTVfeHdmiModule/20.3"}));
  EXPECT_EQ(Selected({"UTVfeHdmiModule/20.2"}), Ids{"UTVfeHdmiModule/20.2"});
  EXPECT_EQ(Selected({"Vsc MURO 3"}), Ids{"VscModule/3"});
  EXPECT_EQ(Selected({"GetARCChannel"}), Ids{"UTVfeHdmiModule/20.2"});
  EXPECT_EQ(Selected({"UTSvp*", "VscModule/3"}, {"*/2"}).front(), "VscModule/3");
  EXPECT_EQ(Selected({"vscmodule"}), Ids{"unmatched vscmodule"});
  EXPECT_EQ(Selected({"VscModule/1"}, {"Nix"}), (Ids{"VscModule/1", "unmatched Nix"}));
}

TEST(SelectionTest, EveryTestHasAUniqueIdAndAMenuPosition) {
  TestFrame::GetInstance()->DoInit();
  std::set<std::string> ids;
  for (const auto& entry : runner::AllTests()) {
    EXPECT_TRUE(ids.insert(entry.id).second) << entry.id;
    EXPECT_EQ(entry.id.find(' '), std::string::npos);
    // The position is the path from the main menu to the test.
    Case* at = entry.test;
    while (at->getParaent() != nullptr) at = at->getParaent();
    for (const std::string& choice : runner::Split(entry.position, ' '))
      at = at->getChild(static_cast<unsigned short>(std::stoi(choice)));
    EXPECT_EQ(at, entry.test) << entry.position;
  }
}

TEST(SelectionTest, DisruptiveTestsAreSelectedOnlyByExactName) {
  TestFrame::GetInstance()->DoInit();
  const auto tests = runner::AllTests();
  const auto entry = std::ranges::find(tests, "CMplaybackModule/9", &runner::TestEntry::id);
  ASSERT_TRUE(entry != tests.end() && entry->test->isDisruptive());
  for (const char* exact : {"CMplaybackModule/9", "[Config] Golden Data Overwrite"})
    EXPECT_TRUE(runner::IsNamed(*entry, {"VscModule/1", exact})) << exact;
  for (const char* wide : {"CMplaybackModule", "*", "CMplaybackModule/[9]", "CMplaybackModule/?"})
    EXPECT_FALSE(runner::IsNamed(*entry, {wide})) << wide;
}

std::vector<std::size_t> Order(const Options& options, int round) {
  runner::Plan plan(50, options);
  std::vector<std::size_t> order;
  while (const auto next = plan.NextRound()) {
    if (plan.Round() == round) order = *next;
  }
  return order;
}

TEST(PlanTest, ShuffledRoundsContainEveryTestOnceInAnOrderGivenByTheSeed) {
  Options options;
  options.repeat = 2;
  options.shuffleSeed = 7;
  auto first = Order(options, 1);
  EXPECT_EQ(first, Order(options, 1));
  EXPECT_NE(first, Order(options, 2));
  options.shuffleSeed = 8;
  EXPECT_NE(first, Order(options, 1));
  options.shuffleSeed.reset();
  std::sort(first.begin(), first.end());
  EXPECT_EQ(first, Order(options, 1));
}

}  // namespace
