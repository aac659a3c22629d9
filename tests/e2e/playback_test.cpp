// Playback tests on the simulated board, from the menu to the report that arrives on the USB stick
// and the TFTP server.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "BoardFixture.h"
#include "Overview.h"

namespace {

namespace fs = std::filesystem;
using test::Pty;
using test::StagesNotPassed;
using Strings = std::vector<std::string>;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kHome[] = "/data/cross_module/";
constexpr int kRunLimitMs = 60000;
constexpr int kAllLimitMs = 180000;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// The causes at the end of a report, without the pacing of stages; empty if there are none.
std::string Causes(const std::string& report) {
  std::string causes;
  const auto begin = report.find("\nCauses\n");
  std::istringstream lines(begin == std::string::npos ? "" : report.substr(begin + 8));
  for (std::string line; std::getline(lines, line);) {
    if (!Contains(line, "pacing: ")) causes += line + "\n";
  }
  return causes;
}

class PlaybackTest : public test::BoardFixture {
 protected:
  /// Switches the board on and opens the playback module's menu.
  Pty& OpenMenu(const test::BoardOptions& options = {.timeScale = 50}) {
    Pty& pty = Start(options);
    for (const char* choice : {"5", "0", "0"}) EXPECT_TRUE(pty.Answer(kChoice, choice));
    return pty;
  }

  /// Initialises the environment from the menu; there is no TFTP server until one is set.
  void Initialise(const test::BoardOptions& options = {}, const std::string& home = kHome) {
    Pty& pty = OpenMenu(options);
    EXPECT_TRUE(pty.Answer(kChoice, "0"));
    EXPECT_EQ(pty.Wait(), 128 + SIGKILL) << pty.Transcript();
    std::ofstream(OnBoard(home + "config/tftp_ip.cfg")) << "-\n";
  }

  /// Runs the test case at a position in the list and returns its report.
  std::string RunCase(Pty& pty, const std::string& position) const {
    EXPECT_TRUE(pty.Answer(kChoice, "8"));
    EXPECT_TRUE(pty.Answer("or [100]: ", position));
    EXPECT_TRUE(pty.Expect("DONE. report:", kRunLimitMs));
    EXPECT_TRUE(pty.ExpectRegex("(\\S+)\n"));
    return test::FileText(OnBoard(pty.Groups()[1]));
  }

  /// Injects exactly these defects into the following playback runs.
  void SetDefect(const std::string& defect) const {
    EXPECT_EQ(Cvnsim("defect none"), "");
    EXPECT_EQ(Cvnsim("defect " + defect), "");
  }

  void SetTftpServer(const std::string& address) const {
    std::ofstream(OnBoard(kHome + std::string("config/tftp_ip.cfg"))) << address << '\n';
  }

  /// Names of the reports in `directory`, such as that of the USB stick, below the board's
  /// directory.
  Strings Arrived(const std::string& directory) const {
    Strings names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(Board() / directory, ignored))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
};

constexpr char kStickReports[] = "usb/stick/cross_module_report";

TEST_F(PlaybackTest, NewBoardPlaysAndDeliversItsReport) {
  Pty& bare = OpenMenu();
  EXPECT_TRUE(bare.Answer(kChoice, "8"));
  EXPECT_TRUE(bare.Answer("or [100]: ", "1"));
  EXPECT_TRUE(bare.Answer("clean setting)", "tftp.local"));
  EXPECT_TRUE(bare.Expect("Erro!! Playback Test Environment has not been setuped."));
  EXPECT_FALSE(fs::exists(OnBoard(kHome)));
  EXPECT_EQ(test::FileText(OnBoard("/dev/cvnvdec")), "")
      << "rejected before any driver is accessed";

  Initialise();
  EXPECT_TRUE(fs::exists(OnBoard(kHome + std::string("golden_data/playback/free_run_golden/"
                                                     "dump-604-sdr-hlg-Audio.txt"))));
  const bool hasNetwork = Sandbox() == "bwrap";
  if (hasNetwork) SetTftpServer("tftp.local");
  Pty& pty = OpenMenu();
  EXPECT_TRUE(pty.Answer(kChoice, "21"));
  EXPECT_TRUE(pty.Answer("Send Pass Report: ", "1"));
  const std::string report = RunCase(pty, "1");
  const std::string name = fs::path(pty.Groups()[1]).filename();
  EXPECT_EQ(StagesNotPassed(report), Strings());
  EXPECT_TRUE(pty.Answer(kChoice, "q"));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Arrived(kStickReports), Strings{name});
  EXPECT_EQ(test::FileText(Board() / kStickReports / name), report);
  EXPECT_EQ(test::FileText(OnBoard("/dev/cvnvdec")), "testmode=0\n");
  if (!hasNetwork) return;
  EXPECT_EQ(Arrived("tftp"), Strings{name});
  EXPECT_EQ(test::FileText(Board() / "tftp" / name), report);
}

TEST_F(PlaybackTest, EachDefectFailsItsStageAndTheDownstreamOnes) {
  const struct {
    const char* defect;
    const char* stage;
    Strings firstError;  // frame and field, as the stage's row shows them
    Strings stages;      // all that fail, by name
    const char* named;   // expected first bad stage; empty for none
    const char* cause;   // the only cause; empty if nothing fails
  } kCases[] = {
      {"vdec corrupt 300",
       "[VDEC]",
       {"300", "crc"},
       {"[Scaler]", "[VDEC]", "[VO]"},
       "[VDEC]   frame 300, crc = ",
       "VDEC    frame 300 (6.021 s): 1 picture damaged; seen in VO, Scaler\n"},
      {"omxin drop 200",
       "[OMXIN]",
       {"200", "frame_no"},
       {"[DVO]", "[OMXIN]", "[OMXOUT]", "[Scaler]", "[VDEC]", "[VO]"},
       "[OMXIN] frame 200",
       "OMXIN   frame 200 (3.355 s): 1 packet dropped, time kept; seen in VDEC, OMXOUT, DVO, VO, "
       "Scaler\n"},
      {"omxout reorder 250",
       "[OMXOUT]",
       {"250", "frame_no"},
       {"[DVO]", "[OMXOUT]", "[Scaler]", "[VO]"},
       "[OMXOUT] frame 250",
       "OMXOUT  frame 250 (4.355 s): in another order up to frame 251; seen in DVO, VO, Scaler\n"},
      {"dvo repeat 200",
       "[DVO]",
       {"201", "frame_no"},
       {"[DVO]", "[Scaler]", "[VO]"},
       "[DVO]    frame 201",
       "DVO     frame 200 (3.355 s): 1 picture repeated, time kept; seen in VO, Scaler\n"},
      {"vo drop 300 2",
       "[VO]",
       {"300", "frame_no"},
       {"[Scaler]", "[VO]"},
       "[VO]     frame 300",
       "VO      frame 300 (6.021 s): 2 pictures dropped, time kept; seen in Scaler\n"},
      {"scaler corrupt 400 5",
       "[Scaler]",
       {"400", "crc_vgip"},
       {"[Scaler]"},
       "[Scaler] frame 400",
       "Scaler  frame 400 (9.061 s): 5 pictures damaged\n"},
      {"audio corrupt 200",
       "[Audio]",
       {"200", "pcm_data_crc"},
       {"[Audio]"},
       "[Audio]  frame 200",
       "Audio   frame 200 (4.267 s): 1 block damaged\n"},
      {"vo corrupt 300",
       "[VO]",
       {"300", "crc_vo"},
       {"[Scaler]", "[VO]"},
       "[OMXOUT], [DVO] or [VO] frame 300",
       "VO      frame 300 (6.021 s): 1 picture damaged; seen in Scaler\n"},
      {"audio repeat 200",
       "[Audio]",
       {"-", "-"},
       {"[Audio]"},
       "[Audio]  compared ",
       "Audio   frame 200 (4.267 s): 1 block repeated, time kept\n"},
      {"audio drop 200",
       "[Audio]",
       {"-", "-"},
       {"[Audio]"},
       "[Audio]  468 of 469 frames",
       "Audio   frame 200 (4.267 s): 1 block dropped, time kept\n"},
      {"omxin change 200 input_flags",
       "[OMXIN]",
       {"200", "input_flags"},
       {"[OMXIN]"},
       "[OMXIN] frame 200",
       "OMXIN   frame 200 (3.355 s): 1 packet changed in input_flags (17/16)\n"},
      {"dvo change 200 frame_rate=1",
       "[DVO]",
       {"200", "frame_rate"},
       {"[DVO]"},
       "[DVO]    frame 200",
       "DVO     frame 200 (3.355 s): 1 picture changed in frame_rate (1/60000)\n"},
      {"vo change 200 width=1",
       "[VO]",
       {"200", "width"},
       {"[VO]"},
       "[VO]     frame 200",
       "VO      frame 200 (3.355 s): 1 picture changed in width (1/640)\n"},
      {"vdec truncate 300",
       "[VDEC]",
       {"300", "hdrInfo"},
       {"[VDEC]"},
       "[VDEC]   frame 300",
       "VDEC    frame 299 (5.988 s): the dump ends, 148 pictures missing\n"},
      {"omxout truncate 300",
       "[OMXOUT]",
       {"300", "hdrInfo"},
       {"[OMXOUT]"},
       "[OMXOUT] frame 300",
       "OMXOUT  frame 299 (5.988 s): the dump ends, 148 pictures missing\n"},
      {"scaler nothing", "[Scaler]", {"-", "-"}, {"[Scaler]"}, "[Scaler] not verified", ""},
      {"vdec late 0 50", "[VDEC]", {"-", "-"}, {}, "", ""},  // no clock is compared
  };
  Initialise();
  Pty& pty = OpenMenu();
  for (const auto& expected : kCases) {
    SetDefect(expected.defect);
    const std::string report = RunCase(pty, "1");
    EXPECT_EQ(StagesNotPassed(report), expected.stages) << expected.defect;
    const std::string named = " First bad stage: ";
    EXPECT_TRUE(Contains(report, named) ? Contains(report, named + expected.named)
                                        : *expected.named == '\0')
        << expected.defect << report;
    EXPECT_EQ(Causes(report), expected.cause) << expected.defect;
    const Strings row = test::Overview(report)[expected.stage];
    ASSERT_GE(row.size(), 5U) << report;
    EXPECT_EQ(Strings(row.begin() + 3, row.begin() + 5), expected.firstError) << expected.defect;
  }
  SetDefect("vdec corrupt 200");
  EXPECT_EQ(Cvnsim("defect vo drop 260"), "");
  EXPECT_EQ(Causes(RunCase(pty, "1")),
            "VDEC    frame 200 (3.355 s): 1 picture damaged; seen in VO, Scaler\n"
            "VO      frame 260 (4.688 s): 1 picture dropped, time kept; seen in Scaler\n");
  EXPECT_EQ(Cvnsim("defect none"), "");
  EXPECT_EQ(StagesNotPassed(RunCase(pty, "1")), Strings()) << "no effect of the defects remains";
}

TEST_F(PlaybackTest, UnattendedRunReportsEveryEventWithPictures) {
  Initialise();
  std::ofstream(OnBoard("/tmp/answers")) << "CMplaybackModule/8\t*[[]100]*\t1\n";
  Pty& pty = Start({.arguments = {"--run", "CMplaybackModule/8", "--repeat", "2", "--answers",
                                  "/tmp/answers", "--json", "/tmp/o.json", "--results", "/tmp/r"},
                    .scenario = "defect vdec drop 300\n",
                    .timeScale = 50});
  ASSERT_TRUE(pty.ExpectEnd(kRunLimitMs));
  const auto query = [&](const std::string& expression) {
    return test::RunShell("jq -rsc '[.[]|select(.event==\"frame-event\")]|" + expression + "' " +
                          test::Quoted(OnBoard("/tmp/o.json")))
        .output;
  };
  EXPECT_EQ(query("length"), "10\n") << pty.Transcript();
  EXPECT_EQ(query("[.[].id]|unique|length"), "10\n");
  EXPECT_EQ(query("[.[]|select(.cause==null)|.stage+.case]"),
            "[\"VDEC101-h264-FrtChg\",\"VDEC101-h264-FrtChg\"]\n");
  const std::string evidence = "/tmp/r/logs/0002-CMplaybackModule.8@2.evidence/";
  const std::string cause = "VDEC    frame 300 (6.021 s): 1 picture dropped, time kept; seen in";
  EXPECT_TRUE(test::FileText(OnBoard(evidence + "report.txt")).find(cause) != std::string::npos);
  const auto strip =
      test::RunShell("xmllint --noout " + test::Quoted(OnBoard(evidence + "strip.svg")) +
                     " && grep -c '>6 s<' " + test::Quoted(OnBoard(evidence + "strip.svg")));
  EXPECT_EQ(strip.output, "1\n");
}

TEST_F(PlaybackTest, SoundMayBeOutOfSyncWithinTheTolerance) {
  const struct {
    const char* defect;
    const char* verdict;
    const char* named;  // expected first bad stage
  } kCases[] = {
      {"none", " 0ms ", ""},
      {"audio late 0 20", "+20ms ", ""},
      {"audio late 0 21", "FAIL(+1ms)", "[OMXIN] or [Audio], the sound 21 ms late"},
      {"audio early 0 30", " -30ms ", ""},
      {"audio early 0 31", "FAIL: (-1ms)", "[OMXIN] or [Audio], the sound 31 ms early"},
      {"vdec late 0 50", "FAIL: (-20ms)", "[VDEC] 50 ms late"},
      {"vo late 0 50", "FAIL: (-20ms)", "[VO] 50 ms late"},
  };
  Initialise();
  Pty& pty = OpenMenu();
  EXPECT_EQ(Cvnsim("counter 900000 0"), "") << "a drift can turn a tick into a millisecond";
  for (const auto& expected : kCases) {
    SetDefect(expected.defect);
    const std::string report = RunCase(pty, "8");
    EXPECT_EQ(StagesNotPassed(report), Strings()) << "checksums do not show it";
    const std::string name = fs::path(pty.Groups()[1]).filename();
    EXPECT_TRUE(pty.Expect(" *AV sync tolerance:"));
    const bool fails = Contains(expected.verdict, "FAIL");
    EXPECT_TRUE(Contains(pty.Before(), expected.verdict)) << expected.defect << pty.Before();
    EXPECT_EQ(Contains(pty.Before(), "FAIL"), fails) << pty.Before();
    EXPECT_EQ(Contains(pty.Before(), "PASS"), !fails) << "all flashes are alike";
    EXPECT_TRUE(Contains(pty.Before(), "| frame     237")) << pty.Before();
    EXPECT_TRUE(Contains(report, "| frame     237")) << "the stored report contains it too";
    EXPECT_EQ(Contains(report, "FAIL: 7 of 7 flashes outside the tolerance\n First bad stage: " +
                                   std::string(expected.named) + "\n"),
              fails)
        << report;
    EXPECT_EQ(fs::exists(Board() / kStickReports / name), fails) << "failing reports are sent";
  }
}

TEST_F(PlaybackTest, WithoutStickOrContentNothingIsPlayed) {
  Initialise();
  fs::remove(Board() / "usb/stick/cross_module_content_v1/[R102]h264-ResChg.ts");
  Pty& pty = OpenMenu({.timeScale = 5});
  EXPECT_TRUE(pty.Answer(kChoice, "8"));
  EXPECT_TRUE(pty.Answer("or [100]: ", "2"));
  EXPECT_TRUE(pty.Expect(
      "ERROR: content not exist: /tmp/usb/cross_module_content_v1/[R102]h264-ResChg.ts"));
  EXPECT_TRUE(pty.Expect(kChoice));
  EXPECT_EQ(Cvnsim("stick out"), "");
  std::ofstream(OnBoard("/dev/cvnvdec")) << "untouched\n";
  pty.SendLine("8");
  EXPECT_TRUE(pty.Answer("or [100]: ", "1"));
  EXPECT_TRUE(pty.Expect("error! Can not found usb on this device"));
  EXPECT_TRUE(pty.Expect("STOP test"));
  EXPECT_TRUE(pty.Expect(kChoice));
  EXPECT_FALSE(Contains(pty.Before(), "Excute command"));
  EXPECT_EQ(test::FileText(OnBoard("/dev/cvnvdec")), "untouched\n");
  if (Sandbox() != "bwrap") return;
  EXPECT_EQ(Cvnsim("after 3 s stick in"), "");
  pty.SendLine("8");
  EXPECT_TRUE(pty.Answer("or [100]: ", "1"));
  EXPECT_TRUE(pty.Expect("waiting for /dev/block/sda"));
  EXPECT_TRUE(pty.Expect("Played ")) << "a stick inserted while the board waits is used";
}

TEST_F(PlaybackTest, ContentIsDownloadedWhileTheNetworkIsUp) {
  if (Sandbox() != "bwrap") GTEST_SKIP() << "a separate network needs namespaces";
  Initialise();
  Pty& pty = OpenMenu();
  EXPECT_TRUE(pty.Answer(kChoice, "18"));
  EXPECT_TRUE(pty.Answer("(3)HTTP in HQ: ", "3"));
  fs::remove_all(Board() / "usb/stick/cross_module_content_v1");
  EXPECT_EQ(StagesNotPassed(RunCase(pty, "3")), Strings()) << pty.Transcript();
  EXPECT_TRUE(Contains(pty.Transcript(),
                       "-pu http://content.local/cross_module_content_v1/[R201]hevc-FrtChg.mp4"));
  EXPECT_EQ(Cvnsim("network down"), "");
  EXPECT_EQ(StagesNotPassed(RunCase(pty, "3")).size(), 7U);
  EXPECT_TRUE(Contains(pty.Transcript(), "Network is unreachable"));
}

TEST_F(PlaybackTest, ReportReachesTheStickWhenTheServerIsDown) {
  if (Sandbox() != "bwrap") GTEST_SKIP() << "a separate network needs namespaces";
  Initialise();
  SetTftpServer("tftp.local");
  Pty& pty = OpenMenu({.scenario = "tftp down\ndefect vo corrupt 200\n", .timeScale = 50});
  RunCase(pty, "1");
  const std::string name = fs::path(pty.Groups()[1]).filename();
  EXPECT_TRUE(pty.Expect("tftp: timeout", kRunLimitMs));
  EXPECT_TRUE(pty.Expect(kChoice));
  EXPECT_EQ(Arrived(kStickReports), Strings{name});
  EXPECT_EQ(Arrived("tftp"), Strings());
}

TEST_F(PlaybackTest, FullDiskTruncatesEveryDump) {
  Initialise();
  Pty& pty = OpenMenu({.scenario = "disk full\n", .timeScale = 50});
  EXPECT_EQ(StagesNotPassed(RunCase(pty, "1")).size(), 7U);
  EXPECT_TRUE(Contains(pty.Transcript(), "No space left on device"));
}

TEST_F(PlaybackTest, PackageContainsTheLogsOfTheBoard) {
  Initialise();
  Pty& pty = OpenMenu();
  RunCase(pty, "1");
  EXPECT_TRUE(pty.Answer(kChoice, "22"));
  EXPECT_TRUE(pty.Expect("Test Report file generated"));
  std::string archive;
  for (const auto& entry : fs::directory_iterator(OnBoard(kHome + std::string("report")))) {
    if (entry.path().extension() == ".gz") archive = entry.path();
  }
  for (const auto& [log, line] : {std::pair{"logfile", "vcpu2: output starts, dumps: OMXIN"},
                                  {"acpu1", "acpu1: decoder ends after "},
                                  {"acpu2", "acpu2: output starts"},
                                  {"vcpu1", "vcpu1: decoder ends after 448 pictures\n"},
                                  {"vcpu2", "vcpu2: output starts"}}) {
    const auto text = test::RunShell("tar -xzOf " + test::Quoted(archive) + " ./dpq_" +
                                     std::string(log) + ".log");
    EXPECT_TRUE(Contains(text.output, line)) << log << ": " << text.output << pty.Before();
    EXPECT_FALSE(Contains(text.output, "started")) << "the run clears the logs first";
  }
}

TEST_F(PlaybackTest, CustomizedListRunsItsRounds) {
  Initialise();
  // Only the first of the two cases is that long.
  Pty& pty = OpenMenu({.scenario = "defect vdec corrupt 400\n", .timeScale = 50});
  EXPECT_TRUE(pty.Answer(kChoice, "1"));
  EXPECT_TRUE(pty.Answer("empty: keep): ", "1, 2 77"));
  EXPECT_TRUE(pty.Expect("no test case 77, skipped"));
  EXPECT_TRUE(pty.Answer("number of rounds: ", "2"));
  for (const std::string round : {"Round 1/2", "Round 2/2"}) {
    EXPECT_TRUE(pty.Expect(round + ", case 2/2: 102-h264-ResChg, 00:00:0", kRunLimitMs));
    EXPECT_TRUE(pty.Expect(round + ": 1 of 2 passed", kRunLimitMs));
    EXPECT_TRUE(pty.Expect(", not passed: 101-h264-FrtChg\n"));
  }
  EXPECT_TRUE(pty.Expect("passed 0 of 2\n"));
  EXPECT_TRUE(pty.Expect("passed 2 of 2\n"));
  EXPECT_TRUE(pty.Expect(kChoice));
}

TEST_F(PlaybackTest, EveryRoundKeepsItsReport) {
  Initialise();
  Pty& pty = OpenMenu({.scenario = "defect vdec corrupt 100\n", .timeScale = 50});
  EXPECT_TRUE(pty.Answer(kChoice, "1"));
  EXPECT_TRUE(pty.Answer("empty: keep): ", "2"));
  EXPECT_TRUE(pty.Answer("number of rounds: ", "10"));
  EXPECT_TRUE(pty.Expect("passed 0 of 10\n", kAllLimitMs));
  EXPECT_TRUE(pty.Expect(kChoice));
  Strings stored;
  for (const auto& entry : fs::directory_iterator(OnBoard(kHome + std::string("report"))))
    stored.push_back(entry.path().filename());
  std::sort(stored.begin(), stored.end());
  EXPECT_EQ(stored.size(), 10U);
  EXPECT_EQ(Arrived(kStickReports), stored);
}

TEST_F(PlaybackTest, AllCasesPassInOneRun) {
  Initialise();
  Pty& pty = OpenMenu();
  EXPECT_TRUE(pty.Answer(kChoice, "25"));
  EXPECT_TRUE(pty.Expect("Round 1/1: 12 of 12 passed", kAllLimitMs));
  EXPECT_TRUE(pty.Expect(kChoice));
}

TEST_F(PlaybackTest, EveryOperatingSystemPlaysFromItsSources) {
  struct Board {
    const char* os;
    const char* home;
  };
  for (const Board& board :
       {Board{"sorvex", "/home/cross_module/"}, Board{"pelxos", "/nvram/data/cross_module/"}}) {
    const test::BoardOptions options{.launcher = {"--os", board.os, "--fresh"}, .timeScale = 50};
    Initialise(options, board.home);
    Pty& pty = OpenMenu({.launcher = {"--os", board.os}, .timeScale = 50});
    EXPECT_TRUE(pty.WaitReading());
    const std::ofstream request(OnBoard("/tmp/enableDebugMode"));  // one dumps only on request
    EXPECT_EQ(StagesNotPassed(RunCase(pty, "1")), Strings()) << board.os;
    EXPECT_TRUE(pty.Answer(kChoice, "18"));
    EXPECT_TRUE(pty.Answer("(3)HTTP in HQ: ", "2"));
    EXPECT_EQ(StagesNotPassed(RunCase(pty, "9")), Strings()) << board.os;
    EXPECT_TRUE(fs::exists(OnBoard(board.home + std::string("cross_module_content_v1"))));
  }
}

TEST_F(PlaybackTest, FreeRunHasSeparateGoldenData) {
  Initialise();
  Pty& pty = OpenMenu({.scenario = "counter 900000 0\n", .timeScale = 50});
  EXPECT_TRUE(pty.Answer(kChoice, "19"));
  EXPECT_TRUE(pty.Answer("[1]FreeRun: ", "1"));
  EXPECT_EQ(StagesNotPassed(RunCase(pty, "7")), Strings());
  // The display's output then differs from the golden data of the other mode, which were made with
  // the same initial counter value.
  EXPECT_NE(
      test::FileText(OnBoard("/tmp/cross_module/dump_vo.txt")),
      test::FileText(OnBoard(kHome + std::string("golden_data/playback/dump-401-memc-VO.txt"))));
}

}  // namespace
