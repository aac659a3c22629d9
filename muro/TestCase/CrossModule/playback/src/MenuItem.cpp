#include "MenuItem.h"

#include <cstdlib>
#include <iostream>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "ConsoleInput.h"

void StartMenuItem(const char* function) {
  std::cout << "[CrossModule][Executing item: " << function << "] START \n";
  Init_TestCase_List();
  Init_Module_List();
}

void ListTestCases() {
  std::cout << "Playback Test Case List:\n";
  for (int number = 1; number <= TestCaseCount(); ++number) {
    std::cout << number << ". TestCase " << *TestCaseAt(number) << '\n';
  }
}

int AskSelection(const char* function, const std::string& question) {
  CmLog(function) << question;
  console::NotePrompt(question);
  return std::atoi(console::ReadLine().c_str());
}

std::string TestCaseQuestion() {
  return "Please Select[1] or [2] or [3] or ... or [" + std::to_string(TestCaseCount()) + "]";
}

CM_TestCase* TestCaseAt(int number) {
  if (number < 1 || number > TestCaseCount()) return nullptr;
  return &TestCaseList()[static_cast<std::size_t>(number)];
}

// Entry 0 of the catalogue is "unknown" and is never offered.
int TestCaseCount() {
  return static_cast<int>(TestCaseList().size()) - 1;
}
