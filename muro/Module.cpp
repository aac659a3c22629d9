#include "Module.h"

#include "TestFrame.h"

int Module::DoInit() {
  return TestFrame::GetInstance()->RegistTestModule(this, id_);
}

void Module::Declare(EN_MURO_MODULE id, TestList list, const char* name, const char* description,
                     std::span<const ST_THAL_TEST_CASE_T> records) {
  const bool isCrossModule = list == kPlayback || list == kAutoTest;
  labels_[isCrossModule ? kUnit : list] = {name, description};
  id_ = id;
  AddTests(list, records);
}

void Module::AddTests(TestList list, std::span<const ST_THAL_TEST_CASE_T> records) {
  std::size_t next = 0;
  while (lists_[list][next] != nullptr) ++next;
  for (const ST_THAL_TEST_CASE_T& record : records) {
    if (next + 1 >= kListLength) return;
    lists_[list][next++] = tests_.emplace_back(std::make_unique<TestCase>(&record)).get();
  }
}
