#include "Case.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <optional>
#include <string>

#include "Ansi.h"
#include "CallMarks.h"
#include "ConsoleInput.h"
#include "Shell.h"
#include "TestReport.h"

namespace {

constexpr std::size_t kLongestChoice = 19;

TestCase* runningTest = nullptr;
void (*beginObserver)(const TestCase& test) = nullptr;

const char* CopyText(const char* text) {
  const std::size_t length = text == nullptr ? 0 : std::strlen(text);
  char* copy = new char[length + 1]();
  std::copy_n(text, length, copy);
  return copy;
}

}  // namespace

ModuleCase::ModuleCase(const char* name, const char* desc) : Case(CopyText(name), CopyText(desc)) {}

ModuleCase::~ModuleCase() {
  delete[] name_;
  delete[] description_;
}

int ModuleCase::Run() {
  for (Case* child : children_) child->Run();
  return 0;
}

void ModuleCase::add(Case* child) {
  children_.push_back(child);
  child->setParaent(this);
}

void ModuleCase::remove(Case*) {
  if (!children_.empty()) children_.pop_back();
}

Case* ModuleCase::getChild(unsigned short index) {
  return index < children_.size() ? children_[index] : nullptr;
}

unsigned short ModuleCase::getChildCount() {
  return static_cast<unsigned short>(children_.size());
}

Case* ModuleCase::enterMenu() {
  const auto choice = console::ReadToken(kLongestChoice, console::Overlong::kKeep);
  if (!choice || strcasecmp(choice->c_str(), "Q") == 0) return nullptr;
  if (strcasecmp(choice->c_str(), "P") == 0) return getParaent();
  // A choice that is not a number reads as 0.
  const long index = std::strtol(choice->c_str(), nullptr, 10);
  if (index < 0 || index >= getChildCount()) return this;
  return getChild(static_cast<unsigned short>(index));
}

void ModuleCase::printMenu() {
  for (std::size_t i = 0; i < children_.size(); ++i) {
    std::cout << ansi::kList << std::left << std::setw(2) << i << '.' << std::setw(30)
              << children_[i]->getName() << " (" << children_[i]->getDescription() << ")\n"
              << ansi::kText;
  }
}

TestCase::TestCase(const ST_THAL_TEST_CASE_T* record)
    : Case(record->name, record->description),
      autoJudge_(record->autoJudge),
      traits_(record->traits),
      id_(record->id),
      function_(record->function) {}

int TestCase::Run() {
  result_ = 1;
  if (function_ == nullptr) return 1;

  console::SetEndOfInputHandler(&TestCase::FailRunningTest);
  Execute();
  console::SetEndOfInputHandler(nullptr);

  Finish(result_);
  return result_;
}

int TestCase::Execute() {
  result_ = 1;
  char scratch[300] = {};
  if (function_ == nullptr) return 1;

  runningTest = this;
  if (beginObserver != nullptr) beginObserver(*this);
  callmarks::TestBegins(id_, getName(), getDescription());
  const unsigned shellFailures = ShellFailures();
  result_ = function_(scratch);
  if (result_ == 0 && ShellFailures() != shellFailures) result_ = 1;
  if (result_ == 0 && !autoJudge_) Judge();
  callmarks::TestEnds(id_, getName(), getDescription(), result_ == 0 ? "PASS" : "FAIL");
  runningTest = nullptr;
  return result_;
}

// Only a clear "N" fails the test: any other answer passes it.
void TestCase::Judge() {
  std::cout << ansi::kList << getName() << " has been executed \n"
            << ansi::kList << kVerdictQuestion << ansi::kText;
  console::NotePrompt(kVerdictQuestion);
  if (strcasecmp(console::ReadAnswer().c_str(), "N") == 0) result_ = 1;
}

bool TestCase::Finish(int result) {
  result_ = result;
  if (result_ == 0) ++testCounters.pass;
  if (result_ == 1) ++testCounters.fail;
  ++testCounters.total;
  return EndTest();
}

void TestCase::SetBeginObserver(void (*observer)(const TestCase& test)) {
  beginObserver = observer;
}

const TestCase* TestCase::Running() {
  return runningTest;
}

void TestCase::FailRunningTest() {
  runningTest->Finish(1);
}

Case* TestCase::enterMenu() {
  Run();
  return getParaent();
}

void TestCase::printMenu() {
  std::cout << ansi::kPass << std::left << std::setw(20) << "  " << getName()
            << " will been executed \n"
            << ansi::kText;
}

bool TestCase::EndTest() {
  Case* menu = getParaent();
  return report::AppendTestLine(
      {menu == nullptr ? "" : menu->getName(), id_, getName(), getDescription(), result_});
}
