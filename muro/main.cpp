#include <algorithm>
#include <cstdio>

#include "OutOfMemory.h"
#include "TestFrame.h"
#include "TestReport.h"
#include "runner/CommandLine.h"
#include "runner/Descriptors.h"

namespace {

int OpenConsole() {
  TestFrame* frame = TestFrame::GetInstance();
  frame->DoInit();
  printReport();
  do {
    frame->PrintMenu();
  } while (frame->EnterMenu() != 0);
  return 0;
}

// Runs before the HAL library is initialised, because that already opens files.
__attribute__((section(".preinit_array"),
               used)) void (*const openStandardStreams)() = runner::OpenStandardStreams;

}  // namespace

int main(int argc, char** argv) {
  EndWhenOutOfMemory();
  // Nothing may be read ahead of a prompt: some tests read the terminal directly.
  std::setvbuf(stdin, nullptr, _IONBF, 0);
  return runner::Main({argv + std::min(argc, 1), argv + argc}, OpenConsole);
}
