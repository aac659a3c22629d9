#include <cstdio>

#include "TestFrame.h"
#include "TestReport.h"

int main() {
  // Nothing may be read ahead of what a prompt asks for: tests look at the terminal themselves.
  std::setvbuf(stdin, nullptr, _IONBF, 0);

  TestFrame* frame = TestFrame::GetInstance();
  frame->DoInit();
  printReport();
  do {
    frame->PrintMenu();
  } while (frame->EnterMenu() != 0);
  return 0;
}
