// The command: missing captures, references, learning and evidence.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "Commands.h"
#include "Image.h"

namespace {

namespace fs = std::filesystem;
using eyes::Answer;
using enum Answer;

class EyesCommand : public testing::Test {
 protected:
  /// The answer and the last line, such as "no: black: …".
  std::string Run(const std::vector<std::string>& words) {
    static constexpr const char* kNames[] = {"yes: ", "no: ", "cannot tell: "};
    std::ostringstream out;
    Answer answer = kCannotTell;
    try {
      answer = eyes::RunCommandLine(words, out);
    } catch (const std::exception& error) {
      out << error.what() << '\n';
    }
    std::string said = out.str();
    said.pop_back();
    return kNames[static_cast<int>(answer)] + said.substr(said.rfind('\n') + 1);
  }

  std::string Judge(const std::string& rule, const std::string& from, bool keeps = false) {
    Write("rules", "trust black\npictures 2\nA/1\t*\t" + rule + "\n");
    std::vector<std::string> words = {"judge", Path("rules"), "--from", from, "--test", "A/1"};
    if (keeps) words.insert(words.end(), {"--evidence", Path("evidence")});
    return Run(words);
  }

  /// Creates a picture in the test's directory with filters.
  void Make(const std::string& name, const std::string& filters) {
    Write("recipes", name + "\t" + filters + "\n");
    EXPECT_EQ(Run({"make", Path("recipes"), Path("")}), "yes: 1 references");
  }

  static std::string Path(const std::string& name) { return testing::TempDir() + name; }
  static void Write(const std::string& name, const std::string& text) {
    std::ofstream(Path(name)) << text;
  }
  static std::string Text(const std::string& name) {
    std::ifstream file(Path(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string SizeOf(const std::string& name) {
    const picture::Picture picture = picture::FromFile(Path(name));
    return std::to_string(picture->width) + "x" + std::to_string(picture->height);
  }
};

constexpr char kBars[] = "smptehdbars=s=960x540,format=gbrp";
constexpr char kDark[] = "color=0x000008:s=960x540,format=gbrp";

TEST_F(EyesCommand, MissingCaptureGivesNoVerdict) {
  Make("dark", kDark);
  Write("damaged.png", Text("dark.png").substr(0, 400));
  Write("empty", "");
  EXPECT_EQ(Judge("black", Path("dark.png")), "yes: black: colour 8.0 of 10, structure 0.0 of 22");
  const struct {
    std::string from;
    std::string answer;
  } kCases[] = {
      {"", "no capture source; use --from, or 'from' in the rules"},
      {Path("none.png"), Path("none.png") + ": No such file or directory"},
      {Path("empty"), Path("empty") + ": Invalid data found when processing input"},
      {"v4l2:/dev/no-such-video", "/dev/no-such-video: No such file or directory"},
      {"command:echo no camera >&2; exit 3",
       "'echo no camera >&2; exit 3' returned no picture, exit status 3"},
      {"command:kill -KILL $$", "'kill -KILL $$' returned no picture, exit status 137"},
      {"command:true", "pipe:"},
      {"http://127.0.0.1:1/stream", "http://127.0.0.1:1/stream: Connection refused"},
      {Path("damaged.png"), ""},
  };
  for (const auto& [from, answer] : kCases)
    EXPECT_EQ(Judge("black", from).rfind("cannot tell: " + answer, 0), 0) << Judge("black", from);
  EXPECT_EQ(Run({"judge", Path("rules"), "--test", "B/1"}), "cannot tell: no rule for B/1 and ''");
  EXPECT_EQ(Run({"judge", Path("no-rules"), "--test", "B/1"}),
            "cannot tell: cannot read " + Path("no-rules"));
}

TEST_F(EyesCommand, ReadsStreamsOfCommandsAndFiles) {
  Make("bars", kBars);
  const std::string stream =
      "ffmpeg -v error -loop 1 -i '" + Path("bars.png") + "' -frames:v 5 -r 25 ";
  const std::string y4m = "-pix_fmt yuv444p -f yuv4mpegpipe -strict -1 - 2>/dev/null";
  EXPECT_EQ(Judge("reference bars.png and frozen", "command:" + stream + y4m).substr(0, 5),
            "yes: ");
  EXPECT_EQ(Judge("moving", "command:" + stream + y4m), "no: moving: change 0.0 of at least 12");
  ASSERT_EQ(std::system((stream + "-c:v mjpeg -q:v 3 '" + Path("bars.avi") + "'").c_str()), 0);
  EXPECT_EQ(Judge("reference bars.png", Path("bars.avi")).substr(0, 5), "yes: ");
  // Like capture cards, devices send packed pixels endlessly.
  const std::string device = "lavfi:color=white:s=1280x720:r=50,format=yuyv422";
  EXPECT_EQ(Judge("plain white and frozen", device).substr(0, 5), "yes: ");
  EXPECT_EQ(Judge("moving", "lavfi:testsrc2=s=1280x720:r=1,format=yuyv422").substr(0, 5), "yes: ");
}

TEST_F(EyesCommand, MaskExcludesItsBlackAreas) {
  Make("bars", kBars);
  Make("clock", std::string(kBars) + ",drawbox=x=600:y=90:w=200:h=80:color=white:t=fill");
  Make("mask",
       "color=white:s=960x540,format=gbrp,drawbox=x=596:y=86:w=208:h=88:color=black:t=fill");
  EXPECT_EQ(Judge("reference bars.png", Path("clock.png")).substr(0, 4), "no: ");
  EXPECT_EQ(Judge("reference bars.png mask mask.png", Path("clock.png")).substr(0, 5), "yes: ");
  EXPECT_EQ(Judge("reference bars.png region 32,200,800,300", Path("clock.png")).substr(0, 5),
            "yes: ");
}

TEST_F(EyesCommand, KeepsTheCaptureAndTheReference) {
  Make("bars", kBars);
  Make("large", "smptehdbars=s=1920x1080,format=gbrp");
  Make("dark", kDark);
  fs::create_directory(Path("evidence"));
  EXPECT_EQ(Run({"judge", Path("rules"), "--question", "before the test"}).substr(0, 11),
            "cannot tell");
  EXPECT_EQ(Judge("reference bars.png", Path("dark.png"), true).substr(0, 28),
            "no: reference bars.png: colo");
  EXPECT_EQ(SizeOf("evidence/capture.png"), "960x540");
  EXPECT_EQ(SizeOf("evidence/reference.png"), "960x540");
  EXPECT_EQ(SizeOf("evidence/difference.png"), "960x540");
  // Judged at a larger size, kept at the same size.
  Write("rules", "size 1920x1080\nA/1\t*\treference large.png\n");
  EXPECT_EQ(Run({"judge", Path("rules"), "--from", Path("large.png"), "--test", "A/1", "--evidence",
                 Path("evidence")})
                .substr(0, 5),
            "yes: ");
  EXPECT_EQ(SizeOf("evidence/capture.png"), "960x540");
  // The picture taken before the test is kept with the other evidence and found there.
  Write("rules", "A/1\t*\tchanged and brighter\n");
  EXPECT_EQ(Run({"judge", Path("rules"), "--from", Path("dark.png"), "--test", "A/1", "--question",
                 "before the test", "--evidence", Path("evidence")}),
            "yes: picture taken");
  EXPECT_EQ(Run({"judge", Path("rules"), "--from", Path("bars.png"), "--test", "A/1", "--evidence",
                 Path("evidence")})
                .substr(0, 5),
            "yes: ");
}

TEST_F(EyesCommand, LearnsReferencesAndRejectsThemForOtherCaptures) {
  Make("bars", kBars);
  Make("large", "smptehdbars=s=1920x1080,format=gbrp");
  Write("rules", "");
  EXPECT_EQ(Run({"learn", Path("rules"), "--yes", "--from", Path("bars.png"), "--test", "A/1@2",
                 "--state", "echo port 0: bars"}),
            "yes: learned A.1.png");
  EXPECT_EQ(Text("rules"), "A/1\t*\treference A.1.png\n");
  EXPECT_EQ(Text("A.1.png.txt"),
            "test: A/1@2\nquestion: \nrules: 00000000\ncapture: 960x540\nstate:\nport 0: bars\n");
  EXPECT_EQ(Run({"judge", Path("rules"), "--from", Path("bars.png"), "--test", "A/1"}),
            "yes: reference A.1.png: colour 0.0 of 10, structure 0.0 of 22");
  EXPECT_EQ(Run({"judge", Path("rules"), "--from", Path("large.png"), "--test", "A/1"}),
            "cannot tell: A.1.png was learned from a capture of 960x540, this one is 1920x1080");
  EXPECT_EQ(Judge("reference large.png", Path("bars.png")),
            "cannot tell: large.png is 1920x1080, the judged picture 960x540");
  EXPECT_EQ(Judge("reference none.png", Path("bars.png")),
            "cannot tell: " + Path("none.png") + " cannot be read");
  Make("busy", "nullsrc=s=960x540,format=gbrp,geq=r=255*mod(X+Y\\,2):g=255*mod(X+Y\\,2):b=0");
  EXPECT_EQ(Run({"learn", Path("rules"), "--yes", "--from", Path("busy.png"), "--test", "A/2"}),
            "cannot tell: the picture has too few flat areas for a comparison of colours");
}

TEST_F(EyesCommand, CalibrationIsStoredAndUsed) {
  Make("bars", kBars);
  Make("moved", std::string(kBars) + ",crop=957:538:0:2,pad=960:540:3:0");
  Write("rules", "calibration rig\nA/1\t*\treference bars.png\n");
  const std::vector<std::string> judge = {"judge",           Path("rules"), "--from",
                                          Path("moved.png"), "--test",      "A/1"};
  EXPECT_EQ(Run(judge), "cannot tell: " + Path("rig") + ": not a calibration");
  EXPECT_EQ(Judge("reference bars.png", Path("moved.png")).substr(0, 4), "no: ");
  Write("rules", "calibration rig\nA/1\t*\treference bars.png\n");
  const std::vector<std::string> calibrate = {"calibrate", Path("rules"), Path("bars.png"),
                                              "--from", Path("moved.png")};
  EXPECT_EQ(Run(calibrate).substr(0, 10), "yes: gain ");
  EXPECT_EQ(Run(judge).substr(0, 5), "yes: ");
  const std::string measured = Text("rig");
  Write("rig", std::regex_replace(measured, std::regex("right .*"), "right 100"));
  EXPECT_EQ(Run(judge), "cannot tell: " + Path("rig") + ": not a calibration");
  Write("rig", measured);
  Make("dark", kDark);
  EXPECT_EQ(Run({"calibrate", Path("rules"), Path("bars.png"), "--from", Path("dark.png")}),
            "cannot tell: the capture does not show " + Path("bars.png"));
}

TEST_F(EyesCommand, PanelOfABoardCanBeJudgedByAPc) {
  Make("bars", kBars);
  Make("dark", kDark);
  fs::create_directory(Path("evidence"));
  setenv("PATH", (std::string(CVN_PROGRAMS ":") + std::getenv("PATH")).c_str(), 1);
  setenv("CVN_TEST", "A/1", 1);
  setenv("CVN_EVIDENCE", Path("evidence").c_str(), 1);
  Write("rules", "A/1\t*by 'Y' or \"N\"\tdarker\n");
  const auto look = [](const char* question, const std::string& pc) {
    setenv("CVN_QUESTION", question, 1);
    const std::string line = std::string(CVN_SOURCE_DIRECTORY "/contrib/eyes/eyes-board ") + pc +
                             " >'" + Path("said") + "'";
    const int status = std::system(line.c_str());
    return std::to_string(WEXITSTATUS(status)) + " " + Text("said");
  };
  const auto pc = [](const char* picture) {
    return CVN_SOURCE_DIRECTORY "/contrib/eyes/eyes-pc '" + Path("rules") + "' --from '" +
           Path(picture) + "'";
  };
  EXPECT_EQ(look("before the test", pc("bars.png")), "0 picture taken\n");
  EXPECT_EQ(look("by 'Y' or \"N\"", pc("dark.png")).substr(0, 10), "0 darker: ");
  EXPECT_EQ(SizeOf("evidence/before.png") + " " + SizeOf("evidence/capture.png"),
            "960x540 960x540");
  EXPECT_EQ(look("by 'Y' or \"N\"", pc("bars.png")).substr(0, 10), "1 darker: ");
  EXPECT_EQ(look("by 'Y' or \"N\"", "false"), "2 the PC gives no answer\n");
  EXPECT_EQ(look("another", pc("dark.png")), "2 no rule for A/1 and 'another'\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(Path("evidence")), {}), 2);
}

TEST_F(EyesCommand, InvalidCommandLinesAndRecipesAreRejected) {
  EXPECT_EQ(Run({"judge"}), "cannot tell: usage: cvneyes judge RULES");
  EXPECT_EQ(Run({"judge", "a", "--test"}), "cannot tell: --test requires a value");
  EXPECT_EQ(Run({"judge", "a", "--tset", "b"}),
            "cannot tell: unknown option '--tset'; try 'cvneyes --help'");
  Write("recipes", "bars\n");
  EXPECT_EQ(
      Run({"make", Path("recipes"), Path("")}),
      "cannot tell: " + Path("recipes") + ":1: a recipe is a name and filters with a tab between");
  Write("recipes", "bars\tno-such-filter\n");
  EXPECT_EQ(
      Run({"make", Path("recipes"), Path("")}).rfind("cannot tell: " + Path("recipes:1: "), 0), 0);
}

}  // namespace
