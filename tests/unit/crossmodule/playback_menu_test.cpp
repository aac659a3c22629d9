// Menu entries of the playback module that set, select, verify and send: the operator's view.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "CMplaybackTestCase.h"
#include "Settings.h"
#include "TemporaryHome.h"
#include "TestCaseCatalogue.h"

namespace {

using scripted::Play;
using Entry = int (*)(char*);

constexpr char kNotRecognised[] = "Can not recognize your selection!\n";

scripted::Run Choose(Entry entry, const std::string& typed) {
  return Play(typed + "\n", [entry] { return entry(nullptr); });
}

/// The first output of an entry, followed by its messages.
std::string Printed(const std::string& name, const std::vector<std::string>& texts) {
  std::string printed = "[CrossModule][Executing item: " + name + "] START \n";
  for (const std::string& text : texts) printed += Message(name, text);
  return printed;
}

class CrossModuleMenu : public AfterReboot {
 protected:
  CrossModuleMenu() {
    setenv("CVN_HTTP_CONTENT_SERVER", "server", 1);
    Play("", Init_TestCase_List);
  }
};

struct SwitchEntry {
  const char* name;
  Entry entry;
  std::string setter;
  const char* confirmation;
  const char* question;
  const char* current[2];
  const char* chosen[2];
  std::string path;
};

void ChooseInTurn(const SwitchEntry& c) {
  const struct {
    const char* typed;
    int number;
    int value;  // from then on
  } kAnswers[] = {{"1", 1, 1},   {"2", 2, 1},       {"-1", -1, 1}, {"0 or 1", 0, 0}, {"9", 9, 0},
                  {" 1x", 1, 1}, {"FreeRun", 0, 0}, {"1", 1, 1},   {"", 0, 0}};
  int value = 0;
  for (const auto& answer : kAnswers) {
    const bool taken = answer.number == 0 || answer.number == 1;
    std::string expected = Printed(c.name, {c.current[value], c.question});
    const std::string number = std::to_string(answer.number) + "\n";
    if (!taken) expected += Message(c.setter, "Error: canot identify mode " + number);
    if (taken && *c.confirmation != '\0') expected += Message(c.setter, c.confirmation + number);
    value = answer.value;
    expected += Message(c.name, c.chosen[value]);
    const auto run = Choose(c.entry, answer.typed);
    EXPECT_EQ(run.output, expected) << answer.typed;
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(scripted::ReadFile(c.path), taken ? number : "") << answer.typed;
  }
}

TEST_F(CrossModuleMenu, SwitchesShowTheValuePromptAndConfirm) {
  constexpr char kOff[] = "Current setting: [0] Dont Send Pass Report\n";
  constexpr char kOn[] = "Current setting: [1] Do Send Pass Report\n";
  ChooseInTurn({"CMplaybackTest_Config_Freerun",
                CMplaybackTestCase::CMplaybackTest_Config_Freerun,
                "Set_FreeRun_Mode",
                "set free run mode: ",
                "Please select [0]NoFreeRun\033[1;30m(default)\033[m  [1]FreeRun: ",
                {"Current setting: [0] NoFreeRun\n", "Current setting: [1] FreeRun\n"},
                {"Current setting: NoFreeRun\n", "Current setting: FreeRun\n"},
                Path("freeRun.config")});
  ChooseInTurn({"CMplaybackTest_Config_SendPassReport",
                CMplaybackTestCase::CMplaybackTest_Config_SendPassReport,
                "Set_SendPassReport",
                "Send Pass Report: ",
                "Please select [0]Dont Send Pass Report\033[1;30m(default)\033[m    "
                "[1]Send Pass Report: ",
                {kOff, kOn},
                {kOff, kOn},
                Path("IsSendReportIfPass.config")});
  ChooseInTurn(
      {"CMplayback_Config_Auto_Send_DumpData",
       CMplaybackTestCase::CMplayback_Config_Auto_Send_DumpData,
       "Set_Auto_Send_DumpData",
       "",
       "Please select [0] No\033[1;30m(default)\033[m    [1] Yes:  ",
       {"Current setting: [0] No\n", "Current setting: [1] Yes\n"},
       {"Set setting (0): Don't Auto Send Dump Data to TFTP Server when test case finished.\n",
        "Set setting (1): Auto Send Dump Data to TFTP Server when test case finished.\n"},
       Home() + "config/auto_send_dumpData_to_TFTP.config"});
}

TEST_F(CrossModuleMenu, InvalidStoredValueIsNotRecognised) {
  WriteVolatile("freeRun.config", "7\n");
  const auto run = Choose(CMplaybackTestCase::CMplaybackTest_Config_Freerun, "8");
  EXPECT_TRUE(run.output.ends_with(Message("CMplaybackTest_Config_Freerun", kNotRecognised)))
      << run.output;
}

TEST_F(CrossModuleMenu, ReportDestination) {
  const std::string name = "CMplayback_Config_Report_Send_To";
  const std::string head =
      Printed(name, {"For each time, when test is done, send the report to USB or TFTP?\n",
                     "Send Report to [1]USB  [2]TFTP  [3]USB+TFTP . Please select: "});
  const std::pair<const char*, const char*> kAnswers[] = {{"2", "Send to TFTP only\n"},
                                                          {"3", "Send to both USB & TFTP\n"},
                                                          {"1", "Send to USB only\n"},
                                                          {"0", nullptr},
                                                          {"4", nullptr},
                                                          {"-1", nullptr},
                                                          {"USB", nullptr},
                                                          {"", nullptr}};
  for (const auto& [typed, shown] : kAnswers) {
    const auto run = Choose(CMplaybackTestCase::CMplayback_Config_Report_Send_To, typed);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.output,
              head + (shown == nullptr
                          ? Message(name, kNotRecognised)
                          : Message("Set_Report_Send_To", std::string("Send Report to:") + shown) +
                                Message(name, std::string("Your Choose:") + shown)))
        << typed;
  }
  EXPECT_EQ(Text("config/report_send_to_USB_TFTP.config"), "1\n")
      << "invalid answers change nothing";
}

TEST_F(CrossModuleMenu, ContentSource) {
  std::filesystem::create_directory(Home() + "cross_module_content_v1");
  const std::string name = "CMplaybackTest_Switch_Usb_Http";
  const std::string kSettings[] = {
      "Current setting: USB,  testing file home= /tmp/usb/cross_module_content_v1/\n",
      "Current setting: EMMC, testing file home= " + Home() + "cross_module_content_v1/\n",
      "Current setting: HTTP, testing file home= http://server/cross_module_content_v1/\n"};
  std::size_t source = 0;
  for (const char* typed : {"2", "3", "0", "4", "HTTP", "", "1", "2 please"}) {
    const std::string head =
        Printed(name, {kSettings[source], "Please select (1)USB (2)EMMC (3)HTTP in HQ: "});
    const bool taken = *typed >= '1' && *typed <= '3';
    if (taken) source = static_cast<std::size_t>(*typed - '1');
    const auto run = Choose(CMplaybackTestCase::CMplaybackTest_Switch_Usb_Http, typed);
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(run.output.starts_with(head)) << run.output;
    EXPECT_TRUE(run.output.ends_with(Message(name, taken ? kSettings[source] : kNotRecognised)))
        << run.output;
    EXPECT_EQ(Text("config/selectHttpUsb.cfg"), std::to_string(source + 1) + "\n");
  }
}

TEST_F(CrossModuleMenu, TftpServerIsPromptedForShownAndPromptedForAgain) {
  const std::string name = "CMplaybackTest_Config_TFTP_IP";
  const std::string setter = "Set_TFTP_IP_by_User";
  const std::string question = Message(
      setter,
      "Please enter your TFTP Server IP\033[1;30m(Just input \"-\" to skip/clean setting)\033[m:");
  const auto run = Choose(CMplaybackTestCase::CMplaybackTest_Config_TFTP_IP, "10.0.0.1\n10.0.0.2");
  EXPECT_EQ(run.output, Printed(name, {}) + question +
                            Message(setter, "Current TFTP Server IP is 10.0.0.1\n") +
                            Message(name, "Current TFTP Server IP is 10.0.0.1\n") + question +
                            Message(setter, "Current TFTP Server IP is 10.0.0.2\n"));
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(Text("config/tftp_ip.cfg"), "10.0.0.2\n");
}

TEST_F(CrossModuleMenu, DebugLevel) {
  const std::string name = "CMplaybackTest_Config_Debug_Level";
  const std::string kLevels[] = {"Current level: 0 (off)\n", "Current level: 1\n"};
  int level = 0;
  for (const auto& [typed, next] : std::vector<std::pair<const char*, int>>{
           {"1", 1}, {"2", -1}, {"-1", -1}, {"", 0}, {"1", 1}, {"off", 0}}) {
    std::string expected =
        Printed(name, {kLevels[level], "Please select [0]off (default) [1] level 1: "});
    if (next >= 0) level = next;
    expected += Message(name, next >= 0 ? kLevels[level] : kNotRecognised);
    EXPECT_EQ(Choose(CMplaybackTestCase::CMplaybackTest_Config_Debug_Level, typed).output, expected)
        << typed;
    EXPECT_EQ(Get_Debug_Level(), level);
  }
  EXPECT_TRUE(scripted::Commands().empty()) << "it affects only the verification";
}

TEST_F(CrossModuleMenu, GoldenDataAreSelectedByListPosition) {
  const std::string name = "CMplaybackTest_SetTestCaseGolden";
  for (const auto& [typed, now] :
       std::vector<std::pair<const char*, const char*>>{{"2", "102-h264-ResChg"},
                                                        {"0", nullptr},
                                                        {"13", nullptr},
                                                        {"-1", nullptr},
                                                        {"memc", nullptr},
                                                        {"12", "604-sdr-hlg"}}) {
    const auto run = Choose(CMplaybackTestCase::CMplaybackTest_SetTestCaseGolden, typed);
    EXPECT_EQ(run.result, now == nullptr ? 1 : 0) << typed;
    EXPECT_NE(run.output.find("\n2. TestCase 102          h264-ResChg\033[0;37m path: "),
              std::string::npos);
    EXPECT_EQ(run.output.find("unknown"), std::string::npos);
    EXPECT_TRUE(run.output.ends_with(
        Message(name, "Please Select[1] or [2] or [3] or ... or [12]: ") +
        Message(name,
                now == nullptr ? kNotRecognised : "Current Test Case: " + std::string(now) + "\n")))
        << run.output;
  }
  EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "604\n");
}

TEST_F(CrossModuleMenu, OneStageIsVerifiedByListPosition) {
  for (const char* typed : {"0", "8", "-1", "VDEC", ""}) {
    const auto run = Choose(CMplaybackTestCase::CMplayback_Verify_One_Module, typed);
    EXPECT_EQ(run.result, 1);
    EXPECT_TRUE(run.output.ends_with(
        Message("CMplayback_Verify_One_Module", "Please Select[1] or [2] or [3] or ... or [7]: ") +
        Message("CMplayback_Verify_One_Module", kNotRecognised)))
        << run.output;
  }
  Set_Current_TestCase(401);
  const auto run = Choose(CMplaybackTestCase::CMplayback_Verify_One_Module, "6");
  EXPECT_EQ(run.result, 1) << "there is no golden file";
  EXPECT_NE(run.output.find("=======> Verify: [Scaler]\n"), std::string::npos) << run.output;
}

TEST_F(CrossModuleMenu, NothingIsDoneForAnUnknownCase) {
  Set_Current_TestCase(999);
  for (const Entry entry :
       {CMplaybackTestCase::CMplayback_Verify_One_Module, CMplaybackTestCase::CMplayback_Verify_All,
        CMplaybackTestCase::CMplayback_Verify_AVsync,
        CMplaybackTestCase::CMplaybackTest_Package_AllInOne}) {
    const auto run = Choose(entry, "1");
    EXPECT_EQ(run.result, 1);
    EXPECT_NE(run.output.find("unknown test case\n"), std::string::npos) << run.output;
  }
  EXPECT_TRUE(scripted::Commands().empty());
}

TEST_F(CrossModuleMenu, EndOfInputKeepsTheSetting) {
  EXPECT_EXIT(Play("", [] { return CMplaybackTestCase::CMplaybackTest_Config_Freerun(nullptr); }),
              testing::ExitedWithCode(1), "");
  EXPECT_FALSE(std::filesystem::exists(Path("freeRun.config")));
}

}  // namespace
