#include "TestFrame.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <iostream>

#include "Ansi.h"
#include "ConsoleInput.h"
#include "ModuleList.h"
#include "TestReport.h"

namespace {

constexpr char kAllModuleAutoRun[] = "All Module Auto Run";
constexpr char kChoicePrompt[] = "Please enter a choice : ";
constexpr char kAutoRunByModule[] = "Auto Run Unit Test by Module";

constexpr struct {
  const char* name;
  const char* description;
} kMenuTexts[] = {
    {"HAL Driver Manual Test", "Here is HAL driver test"},
    {"Media Play Manual Test", "Here is media play test"},
    {"System Driver Manual Test", "Here is system driver test"},
    {"Vido Manual Test", "Here is Vedio test"},
    {"Manual Unit Test", "Here is manual unit test"},
    {"Auto Unit Test", "Here is auto unit test"},
    {kAllModuleAutoRun, "Here is all module"},
    {"Unit Test", "Here is unit test"},
    {"Cross Module Test - Manual Test", "Here is Cross Module Manual Test"},
    {"Cross Module Test - Auto Test", "Here is Cross Module Test"},
    {"Cross Module Test", "Here is Cross Module Test"},
    {"Q7T Related Module Test", "Here is Q7T Related Module Test"},
    {"MainMenu", "Here is Main Menu"},
};

bool RunsWhenEntered(const char* name) {
  return std::strcmp(name, kAllModuleAutoRun) == 0 || std::strcmp(name, kAutoRunByModule) == 0;
}

void PrintFootLine(const char* key, const char* text) {
  std::cout << ansi::kHeading << key << '.' << std::left << std::setw(20) << text << '\n'
            << ansi::kText;
}

}  // namespace

/// How a module's list of one category is read and what its menu node is called.
struct TestFrame::CategoryRow {
  Case* (Module::*test)(unsigned long) const;
  const char* (Module::*name)() const;
  const char* (Module::*description)() const;
};

const TestFrame::CategoryRow TestFrame::kCategories[kCategoryCount] = {
    {&Module::GetSICHALDriverTestList, &Module::getModuleHALDriverName,
     &Module::getModuleHALDriverDesc},
    {&Module::GetSICMediaPlayTestList, &Module::getModuleMediaPlayName,
     &Module::getModuleMediaPlayDesc},
    {&Module::GetSICSystemDriverTestList, &Module::getModuleSystemDriverName,
     &Module::getModuleSystemDriverDesc},
    {&Module::GetSICVideoTestList, &Module::getModuleVideoName, &Module::getModuleVideoDesc},
    {&Module::GetUnitTestList, &Module::getModuleUnitTestName, &Module::getModuleUnitTestDesc},
    {&Module::GetCrossModuleTestList_Playback, &Module::getModuleUnitTestName,
     &Module::getModuleUnitTestDesc},
    {&Module::GetCrossModuleTestList_AutoTest, &Module::getModuleUnitTestName,
     &Module::getModuleUnitTestDesc},
    {&Module::GetRlinkModuleTestList, &Module::getModuleRlinkTestName,
     &Module::getModuleRlinkTestDesc},
};

TestFrame* TestFrame::GetInstance() {
  static TestFrame* const instance = new TestFrame;
  return instance;
}

void TestFrame::DoInit() {
  for (const ModuleEntry& entry : ModuleList()) {
    if (entry.notice != nullptr) std::puts(entry.notice);
    entry.instance()->DoInit();
  }
  CreateMenus();
  AttachModules();
  JoinMenus();
  root_ = menus_[kRootMenu];
  current_ = root_;
}

int TestFrame::RegistTestModule(Module* module, EN_MURO_MODULE id) {
  if (static_cast<uint32_t>(id) >= kSlots) return 0;
  unsigned long playbackCount = 0;
  for (int i = 0; i < kCategoryCount; ++i) {
    const auto category = static_cast<Category>(i);
    // The auto-test list continues where the playback list ended.
    const unsigned long first = category == kAutoTest ? playbackCount : 0;
    const unsigned long end = RegisterList(*module, id, category, first);
    if (category == kPlayback) playbackCount = end;
  }
  return 1;
}

/// Returns the index at which the list ended, 0 for a list without tests of the module.
unsigned long TestFrame::RegisterList(const Module& module, EN_MURO_MODULE id, Category category,
                                      unsigned long first) {
  const CategoryRow& row = kCategories[category];
  if ((module.*row.test)(0) == nullptr) return 0;
  auto* node = new ModuleCase((module.*row.name)(), (module.*row.description)());
  nodes_[category][id] = node;
  unsigned long index = first;
  while (Case* test = (module.*row.test)(index)) {
    node->add(test);
    ++index;
  }
  return index;
}

void TestFrame::CreateMenus() {
  for (int i = 0; i < kMenuCount; ++i) {
    menus_[i] = new ModuleCase(kMenuTexts[i].name, kMenuTexts[i].description);
  }
}

void TestFrame::AttachModules() {
  for (std::size_t id = 0; id < kSlots; ++id) {
    Attach(kHalDriverMenu, nodes_[kHalDriver][id]);
    Attach(kMediaPlayMenu, nodes_[kMediaPlay][id]);
    Attach(kSystemDriverMenu, nodes_[kSystemDriver][id]);
    Attach(kVideoMenu, nodes_[kVideo][id]);
    AttachUnitNode(nodes_[kUnit][id]);
    Attach(kManualCrossModuleMenu, nodes_[kPlayback][id]);
    Attach(kAutoCrossModuleMenu, nodes_[kAutoTest][id]);
    Attach(kRlinkMenu, nodes_[kRlink][id]);
  }
}

/// A unit node is in three menus; the menu that it is added to last is its parent.
void TestFrame::AttachUnitNode(ModuleCase* node) {
  if (node == nullptr) return;
  auto* wrapper = new ModuleCase(kAutoRunByModule, node->getName());
  wrapper->add(node);
  autoRunWrappers_[autoRunWrapperCount_++] = wrapper;
  Attach(kAutoUnitMenu, wrapper);
  Attach(kAllModuleMenu, node);
  Attach(kManualUnitMenu, node);
}

void TestFrame::JoinMenus() {
  Attach(kAutoUnitMenu, menus_[kAllModuleMenu]);
  Attach(kUnitMenu, menus_[kManualUnitMenu]);
  Attach(kUnitMenu, menus_[kAutoUnitMenu]);
  Attach(kCrossModuleMenu, menus_[kManualCrossModuleMenu]);
  Attach(kCrossModuleMenu, nodes_[kAutoTest][EN_MURO_CM_AUTOTEST]);
  for (Menu menu : {kHalDriverMenu, kMediaPlayMenu, kSystemDriverMenu, kVideoMenu, kUnitMenu,
                    kCrossModuleMenu, kRlinkMenu}) {
    Attach(kRootMenu, menus_[menu]);
  }
}

void TestFrame::Attach(Menu menu, Case* child) {
  if (child != nullptr) menus_[menu]->add(child);
}

void TestFrame::PrintMenu() {
  const std::string rule = std::string(report::kLineWidth, '*') + '\n';
  std::cout << rule << ansi::kHeading << report::Centred(" cvntester ", '*') << '\n'
            << ansi::kText << rule << ansi::kHeading << report::Centred(current_->getName(), '*')
            << '\n'
            << ansi::kText << rule;
  current_->printMenu();
  std::cout << "\n\n";
  PrintFootLine("P", "PREVIOUS");
  PrintFootLine("Q", "Quit");
  std::cout << std::string(59, '-') << '\n' << ansi::kHeading << kChoicePrompt << ansi::kText;
  console::NotePrompt(kChoicePrompt);
}

int TestFrame::EnterMenu() {
  current_ = current_->enterMenu();
  if (current_ == nullptr) return 0;
  if (RunsWhenEntered(current_->getName())) {
    current_->Run();
    current_ = current_->getParaent();
  }
  return 1;
}
