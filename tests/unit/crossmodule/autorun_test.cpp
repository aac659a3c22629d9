// Starting one or more test cases from the menu, and adding a case.
#include <gtest/gtest.h>

#include <cerrno>

#include "AutoRun.h"
#include "CMplaybackTestCase.h"
#include "PreparedBoard.h"

namespace {

using scripted::Play;
using Entry = int (*)(char*);

/// Dumps of test case 101 exist and equal its golden data, regardless of which case is played.
class CrossModuleAutoRun : public PreparedBoard {
 protected:
  CrossModuleAutoRun() {
    Boot(crossmodule::kAndroid, MODE_EMMC);
    PutDumps(101);
    for (const char* file : {"[R101]h264-FrtChg.ts", "[R201]hevc-FrtChg.mp4"})
      Write(std::string("cross_module_content_v1/") + file, "");
  }
};

scripted::Run Choose(Entry entry, const std::string& typed) {
  return Play(typed, [entry] { return entry(nullptr); });
}

/// Files with which the player was called.
std::vector<std::string> Played(const scripted::Run& run) {
  std::vector<std::string> files;
  for (const std::string& command : run.commands) {
    if (command.find("  -pf ") != command.npos)
      files.push_back(command.substr(command.rfind('/') + 1));
  }
  return files;
}

bool Says(const scripted::Run& run, const std::string& text) {
  return crossmodule::WithoutColours(run.output).find(text) != std::string::npos;
}

TEST_F(CrossModuleAutoRun, PlaysTheListInAllRoundsAndPrintsTotals) {
  const auto run =
      Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_Customized, "1, 3,2 13 0 x 1x -1\n2\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(Played(run), (Lines{"[R101]h264-FrtChg.ts", "[R201]hevc-FrtChg.mp4",
                                "[R101]h264-FrtChg.ts", "[R201]hevc-FrtChg.mp4"}));
  for (const char* said :
       {"no test case 13, skipped\n", "no test case 0, skipped\n", "no test case x, skipped\n",
        "no test case 1x, skipped\n", "no test case -1, skipped\n",
        "\nRound 2/2, case 1/3: 101-h264-FrtChg, 00:00:0", "Round 1/2: 1 of 3 passed in 00:00:0",
        ", not passed: 201-hevc-FrtChg 102-h264-ResChg\n",
        "101-h264-FrtChg           PASS  passed 2 of 2\n",
        "201-hevc-FrtChg           FAIL  passed 0 of 2\n",
        "102-h264-ResChg           FAIL  passed 0 of 2, not run 2\n"})
    EXPECT_TRUE(Says(run, said)) << said;
  EXPECT_EQ(Get_Customized_TestCase_List(), "1, 3,2 13 0 x 1x -1");
}

TEST_F(CrossModuleAutoRun, OldDumpsDoNotPassWithoutAShell) {
  scripted::RefuseShells(EAGAIN);
  const auto run = Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_Customized, "1\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Says(run, "Cannot start a shell (Resource temporarily unavailable) for: rm -f "));
  EXPECT_TRUE(Says(run, "FAIL  passed 0 of 1, not run 1\n"));
}

TEST_F(CrossModuleAutoRun, PromptsForListAndRounds) {
  Set_Customized_TestCase_List("1");
  const struct {
    const char* typed;
    std::size_t played;
    int result;
  } kAnswers[] = {{"\n1\n", 1, 0},  {"\n0\n", 0, 1},  {"\n-1\n", 0, 1},
                  {"\n2x\n", 0, 1}, {"\n\n", 0, 1},   {"\n99999999999\n", 0, 1},
                  {"13\n", 0, 1},   {",, ,\n", 0, 1}, {"\n3\n", 3, 0}};
  for (const auto& answer : kAnswers) {
    const auto run = Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_Customized, answer.typed);
    EXPECT_EQ(run.result, answer.result) << answer.typed;
    EXPECT_EQ(Played(run).size(), answer.played) << answer.typed;
    EXPECT_EQ(Says(run, "First Round test"), answer.played > 0) << answer.typed;
    EXPECT_EQ(Get_Customized_TestCase_List(), "1") << "only a list with a valid case is stored";
  }
}

TEST_F(CrossModuleAutoRun, OtherRunsUseTheirOwnCases) {
  Write("cross_module_content_v1/[R501]AVsync_dp_AAC_200_48k_25fps.mp4", "");
  const auto sync = Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_AVsync, "");
  EXPECT_EQ(Played(sync), Lines{"[R501]AVsync_dp_AAC_200_48k_25fps.mp4"});
  EXPECT_FALSE(Says(sync, "CMplayback_Verify_All"));
  EXPECT_TRUE(Says(sync, "List the AV Sync Result:"));
  EXPECT_EQ(sync.result, 1) << "these dumps have no flash";

  const auto combo =
      Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_RdTestCombo_Tolva3DemoBaord, "");
  EXPECT_TRUE(Says(combo, "Round 1/1: 1 of 2 passed"));
  EXPECT_EQ(Get_Customized_TestCase_List(), "-") << "the operator's list is not changed";

  const auto all = Choose(CMplaybackTestCase::CMplaybackTest_AutoTest_All, "");
  EXPECT_TRUE(Says(all, "Round 1/1: 1 of 12 passed"));
  EXPECT_EQ(Played(all).size(), 3U);
  EXPECT_TRUE(Says(all, "List the AV Sync Result:"));
}

TEST_F(CrossModuleAutoRun, PassingAvSyncDoesNotHideAFailedStage) {
  Write("cross_module_content_v1/[R501]AVsync_dp_AAC_200_48k_25fps.mp4", "");
  PutDumps(501);
  Verdict verdict = Verdict::kNotRun;
  const auto run = [&] {
    return Play("", [&] { return verdict = RunAndVerify(FindTestCase(501), Checks::kAll), 0; });
  };
  run();
  EXPECT_EQ(verdict, Verdict::kPass);
  std::filesystem::remove(Home() + "golden_data/playback/dump-501-avSync-VDEC.txt");
  EXPECT_FALSE(Says(run(), "FAIL: "));
  EXPECT_EQ(verdict, Verdict::kFail);
}

TEST_F(CrossModuleAutoRun, SingleCaseIsPlayedAndVerifiedWithItsTimeStamp) {
  const auto run = Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase, "1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(Played(run), Lines{"[R101]h264-FrtChg.ts"});
  EXPECT_TRUE(Says(run, "\n100. Add a test case by user\n"));
  EXPECT_TRUE(Says(run, "or ... or [12] or [100]: "));
  EXPECT_FALSE(Says(run, "List the AV Sync Result:"));
  EXPECT_NE(Text("config/timeStamp.config"), "");

  const auto missing = Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase, "2\n");
  EXPECT_EQ(missing.result, 1);
  EXPECT_FALSE(Says(missing, "CMplayback_Verify_All"));

  Set_USB_HTTP_Mode(MODE_USB);
  EXPECT_EQ(Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase, "1\n").result, 1)
      << "without a stick no dump is verified";
  for (const char* wrong : {"0\n", "13\n", "\n", "-1\n"}) {
    const auto refused = Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase, wrong);
    EXPECT_EQ(refused.result, 1);
    EXPECT_TRUE(refused.commands.empty());
  }
}

TEST_F(CrossModuleAutoRun, UserCaseNamesMustBeOneShellWord) {
  const std::string file = "config/user_add_testcase.cfg";
  EXPECT_EQ(Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase,
                   "100\n[a]/b-c_1.ts\nuser-content\n2\n1\n")
                .result,
            0);
  EXPECT_EQ(Text(file), "user-content\n1\n[a]/b-c_1.ts\n");
  for (const std::string bad :
       {"a b", "a\tb", "a;reboot", "$(reboot)", "`reboot`", "a|b", "a&b", "a>b", "a<b", "a*", "a?",
        "it's", "\"a\"", "a\\b", "a\177", "", "(a)"}) {
    const auto run = Choose(CMplaybackTestCase::CMplaybackTest_StartTestCase,
                            "100\n" + bad + "\nfilm.ts\n" + bad + "\na/b\nfilm\n0\n");
    EXPECT_EQ(Text(file), "film\n0\nfilm.ts\n") << bad;
    EXPECT_EQ(run.commands, Lines{"ls -la " + Home() + "cross_module_content_v1/"})
        << "no typed text is executed";
    EXPECT_TRUE(Says(run, "Not a file name of one word without special characters: " + bad + "\n"));
    Write(file, "");
  }
}

}  // namespace
