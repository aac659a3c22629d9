// The frame: registry of the test modules, the menu tree built from it, and the steps of the menu
// loop.
#pragma once

#include <cstddef>

#include "Case.h"
#include "Module.h"

class TestFrame {
 public:
  /// The single instance, created on first use and never destroyed.
  static TestFrame* GetInstance();

  /// Initialises every module of the module list and builds the menu tree. Called once.
  void DoInit();

  /// Creates one menu node per non-empty test list of the module. Returns 1, or 0 if `id` has no
  /// slot.
  int RegistTestModule(Module* module, EN_MURO_MODULE id);

  /// Prints the current menu with its header, its footer and the prompt.
  void PrintMenu();

  /// Reads one choice and follows it. Returns 1 to continue, 0 to quit.
  int EnterMenu();

  /// The current menu, null before `DoInit` and after the operator has quit.
  Case* getCurrentMenu() const { return current_; }

 private:
  enum Category {
    kHalDriver,
    kMediaPlay,
    kSystemDriver,
    kVideo,
    kUnit,
    kPlayback,
    kAutoTest,
    kRlink,
    kCategoryCount,
  };
  enum Menu {
    kHalDriverMenu,
    kMediaPlayMenu,
    kSystemDriverMenu,
    kVideoMenu,
    kManualUnitMenu,
    kAutoUnitMenu,
    kAllModuleMenu,
    kUnitMenu,
    kManualCrossModuleMenu,
    kAutoCrossModuleMenu,
    kCrossModuleMenu,
    kRlinkMenu,
    kRootMenu,
    kMenuCount,
  };
  struct CategoryRow;

  static const CategoryRow kCategories[kCategoryCount];
  static constexpr std::size_t kSlots = EN_MURO_MODULE_COUNT;

  TestFrame() = default;

  unsigned long RegisterList(const Module& module, EN_MURO_MODULE id, Category category,
                             unsigned long first);
  void CreateMenus();
  void AttachModules();
  void AttachUnitNode(ModuleCase* node);
  void JoinMenus();
  void Attach(Menu menu, Case* child);

  ModuleCase* nodes_[kCategoryCount][kSlots] = {};
  ModuleCase* menus_[kMenuCount] = {};
  ModuleCase* autoRunWrappers_[kSlots] = {};
  std::size_t autoRunWrapperCount_ = 0;
  Case* root_ = nullptr;
  Case* current_ = nullptr;
};
