// Sessions recorded on the simulated board and replayed without it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "BoardFixture.h"

namespace {

using test::Pty;
namespace fs = std::filesystem;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kTime[] = "/opt/cvntester/lib/libcvnsim_time.so";

/// Console output and report of a session, without the texts that differ in every run.
struct Session {
  std::string screen;
  std::string report;
};

std::string WithoutTimes(std::string text) {
  text = std::regex_replace(text, std::regex("\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d\\d"), "TIME");
  text = std::regex_replace(text, std::regex("\\d+\\.\\d{3} s|, about [0-9:]+"), "TIME");
  return std::regex_replace(text, std::regex("\\d\\d:\\d\\d:\\d\\d|\\d+[-/]\\d+[-/]\\d+"), "TIME");
}

class RecordTest : public test::BoardFixture {
 protected:
  using Play = std::function<void(Pty&)>;

  void SetUp() override {
    BoardFixture::SetUp();
    if (!IsSkipped() && Sandbox() != "bwrap") GTEST_SKIP() << "needs the board in namespaces";
  }

  /// Runs a session with these environment variables; `play` acts as the operator.
  Session Run(std::vector<std::string> variables, const std::vector<std::string>& arguments,
              const Play& play, const std::string& scenario = "") {
    variables.insert(variables.end(), {"CVNSIM_TIME_SCALE=20", "ASAN_OPTIONS=detect_leaks=0"});
    test::BoardOptions options{.arguments = arguments, .scenario = scenario};
    for (const std::string& variable : variables) {
      options.launcher.insert(options.launcher.end(), {"--setenv", variable});
    }
    if (fs::exists(OnBoard("/tmp/var/log"))) fs::remove_all(OnBoard("/tmp/var/log"));
    fs::create_directories(OnBoard("/tmp/var/log"));
    Pty& pty = Start(options);
    play(pty);
    EXPECT_TRUE(pty.ExpectEnd(100000));
    pty.Wait();
    return {WithoutTimes(pty.Transcript()), WithoutTimes(ReportText())};
  }

  Session Record(const std::vector<std::string>& arguments, const Play& play,
                 const std::string& scenario = "") {
    return Run({std::string("LD_PRELOAD=") + kTime + ":/opt/cvntester/lib/libcvnrecord.so",
                "CVN_RECORD=/recording"},
               arguments, play, scenario);
  }

  Session Replay(const std::vector<std::string>& arguments, const Play& play) {
    fs::remove(Board() / "run/trace");
    return Run({std::string("LD_PRELOAD=") + kTime, "LD_LIBRARY_PATH=/opt/cvntester/lib/replay",
                "CVN_REPLAY=/recording"},
               arguments, play);
  }

  std::string Tool(const std::string& words) const {
    return test::RunShell(CVN_TRACE_TOOL " " + words).output;
  }
  std::string Recording() const { return OnBoard("/recording"); }

  /// Expects the same calls in the recording and in the simulation's trace.
  void ExpectSameAsTrace() const {
    std::vector<std::string> trace = Trace();
    std::erase_if(trace, [](const std::string& line) {
      return line.starts_with('#') || line.starts_with("thermal notifier");
    });
    EXPECT_GT(trace.size(), 0U);
    std::string lines;
    for (const std::string& line : trace) lines += line + '\n';
    EXPECT_EQ(Tool("print " + Recording() + " | grep -v '^#'"), lines);
    EXPECT_EQ(test::RunShell("babeltrace2 " + Recording() + " | grep -c '_entry: '").output,
              std::to_string(trace.size()) + "\n");
  }

  void ExpectSame(const Session& recorded, const Session& replayed) const {
    EXPECT_EQ(replayed.screen, recorded.screen);
    EXPECT_EQ(replayed.report, recorded.report);
    EXPECT_FALSE(fs::exists(Board() / "run/trace")) << "the simulation was used too";
  }
};

TEST_F(RecordTest, ScalerSessionIsReplayedExactly) {
  const Play play = [](Pty& pty) {
    ASSERT_TRUE(Type(pty, {{kChoice, "3"},
                           {kChoice, "2"},
                           {kChoice, "18"},
                           {"Switch_Source Exit, 0(No) 1(YES)", "0"},
                           {"Please choose Input Src for Main:", "2"},
                           {"Please choose HDMI InputPort 0 ~ 3", "0"},
                           {"Blank Window 0(Win0), 1(Win1)", "0"},
                           {"Choose VSC connect Window 0(Win0), 1(Win1)", "0"},
                           {"Choose output mode:", "0"},
                           {"Blank Window 0(Win0), 1(Win1)", "0"},
                           {"SetInOutregion video wid:0(wid_0),1(wid_1)", "0"},
                           {"set display size:0(1920x1080),1(3840x2160),2(960*540)", "1"},
                           {"Blank Window 0(Win0), 1(Win1)", "0"},
                           {"User Sel, 0(Continue); 1(Exit); 2(ChangSrc)", "1"},
                           {kChoice, "38"},
                           {"by 'Y' or 'N'", "Y"},
                           {kChoice, "q"}}));
  };
  const Session recorded = Record({}, play);
  ExpectSameAsTrace();
  const std::string marks = Tool("print " + Recording() + " | grep '^# test'");
  EXPECT_NE(marks.find(" begins: Vsc MURO 18"), std::string::npos) << marks;
  EXPECT_NE(marks.find(": FAIL\n"), std::string::npos) << marks;
  const std::string all = Tool("print " + Recording());
  for (const std::string text :
       {"# prompt for a line: Please enter a choice :\n# answer: 38\n",
        "# prompt for a line: Please choose HDMI InputPort 0 ~ 3\n# answer: 0\n"}) {
    EXPECT_NE(all.find(text), std::string::npos) << text << all;
  }
  EXPECT_NE(recorded.screen.find("VIDEO_RECT_Param, x : "), std::string::npos);
  ExpectSame(recorded, Replay({}, play));
}

TEST_F(RecordTest, ReceiverUnitTestsAreReplayedExactly) {
  const std::vector<std::string> run = {"--run", "UTVfeHdmiModule", "--verbose", "--color",
                                        "never"};
  const Session recorded = Record(run, [](Pty&) {});
  ExpectSameAsTrace();
  ExpectSame(recorded, Replay(run, [](Pty&) {}));
}

// Fields annotated with the wrong direction (read or written) are printed differently.
TEST_F(RecordTest, PictureQualityCallsAreRecordedAsInTheTrace) {
  Record({"--run", "UTVpqModule", "VscModule/38", "UTVfeHdmiModule/2*", "--timeout", "5", "--color",
          "never"},
         [](Pty&) {});
  const auto lines = [](const std::string& text) {
    std::vector<std::string> kept;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      // Colour regions are printed differently: one list per field in the trace, records in a
      // recording. For a failed call the trace omits the arguments.
      const bool isColor = line.find("nMasterGain") != std::string::npos;
      if (!line.starts_with('#') && !isColor && line.ends_with(" = 0")) kept.push_back(line);
    }
    return kept;
  };
  const std::vector<std::string> recorded = lines(Tool("print " + Recording()));
  EXPECT_GT(recorded.size(), 250U);
  EXPECT_EQ(recorded, lines(test::FileText(Board() / "run/trace")));
}

TEST_F(RecordTest, ThreadsForksAndHandlersAreReplayedInPlace) {
  const std::vector<std::string> run = {"--run",     "CRlinkModule",    "UTThermalModule",
                                        "--exclude", "CRlinkModule/26", "--color",
                                        "never"};
  const Session recorded = Record(
      run, [](Pty&) {}, "thermal 1\n");
  EXPECT_NE(recorded.screen.find(" 0 failed"), std::string::npos) << recorded.screen;
  const Session replayed = Replay(run, [](Pty&) {});
  ExpectSame(recorded, replayed);
  EXPECT_EQ(replayed.screen.find("cvnreplay"), std::string::npos);
}

TEST_F(RecordTest, SingleTestOfASessionCanBeReplayed) {
  const std::vector<std::string> all = {"--run",         "UTVpqModule/1", "UTVpqModule/2",
                                        "UTVpqModule/3", "--color",       "never"};
  Record(all, [](Pty&) {});
  const Session alone = Replay({"--run", "UTVpqModule/3", "--color", "never"}, [](Pty&) {});
  EXPECT_NE(alone.screen.find("1 passed"), std::string::npos) << alone.screen;
  const Session other = Replay({"--run", "UTVpqModule/4", "--verbose"}, [](Pty&) {});
  EXPECT_NE(other.screen.find("cvnreplay: the recording has no test 4 "), std::string::npos)
      << other.screen;
}

// Not even a test that judges no result passes in the replay of its crash.
TEST_F(RecordTest, ReplayOfACrashEndsInTheCallThatDidNotReturn) {
  const std::vector<std::string> run = {"--run",   "UTVpqModule/17", "UTVpqModule/18",
                                        "--color", "never",          "--verbose"};
  const Session recorded = Record(
      run, [](Pty&) {}, "misbehave K2V_RHAL_VPQ_SetHue segv --at 2\n");
  EXPECT_NE(recorded.screen.find("killed by signal 11 SIGSEGV"), std::string::npos);
  const Session replayed = Replay(run, [](Pty&) {});
  EXPECT_NE(replayed.screen.find("SetHue(100) did not return when it was recorded"),
            std::string::npos);
  EXPECT_NE(replayed.screen.find("killed by signal 6 SIGABRT"), std::string::npos)
      << replayed.screen;
  EXPECT_NE(replayed.screen.find("1 passed, 0 failed, 1 errors"), std::string::npos);
}

/// Pieces of `text` that cannot occur in another text by chance.
std::set<std::string> Pieces(const std::string& text) {
  constexpr size_t kBytes = 16, kDistinct = 12;
  std::set<std::string> pieces;
  for (size_t at = 0; at + kBytes <= text.size(); at += kBytes) {
    const std::string piece = text.substr(at, kBytes);
    if (std::set<char>(piece.begin(), piece.end()).size() >= kDistinct) pieces.insert(piece);
  }
  return pieces;
}

TEST_F(RecordTest, RecordingContainsNoHdcpKeys) {
  const std::vector<std::string> run = {"--run",         "UTHdcp2Module", "Hdcp2Module/1",
                                        "Hdcp2Module/2", "Hdcp2Module/3", "UTVfeHdmiModule/8",
                                        "--color",       "never"};
  Record(run, [](Pty&) {});
  EXPECT_NE(Tool("print " + Recording()).find("K2V_RHAL_HDCP2_LoadKeys"), std::string::npos);
  std::string recorded;
  for (const auto& file : fs::directory_iterator(Recording())) {
    if (file.path().filename() != "metadata") recorded += test::FileText(file.path());
  }
  // Keys, plaintext and key material of the known-answer tests, and all of the board's keys.
  const std::string ctrKey = "\x2b\x7e\x15\x16\x28\xae\xd2\xa6\xab\xf7\x15\x88\x09\xcf\x4f\x3c";
  const std::string ctrPlain = "\x6b\xc1\xbe\xe2\x2e\x40\x9f\x96\xe9\x3d\x7e\x11\x73\x93\x17\x2a";
  for (const std::string& secret :
       {ctrKey, ctrPlain, std::string("Jefe"), std::string(20, '\x0b')}) {
    EXPECT_EQ(recorded.find(secret), std::string::npos);
  }
  const std::set<std::string> kept = Pieces(test::FileText(Board() / "run/state"));
  EXPECT_GT(kept.size(), 20U) << "the board has made its keys";
  size_t found = 0;
  for (const std::string& piece : kept) found += recorded.find(piece) != std::string::npos;
  EXPECT_EQ(found, 0U) << "pieces found, of " << kept.size();
}

}  // namespace
