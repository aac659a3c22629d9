// Unattended runs on the simulated board, with misbehaving drivers, and other programs that read
// the results.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TestCounts.h"
#include "UnattendedFixture.h"

namespace {

namespace fs = std::filesystem;
using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";

using test::Contains;
using test::UnattendedTest;

TEST_F(UnattendedTest, ResultsIncludeCodesIgnoredByRangeTests) {
  EXPECT_EQ(Run({"--run", "UTVpqModule", "--json", "/tmp/o.json"},
                "fail K2V_RHAL_VPQ_SetNR -7 --times 1\n"),
            0)
      << Screen();
  EXPECT_EQ(Query(".[] | select(.event == \"test-end\" and .message != \"\") | "
                  ".test + \" \" + .verdict + \" \" + .message",
                  "/tmp/o.json"),
            "UTVpqModule/19 PASS min value 0 answered -7, which this test does not judge");
  EXPECT_TRUE(Contains(Screen(), " s): min value 0 answered -7, which")) << Screen();
}

TEST_F(UnattendedTest, MisbehavingDriversFailOnlyTheTestThatCallsThem) {
  const int status =
      Run({"--run", "UTVpqModule", "--idle-timeout", "3", "--timeout", "5", "--junit", "/tmp/o.xml",
           "--tap", "/tmp/o.tap", "--json", "/tmp/o.json", "--lava", "/tmp/o.lava", "--results",
           "/tmp/res", "--trace", "/sim/trace"},
          "plug 0 3840x2160p60 hdr\n"
          "misbehave K2V_RHAL_VPQ_SetNR segv\n"
          "misbehave K2V_RHAL_VPQ_SetGammaLUT abort\n"
          "misbehave K2V_RHAL_VPQ_SetGamut exit\n"
          "misbehave K2V_RHAL_VPQ_SetColorGain flood\n"
          "misbehave K2V_RHAL_VPQ_SetColorGamut noise\n"
          "misbehave K2V_RHAL_VPQ_SetColorFilter kill-group\n"
          "misbehave K2V_RHAL_VPQ_SetSplitDemo leave-child\n"
          "misbehave K2V_RHAL_VPQ_SetAplMode hang\n");
  EXPECT_EQ(status, 1) << Screen();
  const std::string all = std::to_string(test::kUtVpqTests);
  const std::string passed = std::to_string(test::kUtVpqTests - 6);
  EXPECT_EQ(Totals(), all + '/' + passed + "/6");
  EXPECT_TRUE(Contains(Screen(), all + " listed = " + all + " run + 0 skipped + 0 blocked; " +
                                     passed + " passed, 0 failed, 6 errors"));
  EXPECT_EQ(Query(".[] | select(.event == \"test-end\" and .message != \"\") | "
                  ".test + \" \" + .verdict + \" \" + .message",
                  "/tmp/o.json"),
            "UTVpqModule/19 ERROR killed by signal 11 SIGSEGV\n"
            "UTVpqModule/201 ERROR killed by signal 6 SIGABRT\n"
            "UTVpqModule/204 ERROR exited with status 3 during the test\n"
            "UTVpqModule/206 ERROR timeout: still running after 5 s\n"
            "UTVpqModule/207 ERROR the test killed its supervisor process, signal 9 SIGKILL\n"
            "UTVpqModule/210 PASS left 1 process(es) running, ended\n"
            "UTVpqModule/212 ERROR timeout: no output for 3 s");

  Judge("xmllint --noout", "/tmp/o.xml");
  EXPECT_EQ(Judge("xmllint --xpath 'concat(count(//testcase), \" \", count(//error), \" \", "
                  "/testsuites/@tests, \" \", /testsuites/@errors)'",
                  "/tmp/o.xml"),
            all + " 6 " + all + " 6\n");
  // prove accepts versions up to 13, which covers everything used here.
  const auto proved =
      test::RunShell("prove -e 'sed 1s/14/13/' " + test::Quoted(OnBoard("/tmp/o.tap")));
  EXPECT_TRUE(Contains(proved.output, "Failed 6/" + all + " subtests")) << proved.output;
  EXPECT_FALSE(Contains(proved.output, "Parse errors")) << proved.output;
  const std::string signals = test::FileText(OnBoard("/tmp/o.lava"));
  EXPECT_EQ(std::count(signals.begin(), signals.end(), '\n'), test::kUtVpqTests);
  EXPECT_TRUE(
      Contains(signals, "<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=UTVpqModule.19 RESULT=fail>\n"));

  // The size of the flood is limited; each test has its own trace.
  EXPECT_LT(fs::file_size(OnBoard("/tmp/res/logs/0207-UTVpqModule.206.log")), 9U << 20);
  const std::string trace = test::FileText(OnBoard("/tmp/res/logs/0002-UTVpqModule.1.trace"));
  EXPECT_FALSE(trace.empty());
  EXPECT_FALSE(Contains(trace, "SetNR"));
}

TEST_F(UnattendedTest, LeftoverProcessesDoNotOutliveTheirTest) {
  EXPECT_EQ(Run({"--run", "UTVpqModule/210", "--repeat", "2"},
                "misbehave K2V_RHAL_VPQ_SetSplitDemo leave-child\n"),
            0);
  // The board's launcher ends only after every process of the board has ended.
  EXPECT_TRUE(Contains(Screen(), "PASS    UTVpqModule/210@2")) << Screen();
}

TEST_F(UnattendedTest, PromptingModulesRunWithAnAnswerFile) {
  Put("/tmp/answers",
      "UTVfeHdmiModule\twhich port*\t0\nCRlinkModule/26\t*input:*\t5\n*\t*PASS or FAIL*\ty\n");
  Pty& pty = Start({.arguments = {"--run", "UTVpqModule", "UTVfeHdmiModule", "CRlinkModule",
                                  "VscModule/31", "--exclude", "UTVfeHdmiModule/10", "--answers",
                                  "/tmp/answers", "--junit", "/tmp/out.xml"},
                    .timeScale = 50});
  ASSERT_TRUE(
      pty.ExpectRegex("(\\d+) listed = (\\d+) run \\+ (\\d+) skipped \\+ 0 blocked; (\\d+) "
                      "passed, 0 failed, 0 errors",
                      test::kRunLimitMs));
  EXPECT_EQ(pty.Groups()[2], pty.Groups()[4]);
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), pty.Groups()[2] + "/" + pty.Groups()[2] + "/0");
}

TEST_F(UnattendedTest, TestsThatNeedAnOperatorAreSkippedOrBlocked) {
  EXPECT_EQ(Run({"--run", "VscModule/31", "VpqModule/5", "--no-operator"}), 77);
  EXPECT_EQ(Run({"--run", "VpqModule/5", "UTVpqModule/1", "--idle-timeout", "2"}), 1);
  EXPECT_TRUE(Contains(Screen(), "BLOCKED VpqModule/5")) << Screen();
  EXPECT_TRUE(Contains(Screen(), "2 listed = 1 run + 0 skipped + 1 blocked; 1 passed")) << Screen();
}

TEST_F(UnattendedTest, NoOperatorSkipsPromptingCrossModuleTestsOnANewBoard) {
  // Preparing the board would reboot it.
  Run({"--run", "CMplaybackModule", "CMAutoTest", "--exclude", "CM*/0", "--no-operator",
       "--idle-timeout", "5"});
  EXPECT_TRUE(Contains(Screen(), "skipped + 0 blocked")) << Screen();
}

TEST_F(UnattendedTest, UntilFailAndStopOnFailEndTheRunAtTheFirstFailure) {
  const std::string failure = "misbehave K2V_RHAL_VPQ_SetGammaLUT abort --at 12\n";
  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--until-fail"}, failure), 1);
  const bool inLaterRound = Contains(Screen(), "ERROR   UTVpqModule/201@");
  EXPECT_TRUE(inLaterRound) << Screen();
  EXPECT_TRUE(Contains(Screen(), ": stopped after UTVpqModule/201@")) << Screen();
  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--stop-on-fail"},
                "misbehave K2V_RHAL_VPQ_SetGammaLUT abort\n"),
            1);
  EXPECT_TRUE(Contains(Screen(),
                       "10 listed = 2 run + 8 skipped + 0 blocked; 1 passed, 0 failed, 1 "
                       "errors"))
      << Screen();
}

TEST_F(UnattendedTest, InterruptedRunIsClosedProperlyAndCanBeResumed) {
  Pty& pty = Start({.arguments = {"--run", "UTVpqModule/20?", "--results", "/tmp/res", "--tap",
                                  "/tmp/o.tap", "--lava", "/tmp/o.lava"},
                    .scenario = "misbehave K2V_RHAL_VPQ_SetGamut hang\n"});
  ASSERT_TRUE(pty.Expect("UTVpqModule/204"));
  pty.Send("\x03");
  EXPECT_EQ(pty.Wait(), 99);
  EXPECT_TRUE(Contains(test::FileText(OnBoard("/tmp/o.tap")), "# SKIP the run was interrupted"));
  EXPECT_FALSE(Contains(test::FileText(OnBoard("/tmp/o.lava")), "UTVpqModule.204"));
  EXPECT_EQ(Run({"--resume", "/tmp/res"}), 1);
  EXPECT_TRUE(Contains(test::FileText(OnBoard("/tmp/o.lava")), "UTVpqModule.204 RESULT=fail"));
  EXPECT_TRUE(Contains(Screen(),
                       "10 listed = 10 run + 0 skipped + 0 blocked; 9 passed, 0 failed, 1 "
                       "errors"))
      << Screen();
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--results", "/tmp/res"}), 99) << Screen();
}

TEST_F(UnattendedTest, UnhealthyBoardEndsTheRunAndTheSuspectIsRetried) {
  const std::string well = R"(echo looked after ${CVN_TEST:-nothing}; test "$CVN_TEST" != )";
  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--health", well + "UTVpqModule/204", "--results",
                 "/tmp/res", "--json", "/tmp/o.json", "--junit", "/tmp/o.xml"},
                "misbehave K2V_RHAL_VPQ_SetGammaLUT abort\n"
                "misbehave K2V_RHAL_VPQ_SetGamut abort\n"),
            99);
  const std::string reason =
      "board unhealthy after UTVpqModule/204: looked after UTVpqModule/204 (exit status 1)";
  EXPECT_TRUE(Contains(Screen(), reason)) << Screen();
  EXPECT_TRUE(Contains(Screen(),
                       "10 listed = 5 run + 5 skipped + 0 blocked; 3 passed, 0 failed, "
                       "2 errors"))
      << Screen();
  EXPECT_EQ(Query(".[] | select(.event == \"test-end\" and .suspect) | .test", "/tmp/o.json"),
            "UTVpqModule/204");
  EXPECT_EQ(
      Judge("xmllint --xpath 'string(//property[@name=\"suspect\"]/../../@name)'", "/tmp/o.xml")
          .substr(0, 15),
      "UTVpqModule/204");

  EXPECT_EQ(Run({"--retry-from", "/tmp/res", "--results", "/tmp/again", "--color", "never"}), 0);
  EXPECT_TRUE(Contains(Screen(), "1 listed = 1 run")) << Screen();
  EXPECT_TRUE(Contains(Screen(), "UTVpqModule/204")) << Screen();
  EXPECT_EQ(Run({"--retry-from", "/tmp/again", "--color", "never"}), 77) << "no test was suspect";
  EXPECT_EQ(Run({"--retry-from", "/tmp", "--color", "never"}), 2) << Screen();

  // The board is healthy again, and the run continues where it ended.
  EXPECT_EQ(Run({"--resume", "/tmp/res"}), 1);
  EXPECT_TRUE(Contains(Screen(),
                       "10 listed = 10 run + 0 skipped + 0 blocked; 8 passed, 0 failed, "
                       "2 errors"))
      << Screen();
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--health", "sleep 9", "--health-timeout", "0.2"}), 99);
  EXPECT_TRUE(Contains(Screen(), "board unhealthy before the first test: no answer in 0.2 s"))
      << Screen();
}

TEST_F(UnattendedTest, ShardsAreListedRunAndResumedConsistently) {
  std::string tests;
  for (const char* shard : {"1/2", "2/2"}) {
    EXPECT_EQ(
        Run({"--list", "UTVpqModule/20?", "CRlinkModule/0", "--shard", shard, "--format", "tsv"}),
        0);
    std::istringstream lines(Screen());
    for (std::string line; std::getline(lines, line);) {
      if (Contains(line, "Module/")) tests += line.substr(0, line.find('\t')) + '\n';
    }
  }
  EXPECT_EQ(std::count(tests.begin(), tests.end(), '\n'), 11) << tests;
  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--shard", "2/2", "--results", "/tmp/res"}), 0);
  EXPECT_TRUE(Contains(Screen(), "5 listed = 5 run")) << Screen();
  EXPECT_EQ(Run({"--resume", "/tmp/res"}), 0);
  EXPECT_TRUE(Contains(test::FileText(OnBoard("/tmp/res/results.jsonl")), R"("shard": "2/2")"));
  EXPECT_EQ(Run({"--run", "UTVpqModule/20?", "--shard", "1/2", "--shard-times", "/tmp/res"}), 0);
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--shard", "2/2"}), 77) << "an empty shard";
}

TEST_F(UnattendedTest, RecordedAnswersReplayTheSession) {
  Pty& pty = Start({.arguments = {"--record", "/tmp/answers"}});
  ASSERT_TRUE(Type(pty, {{kChoice, "3"},
                         {kChoice, "2"},
                         {kChoice, "37"},
                         {"1(Enable)=", "x"},
                         {"Unknown Input > x", "1"},
                         {"PASS or FAIL", "y"},
                         {kChoice, "p"},
                         {kChoice, "5"},
                         {kChoice, "2"}}));
  for (const char* key : {"0", ">", "q"}) {
    ASSERT_TRUE(pty.Expect("Random Value\n"));
    ASSERT_TRUE(pty.WaitReading());
    pty.Send(key);
  }
  ASSERT_TRUE(Type(pty, {{kChoice, "q"}}));
  ASSERT_EQ(pty.Wait(), 0);
  const auto recorded = Trace();
  ASSERT_GT(recorded.size(), 3U);

  EXPECT_EQ(Run({"--run", "VscModule/37", "VpqExtModule/2", "--answers", "/tmp/answers"}), 0)
      << Screen() << test::FileText(OnBoard("/tmp/answers"));
  EXPECT_EQ(Trace(), recorded);
}

TEST_F(UnattendedTest, ListsAndCompletionAreValidForOtherPrograms) {
  ASSERT_EQ(Run({"--list", "--format", "json"}), 0);
  Put("/tmp/list.json", Screen());
  EXPECT_EQ(Judge("jq -r '.[] | select(.test == \"VscModule/31\") | \"\\(.menu) \\(.position) "
                  "\\(.id) \\(.judge) \\(.prompts)\"'",
                  "/tmp/list.json"),
            "Vido Manual Test > Vsc Function Test 3 2 31 31 operator false\n");
  ASSERT_EQ(Run({"--document", "bash"}), 0);
  Put("/tmp/completion", Screen());
  Judge("bash -n", "/tmp/completion");
}

TEST_F(UnattendedTest, UsageErrorsAndMissingDirectoriesHaveDistinctStatuses) {
  EXPECT_EQ(Run({"--run", "Nix"}), 2);
  EXPECT_TRUE(Contains(Screen(), "cvntester: 'Nix' matches no test")) << Screen();
  Put("/tmp/answers", "one field\n");
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--answers", "/tmp/answers"}), 2);
  EXPECT_EQ(Run({"--run", "UTVpqModule/1", "--junit", "/nowhere/x"}), 99);
  EXPECT_EQ(Run({"--resume", "/nowhere"}), 99);
  fs::remove_all(OnBoard("/tmp/var/log"));
  EXPECT_EQ(Run({"--run", "UTVpqModule/1"}), 99);
  EXPECT_TRUE(Contains(Screen(), "cannot write the report")) << Screen();
}

TEST_F(UnattendedTest, DumpsAreVerifiedWithoutABoardAsFilesOrArchives) {
  const fs::path home = Board() / "home";
  const auto verify = [&](const std::string& dump) {
    return test::RunShell(
        CVN_HARNESS " --verify 101 --dump " + test::Quoted(home / dump) + " --golden " +
        test::Quoted(home / "golden_data/playback") + " --tap " + test::Quoted(home / "o.tap") +
        " --json " + test::Quoted(home / "o.json") + " --events " + test::Quoted(home / "events") +
        " --strip " + test::Quoted(home / "strip.svg"));
  };
  const std::string make = CVN_DUMP_GENERATOR " --case 101 --home " + test::Quoted(home) +
                           " --dump-dir " + test::Quoted(home / "drivers");
  ASSERT_EQ(test::RunShell(make).status, 0);
  const auto passed = verify("dump_tmp");
  EXPECT_EQ(passed.status, 0);
  EXPECT_FALSE(Contains(passed.output, "Causes"));
  EXPECT_EQ(test::FileText(home / "events"), "");
  ASSERT_EQ(test::RunShell(make + " --carry-on --defect VDEC:drop:300 --defect VO:change:310:width")
                .status,
            0);
  EXPECT_EQ(verify("dump_tmp").status, 1);
  const std::string event =
      R"({"event":"frame-event","case":"101-h264-FrtChg","stage":"VDEC","kind":"dropped",)"
      R"("first":300,"last_possible":300,"count":1,"pts":450000,"time":"kept","cause":null,"id":)";
  EXPECT_TRUE(Contains(test::FileText(home / "events"), event));
  const auto query = [&](const std::string& expression, const char* file) {
    return test::RunShell("jq -rsc " + test::Quoted(expression) + " " + test::Quoted(home / file))
        .output;
  };
  EXPECT_EQ(query("[.[]|select(.cause==null)|.stage+\" \"+.kind]", "events"),
            "[\"VDEC dropped\",\"VO changed\"]\n");
  EXPECT_EQ(query("([.[].id]|unique|length)==length", "events"), "true\n");
  EXPECT_EQ(query("[.[]|select(.event==\"frame-event\")]|length", "o.json"),
            query("length", "events"));
  EXPECT_EQ(query("[.[]|select(.event==\"stage-pacing\").stage]|length", "o.json"), "6\n");
  EXPECT_EQ(test::RunShell("xmllint --noout " + test::Quoted(home / "strip.svg")).output, "");
  ASSERT_EQ(test::RunShell(make + " --defect VDEC:change:300:crc").status, 0);
  ASSERT_EQ(
      test::RunShell("cd " + test::Quoted(home / "dump_tmp") + " && tar -czf ../a.tar.gz .").status,
      0);
  const auto packed = verify("a.tar.gz");
  EXPECT_EQ(packed.status, 1) << packed.output;
  EXPECT_TRUE(Contains(packed.output, "First bad stage: [VDEC]   frame 300, crc")) << packed.output;
  EXPECT_TRUE(Contains(test::FileText(home / "o.tap"), "not ok 3 - verify/101.VDEC"));
  ASSERT_EQ(test::RunShell(make).status, 0);
  fs::remove(home / "dump_tmp/dump-101-h264-FrtChg-VO.txt");
  const auto missing = verify("dump_tmp");
  EXPECT_EQ(missing.status, 1) << missing.output;
  EXPECT_TRUE(Contains(missing.output, "no dump dump-101-h264-FrtChg-VO.txt")) << missing.output;
  EXPECT_EQ(verify("missing").status, 2);
  const auto twice =
      test::RunShell(CVN_HARNESS " --verify 101 --dump . --golden . --tap a --events a");
  EXPECT_EQ(twice.output, "cvntester: --events and --tap are the same file: a\n");
}

}  // namespace
