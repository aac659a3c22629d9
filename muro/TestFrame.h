// The frame: registry of the test modules, the menu tree made from it, and the menu loop's steps.
#pragma once

#include <cstddef>

#include "Case.h"
#include "Module.h"

class TestFrame {
 public:
  /// The one instance, created on first use and never destroyed.
  static TestFrame* GetInstance();

  /// Initialises every module of the module list and builds the menu tree. Called once.
  void DoInit();

  /// Makes one menu node for each test list that the module fills. Returns 1, or 0 when `id` has no
  /// slot.
  int RegistTestModule(Module* module, EN_MURO_MODULE id);

  /// Prints the current menu with its head, its foot and the prompt.
  void PrintMenu();

  /// Reads and follows one choice. Returns 1 to go on, 0 to quit.
  int EnterMenu();

  /// The menu that is shown, empty before `DoInit` and after the operator quit.
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
