// A run of a few tests, from its plan to its journal, logs and status.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "Case.h"
#include "Module.h"
#include "Scripted.h"
#include "TestDirectory.h"
#include "TestReport.h"
#include "runner/BuildIds.h"
#include "runner/Command.h"
#include "runner/CommandLine.h"
#include "runner/TestRun.h"

namespace {

using Lines = std::vector<std::string>;

// The directory of the reports; the program does not create it.
[[maybe_unused]] const bool kAlone = test::HaveAlone("/tmp/var/log");

int Pass(char*) {
  std::puts("all is well");
  return 0;
}

int Fail(char*) {
  std::puts("this is wrong");
  return 1;
}

int Break(char*) {
  std::abort();
}

/// Records the events of a run, such as "2 A/2@2 FAIL message".
class Notes : public runner::RunListener {
 public:
  explicit Notes(Lines& lines) : lines_(lines) {}
  void RunStarted(std::size_t tests) override { lines_.push_back(std::to_string(tests)); }
  void TestEnded(const runner::TestResult& result) override {
    std::string line = std::to_string(result.test.number) + " " + result.test.id + " " +
                       std::string(VerdictName(result.verdict));
    if (!result.message.empty()) line += " " + result.message;
    if (result.suspect) line += " suspect";
    if (result.earlier) line += " earlier";
    if (result.provisional) line += " provisional";
    lines_.push_back(line);
  }
  void RunEnded(const runner::Totals& totals) override { lines_.push_back(totals.Text()); }
  bool Good() const override { return true; }

 private:
  Lines& lines_;
};

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class RunTest : public testing::Test {
 protected:
  RunTest() {
    scripted::Play("", [] { return printReport() ? 0 : 1; });
    for (std::size_t i = 0; i < std::size(records_); ++i) {
      tests_.push_back(std::make_unique<TestCase>(&records_[i]));
      menu_.add(tests_.back().get());
    }
  }

  /// Runs the tests with these numbers, or resumes the run in the result directory.
  int Run(const std::vector<int>& numbers, bool resumes = false) {
    lines_.clear();
    std::vector<runner::TestEntry> entries;
    Lines ids;
    for (const int number : numbers) {
      ids.push_back("A/" + std::to_string(number));
      entries.push_back(
          {tests_[static_cast<std::size_t>(number - 1)].get(), "A", ids.back(), "", ""});
    }
    runner::ResultDirectory directory;
    std::vector<runner::JournalEntry> earlier;
    runner::RunHead head;
    const runner::RunHead begun{"/", {"--run", "A"}, ids};
    const std::string problem =
        resumes ? directory.Open(results_, head, earlier) : directory.Create(results_, begun);
    EXPECT_EQ(problem, "");
    std::vector<std::unique_ptr<runner::RunListener>> listeners;
    listeners.push_back(std::make_unique<Notes>(lines_));
    int status = -1;
    scripted::Play("", [&] {
      runner::TestRun run(options_, entries, {}, directory, std::move(listeners));
      return status = run.Do(earlier);
    });
    return status;
  }

  const ST_THAL_TEST_CASE_T records_[4] = {{1, "one", "passes", Pass, true},
                                           {2, "two", "fails", Fail, true},
                                           {3, "three", "breaks", Break, true},
                                           {4, "four", "is empty", nullptr, true}};
  ModuleCase menu_{"menu", ""};
  std::vector<std::unique_ptr<TestCase>> tests_;
  runner::Options options_;
  std::string results_ = testing::TempDir() + "/results";
  std::string report_ = scripted::RedirectReport();
  Lines lines_;
};

TEST_F(RunTest, KeepsLogsJournalAndReport) {
  EXPECT_EQ(Run({1, 2, 3, 4}), 1);
  EXPECT_EQ(lines_,
            (Lines{"4", "1 A/1 PASS", "2 A/2 FAIL", "3 A/3 ERROR killed by signal 6 SIGABRT",
                   "4 A/4 SKIPPED has no function",
                   "4 listed = 3 run + 1 skipped + 0 blocked; 1 passed, 1 failed, 1 errors"}));
  EXPECT_EQ(TextOf(results_ + "/logs/0001-A.1.log"), "all is well\n");
  EXPECT_EQ(TextOf(results_ + "/logs/0002-A.2.log"), "this is wrong\n");
  EXPECT_FALSE(std::filesystem::exists(results_ + "/logs/0004-A.4.log"));
  const std::string report = TextOf(report_);
  for (const char* name : {"one", "two", "three"}) EXPECT_NE(report.find(name), report.npos);
  EXPECT_EQ(report.find("four"), report.npos) << "tests that did not run are not reported";
  EXPECT_EQ(
      std::regex_replace(TextOf(results_ + "/journal"), std::regex("\t\\d+\\.\\d{3}\t"), "\t…\t"),
      "cvntester journal 1\ndirectory\t/\nword\t--run\nword\tA\n"
      "test\tA/1\ntest\tA/2\ntest\tA/3\ntest\tA/4\ntests\t4\n"
      "start\tA/1\nend\tA/1\tPASS\t0\t…\t\nstart\tA/2\nend\tA/2\tFAIL\t1\t…\t\n"
      "start\tA/3\nend\tA/3\tERROR\t1\t…\tkilled by signal 6 SIGABRT\n"
      "start\tA/4\nend\tA/4\tSKIPPED\t0\t…\thas no function\n");
}

TEST_F(RunTest, StopsAccordingToTheOptions) {
  options_.stopOnFail = true;
  options_.repeat = 3;
  options_.repeatGiven = true;
  EXPECT_EQ(Run({1, 2, 1}), 1);
  EXPECT_EQ(lines_, (Lines{"0", "1 A/1 PASS", "2 A/2 FAIL", "3 A/1 SKIPPED stopped after A/2",
                           "3 listed = 2 run + 1 skipped + 0 blocked; 1 passed, 1 failed, 0 "
                           "errors; 2 rounds skipped"}));
  std::filesystem::remove_all(results_);
  options_.repeat = 1;
  EXPECT_EQ(Run({2, 1}), 1);
  EXPECT_EQ(lines_[0], "2") << "of one round the number of tests is known";
  std::filesystem::remove_all(results_);
  options_.stopOnFail = false;
  options_.repeat = 2;
  EXPECT_EQ(Run({1}), 0);
  EXPECT_EQ(lines_, (Lines{"2", "1 A/1 PASS", "2 A/1@2 PASS",
                           "2 listed = 2 run + 0 skipped + 0 blocked; 2 passed, 0 failed, 0 "
                           "errors"}));
  std::filesystem::remove_all(results_);
  options_.repeatGiven = false;
  options_.untilFail = true;
  EXPECT_EQ(Run({4}), 77) << "a test that never runs never fails";
  EXPECT_EQ(lines_.size(), 3U);
}

TEST_F(RunTest, StopsOnAnUnhealthyBoardAndContinuesLater) {
  options_.health.command = "test \"$CVN_TEST\" != A/3 || { echo dark; exit 1; }";
  EXPECT_EQ(Run({2, 3, 1}), 99);
  EXPECT_EQ(lines_, (Lines{"3", "1 A/2 FAIL", "2 A/3 ERROR killed by signal 6 SIGABRT suspect",
                           "3 A/1 SKIPPED board unhealthy after A/3: dark (exit status 1) "
                           "provisional",
                           "3 listed = 2 run + 1 skipped + 0 blocked; 0 passed, 1 failed, 1 "
                           "errors"}));
  EXPECT_EQ(Run({2, 3, 1}, true), 1);
  EXPECT_EQ(lines_, (Lines{"3", "1 A/2 FAIL earlier",
                           "2 A/3 ERROR killed by signal 6 SIGABRT suspect earlier", "3 A/1 PASS",
                           "3 listed = 3 run + 0 skipped + 0 blocked; 1 passed, 1 failed, 1 "
                           "errors"}));
  std::filesystem::remove_all(results_);
  options_.health.command = "false";
  EXPECT_EQ(Run({1}), 99);
  EXPECT_EQ(lines_[1],
            "1 A/1 SKIPPED board unhealthy before the first test: exit status 1 "
            "provisional");
}

TEST(Command, InheritsTheEnvironmentExceptForItsOwnSettings) {
  setenv("CVN_TEST_INHERITED", "here", 1);
  setenv("CVN_TEST_SET", "old", 1);
  const runner::CommandEnd end =
      runner::RunCommand({"sh", "-c", "echo $CVN_TEST_INHERITED $CVN_TEST_SET $CVN_TEST_OWN"},
                         {"CVN_TEST_SET=new", "CVN_TEST_OWN=1"}, 60);
  EXPECT_TRUE(end.Succeeded());
  EXPECT_EQ(end.output, "here new 1\n");
}

TEST(BuildIds, AreThoseOfTheProgramAndTheHal) {
  const std::regex ids("cvntester( [0-9a-f]{8,})?, libcvn_k2vhal\\.so( [0-9a-f]{8,})?");
  EXPECT_TRUE(std::regex_match(runner::BuildIds(), ids)) << runner::BuildIds();
}

TEST_F(RunTest, EvidenceIsKeptNextToTheLogs) {
  runner::ResultDirectory directory;
  ASSERT_EQ(directory.Create(results_, {"/", {"--run", "A"}, {"A/1"}}), "");
  const runner::PlannedTest test{1, 1, "A/1", "A", "", ""};
  EXPECT_TRUE(directory.KeepAttachments(test, {{"b.svg", "second"}, {"a.svg", "first"}}));
  EXPECT_EQ(directory.EvidenceOf(test),
            (Lines{"logs/0001-A.1.evidence/a.svg", "logs/0001-A.1.evidence/b.svg"}));
  EXPECT_EQ(TextOf(results_ + "/logs/0001-A.1.evidence/b.svg"), "second");
}

TEST_F(RunTest, ChecksNoBoardAfterAFailureOfTheHarness) {
  options_.health.command = "test -z \"$CVN_TEST\"";
  std::filesystem::remove_all(std::filesystem::path(report_).parent_path());
  EXPECT_EQ(Run({3, 1}), 99);
  EXPECT_EQ(lines_, (Lines{"2", "1 A/3 ERROR cannot write the report",
                           "2 A/1 SKIPPED cannot write the report provisional",
                           "2 listed = 1 run + 1 skipped + 0 blocked; 0 passed, 0 failed, 1 "
                           "errors"}));
}

TEST_F(RunTest, InterruptedTestIsASuspectError) {
  EXPECT_EQ(Run({1, 2}), 1);
  std::string journal = TextOf(results_ + "/journal");
  journal.resize(journal.find("end\tA/2"));
  std::ofstream(results_ + "/journal") << journal;
  EXPECT_EQ(Run({1, 2}, true), 1);
  EXPECT_EQ(lines_[1], "1 A/1 PASS earlier");
  EXPECT_EQ(lines_[2], "2 A/2 ERROR the run was interrupted during this test suspect earlier");
  EXPECT_NE(TextOf(results_ + "/journal").find("\nsuspect\tA/2\n"), std::string::npos);
  EXPECT_EQ(Run({2, 1}, true), 99) << "another selection";
  EXPECT_EQ(lines_[1], "1 A/2 SKIPPED journal mismatch: found test A/1, expected A/2 earlier");
}

TEST_F(RunTest, OrderDiffersInEachRoundAndIsGivenByTheSeed) {
  options_.shuffleSeed = 5;
  options_.repeat = 2;
  options_.noOperator = true;
  EXPECT_EQ(Run({1, 4, 2, 3, 1, 2}), 1);
  const Lines first = lines_;
  std::filesystem::remove_all(results_);
  EXPECT_EQ(Run({1, 4, 2, 3, 1, 2}), 1);
  EXPECT_EQ(lines_, first);
  Lines rounds[2];
  for (std::size_t i = 0; i < 12; ++i)
    rounds[i / 6].push_back(first[i + 1].substr(first[i + 1].find("A/"), 3));
  EXPECT_NE(rounds[0], rounds[1]);
  for (Lines& round : rounds) std::ranges::sort(round);
  EXPECT_EQ(rounds[0], (Lines{"A/1", "A/1", "A/2", "A/2", "A/3", "A/4"}));
  EXPECT_EQ(rounds[0], rounds[1]);
}

/// Runs the program with these arguments in its own process and returns its exit status.
int Main(const Lines& words) {
  return scripted::PlayApart("", [&] { return runner::Main(words, [] { return -1; }); }).result;
}

TEST_F(RunTest, ResumesOnlyWithTheTestsOfItsJournal) {
  EXPECT_EQ(Main({"--run", "UTVpqModule/1", "UTVpqModule/2", "--results", results_}), 0);
  EXPECT_EQ(Main({"--resume", results_}), 0);
  EXPECT_EQ(Main({"--run", "UTVpqModule/1", "--results", results_}), 99) << "not empty";
  const std::string journal = TextOf(results_ + "/journal");
  std::ofstream(results_ + "/journal")
      << std::regex_replace(journal, std::regex("test\tUTVpqModule/2\n"), "test\tUTVpqModule/3\n");
  EXPECT_EQ(Main({"--resume", results_}), 99) << "another build has other tests";
  std::ofstream(results_ + "/journal")
      << std::regex_replace(journal, std::regex("word\tUTVpqModule/2\n"), "word\tNoModule/2\n");
  EXPECT_EQ(Main({"--resume", results_}), 99);
}

}  // namespace
