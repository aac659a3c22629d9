// The ready-made rules: tests on the simulated board judged by picture, without an operator.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "UnattendedFixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;

constexpr int kLimitMs = 200000;
constexpr char kSources[] =
    "plug 0 3840x2160p60 hdr\n"
    "plug 1 1920x1080p60\n";

class EyesOnTheBoard : public UnattendedTest {
 protected:
  /// Runs tests with the eyes and returns the `jq` result of each test's end, separated by blanks.
  std::string Judged(const std::vector<std::string>& tests, const std::string& answers,
                     const std::string& scenario, const std::string& expression) {
    std::vector<std::string> arguments = {"--run"};
    arguments.insert(arguments.end(), tests.begin(), tests.end());
    for (const char* word : {"--eyes", "/opt/cvntester/eyes/look", "--eyes-always", "--eyes-before",
                             "--json", "/tmp/o.json", "--results", "/tmp/r", "--answers"})
      arguments.emplace_back(word);
    arguments.push_back("/opt/cvntester/eyes/" + answers);
    Pty& pty = Start({.launcher = {"--setenv", "ASAN_OPTIONS=detect_leaks=0"},
                      .arguments = arguments,
                      .scenario = kSources + scenario,
                      .timeScale = 100});
    EXPECT_TRUE(pty.ExpectEnd(kLimitMs));
    log_ = pty.Transcript();
    return Query("[.[] | select(.event == \"test-end\") | " + expression + "] | join(\" \")",
                 "/tmp/o.json");
  }

  /// Tests that have their own rule in the rules file, of modules whose names begin with `prefix`.
  static std::vector<std::string> TestsWithRules(const std::string& prefix) {
    std::ifstream rules(CVN_SOURCE_DIRECTORY "/sim/eyes/rules");
    std::vector<std::string> tests;
    for (std::string line; std::getline(rules, line);) {
      const std::string test = line.substr(0, line.find('\t'));
      if (test.starts_with(prefix) && test.find('/') != std::string::npos) tests.push_back(test);
    }
    return tests;
  }

  std::string log_;
};

constexpr char kSeenOtherThanRight[] =
    "select(.message | contains(\"eyes: yes\") | not) | .test + \" \" + .verdict";

TEST_F(EyesOnTheBoard, JudgeAllScalerTests) {
  EXPECT_EQ(Judged({"VscModule"}, "scaler.answers", "",
                   "select(.message | contains(\"eyes: yes\"))"
                   " | .verdict | if . == \"PASS\" then \"p\""
                   " else \"f\" end"),
            // Tests 16 to 23 fail regardless of the picture: leaving them does not count as
            // success.
            "p p p p p p p p p p p p p p p p f f f f f f f f p p p p p p p p p p p p p p p p")
      << log_;
  EXPECT_EQ(Query(".[] | select(.test == \"VscModule/36\" and .event == \"test-end\") | .evidence"
                  " | map(ltrimstr(\"logs/0037-VscModule.36.evidence/\")) | join(\" \")",
                  "/tmp/o.json"),
            "before.png capture.png difference.png reference.png");
}

TEST_F(EyesOnTheBoard, FailOnlyScalerTestsWithVisibleDefects) {
  if (CVN_SANITIZED != 0) GTEST_SKIP() << "takes a minute and covers no other code";
  // Freezing and writing are accepted but not executed; blanked windows have another colour.
  EXPECT_EQ(Judged({"VscModule"}, "scaler.answers",
                   "fail K2V_RHAL_VSC_SetWinFreeze 0\n"
                   "fail K2V_RHAL_VSC_WriteVideoFrameBuffer 0\n"
                   "panel-fault blank\n",
                   kSeenOtherThanRight),
            "VscModule/5 FAIL VscModule/6 FAIL VscModule/13 FAIL VscModule/37 FAIL")
      << log_;
}

TEST_F(EyesOnTheBoard, JudgePictureQualitySettings) {
  if (CVN_SANITIZED != 0) GTEST_SKIP() << "takes a minute and covers no other code";
  const std::vector<std::string> tests = TestsWithRules("Vpq");
  EXPECT_GE(tests.size(), 60U);
  EXPECT_EQ(Judged(tests, "quality.answers", "", kSeenOtherThanRight), "") << log_;
}

TEST_F(EyesOnTheBoard, LearnReferencesAcceptedByTheOperator) {
  Put("/tmp/set/rules", "from command:cvnsim camera --y4m --pictures 1\ntrust black\n");
  const auto run = [](const char* task) {
    return std::vector<std::string>{
        "--run",  "VscModule/29", "VscModule/30", "--eyes", std::string("cvneyes ") + task,
        "--json", "/tmp/o.json",  "--color",      "never"};
  };
  const auto start = [&](const char* task) -> Pty& {
    return Start({.launcher = {"--setenv", "ASAN_OPTIONS=detect_leaks=0"},
                  .arguments = run(task),
                  .scenario = kSources,
                  .timeScale = 100});
  };
  Pty& learning = start("learn /tmp/set/rules --state 'cvnsim state'");
  for (const char* answer : {"y", "n"}) {
    ASSERT_TRUE(learning.Expect("Y takes the picture as reference: "));
    learning.SendLine(answer);
  }
  EXPECT_TRUE(learning.ExpectEnd(kLimitMs));
  EXPECT_EQ(FileText(OnBoard("/tmp/set/VscModule.29.png.txt")).substr(0, 19),
            "test: VscModule/29\n");
  EXPECT_TRUE(
      Contains(FileText(OnBoard("/tmp/set/VscModule.29.png.txt")), "  port 0: 3840x2160p60"));
  // The board's own capture shows the same.
  for (const char* task : {"judge /tmp/set/rules", "judge /tmp/set/rules --from hal"}) {
    fs::remove(OnBoard("/tmp/o.json"));
    Pty& judging = start(task);
    EXPECT_TRUE(judging.ExpectEnd(kLimitMs));
    EXPECT_EQ(Query(".[] | select(.event == \"test-end\") | .verdict + \" \" + .message[:24]",
                    "/tmp/o.json"),
              "PASS eyes: yes, reference Vsc\nBLOCKED eyes: cannot tell, no ru")
        << judging.Transcript();
  }
}

TEST_F(EyesOnTheBoard, DetectSettingsIgnoredByThePanel) {
  EXPECT_EQ(Judged({"VpqModule/33", "VpqExtModule/2", "VpqExtModule/8", "VpqExtModule/10",
                    "VpqExtModule/12", "VpqExtModule/27", "VpqExtModule/32", "VpqExtModule/100",
                    "VpqExtModule/102"},
                   "quality.answers", "panel-fault settings\n", kSeenOtherThanRight),
            "VpqModule/33 FAIL VpqExtModule/2 FAIL VpqExtModule/8 FAIL VpqExtModule/10 FAIL "
            "VpqExtModule/12 FAIL VpqExtModule/27 FAIL VpqExtModule/100 FAIL VpqExtModule/102 FAIL")
      << log_;
}

}  // namespace
}  // namespace test
