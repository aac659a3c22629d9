// Base of every test module: its lists of tests, its menu names and its place in the registry.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Case.h"

/// A module's identity and its slot in the registry. Menus list modules in this order.
enum EN_MURO_MODULE : int32_t {
  EN_MURO_HDCP2 = 7,
  EN_MURO_VFE_HDMI = 37,
  EN_MURO_VFE_VBY1RX = 39,
  EN_MURO_VSC = 40,
  EN_MURO_VPQ = 41,
  EN_MURO_VBE = 42,
  EN_MURO_VPQEXT = 43,
  EN_MURO_UT_GAL = 52,
  EN_MURO_UT_HDCP2 = 56,
  EN_MURO_UT_THERMAL = 59,
  EN_MURO_UT_SVP = 70,
  EN_MURO_UT_VFE_HDMI = 78,
  EN_MURO_UT_VPQ = 81,
  EN_MURO_CM_PLAYBACK = 89,
  EN_MURO_CM_AUTOTEST = 90,
  EN_MURO_RLINK = 95,
  EN_MURO_K2V_HAL_DEVICE = 96,
  EN_MURO_MODULE_COUNT = 97,  // also means: not registered
};

class Module {
 public:
  Module() = default;
  virtual ~Module() = default;
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  /// Registers the module with the frame. Returns 1, or 0 if its id has no slot.
  int DoInit();

  /// All tests of the module, in the order of its tables.
  std::span<const std::unique_ptr<TestCase>> Tests() const { return tests_; }

  // The index-th test of a list, null after the last one. No bounds check.
  Case* GetSICHALDriverTestList(unsigned long index) const { return lists_[kHalDriver][index]; }
  Case* GetSICMediaPlayTestList(unsigned long index) const { return lists_[kMediaPlay][index]; }
  Case* GetSICSystemDriverTestList(unsigned long index) const {
    return lists_[kSystemDriver][index];
  }
  Case* GetSICVideoTestList(unsigned long index) const { return lists_[kVideo][index]; }
  Case* GetUnitTestList(unsigned long index) const { return lists_[kUnit][index]; }
  Case* GetCrossModuleTestList_Playback(unsigned long index) const {
    return lists_[kPlayback][index];
  }
  Case* GetCrossModuleTestList_AutoTest(unsigned long index) const {
    return lists_[kAutoTest][index];
  }
  Case* GetRlinkModuleTestList(unsigned long index) const { return lists_[kRlink][index]; }

  // Menu name and description per category, null for a category without tests of the module. The
  // cross-module categories use the names of the unit category.
  const char* getModuleHALDriverName() const { return labels_[kHalDriver].name; }
  const char* getModuleHALDriverDesc() const { return labels_[kHalDriver].description; }
  const char* getModuleMediaPlayName() const { return labels_[kMediaPlay].name; }
  const char* getModuleMediaPlayDesc() const { return labels_[kMediaPlay].description; }
  const char* getModuleSystemDriverName() const { return labels_[kSystemDriver].name; }
  const char* getModuleSystemDriverDesc() const { return labels_[kSystemDriver].description; }
  const char* getModuleVideoName() const { return labels_[kVideo].name; }
  const char* getModuleVideoDesc() const { return labels_[kVideo].description; }
  const char* getModuleUnitTestName() const { return labels_[kUnit].name; }
  const char* getModuleUnitTestDesc() const { return labels_[kUnit].description; }
  const char* getModuleRlinkTestName() const { return labels_[kRlink].name; }
  const char* getModuleRlinkTestDesc() const { return labels_[kRlink].description; }

 protected:
  enum TestList {
    kHalDriver,
    kMediaPlay,
    kSystemDriver,
    kVideo,
    kUnit,
    kPlayback,
    kAutoTest,
    kUnread,  // nothing reads this list
    kRlink,
    kTestListCount,
  };

  /// Called by the constructors of concrete modules: sets the names of the category of `list`,
  /// stores the id and creates one test per record, in table order. `name`, `description` and the
  /// records must live as long as the module.
  void Declare(EN_MURO_MODULE id, TestList list, const char* name, const char* description,
               std::span<const ST_THAL_TEST_CASE_T> records);

  /// Appends one test per record to a list. Records that do not fit are left out: the last entry
  /// stays null because it ends the list.
  void AddTests(TestList list, std::span<const ST_THAL_TEST_CASE_T> records);

 private:
  static constexpr std::size_t kListLength = 256;

  struct Label {
    const char* name = nullptr;
    const char* description = nullptr;
  };

  Case* lists_[kTestListCount][kListLength] = {};
  Label labels_[kTestListCount];
  EN_MURO_MODULE id_ = EN_MURO_MODULE_COUNT;
  std::vector<std::unique_ptr<TestCase>> tests_;
};

/// Gives a concrete module class its lazily created, never freed instance.
template <class Concrete>
class SingletonModule : public Module {
 public:
  static Concrete* GetInstance() {
    static Concrete* const instance = new Concrete;
    return instance;
  }
};
