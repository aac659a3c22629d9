#include "UTGalTestCase.h"

#include <cstdint>

#include "DriverTest.h"
#include "k2v/gal.h"

namespace {

void EnablePanel(uint32_t enable) {
  K2V_RHAL_RLINK_GAL_Init();
  K2V_RHAL_RLINK_GAL_PANEL_ENABLE(enable);
  K2V_RHAL_RLINK_GAL_Finalize();
}

}  // namespace

int UTGalTestCase::UTGalTest_Init(char*) {
  PrintUnitTraceLine(__func__);
  return 0;
}

int UTGalTestCase::UTGalTest_OsdSplit(char*) {
  PrintUnitTraceLine(__func__);
  K2V_RHAL_GAL_Init();
  K2V_RHAL_GAL_OSDSPLIT(1);
  K2V_RHAL_GAL_Finalize();
  return 0;
}

int UTGalTestCase::UTGalTest_Finalize(char*) {
  PrintUnitTraceLine(__func__);
  return 0;
}

int UTGalTestCase::UTGalTest_Rlink_Init(char*) {
  PrintUnitTraceLine(__func__);
  return 0;
}

int UTGalTestCase::UTGalTest_Rlink_PanelOn(char*) {
  PrintUnitTraceLine(__func__);
  EnablePanel(1);
  return 0;
}

int UTGalTestCase::UTGalTest_Rlink_PanelOff(char*) {
  PrintUnitTraceLine(__func__);
  EnablePanel(0);
  return 0;
}

int UTGalTestCase::UTGalTest_Rlink_Finalize(char*) {
  PrintUnitTraceLine(__func__);
  return 0;
}
