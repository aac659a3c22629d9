// Verification of dumps on the board against golden data, from the menu to the report on the USB
// stick.
#include <gtest/gtest.h>

#include <algorithm>
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
using Talk = std::vector<std::pair<const char*, const char*>>;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kHome[] = "/data/cross_module";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class VerifyTest : public test::BoardFixture {
 protected:
  void SetUp() override {
    BoardFixture::SetUp();
    if (!IsSkipped()) MakeHome(kHome);
  }

  /// A home as the initialisation of the environment leaves it, without a TFTP server.
  void MakeHome(const std::string& home) const {
    for (const char* directory : {"/config", "/report"})
      fs::create_directories(OnBoard(home + directory));
    std::ofstream(OnBoard(home + "/config/tftp_ip.cfg")) << "-\n";
  }

  /// Puts dumps and golden data of a test case on the board. The files in the board's memory are
  /// lost when it is switched on.
  void PutDumps(const std::string& options) const {
    const auto made =
        test::RunShell(CVN_DUMP_GENERATOR " --home " + test::Quoted(OnBoard(kHome)) +
                       " --dump-dir " + test::Quoted(OnBoard("/tmp/cross_module")) + " " + options);
    ASSERT_EQ(made.status, 0) << made.output;
  }

  /// Switches the board on, plays `talk` in the playback module's menu and quits.
  void Play(Talk talk, const test::BoardOptions& options = {}) {
    talk.insert(talk.begin(), {{kChoice, "5"}, {kChoice, "0"}, {kChoice, "0"}});
    talk.emplace_back(kChoice, "q");
    Pty& pty = Start(options);
    ASSERT_TRUE(pty.WaitReading());
    if (!dumps_.empty()) PutDumps(dumps_);
    for (const auto& [prompt, answer] : talk) ASSERT_TRUE(pty.Answer(prompt, answer));
    ASSERT_EQ(pty.Wait(), 0);
    screen_ = pty.Transcript();
  }
  /// Like PutDumps, but after `Play` has switched the board on.
  void PutDumpsOnceOn(const std::string& options) { dumps_ = options; }

  const std::string& Screen() const { return screen_; }

  /// The fields of a frame's row in a file of the board.
  std::vector<std::string> Row(const std::string& path, const std::string& frame) const {
    std::istringstream lines(test::FileText(OnBoard(path)));
    std::string line;
    while (std::getline(lines, line) && !line.starts_with(frame + ",")) {
    }
    std::istringstream items(line);
    std::vector<std::string> row;
    for (std::string item; std::getline(items, item, ',');) row.push_back(item);
    return row;
  }

  /// Whether the harness's report contains this verdict for a test.
  bool Reported(const std::string& name, const std::string& verdict) const {
    std::istringstream lines(ReportText());
    for (std::string line; std::getline(lines, line);) {
      if (Contains(line, name) && Contains(line, verdict)) return true;
    }
    return false;
  }

 private:
  std::string dumps_;
  std::string screen_;
};

TEST_F(VerifyTest, IdenticalDumpsPassAndTheReportIsKept) {
  PutDumpsOnceOn("--case 101");
  std::ofstream(OnBoard("/default.prop")) << "ro.bootimage.build.date=today\n"
                                             "ro.bootimage.build.fingerprint=old\n"
                                             "ro.bootimage.build.fingerprint=tv/1.2\n";
  std::ofstream(OnBoard(std::string(kHome) + "/config/timeStamp.config")) << "0315_142501\n";
  Play({{kChoice, "15"}});
  const std::string name = "report_101-h264-FrtChg_0315_142501.txt";
  const std::string report = test::FileText(OnBoard(kHome + ("/report/" + name)));
  EXPECT_TRUE(StagesNotPassed(report).empty()) << report;
  EXPECT_TRUE(Contains(report, "PCB SW version: tv/1.2 (today)\n")) << report;
  EXPECT_FALSE(Contains(report, "\033"));
  EXPECT_TRUE(Contains(Screen(), "DONE. report:" + (kHome + ("/report/" + name)) + "\n"));
  EXPECT_TRUE(Reported("015.Verify - All Module", " PASS "));
  EXPECT_FALSE(fs::exists(OnBoard("/tmp/usb/cross_module_report")))
      << "reports of passing tests are not sent";
}

TEST_F(VerifyTest, WrongChecksumIsReportedWithStageFrameAndField) {
  PutDumpsOnceOn("--case 101 --defect VDEC:change:300:crc");
  Play({{kChoice, "4"}, {"[3]USB+TFTP . Please select: ", "1"}, {kChoice, "15"}});
  const std::string report =
      test::FileText(OnBoard(std::string(kHome) + "/report/report_101-h264-FrtChg_-.txt"));
  EXPECT_EQ(StagesNotPassed(report), std::vector<std::string>{"[VDEC]"}) << report;
  const auto dump = Row("/tmp/cross_module/dump_vdec.txt", "300");
  const auto golden =
      Row(std::string(kHome) + "/golden_data/playback/dump-101-h264-FrtChg-VDEC.txt", "300");
  const std::string values = dump.at(3) + "/" + golden.at(3);
  EXPECT_NE(dump.at(3), golden.at(3));
  const auto row = test::Overview(report)["[VDEC]"];
  EXPECT_EQ(std::vector<std::string>(row.begin() + 2, row.end()),
            (std::vector<std::string>{"1/1", "300", "crc", values}))
      << report;
  EXPECT_TRUE(Contains(Screen(), values)) << "the console shows the same";
  EXPECT_FALSE(Contains(report, "\033"));
  EXPECT_EQ(test::FileText(OnBoard("/tmp/usb/cross_module_report/report_101-h264-FrtChg_-.txt")),
            report);
  EXPECT_TRUE(Reported("015.Verify - All Module", " FAIL "));
}

TEST_F(VerifyTest, MaskedFieldsAreNoCauses) {
  PutDumpsOnceOn("--case 101 --defect VDEC:change:300:crc --defect VO:change:310:width");
  fs::create_directories(OnBoard("/system/bin"));
  std::ofstream(OnBoard("/system/bin/vout_setting.conf")) << "mask width = 1\n";
  Play({{kChoice, "15"}});
  EXPECT_TRUE(Contains(Screen(), "VDEC    frame 300 (5.000 s): 1 picture damaged\n")) << Screen();
  EXPECT_FALSE(Contains(Screen(), "VO      frame 310"));
}

TEST_F(VerifyTest, SoundOutsideTheToleranceFailsTheAvSync) {
  const Talk talk = {{kChoice, "17"}, {"or [12]: ", "8"}, {kChoice, "16"}};
  PutDumpsOnceOn("--case 501 --audio-offset 20");
  Play(talk);
  EXPECT_TRUE(Reported("016.Verify - AV sync", " PASS ")) << Screen();
  fs::remove(ReportPath());
  PutDumpsOnceOn("--case 501 --audio-offset 21");
  Play(talk);
  EXPECT_TRUE(Reported("016.Verify - AV sync", " FAIL ")) << Screen();
  EXPECT_TRUE(Contains(Screen(), "FAIL(+1ms)")) << Screen();
}

TEST_F(VerifyTest, StandaloneVerificationUsesOnlyTheTwoDirectories) {
  // The board is on, and its processors have logged their start.
  Pty& pty = StartProgram({"sh", "-c",
                           "cvntester --version; echo up; read go; exec cvntester --verify 101 "
                           "--dump /data/cross_module/dump_tmp "
                           "--golden /data/cross_module/golden_data/playback"});
  ASSERT_TRUE(pty.Expect("up\n"));
  PutDumps("--case 101 --defect VO:change:300:width=1");
  // Settings that would select other golden data, another case and a very large tolerance.
  const struct {
    const char* path;
    const char* text;
  } kSettings[] = {{"/tmp/cross_module/freeRun.config", "1\n"},
                   {"/tmp/cross_module/file_format.cfg", "201\n"},
                   {"/system/bin/vout_setting.conf", "errTolerance_sec = 86400\n"}};
  for (const auto& setting : kSettings) {
    fs::create_directories(OnBoard(setting.path).parent_path());
    std::ofstream(OnBoard(setting.path)) << setting.text;
  }
  const auto files = [&] {
    std::vector<std::string> paths;
    for (const char* directory : {"/tmp", "/data"}) {
      for (const auto& entry : fs::recursive_directory_iterator(OnBoard(directory)))
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
  };
  const auto before = files();
  pty.SendLine("go");
  EXPECT_EQ(pty.Wait(), 1);
  EXPECT_TRUE(Contains(pty.Transcript(), "6 passed, 1 failed")) << pty.Transcript();
  EXPECT_TRUE(Contains(pty.Transcript(), "first: frame 300, width = 1/1920"));
  EXPECT_EQ(files(), before);
  for (const auto& setting : kSettings)
    EXPECT_EQ(test::FileText(OnBoard(setting.path)), setting.text);
}

TEST_F(VerifyTest, EveryOperatingSystemHasItsOwnHomeAndStick) {
  const struct {
    const char* os;
    const char* home;
    const char* stick;
  } kBoards[] = {{"android", "/data/cross_module/", "/tmp/usb"},
                 {"sorvex", "/home/cross_module/", "/tmp/usb"},
                 {"pelxos", "/nvram/data/cross_module/", "/media/ext1:"},
                 {"android", "/data/cross_module/", "/tmp/usb"}};
  for (const auto& board : kBoards) MakeHome(board.home);
  for (const auto& board : kBoards) {
    Play({{kChoice, "18"}, {"(3)HTTP in HQ: ", "1"}}, {.launcher = {"--os", board.os}});
    EXPECT_TRUE(Contains(Screen(), "Current setting: USB,  testing file home= " +
                                       (board.stick + std::string("/cross_module_content_v1/\n"))))
        << board.os << Screen();
    EXPECT_FALSE(Contains(Screen(), "unknown OS"));
    for (const auto& other : kBoards) {
      const fs::path setting = OnBoard(other.home + std::string("config/selectHttpUsb.cfg"));
      EXPECT_EQ(fs::exists(setting), other.home == std::string(board.home)) << board.os << setting;
    }
    fs::remove(OnBoard(board.home + std::string("config/selectHttpUsb.cfg")));
  }
}

}  // namespace
