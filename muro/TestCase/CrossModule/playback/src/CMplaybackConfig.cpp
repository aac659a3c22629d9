// The menu entries for settings.
#include <cstdlib>
#include <string>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Ansi.h"
#include "BoardSetup.h"
#include "CMplaybackTestCase.h"
#include "ConsoleInput.h"
#include "MenuItem.h"

namespace {

/// A setting that is 0 or 1, with the texts of its menu entry.
struct SwitchEntry {
  const char* function;
  int (*get)();
  int (*set)(int);
  const char* current[2];  // the value printed before the question
  const char* choice[2];   // the question, before and after its "(default)"
  const char* chosen[2];   // the value printed after the answer
};

int AskSwitch(const SwitchEntry& entry) {
  StartMenuItem(entry.function);
  CmLog(entry.function) << entry.current[entry.get() == 0 ? 0 : 1] << '\n';
  CmLog(entry.function) << entry.choice[0] << ansi::kGrey << "(default)" << ansi::kReset
                        << entry.choice[1];
  console::NotePrompt(entry.choice[0]);
  entry.set(std::atoi(console::ReadLine().c_str()));
  const int value = entry.get();
  const bool known = value == 0 || value == 1;
  CmLog(entry.function) << (known ? entry.chosen[value] : kNotRecognised) << '\n';
  return 0;
}

void ShowContentSource(const char* function) {
  static constexpr const char* kSources[] = {"USB,  ", "EMMC, ", "HTTP, "};
  const int mode = Get_USB_HTTP_Mode();
  if (mode < MODE_USB || mode > MODE_HTTP) {
    CmLog(function) << kNotRecognised << '\n';
    return;
  }
  CmLog(function) << "Current setting: " << kSources[mode - MODE_USB]
                  << "testing file home= " << ContentHome() << '\n';
}

void ShowDebugLevel(const char* function) {
  CmLog(function) << "Current level: " << Get_Debug_Level()
                  << (Get_Debug_Level() == 0 ? " (off)" : "") << '\n';
}

void ShowAndroid(const char* function) {
  CmLog(function) << "Current Status:" << (IsAndroidEnabled() ? "Enabled" : "Disabled") << '\n';
}

}  // namespace

int CMplaybackTestCase::CMplaybackTest_SetTestCaseGolden(char*) {
  StartMenuItem(__func__);
  ListTestCases();
  const int choice = AskSelection(__func__, TestCaseQuestion() + ": ");
  const CM_TestCase* testCase = TestCaseAt(choice);
  if (testCase == nullptr) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  Set_Current_TestCase(testCase->type);
  CmLog(__func__) << "Current Test Case: " << testCase->Get_TestCase_Name() << '\n';
  return 0;
}

int CMplaybackTestCase::CMplaybackTest_Switch_Usb_Http(char*) {
  StartMenuItem(__func__);
  ShowContentSource(__func__);
  const int mode = AskSelection(__func__, "Please select (1)USB (2)EMMC (3)HTTP in HQ: ");
  if (mode < MODE_USB || mode > MODE_HTTP) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 0;
  }
  Set_USB_HTTP_Mode(static_cast<USB_HTTP_MODE_TYPE>(mode));
  ShowContentSource(__func__);
  return 0;
}

int CMplaybackTestCase::CMplaybackTest_Config_Freerun(char*) {
  return AskSwitch({__func__,
                    Get_FreeRun_Mode,
                    Set_FreeRun_Mode,
                    {"Current setting: [0] NoFreeRun", "Current setting: [1] FreeRun"},
                    {"Please select [0]NoFreeRun", "  [1]FreeRun: "},
                    {"Current setting: NoFreeRun", "Current setting: FreeRun"}});
}

int CMplaybackTestCase::CMplaybackTest_Config_Debug_Level(char*) {
  StartMenuItem(__func__);
  ShowDebugLevel(__func__);
  const int level = AskSelection(__func__, "Please select [0]off (default) [1] level 1: ");
  if (level != 0 && level != 1) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 0;
  }
  Set_Debug_Level(level);
  ShowDebugLevel(__func__);
  return 0;
}

int CMplaybackTestCase::CMplaybackTest_Config_SendPassReport(char*) {
  static constexpr const char* kOff = "Current setting: [0] Dont Send Pass Report";
  static constexpr const char* kOn = "Current setting: [1] Do Send Pass Report";
  return AskSwitch({__func__,
                    Get_SendPassReport,
                    Set_SendPassReport,
                    {kOff, kOn},
                    {"Please select [0]Dont Send Pass Report", "    [1]Send Pass Report: "},
                    {kOff, kOn}});
}

int CMplaybackTestCase::CMplayback_Config_Report_Send_To(char*) {
  StartMenuItem(__func__);
  CmLog(__func__) << "For each time, when test is done, send the report to USB or TFTP?\n";
  const int to =
      AskSelection(__func__, "Send Report to [1]USB  [2]TFTP  [3]USB+TFTP . Please select: ");
  if (to < SEND_REPORT_USB || to > SEND_REPORT_USB_TFTP) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 0;
  }
  Set_Report_Send_To(static_cast<SEND_REPORT_TO_TYPE>(to));
  CmLog(__func__) << "Your Choose:" << Send_Report_Type_To_String(Get_Report_Send_To()) << '\n';
  return 0;
}

int CMplaybackTestCase::CMplaybackTest_Config_TFTP_IP(char*) {
  StartMenuItem(__func__);
  const std::string address = Get_TFTP_IP();  // may prompt the operator
  CmLog(__func__) << "Current TFTP Server IP is " << address << '\n';
  Set_TFTP_IP_by_User();
  return 0;
}

int CMplaybackTestCase::CMplayback_Config_Auto_Send_DumpData(char*) {
  return AskSwitch(
      {__func__,
       Get_Auto_Send_DumpData,
       Set_Auto_Send_DumpData,
       {"Current setting: [0] No", "Current setting: [1] Yes"},
       {"Please select [0] No", "    [1] Yes:  "},
       {"Set setting (0): Don't Auto Send Dump Data to TFTP Server when test case finished.",
        "Set setting (1): Auto Send Dump Data to TFTP Server when test case finished."}});
}

int CMplaybackTestCase::CMplaybackTest_Enable_Android(char*) {
  StartMenuItem(__func__);
  ShowAndroid(__func__);
  static constexpr char kQuestion[] = "Please select [0]Enable Android [1]Disable Android: ";
  CmLog(__func__) << kQuestion;
  console::NotePrompt(kQuestion);
  const std::string answer = console::ReadLine();
  if (answer != "0" && answer != "1") {
    CmLog(__func__) << kNotRecognised << '\n';
    return 0;
  }
  EnableAndroid(answer == "0");
  ShowAndroid(__func__);
  return 0;
}
