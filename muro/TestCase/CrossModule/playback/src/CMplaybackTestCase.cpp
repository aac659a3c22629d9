#include "CMplaybackTestCase.h"

#include <charconv>
#include <iostream>
#include <string>

#include "../../stages/src/BoardConnections.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../verify/src/ModuleVerification.h"
#include "../../verify/src/ReportDelivery.h"
#include "AutoRun.h"
#include "BoardSetup.h"
#include "ConsoleInput.h"
#include "GoldenData.h"
#include "MenuItem.h"
#include "UserTestCase.h"

namespace {

constexpr int kAddTestCase = 100;  // typed instead of a number of the list
constexpr char kComboList[] = "1,2";

void ListStages(const char* function) {
  int number = 0;
  for (const CM_Module& module : ModuleTypeList()) {
    CmLog(function) << ++number << ". " << Module_Type_To_String_Simple(module.type) << '\n';
  }
}

enum Again { kPrepareAgain = 1, kLeaveAsItIs = 2 };

/// Asks whether a prepared board is to be prepared again, and prints the choice.
int AskAgain(const char* function) {
  CmLog(function) << "You have already done this step, do it anyway? \n";
  const int choice = AskSelection(function, "Please choose [1]Yes: do it [2]No:exit this step ");
  CmLog(function) << (choice == kPrepareAgain  ? "OK, do it again"
                      : choice == kLeaveAsItIs ? "Exit this item"
                                               : kNotRecognised)
                  << '\n';
  return choice;
}

/// Asks for the customized list; an empty answer keeps the list shown. A list that contains only
/// unknown numbers is not stored.
std::vector<CM_TestCase*> AskCustomizedTestCases(const char* function) {
  const std::string kept = Get_Customized_TestCase_List();
  ListTestCases();
  CmLog(function) << "Current customized list: " << kept << '\n';
  static constexpr char kQuestion[] =
      "Please enter the list of test cases (ex. 1,2; empty: keep): ";
  CmLog(function) << kQuestion;
  console::NotePrompt(kQuestion);
  const std::string typed = console::ReadLine();
  std::vector<CM_TestCase*> cases = SelectTestCases(typed.empty() ? kept : typed, function);
  if (!typed.empty() && !cases.empty()) Set_Customized_TestCase_List(typed);
  return cases;
}

/// Prompts for the number of rounds; returns 0 if the answer is not a number.
int AskRounds(const char* function) {
  static constexpr char kQuestion[] = "Please enter the number of rounds: ";
  CmLog(function) << kQuestion;
  console::NotePrompt(kQuestion);
  const std::string answer = console::ReadLine();
  int rounds = 0;
  const char* end = answer.data() + answer.size();
  const auto [rest, error] = std::from_chars(answer.data(), end, rounds);
  return error == std::errc() && rest == end && rounds > 0 ? rounds : 0;
}

}  // namespace

int CMplaybackTestCase::CMplaybackTest_Env_Init(char*) {
  StartMenuItem(__func__);
  const int choice =
      Check_If_CrossModulePlayback_Env_Setup() ? AskAgain(__func__) : int{kPrepareAgain};
  if (choice == kPrepareAgain) PrepareBoard();
  return choice == kPrepareAgain || choice == kLeaveAsItIs ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_AutoTest_Customized(char*) {
  StartMenuItem(__func__);
  const std::vector<CM_TestCase*> cases = AskCustomizedTestCases(__func__);
  const int rounds = cases.empty() ? 1 : AskRounds(__func__);
  if (rounds == 0) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  return RunRounds(cases, rounds, Checks::kAll);
}

int CMplaybackTestCase::CMplaybackTest_AutoTest_AVsync(char*) {
  StartMenuItem(__func__);
  return RunRounds({FindTestCase(kAvSyncTestCase)}, 1, Checks::kSyncOnly);
}

int CMplaybackTestCase::CMplaybackTest_AutoTest_RdTestCombo_Tolva3DemoBaord(char*) {
  StartMenuItem(__func__);
  return RunRounds(SelectTestCases(kComboList, __func__), 1, Checks::kAll);
}

int CMplaybackTestCase::CMplaybackTest_AutoTest_All(char*) {
  StartMenuItem(__func__);
  return RunRounds(AllTestCases(), 1, Checks::kAll);
}

int CMplaybackTestCase::CMplaybackTest_StartTestCase(char*) {
  StartMenuItem(__func__);
  CmLog(__func__) << "[CPlayback Test Case List]\n";
  ListTestCases();
  std::cout << kAddTestCase << ". Add a test case by user\n";
  const int choice = AskSelection(__func__, TestCaseQuestion() + " or [100]: ");
  if (choice == kAddTestCase) {
    AddUserTestCase(__func__);
    return 0;
  }
  CM_TestCase* testCase = TestCaseAt(choice);
  if (testCase == nullptr) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  Set_Test_Timestamp();
  return RunAndVerify(testCase, Checks::kAll) == Verdict::kPass ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_Overwrite_Local_Golden(char*) {
  StartMenuItem(__func__);
  return Overwrite_Local_Golden() == 0 ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_Restore_Local_Golden(char*) {
  StartMenuItem(__func__);
  return Restore_Local_Golden();
}

int CMplaybackTestCase::CMplaybackTest_Mount_USB(char*) {
  StartMenuItem(__func__);
  return Mount_USB() == 0 ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_Setup_PCB_IP(char*) {
  StartMenuItem(__func__);
  const int status = Setup_PCB_IP();
  if (status == 1) CmLog(__func__) << "nothing to do: no content, report or dump needs a network\n";
  return status == 0 ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Verify_One_Module(char*) {
  StartMenuItem(__func__);
  ListStages(__func__);
  const int choice = AskSelection(__func__, "Please Select[1] or [2] or [3] or ... or [7]: ");
  if (choice < 1 || choice > static_cast<int>(ModuleTypeList().size())) {
    CmLog(__func__) << kNotRecognised << '\n';
    return 1;
  }
  const CM_Module& module = ModuleTypeList()[static_cast<std::size_t>(choice) - 1];
  return VerifyOneModule(module.type) ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Verify_All(char*) {
  return VerifyAll() ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Verify_AVsync(char*) {
  return VerifyAvSyncAlone() ? 0 : 1;
}

int CMplaybackTestCase::CMplaybackTest_Package_AllInOne(char*) {
  StartMenuItem(__func__);
  const std::string archive = Get_Report_Name(kReportArchive, true);
  if (archive.empty()) return 1;
  return Package_AllinOne(true) && Send_Report_File(archive) ? 0 : 1;
}

int CMplaybackTestCase::CMplayback_Send_Dump_To_TFTP(char*) {
  StartMenuItem(__func__);
  return Send_Dump_To_TFTP() ? 0 : 1;
}
