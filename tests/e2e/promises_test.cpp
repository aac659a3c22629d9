// Guarantees of unattended runs: they end, they leave the board unchanged, and every test has one
// result in every format.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "UnattendedFixture.h"

namespace {

namespace fs = std::filesystem;
using test::Contains;
using test::FileText;
using test::UnattendedTest;

using PromisesTest = UnattendedTest;

TEST_F(PromisesTest, DisruptiveTestsRunOnlyWhenNamed) {
  // Golden data that an overwrite or a restore would touch.
  const std::string golden = "/data/cross_module/golden_data/playback/x.txt";
  Put(golden, "mine\n");
  Run({"--run", "CM*", "--no-operator", "--timeout", "10"});
  for (const char* id : {"CMplaybackModule/0", "CMplaybackModule/9", "CMplaybackModule/10",
                         "CMplaybackModule/6", "CMAutoTest/0", "CMAutoTest/4"}) {
    EXPECT_TRUE(Contains(Screen(), std::string("SKIPPED ") + id + " ")) << id << Screen();
  }
  EXPECT_TRUE(Contains(Screen(), "name it exactly or add --disruptive")) << Screen();
  EXPECT_EQ(FileText(OnBoard(golden)), "mine\n");
  Run({"--run", "CMplaybackModule/10", "--no-operator"});
  EXPECT_FALSE(Contains(Screen(), "SKIPPED")) << Screen();
  Run({"--run", "CMplaybackModule/1?", "--no-operator", "--disruptive"});
  EXPECT_FALSE(Contains(Screen(), "SKIPPED CMplaybackModule/10")) << Screen();
}

TEST_F(PromisesTest, EmptyRunsEndAndReportSkippedRoundsOnce) {
  EXPECT_EQ(Run({"--run", "CMplaybackModule/7", "CMplaybackModule/13", "--until-fail"}), 77);
  EXPECT_TRUE(Contains(Screen(), "2 listed = 0 run + 2 skipped")) << Screen();

  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--repeat", "1000000", "--stop-on-fail", "--tap",
                 "/tmp/o.tap", "--json", "/tmp/o.json", "--junit", "/tmp/o.xml"},
                "misbehave K2V_RHAL_VPQ_SetGammaLUT abort --at 12\n"),
            1);
  EXPECT_TRUE(Contains(Screen(), "errors; 99999")) << Screen();
  const std::string rounds = Query(".[-1].skipped_rounds", "/tmp/o.json");
  EXPECT_TRUE(Contains(FileText(OnBoard("/tmp/o.tap")), "\n# " + rounds + " rounds skipped\n1.."));
  EXPECT_EQ(
      Judge("xmllint --xpath \"string(//property[@name='skipped_rounds']/@value)\"", "/tmp/o.xml"),
      rounds + "\n");
  EXPECT_LT(std::stoi(Query("length", "/tmp/o.json")), 500);
}

/// Tests of a LAVA file that have more than one signal.
std::string Repeated(const std::string& signals) {
  std::istringstream lines(signals);
  std::set<std::string> seen;
  std::string repeated;
  for (std::string line; std::getline(lines, line);) {
    const std::string id = line.substr(0, line.find(" RESULT"));
    if (!seen.insert(id).second) repeated += line + "\n";
  }
  return repeated;
}

TEST_F(PromisesTest, InterruptedTestIsReportedToLavaByTheResumedRun) {
  const std::string hang = "misbehave K2V_RHAL_VPQ_SetGamut hang\n";
  for (const char* signal : {"TERM", "HUP"}) {
    fs::remove_all(OnBoard("/tmp/res"));
    // The harness is not the board's first process, which a signal from here would reach.
    test::Pty& pty = StartProgram(
        {"sh", "-c",
         "cvntester --run UTVpqModule/20? --results /tmp/res --lava /tmp/o.lava --color never & "
         "while ! grep -q 'start.UTVpqModule/204' /tmp/res/journal; do :; done; kill -" +
             std::string(signal) + " $!; wait $!; echo status $?"},
        {.scenario = hang});
    ASSERT_TRUE(pty.Expect("status 99", test::kRunLimitMs)) << signal;
    ASSERT_TRUE(pty.ExpectEnd());
    const std::string first = FileText(OnBoard("/tmp/o.lava"));
    EXPECT_FALSE(Contains(first, "UTVpqModule.204")) << signal << first;
    EXPECT_FALSE(Contains(first, "skip")) << signal << first;
    EXPECT_EQ(Run({"--resume", "/tmp/res"}), 1) << Screen();
    const std::string whole = FileText(OnBoard("/tmp/o.lava"));
    EXPECT_TRUE(Contains(whole, "TEST_CASE_ID=UTVpqModule.204 RESULT=fail")) << signal << whole;
    EXPECT_EQ(std::ranges::count(whole, '\n'), 10) << signal << whole;
    EXPECT_EQ(Repeated(whole), "") << signal;
  }
}

TEST_F(PromisesTest, ReportsOfOtherRunsAreNotOverwritten) {
  // Reports of this second and the following ones exist already.
  test::Pty& pty = StartProgram(
      {"sh", "-c",
       "now=$(date +%s); for s in 0 1 2 3 4 5; do echo mine >/tmp/var/log/$(date -d "
       "@$((now + s)) +%m_%d_%H_%M_%S).txt; done; cvntester --run UTVpqModule/2?; echo over"});
  ASSERT_TRUE(pty.Expect("over\n", test::kRunLimitMs));
  EXPECT_TRUE(Contains(pty.Transcript(), "10 passed")) << pty.Transcript();
  std::vector<std::string> reports;
  for (const auto& file : fs::directory_iterator(OnBoard("/tmp/var/log"))) {
    // The board's processors log there too.
    if (file.path().extension() == ".txt") reports.push_back(FileText(file.path()));
  }
  ASSERT_EQ(reports.size(), 7U);
  EXPECT_EQ(std::ranges::count(reports, "mine\n"), 6);
  EXPECT_EQ(std::ranges::count_if(
                reports, [](const auto& text) { return Contains(text, "Total TestCase : 10 "); }),
            1);
}

TEST_F(PromisesTest, ClosedStandardStreamsAreNotReused) {
  test::Pty& pty = StartProgram(
      {"sh", "-c",
       "cvntester --run UTVpqModule/204 --results /tmp/res <&- >&- 2>&- & "
       "while ! grep -q start /tmp/res/journal; do :; done; "
       "for fd in 0 1 2; do echo $fd $(readlink /proc/.real/$!/fd/$fd); done; kill $!; wait"},
      {.scenario = "misbehave K2V_RHAL_VPQ_SetGamut hang\n"});
  EXPECT_TRUE(pty.Expect("0 /dev/null\n1 /dev/null\n2 /dev/null\n", test::kRunLimitMs))
      << pty.Transcript();
  EXPECT_TRUE(pty.ExpectEnd(test::kRunLimitMs));
}

TEST_F(PromisesTest, ContradictoryOptionsAreRejectedBeforeOverwriting) {
  Put("/tmp/answers", "*\t*\ty\nVscModul/1\t*\t1\n");
  Put("/tmp/good", "*\t*\ty\nVscModule/1\t*\t1\n");
  const std::string run = "--run UTVpqModule/1 ";
  const struct {
    std::string words;
    const char* problem;
  } cases[] = {
      {run + "--junit /tmp/x --tap /tmp/x", "--junit and --tap are the same file: /tmp/x"},
      {run + "--junit /tmp/x --lava /tmp/../tmp/./x", "--junit and --lava are the same file"},
      {run + "--json /tmp/good --answers /tmp/good", "--json would overwrite --answers"},
      {run + "--results /tmp/res --json /tmp/res/journal", "is a file of --results"},
      {run + "--results /tmp/res --tap /tmp/res/logs/../logs/a.log", "is a file of --results"},
      {run + "--trace /sim/trace", "--trace requires --results"},
      {run + "--answers /tmp/answers", "/tmp/answers:2: 'VscModul/1' matches no test"},
      {"--run  --no-operator", "--run: must not be empty"},
  };
  for (const auto& [words, problem] : cases) {
    std::vector<std::string> arguments;
    std::istringstream text(words);
    for (std::string word; std::getline(text, word, ' ');) arguments.push_back(word);
    EXPECT_EQ(Run(arguments), 2) << words;
    EXPECT_TRUE(Contains(Screen(), problem)) << words << ": " << Screen();
  }
  EXPECT_EQ(FileText(OnBoard("/tmp/good")).substr(0, 1), "*");
  EXPECT_FALSE(fs::exists(OnBoard("/tmp/x")));
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--answers", "/tmp/good", "--junit", "/dev/null",
                 "--tap", "/dev/null"}),
            0);
  EXPECT_TRUE(Contains(Screen(), "/tmp/good:2: 'VscModule/1' matches no selected test"))
      << Screen();
}

TEST_F(PromisesTest, ManualPlayWaitsForAKeyInsteadOfThePlayer) {
  // Manual play mounts nothing: the operator provides the content.
  Put("/tmp/usb/cross_module_content_v1/[R101]h264-FrtChg.ts", "");
  const std::vector<std::string> run = {"--run",     "CMplaybackModule/8", "--manual-play",
                                        "--verbose", "--idle-timeout",     "2",
                                        "--answers", "/tmp/answers"};
  const std::string rules = "*\t*Please Select*\t1\n*\t*TFTP Server IP*\t-\n";
  Put("/tmp/answers", rules + "*\t*Enter any key if play finished\tkeys x\n");
  Run(run);
  EXPECT_TRUE(Contains(Screen(), "Enter any key if play finished\nx")) << Screen();
  EXPECT_FALSE(Contains(Screen(), "Excute command")) << Screen();
  EXPECT_FALSE(Contains(Screen(), "has not been setuped")) << Screen();
  // The dumps are verified as after any other run.
  EXPECT_TRUE(Contains(Screen(), "[Test-101-h264-FrtChg-Overview]")) << Screen();
  // No operator is there: the run reports the prompt that it waits for.
  Put("/tmp/answers", rules);
  EXPECT_EQ(Run(run), 1);
  EXPECT_TRUE(Contains(Screen(), "BLOCKED CMplaybackModule/8")) << Screen();
  EXPECT_TRUE(Contains(Screen(), "Enter any key if play finished'")) << Screen();
}

class ShuffleTest : public UnattendedTest, public testing::WithParamInterface<int> {
 protected:
  /// The verdicts of all tests that need no operator.
  std::map<std::string, std::string> Verdicts(const std::vector<std::string>& order) {
    std::vector<std::string> arguments = {"--run", "*",      "--no-operator", "--timeout",
                                          "60",    "--json", "/tmp/o.json"};
    arguments.insert(arguments.end(), order.begin(), order.end());
    test::Pty& pty = Start({.launcher = {"--fresh"}, .arguments = arguments, .timeScale = 50});
    EXPECT_TRUE(pty.ExpectEnd(test::kRunLimitMs));
    std::istringstream lines(Query(
        "map(select(.event == \"test-end\") | .test + \" \" + .verdict) | .[]", "/tmp/o.json"));
    std::map<std::string, std::string> verdicts;
    for (std::string test, verdict; lines >> test >> verdict;) verdicts[test] = verdict;
    return verdicts;
  }
};

TEST_P(ShuffleTest, OrderMattersOnlyToTestsThatNeedInitialisationByOthers) {
  // The 3D converter is initialised by VbeModule/6, the display by VbeModule/27.
  const std::regex dependent("VbeModule/([7-9]|1[0-9]|28)");
  const auto inOrder = Verdicts({});
  const auto shuffled = Verdicts({"--shuffle", std::to_string(GetParam())});
  ASSERT_GT(inOrder.size(), 600U);
  ASSERT_EQ(shuffled.size(), inOrder.size());
  for (const auto& [test, verdict] : inOrder) {
    if (std::regex_match(test, dependent)) continue;
    EXPECT_EQ(shuffled.at(test), verdict) << test;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ShuffleTest, testing::Values(1, 2));

}  // namespace
