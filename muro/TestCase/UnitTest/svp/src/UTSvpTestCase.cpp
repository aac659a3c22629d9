#include "UTSvpTestCase.h"

#include "DriverTest.h"

int UTSvpTestCase::UTSvpTestCase1(char*) {
  PrintUnitTraceLine(__func__);
  return 0;
}

int UTSvpTestCase::UTSvpTestCase2(char*) {
  PrintUnitTraceLine(__func__);
  return 1;
}
