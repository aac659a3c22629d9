// Verdicts, counters and the exact contents of the report file.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>

#include "Case.h"
#include "ConsoleInput.h"
#include "Scripted.h"
#include "Shell.h"
#include "TestReport.h"
#include "Util.h"

namespace {

int returned = 0;
int ReturnIt(char*) {
  return returned;
}
int AskForNumber(char*) {
  return console::ReadNumber();
}

ST_THAL_TEST_CASE_T Record(bool autoJudge, int (*function)(char*) = ReturnIt) {
  return {7, "Name", "Description", function, autoJudge};
}

std::string Rule(char c) {
  return std::string(136, c) + '\n';
}

const std::string kHeader = Rule('#') + Rule('#') + std::string(58, '#') + " THAL1.1 Test Report " +
                            std::string(57, '#') + '\n' + Rule('#') + Rule('#');

std::string Footer(char separator, const std::string& total, const std::string& pass,
                   const std::string& fail) {
  const auto padded = [](std::string number) { return number.resize(25, ' '), number; };
  return Rule(separator) + Rule('-') + std::string(64, '-') + " @TOTAL@ " + std::string(63, '-') +
         '\n' + Rule('-') + '-' + std::string(20, ' ') + "Total TestCase : " + padded(total) +
         "   PASS : " + padded(pass) + "FAIL :    " + padded(fail) + "  -\n" + Rule('-');
}

std::string Line(const char* result) {
  return "# TestCase: Menu                      007.Name                     "
         "(Description                   )       " +
         std::string(result) + "       #\n";
}

class ReportTest : public testing::Test {
 protected:
  void SetUp() override {
    path_ = scripted::RedirectReport();
    created_ = scripted::Play("", [] { return printReport(), 0; }).output;
    menu_.add(&judgedHere_);
    menu_.add(&judgedByOperator_);
    menu_.add(&asking_);
  }

  scripted::Run RunReturning(int value) {
    returned = value;
    return scripted::Play("", [this] { return judgedHere_.Run(); });
  }

  std::string path_;
  std::string created_;
  ModuleCase menu_{"Menu", ""};
  const ST_THAL_TEST_CASE_T judgedHereRecord_ = Record(true);
  const ST_THAL_TEST_CASE_T judgedByOperatorRecord_ = Record(false);
  const ST_THAL_TEST_CASE_T askingRecord_ = Record(true, AskForNumber);
  TestCase judgedHere_{&judgedHereRecord_};
  TestCase judgedByOperator_{&judgedByOperatorRecord_};
  TestCase asking_{&askingRecord_};
};

TEST_F(ReportTest, AddsOneLinePerTestAndEndsWithTheTotals) {
  EXPECT_EQ(created_, "length136\n");
  EXPECT_EQ(scripted::ReadFile(path_), kHeader + Footer('-', "0", "0", "0"));
  EXPECT_EQ(RunReturning(0).output, "\033[1;32mTest Report file generated at " + path_ + "\n");
  RunReturning(1);
  RunReturning(0);
  EXPECT_EQ(scripted::ReadFile(path_),
            kHeader + Line("PASS") + Line("FAIL") + Line("PASS") + Footer('#', "3", "2", "1"));
  EXPECT_EQ(RunReturning(2).result, 2);
  EXPECT_EQ(scripted::ReadFile(path_), kHeader + Line("PASS") + Line("FAIL") + Line("PASS") +
                                           Line("----") + Footer('#', "4", "2", "1"));
}

TEST_F(ReportTest, VerdictComesFromTheFunctionAndTheOperator) {
  const struct {
    int returned;
    bool autoJudge;
    const char* answer;
    int result;
    int pass;
    int fail;
    bool asked;
  } kRuns[] = {
      {0, true, "", 0, 1, 0, false},     {1, true, "", 1, 0, 1, false},
      {-1, true, "", -1, 0, 0, false},   {0, false, "Y\n", 0, 1, 0, true},
      {0, false, "y\n", 0, 1, 0, true},  {0, false, "N\n", 1, 0, 1, true},
      {0, false, "n\n", 1, 0, 1, true},  {0, false, "maybe\n", 0, 1, 0, true},
      {0, false, "No\n", 0, 1, 0, true}, {1, false, "", 1, 0, 1, false},
      {2, false, "", 2, 0, 0, false},
  };
  const std::string question =
      "\033[0;32;32mName has been executed \n\033[0;32;32mPlease check the result PASS or FAIL by "
      "'Y' or 'N' \033[1;37m";
  for (const auto& run : kRuns) {
    testCounters = {};
    returned = run.returned;
    TestCase& test = run.autoJudge ? judgedHere_ : judgedByOperator_;
    const auto played = scripted::Play(run.answer, [&] { return test.Run(); });
    EXPECT_EQ(played.result, run.result) << run.returned << run.answer;
    EXPECT_EQ(testCounters.total, 1);
    EXPECT_EQ(testCounters.pass, run.pass) << run.returned << run.answer;
    EXPECT_EQ(testCounters.fail, run.fail) << run.returned << run.answer;
    EXPECT_EQ(played.output.starts_with(question), run.asked) << played.output;
  }
}

TEST_F(ReportTest, EndOfInputFailsTheRunningTestAndEndsTheProgram) {
  struct {
    TestCase* test;
    int returned;
  } const kPrompts[] = {{&asking_, 0}, {&judgedByOperator_, 0}};
  int failed = 0;
  for (const auto& prompt : kPrompts) {
    returned = prompt.returned;
    EXPECT_EXIT(
        {
          dup2(2, 1);
          dup2(fileno(std::tmpfile()), 0);
          prompt.test->Run();
        },
        testing::ExitedWithCode(1), "Test Report file generated at .*\n\nEnd of input\n$");
    ++failed;
    // The counters belong to the process that ended: one test each.
    EXPECT_NE(scripted::ReadFile(path_).find(Line("FAIL") + Footer('#', "1", "0", "1")),
              std::string::npos);
  }
  EXPECT_EQ(failed, 2);
}

TEST_F(ReportTest, LongNamesWidenTheLineButNotTheFooter) {
  ST_THAL_TEST_CASE_T record = Record(true);
  std::fill_n(record.name, sizeof record.name - 1, 'n');
  std::fill_n(record.description, sizeof record.description - 1, 'd');
  TestCase test(&record);
  ModuleCase menu(std::string(300, 'm').c_str(), "");
  menu.add(&test);
  returned = 0;
  scripted::Play("", [&] { return test.Run(); });
  RunReturning(1);
  const std::string expected =
      "# TestCase: " + std::string(300, 'm') + " 007." + std::string(67, 'n') + '\n' + Line("FAIL");
  EXPECT_EQ(scripted::ReadFile(path_), kHeader + expected + Footer('#', "2", "1", "1"));
}

TEST_F(ReportTest, MissingFileIsReportedAtEveryTestWithoutStopping) {
  std::remove(path_.c_str());
  const std::string told = "Test Report file open fail!!!(you can ignore this)\n";
  EXPECT_EQ(RunReturning(0).output, told);
  EXPECT_EQ(RunReturning(1).output, told);
  EXPECT_EQ(testCounters.total, 2);
  std::string directory = path_.substr(0, path_.rfind('/'));
  rmdir(directory.c_str());
  EXPECT_EQ(scripted::Play("", [] { return printReport(), 0; }).output, "write fail!\n");
}

TEST_F(ReportTest, FullDiskLosesNoExistingLine) {
  RunReturning(0);
  const auto size = static_cast<rlim_t>(scripted::ReadFile(path_).size());
  signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  for (const rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{100}}) {
    const rlimit full = {size + room, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_TRUE(RunReturning(1).output.starts_with("write fail!\n"));
  }
  EXPECT_EQ(scripted::ReadFile(path_), kHeader + Line("PASS") + Footer('#', "4", "1", "3"));
  setrlimit(RLIMIT_FSIZE, &limit);
  RunReturning(0);
  EXPECT_EQ(scripted::ReadFile(path_),
            kHeader + Line("PASS") + Line("PASS") + Footer('#', "5", "2", "3"));
}

TEST_F(ReportTest, SaysThatItsFooterIsLost) {
  signal(SIGXFSZ, SIG_IGN);
  rlimit full{};
  getrlimit(RLIMIT_FSIZE, &full);
  full.rlim_cur = 100;
  setrlimit(RLIMIT_FSIZE, &full);
  EXPECT_TRUE(
      RunReturning(0).output.starts_with("write fail!\nThe footer of the report is lost\n"));
}

TEST_F(ReportTest, TestFailsIfNoShellCanBeStarted) {
  const ST_THAL_TEST_CASE_T record = Record(false, [](char*) { return RunShell("sync"), 0; });
  TestCase test(&record);
  menu_.add(&test);
  scripted::RefuseShells(EAGAIN);
  const auto refused = scripted::Play("", [&] { return test.Run(); });
  EXPECT_EQ(refused.result, 1);
  EXPECT_TRUE(refused.output.starts_with(
      "Cannot start a shell (Resource temporarily unavailable) for: sync\n"))
      << refused.output;
  scripted::RefuseShells(0);
  EXPECT_EQ(scripted::Play("y\n", [&] { return test.Run(); }).result, 0);
}

TEST_F(ReportTest, TruncatedFileGetsItsFooterBack) {
  ASSERT_EQ(truncate(path_.c_str(), 100), 0);
  EXPECT_TRUE(RunReturning(0).output.starts_with("write fail!\n"));
  RunReturning(1);
  EXPECT_EQ(scripted::ReadFile(path_), Line("FAIL") + Footer('#', "2", "1", "1"));
}

TEST(UtilTest, ReportPathIsMadeOnceFromTheStartTime) {
  setenv("TZ", "XYZ+1", 1);
  scripted::StopClock(std::numeric_limits<std::time_t>::max());
  EXPECT_EQ(Util::GetTestReportPath(), nullptr) << "no calendar has this year";
  scripted::StopClock(1769907599);  // 2026-02-01 00:59:59 UTC
  const auto path = [] { return Util::GetTestReportPath() == nullptr ? 1 : 0; };
  EXPECT_EQ(scripted::Play("", path).output,
            "Test Report file path : /tmp/var/log/01_31_23_59_59.txt\n");
  scripted::StopClock(0);
  EXPECT_EQ(scripted::Play("", path).output, "");
  EXPECT_STREQ(Util::GetTestReportPath(), "/tmp/var/log/01_31_23_59_59.txt");
  Util::UseNextTestReportPath();
  EXPECT_STREQ(Util::GetTestReportPath(), "/tmp/var/log/02_01_00_00_00.txt");
}

TEST(UtilTest, CentresWithBothHalvesRoundedDown) {
  const struct {
    const char* text;
    const char* line;
    const char* expected;
  } kCases[] = {{"abc", "------", "--abc-"},
                {"ab", "-----", "-ab--"},
                {"abc", "", "abc"},
                {"", "---", "---"},
                {"abcdef", "---", "abc"}};
  for (const auto& c : kCases) {
    char line[16] = {};
    std::snprintf(line, sizeof line, "%s", c.line);
    EXPECT_EQ(Util::FormatString(c.text, line), line);
    EXPECT_STREQ(line, c.expected);
  }
}

}  // namespace
