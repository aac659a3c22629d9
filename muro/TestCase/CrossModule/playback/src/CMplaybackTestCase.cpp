#include "CMplaybackTestCase.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "../../verify/src/AvSync.h"
#include "../../verify/src/ModuleVerification.h"
#include "../../verify/src/ReportDelivery.h"
#include "../../verify/src/VerifyReport.h"
#include "../../verify/src/VerifyResult.h"
#include "Ansi.h"
#include "ConsoleInput.h"
#include "CrossModuleLog.h"
#include "MenuItem.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"

namespace {

constexpr char kNotRecognised[] = "Can not recognize your selection!";

/// A setting that is 0 or 1, with the texts of its menu entry.
struct SwitchEntry {
  const char* function;
  int (*get)();
  int (*set)(int);
  const char* current[2];  // the value before the question
  const char* choice[2];   // the question, before and behind its "(default)"
  const char* chosen[2];   // the value behind the answer
};

int AskSwitch(const SwitchEntry& entry) {
  StartMenuItem(entry.function);
  CmLog(entry.function) << entry.current[entry.get() == 0 ? 0 : 1] << '\n';
  CmLog(entry.function) << entry.choice[0] << ansi::kGrey << "(default)" << ansi::kReset
                        << entry.choice[1];
  entry.set(std::atoi(console::ReadLine().c_str()));
  const int value = entry.get();
  const bool known = value == 0 || value == 1;
  CmLog(entry.function) << (known ? entry.chosen[value] : kNotRecognised) << '\n';
  return 0;
}

/// Prints the question and reads a line as a number; anything that does not begin with one is 0.
int AskSelection(const char* function, const char* question) {
  CmLog(function) << question;
  return std::atoi(console::ReadLine().c_str());
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

void ListStages(const char* function) {
  int number = 0;
  for (const CM_Module& module : ModuleTypeList()) {
    CmLog(function) << ++number << ". " << Module_Type_To_String_Simple(module.type) << '\n';
  }
}

/// A stage whose files are missing keeps its old result, which says nothing of this run.
bool HasPassed(const CM_Module& module) {
  const CM_TestCase* testCase = Get_Current_TestCase();
  return IsKnown(testCase) && access(module.dumpPath->c_str(), R_OK) == 0 &&
         access(testCase->Get_Golden_Path(module.type).c_str(), R_OK) == 0 &&
         module.result->wrongFields.empty() && module.result->verifyStatus == 0;
}

}  // namespace

int CMplaybackTestCase::CMplayback_Verify_One_Module(char*) {
  StartMenuItem(__func__);
  ListStages(__func__);
  const int choice = AskSelection(__func__, "Please Select[1] or [2] or [3] or ... or [7]: ");
  if (choice < 1 || choice > static_cast<int>(ModuleTypeList().size())) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  const CM_Module& module = ModuleTypeList()[static_cast<std::size_t>(choice) - 1];
  Verify_Module(module.type);
  return HasPassed(module) ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Verify_All(char*) {
  StartMenuItem(__func__);
  Verify_All_Modules();
  return Print_Verify_Result() ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Verify_AVsync(char*) {
  StartMenuItem(__func__);
  return Verify_AVsync() ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_SetTestCaseGolden(char*) {
  StartMenuItem(__func__);
  ListTestCases();
  const int choice = AskTestCase(__func__);
  const CM_TestCase* testCase = TestCaseAt(choice);
  if (testCase == nullptr) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  Set_Current_TestCase(testCase->type);
  CmLog(__func__) << "Current Test Case: " << testCase->Get_TestCase_Name() << '\n';
  return 0;
}

int CMplaybackTestCase::CMplaybackTest_Package_AllInOne(char*) {
  StartMenuItem(__func__);
  const std::string archive = Get_Report_Name(kReportArchive, true);
  if (archive.empty()) return 1;
  Package_AllinOne(true);
  Send_Report_File(archive);
  return 0;
}

int CMplaybackTestCase::CMplayback_Send_Dump_To_TFTP(char*) {
  StartMenuItem(__func__);
  Send_Dump_To_TFTP();
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
  const std::string address = Get_TFTP_IP();  // may ask
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
