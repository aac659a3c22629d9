// Settings of the cross-module test: files, defaults, and which values the program keeps.
#include "Settings.h"
#include "BoardSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TemporaryHome.h"

namespace {

namespace fs = std::filesystem;
using scripted::Play;

constexpr char kSourceFile[] = "config/selectHttpUsb.cfg";
constexpr char kDestinationFile[] = "config/report_send_to_USB_TFTP.config";
constexpr char kAutoSendFile[] = "config/auto_send_dumpData_to_TFTP.config";
constexpr char kTftpFile[] = "config/tftp_ip.cfg";
constexpr char kStampFile[] = "config/timeStamp.config";
constexpr char kAddressQuestion[] =
    "Please enter your TFTP Server IP\033[1;30m(Just input \"-\" to skip/clean setting)\033[m:";

class Settings : public TemporaryHome {};
class CrossModuleSettings : public AfterReboot {};

TEST_F(CrossModuleSettings, AreDefaultsOnAFreshBoard) {
  std::string stamp;
  std::string list;
  Play("", [&] {
    EXPECT_EQ(Get_USB_HTTP_Mode(), MODE_USB);
    EXPECT_EQ(Get_Auto_Send_DumpData(), 0);
    EXPECT_EQ(Get_Report_Send_To(), SEND_REPORT_USB_TFTP);
    EXPECT_EQ(Get_FreeRun_Mode(), 0);
    EXPECT_EQ(Get_SendPassReport(), 0);
    stamp = Get_Test_Timestamp();
    list = Get_Customized_TestCase_List();
    return 0;
  });
  EXPECT_EQ(stamp, "-");
  EXPECT_EQ(list, "-");
  EXPECT_EQ(Text(kSourceFile), "1\n");
  EXPECT_EQ(Text(kAutoSendFile), "0\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(Home() + "config"), {}), 2)
      << "reading creates only these two files";
  EXPECT_FALSE(fs::exists(Path("freeRun.config")));
  EXPECT_FALSE(fs::exists(Path("IsSendReportIfPass.config")));
}

struct SwitchCase {
  const char* setter;
  int (*set)(int);
  int (*get)();
  std::string path;
  int refusal;               // return value of the setter for an invalid value
  std::string confirmation;  // output of the setter for 1
  std::string afterRestart;  // content after a program found the file empty
};

TEST_F(CrossModuleSettings, SwitchesAcceptZeroAndOneAndClearTheirFileOtherwise) {
  const SwitchCase kSwitches[] = {
      {"Set_FreeRun_Mode", Set_FreeRun_Mode, Get_FreeRun_Mode, Path("freeRun.config"), -1,
       Message("Set_FreeRun_Mode", "set free run mode: 1\n"), ""},
      {"Set_SendPassReport", Set_SendPassReport, Get_SendPassReport,
       Path("IsSendReportIfPass.config"), -1,
       Message("Set_SendPassReport", "Send Pass Report: 1\n"), ""},
      {"Set_Auto_Send_DumpData", Set_Auto_Send_DumpData, Get_Auto_Send_DumpData,
       Home() + kAutoSendFile, 0, "", "0\n"},
  };
  for (const SwitchCase& c : kSwitches) {
    InAnEarlierProgram([&c] {
      auto run = Play("", [&c] { return c.set(1); });
      EXPECT_EQ(run.result, 0);
      EXPECT_EQ(run.output, c.confirmation);
      EXPECT_EQ(scripted::ReadFile(c.path), "1\n");
      for (const int wrong : {2, -1, 7}) {
        run = Play("", [&] { return c.set(wrong); });
        EXPECT_EQ(run.result, c.refusal);
        EXPECT_EQ(run.output,
                  Message(c.setter, "Error: canot identify mode " + std::to_string(wrong) + "\n"));
        EXPECT_EQ(c.get(), 1) << c.setter << ": this program keeps its value";
      }
    });
    EXPECT_TRUE(fs::exists(c.path)) << c.path;
    EXPECT_EQ(scripted::ReadFile(c.path), "") << c.path;
    EXPECT_EQ(c.get(), 0) << c.setter << " after a restart";
    EXPECT_EQ(scripted::ReadFile(c.path), c.afterRestart) << c.path;
    std::ofstream(c.path) << "1\n";
    EXPECT_EQ(c.get(), 0) << c.setter << " is read only once";
  }
}

TEST_F(Settings, ReportDestinationIsReadAtEveryCall) {
  const struct {
    const char* text;
    int value;
    const char* shown;
  } kCases[] = {{"0\n", 0, "Don't Send Report"},        {"1\n2\n", 1, "Send to USB only"},
                {" 2, please", 2, "Send to TFTP only"}, {"3", 3, "Send to both USB & TFTP"},
                {"4\n", 4, "(can not identify type)"},  {"-1\n", -1, "(can not identify type)"},
                {"usb\n", 0, "Don't Send Report"},      {"", 0, "Don't Send Report"}};
  for (const auto& c : kCases) {
    Write(kDestinationFile, c.text);
    EXPECT_EQ(Get_Report_Send_To(), c.value) << c.text;
    const auto run =
        Play("", [&c] { return Set_Report_Send_To(static_cast<SEND_REPORT_TO_TYPE>(c.value)); });
    EXPECT_EQ(run.output,
              Message("Set_Report_Send_To", std::string("Send Report to:") + c.shown + "\n"));
    EXPECT_EQ(Text(kDestinationFile), std::to_string(c.value) + "\n");
  }
}

TEST_F(Settings, CustomizedListIsReadAtEveryCall) {
  EXPECT_EQ(Set_Customized_TestCase_List("1, 2"), 0);
  EXPECT_EQ(Text("config/customized_test_num.cfg"), "1, 2\n");
  Write("config/customized_test_num.cfg", "3,4\n5\n");
  EXPECT_EQ(Get_Customized_TestCase_List(), "3,4");
}

TEST_F(Settings, ContentSourceSetsPathsAndPlayer) {
  setenv("CVN_HTTP_CONTENT_SERVER", "10.0.0.2:8080", 1);
  const std::string emmc = Home() + "cross_module_content_v1/";
  const std::string usb = "/tmp/usb/cross_module_content_v1/";
  const std::string http = "http://10.0.0.2:8080/cross_module_content_v1/";
  const std::string player = "gst_root/usr/bin/gst-cvn-test-1.0 --gst-debug=0 -c IP1+IP2  ";
  const std::string board = Message("Get_Board_OS_System", "unknown OS, return OS_ANDROID_O\n");
  const auto path = [](const std::string& text) { return Message("Init_Content_Path", text); };
  const struct {
    int mode;
    std::string home;
    std::string prefix;
    std::string told;
  } kCases[] = {
      {MODE_USB, usb, Home() + player + "-pf ", board},
      {MODE_EMMC, emmc, Home() + player + "-pf ",
       path("Copy content from " + usb + " to " + emmc + " , please wait...\n") + board +
           path("Current setting: EMMC,  testing file home = " + emmc + "\n")},
      {MODE_HTTP, http, player + "-pu ",
       path("Current setting: HTTP, testing file home = " + http + "\n")},
      {7, http, player + "-pu ", path("Can not recognize your selection!\n")},
  };
  for (const auto& c : kCases) {
    const auto run =
        Play("", [&c] { return Set_USB_HTTP_Mode(static_cast<USB_HTTP_MODE_TYPE>(c.mode)); });
    const std::string mode = std::to_string(c.mode);
    EXPECT_EQ(run.output,
              c.told + Message("Set_USB_HTTP_Mode",
                               "set mode: " + mode + ", testing file home = " + c.home + "\n"));
    EXPECT_EQ(ContentHome(), c.home);
    EXPECT_EQ(PlayerCommandPrefix(), c.prefix);
    EXPECT_EQ(Text(kSourceFile), mode + "\n");
    EXPECT_EQ(Get_USB_HTTP_Mode(), c.mode);
  }
  fs::create_directory(emmc);
  Play("", [] { return Set_USB_HTTP_Mode(MODE_EMMC); });
  EXPECT_EQ(scripted::Commands(),
            std::vector<std::string>{"mkdir -p " + emmc + "; cp " + usb + "* " + emmc})
      << "existing content is not copied again";
}

TEST_F(Settings, ContentSourceOfAnEarlierProgramIsRestored) {
  Write(kSourceFile, "3\nsurplus\n");
  EXPECT_EQ(Play("", Get_USB_HTTP_Mode).result, MODE_HTTP);
  EXPECT_EQ(ContentHome(), "http://content.local/cross_module_content_v1/");
  EXPECT_EQ(Text(kSourceFile), "3\n") << "reading rewrites it";
  Write(kSourceFile, "1\n");
  EXPECT_EQ(Get_USB_HTTP_Mode(), MODE_HTTP);
}

TEST_F(Settings, AreKeptUntilTheProgramEndsWithoutAHome) {
  SetCrossModuleHome(Home() + "missing/");
  Play("10.0.0.1\n", [] {
    Set_USB_HTTP_Mode(MODE_HTTP);
    Set_Auto_Send_DumpData(1);
    Set_TFTP_IP_by_User();
    Set_Test_Timestamp();
    return 0;
  });
  EXPECT_EQ(Get_USB_HTTP_Mode(), MODE_HTTP);
  EXPECT_EQ(Get_Auto_Send_DumpData(), 1);
  EXPECT_EQ(Get_TFTP_IP(), "10.0.0.1");
  EXPECT_NE(Get_Test_Timestamp(), "-");
  EXPECT_FALSE(Exists("missing")) << "no setting creates the home";
}

TEST_F(Settings, TftpServerIsPromptedForOnce) {
  std::string address;
  const auto ask = [&address] { return address = Get_TFTP_IP(), 0; };
  EXPECT_EQ(Play("10.1.2.3\n", ask).output,
            Message("Set_TFTP_IP_by_User", kAddressQuestion) +
                Message("Set_TFTP_IP_by_User", "Current TFTP Server IP is 10.1.2.3\n"));
  EXPECT_EQ(address, "10.1.2.3");
  EXPECT_EQ(Text(kTftpFile), "10.1.2.3\n");
  EXPECT_FALSE(Exists(kDestinationFile));
  EXPECT_EQ(Play("10.9.9.9\n", ask).output, "");
  EXPECT_EQ(address, "10.1.2.3");
}

TEST_F(Settings, StoredTftpServerIsUsedWithoutAPrompt) {
  Write(kTftpFile, "server.local\nsurplus\n");
  EXPECT_EQ(Get_TFTP_IP(), "server.local");
}

TEST_F(Settings, WithoutATftpServerReportsGoOnlyToUsb) {
  Play("-\n", [] { return Set_TFTP_IP_by_User(), 0; });
  EXPECT_EQ(Get_TFTP_IP(), "-");
  EXPECT_EQ(Text(kTftpFile), "-\n");
  EXPECT_EQ(Text(kDestinationFile), "1\n");
}

TEST_F(Settings, TftpServerMustBeOneShellWord) {
  for (const std::string good : {"fe80::1", "tftp-2.Farm.local", "", "-"}) {
    const auto run = Play(good + "\n", [] { return Set_TFTP_IP_by_User(), 0; });
    EXPECT_EQ(Text(kTftpFile), good + "\n") << run.output;
  }
  for (const std::string bad :
       {"a b", " ", "1.2.3.4;reboot", "$(reboot)", "`reboot`", "a/b", "-l", "--", "a&", "h\xc3\xa4",
        "a\tb", "*", "user@host", "a|b", "'a'", "\\"}) {
    const auto run = Play(bad + "\n" + "good\n", [] { return Set_TFTP_IP_by_User(), 0; });
    EXPECT_EQ(run.output,
              Message("Set_TFTP_IP_by_User", kAddressQuestion) +
                  Message("Set_TFTP_IP_by_User", "Not a server's name or address: " + bad + "\n") +
                  Message("Set_TFTP_IP_by_User", kAddressQuestion) +
                  Message("Set_TFTP_IP_by_User", "Current TFTP Server IP is good\n"));
    EXPECT_EQ(Text(kTftpFile), "good\n");
  }
  EXPECT_TRUE(scripted::Commands().empty());
}

TEST(ShellWord, IsOneWordForAShell) {
  std::string script;
  for (char c = 1; c < 127; ++c) {
    for (const std::string& word :
         {std::string(1, c), c + std::string("root"), std::string{'a', c, 'b'}}) {
      if (!IsShellWord(word)) continue;
      script.append("set -- ")
          .append(word)
          .append("; [ $#:$1 = '1:")
          .append(word)
          .append("' ] || exit 1\n");
    }
  }
  EXPECT_EQ(crossmodule::RunForReal(script + ":"), 0);
  EXPECT_TRUE(IsShellWord("R501-2_a.b/c:d+e,f=g@h%i[j]^"));
  EXPECT_FALSE(IsShellWord(""));
  EXPECT_FALSE(IsShellWord("a\x7f"));
}

std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof text, "%m%d_%H%M%S", std::localtime(&now));
  return text;
}

TEST_F(Settings, TimeStampIsInLocalTime) {
  setenv("TZ", "XYZ-5:30", 1);
  const std::string before = Now();
  const auto run = Play("", [] { return Set_Test_Timestamp(), 0; });
  const std::string after = Now();
  const std::string stamp = Get_Test_Timestamp();
  EXPECT_TRUE(stamp == before || stamp == after) << before << ' ' << stamp << ' ' << after;
  EXPECT_EQ(run.output, Message("Set_Test_Timestamp", "Test Time: " + stamp + "\n"));
  EXPECT_EQ(Text(kStampFile), stamp + "\n");
  Write(kStampFile, "0101_000000\n");
  EXPECT_EQ(Get_Test_Timestamp(), stamp);
}

TEST_F(Settings, TimeStampOfAnEarlierProgramIsReused) {
  EXPECT_EQ(Get_Test_Timestamp(), "-");
  Write(kStampFile, "0315_142501\n");
  EXPECT_EQ(Get_Test_Timestamp(), "0315_142501") << "no time stamp was read before";
}

TEST_F(Settings, VersionIsUnknownWithoutProperties) {
  if (fs::exists("/default.prop")) GTEST_SKIP() << "this machine has properties";
  EXPECT_EQ(Get_SW_Version(), "--");
}

TEST_F(Settings, OneBoardHasADifferentPlayer) {
  crossmodule::PretendBoardFile("/home/core.1st");
  EXPECT_EQ(Get_Board_OS_System(), OS_SORVEX);
  EXPECT_EQ(Play("", [] { return Init_Content_Path(MODE_USB); }).output, "");
  EXPECT_EQ(PlayerCommandPrefix(), "gst-cvn-test-1.0 \"playbin3 uri=file://");
  Play("", [] { return Init_Content_Path(MODE_HTTP); });
  EXPECT_TRUE(PlayerCommandPrefix().ends_with(" -pu "));
}

TEST_F(Settings, BoardDirectoriesAreSetOnce) {
  crossmodule::PretendBoardFile("/vendor/corvana/pelxos");
  CM_Playback_Init();
  EXPECT_EQ(CrossModuleHome(), "/nvram/data/cross_module/");
  EXPECT_EQ(UsbMountPoint(), "/media/ext1:");
  SetCrossModuleHome("/elsewhere/");
  CM_Playback_Init();
  EXPECT_EQ(CrossModuleHome(), "/elsewhere/");
}

}  // namespace
