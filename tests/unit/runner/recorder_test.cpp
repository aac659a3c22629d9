// A recorded session at a terminal: what is relayed, what is written down, and how it ends.
#include "runner/Recorder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "ConsoleInput.h"
#include "Pty.h"
#include "Scripted.h"
#include "TestFrame.h"
#include "runner/TestList.h"

namespace {

void Ask(const char* prompt) {
  std::fputs(prompt, stdout);
  std::fflush(stdout);
}

/// A session with a prompt outside of any test, the test VscModule/37, and one more prompt.
int UseConsole() {
  std::setvbuf(stdin, nullptr, _IONBF, 0);
  TestFrame::GetInstance()->DoInit();
  const auto tests = runner::AllTests();
  const auto test = std::ranges::find(tests, "VscModule/37", &runner::TestEntry::id);
  Ask("menu=");
  console::ReadAnswer();
  test->test->Execute();
  Ask("resized=");
  console::ReadAnswer();
  winsize size{};
  ioctl(STDIN_FILENO, TIOCGWINSZ, &size);
  std::printf("%d rows of %d\n", size.ws_row, size.ws_col);
  return 3;
}

class SessionRecorder : public testing::Test {
 protected:
  test::Pty Start(const std::function<int()>& console) {
    return test::Pty([=, path = path_] { return runner::RecordSession(path, console); });
  }

  const std::string path_ = testing::TempDir() + "answers";
};

TEST_F(SessionRecorder, WritesTheAnswersOfTestsAndReturnsTheStatusOfTheConsole) {
  test::Pty pty = Start(UseConsole);
  ASSERT_TRUE(Type(pty, {{"menu=", "item"}, {"1(Enable)=", "1"}, {"PASS or FAIL", "y"}}));
  ASSERT_TRUE(pty.Expect("resized="));
  pty.Resize(33, 99);
  ASSERT_TRUE(Type(pty, {{"", "on"}}));
  EXPECT_TRUE(pty.Expect("33 rows of 99"));
  EXPECT_EQ(pty.Wait(), 3) << pty.Transcript();
  EXPECT_EQ(scripted::ReadFile(path_),
            "# test\tprompt\tanswer\n"
            "VscModule/37\tVSC_SetWinBlank 0(Disable), 1(Enable)=\t1\n"
            "VscModule/37\tPlease check the result PASS or FAIL by 'Y' or 'N'\ty\n");
}

TEST_F(SessionRecorder, EndsWithItsTerminal) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  test::Pty pty = Start(UseConsole);
  close(ends[1]);  // open in recorder and console until they end
  ASSERT_TRUE(pty.Expect("menu="));
  pty.HangUp();
  EXPECT_NE(pty.Wait(), -1);
  pollfd poller = {ends[0], POLLIN, 0};
  EXPECT_EQ(poll(&poller, 1, 20'000), 1) << "the console continues without its terminal";
  close(ends[0]);
}

TEST_F(SessionRecorder, ReportsAConsoleThatCrashed) {
  test::Pty pty = Start([]() -> int { std::abort(); });
  EXPECT_EQ(pty.Wait(), 128 + SIGABRT);
}

}  // namespace
