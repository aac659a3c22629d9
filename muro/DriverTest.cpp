#include "DriverTest.h"

#include <cstdio>

void PrintTraceLine(const char* function, const char* file, int line) {
  std::printf("\033[1;31m [muro]%s,%s ,%d \n\033[m", file, function, line);
}

void PrintUnitTraceLine(const char* function, const char* file, int line) {
  std::printf("\033[1;31m %s,%s ,%d \n\033[m", file, function, line);
}

void PrintTraceName(const char* function) {
  std::printf("\033[1;31m [muro]%s\n\033[m", function);
}
