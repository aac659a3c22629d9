// Console input, mostly on a real terminal.
#include "ConsoleInput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Emulated.h"
#include "Pty.h"

namespace {

using test::Pty;

/// A program on a terminal that runs `body` and prints its result as "result=N".
class Console : public Pty {
 public:
  explicit Console(const std::function<int()>& body, bool echo = false)
      : Pty(
            [body] {
              std::setvbuf(stdin, nullptr, _IONBF, 0);
              std::printf("result=%d\n", body());
              std::fflush(stdout);
              return 0;
            },
            {.echo = echo}) {}

  /// Types a line when the program is reading and has consumed the previous input.
  testing::AssertionResult TypeWhenRead(const std::string& line) { return Type(line + "\n"); }
  /// The same for Ctrl-D.
  testing::AssertionResult EndInputWhenRead() { return Type("\x04"); }

  testing::AssertionResult ExpectResult(int result) {
    return Expect("result=" + std::to_string(result) + "\n");
  }

 private:
  testing::AssertionResult Type(const std::string& keys) {
    // A reader that still sleeps in its last read has not seen the input yet: it must have gone to
    // sleep again since.
    while (typed_ && Sleeps() == sleepsWhenTyped_) {
    }
    if (auto reading = WaitReading(); !reading) return reading;
    sleepsWhenTyped_ = Sleeps();
    typed_ = true;
    Send(keys);
    return testing::AssertionSuccess();
  }

  /// How often the program has gone to sleep so far.
  long Sleeps() const {
    std::ifstream status("/proc/" + std::to_string(Pid()) + "/status");
    for (std::string word; status >> word;) {
      if (word == "voluntary_ctxt_switches:") return status >> word, std::stol(word);
    }
    return -1;
  }

  bool typed_ = false;
  long sleepsWhenTyped_ = 0;
};

/// Waits, without reading, until `bytes` bytes in complete lines were typed.
void WaitForTypeAhead(int bytes) {
  for (int waiting = 0; waiting < bytes;) ioctl(0, FIONREAD, &waiting);
}

TEST(Prompt, AcceptsOnlyDecimalNumbersOf32Bits) {
  Console console([] {
    while (console::ReadNumber() != -2147483648) {
    }
    return console::ReadNumber();
  });
  for (const char* wrong : {"abc", "5x", "0x10", "2147483648", "-2147483649", "+-1", "-", "1.0"}) {
    ASSERT_TRUE(console.TypeWhenRead(wrong));
    ASSERT_TRUE(console.Expect("\nUnknown Input > " + std::string(wrong) + "\n"));
  }
  ASSERT_TRUE(console.TypeWhenRead("2147483647"));
  ASSERT_TRUE(console.TypeWhenRead("-2147483648"));
  ASSERT_TRUE(console.TypeWhenRead("  +7 "));
  EXPECT_TRUE(console.ExpectResult(7));
  EXPECT_EQ(console.Wait(), 0);
}

TEST(Prompt, AcceptsSeveralAnswersInOneLine) {
  Console console([] { return console::ReadNumber() * 100 + console::ReadNumber(); });
  ASSERT_TRUE(console.TypeWhenRead("12 x 34"));
  EXPECT_TRUE(console.Expect("\nUnknown Input > x\nresult=1234\n"));
}

TEST(Prompt, EndOfInputEndsTheProgramWithStatusOne) {
  Console console([] {
    console::SetEndOfInputHandler([] { std::printf("test failed\n"); });
    return console::AskNumber("x=");
  });
  ASSERT_TRUE(console.Expect("x="));
  ASSERT_TRUE(console.EndInputWhenRead());
  EXPECT_TRUE(console.Expect("test failed\n\nEnd of input\n"));
  EXPECT_EQ(console.Wait(), 1);
}

TEST(Token, LeavesNoEmptyLineForTheNextReader) {
  Console console([] {
    console::ReadToken(19, console::Overlong::kKeep);
    char line[20] = {};
    const bool read = std::fgets(line, sizeof line, stdin) != nullptr;
    std::printf("<%s>", line);
    return read ? 0 : -1;
  });
  ASSERT_TRUE(console.TypeWhenRead("choice"));
  ASSERT_TRUE(console.TypeWhenRead("a line"));
  EXPECT_TRUE(console.Expect("<a line\n>result=0\n"));
}

TEST(YesNo, AcceptsOnlyLowerCaseLetters) {
  for (const auto& [letter, result] : {std::pair{"y", 1}, std::pair{"n", 0}}) {
    Console console([] { return _get_yes_no_with_text("Is it blue?"); });
    ASSERT_TRUE(console.Expect("\nIs it blue? <y/n> "));
    for (const char* wrong : {"Y", "N", "yes", "1"}) {
      ASSERT_TRUE(console.TypeWhenRead(wrong));
      ASSERT_TRUE(console.Expect("\nUnknown Input > " + std::string(wrong) + "\n"));
    }
    ASSERT_TRUE(console.TypeWhenRead(""));
    ASSERT_TRUE(console.TypeWhenRead(std::string(40, 'y')));
    ASSERT_TRUE(console.Expect("string length more than input buffer 20\n"));
    ASSERT_TRUE(console.TypeWhenRead(std::string(" ") + letter + " really"));
    EXPECT_TRUE(console.ExpectResult(result));
  }
}

TEST(YesNo, ContinuesWaitingAtEndOfInput) {
  Console console([] { return _get_yes_no(); });
  ASSERT_TRUE(console.EndInputWhenRead());
  ASSERT_TRUE(console.TypeWhenRead("y"));
  EXPECT_TRUE(console.ExpectResult(1));
}

TEST(YesNo, DiscardsInputTypedBeforeTheQuestion) {
  Console console(
      [] {
        std::puts("busy");
        std::fflush(stdout);
        WaitForTypeAhead(9);
        std::puts("now");
        return _get_yes_no();
      },
      true);
  ASSERT_TRUE(console.Expect("busy\n"));
  console.SendLine("n");
  console.SendLine("wrong");
  console.Send("n");
  console.SendLine("");
  ASSERT_TRUE(console.Expect("now\n"));
  ASSERT_TRUE(console.TypeWhenRead("y"));
  EXPECT_TRUE(console.ExpectResult(1));
  EXPECT_EQ(console.Transcript().find("Unknown"), std::string::npos);
}

TEST(YesNo, DiscardsAPartialLineTypedBeforeTheQuestion) {
  Console console([] {
    while (_kbhit() < 2) {
    }
    std::puts("now");
    return _get_yes_no();
  });
  console.Send("nn");
  ASSERT_TRUE(console.Expect("now\n"));
  ASSERT_TRUE(console.TypeWhenRead("y"));
  EXPECT_TRUE(console.ExpectResult(1));
  EXPECT_EQ(console.Transcript().find("Unknown"), std::string::npos);
}

TEST(Range, ReadsOneNumber) {
  const struct {
    const char* typed;
    unsigned base;
    int result;
    int value;
    const char* message;
  } cases[] = {
      {"1f", 16, 0, 31, ""},
      {"0x1f", 16, 0, 31, ""},
      {"010", 0, 0, 8, ""},
      {"010", 10, 0, 10, ""},
      {"1f", 0x110, 0, 31, ""},
      {"100", 10, 0, 100, ""},
      {"-5", 10, 0, -5, ""},
      {"101", 10, -1, -77, "\n invalid inout > 101"},
      {"-6", 10, -1, -77, "\n invalid inout > -6"},
      {"99999999999999999", 10, -1, -77, "\n invalid inout > 99999999999999999"},
      {"1f", 10, -1, -77, "\nUnknown Input > 1f"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.typed << " in base " << c.base);
    Console console([&c] {
      int value = -77;
      const int result = _get_number_with_range(&value, -5, 100, c.base);
      std::printf("[%d]", value);
      return result;
    });
    ASSERT_TRUE(console.TypeWhenRead(""));
    ASSERT_TRUE(console.TypeWhenRead(c.typed));
    EXPECT_TRUE(console.Expect(std::string(c.message) + "[" + std::to_string(c.value) +
                               "]result=" + std::to_string(c.result) + "\n"));
  }
}

TEST(Line, AcceptsSeventeenCharactersInABufferOfTwenty) {
  Console console([] {
    char line[20] = {};
    const int first = fgets_ex(line, sizeof line);
    std::printf("<%s>", line);
    return first * 10 + fgets_ex(line, sizeof line);
  });
  ASSERT_TRUE(console.TypeWhenRead("12345678901234567"));
  ASSERT_TRUE(console.Expect("<12345678901234567\n>"));
  ASSERT_TRUE(console.TypeWhenRead("123456789012345678"));
  EXPECT_TRUE(console.Expect("string length more than input buffer 20\nresult=-1\n"));

  Console closed([] {
    char line[20];
    return fgets_ex(line, sizeof line);
  });
  ASSERT_TRUE(closed.EndInputWhenRead());
  EXPECT_TRUE(closed.ExpectResult(-1));
}

TEST(Keys, AreReadOneByOneWithoutEcho) {
  Console console(
      [] {
        termios before{};
        tcgetattr(0, &before);
        std::printf("%d\n", kbhit());
        while (kbhit() == 0) {
        }
        const int seen = kbhit();
        const int first = mygetch();
        const int second = mygetch();
        termios after{};
        tcgetattr(0, &after);
        const bool restored = before.c_lflag == after.c_lflag;
        std::printf("%d %c%c %s\n", seen, first, second, restored ? "restored" : "changed");
        return 0;
      },
      true);
  ASSERT_TRUE(console.Expect("0\n"));
  console.Send("q");
  ASSERT_TRUE(console.WaitReading());
  console.Send(">");
  EXPECT_TRUE(console.Expect("1 q> restored\n"));
  EXPECT_EQ(console.Before().find('>'), std::string::npos) << "the key was echoed";
}

/// Waits for a key, as a job of a shell: its process group is in the foreground. Exits with the key
/// as status.
[[noreturn]] void BeJob() {
  for (const int number : {SIGINT, SIGQUIT}) signal(number, SIG_DFL);
  setpgid(0, 0);
  signal(SIGTTOU, SIG_IGN);
  tcsetpgrp(0, getpid());
  signal(SIGTTOU, SIG_DFL);
  std::setvbuf(stdin, nullptr, _IONBF, 0);
  std::printf("job %d\n", static_cast<int>(getpid()));
  _exit(mygetch());
}

/// Takes the terminal back, as a shell does when its job has ended or stopped. Prints the signal
/// that ended or stopped the job, and whether the terminal is in line mode.
void TellJob(int status) {
  signal(SIGTTOU, SIG_IGN);
  tcsetpgrp(0, getpgrp());
  termios modes{};
  tcgetattr(0, &modes);
  const int number = WIFSTOPPED(status) ? WSTOPSIG(status) : WTERMSIG(status);
  std::printf("signal %d, %s\n", number, (modes.c_lflag & ICANON) != 0 ? "lines" : "keys");
  std::fflush(stdout);
}

TEST(Keys, SignalThatEndsTheProgramRestoresTheTerminal) {
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGABRT}) {
    Pty pty([] {
      for (const int ignored : {SIGINT, SIGQUIT}) signal(ignored, SIG_IGN);
      const pid_t child = fork();
      if (child == 0) BeJob();
      int status = 0;
      waitpid(child, &status, 0);
      TellJob(status);
      return 0;
    });
    ASSERT_TRUE(pty.ExpectRegex("job (\\d+)\n"));
    ASSERT_TRUE(pty.WaitReading());
    if (number == SIGINT || number == SIGQUIT) {
      pty.Send(number == SIGINT ? "\x03" : "\x1c");
    } else {
      kill(std::stoi(pty.Groups()[1]), number);
    }
    EXPECT_TRUE(pty.Expect("signal " + std::to_string(number) + ", lines\n"));
  }
}

TEST(Keys, IgnoredSignalsStayIgnored) {
  Console console([] {
    signal(SIGTERM, SIG_IGN);
    return mygetch();
  });
  ASSERT_TRUE(console.WaitReading());
  kill(console.Pid(), SIGTERM);
  console.Send("\x05");
  EXPECT_TRUE(console.ExpectResult(5));
}

void TellModes() {
  termios modes{};
  tcgetattr(0, &modes);
  std::printf("%s, %s, %s\n", (modes.c_lflag & ICANON) != 0 ? "lines" : "keys",
              (modes.c_lflag & ECHO) != 0 ? "echo" : "silent",
              (fcntl(0, F_GETFL) & O_NONBLOCK) != 0 ? "polling" : "waiting");
  std::fflush(stdout);
}

TEST(Keys, ExitDuringAReadRestoresTheTerminal) {
  const struct {
    int (*read)();
    const char* meanwhile;
  } kReaders[] = {{mygetch, "keys, silent, waiting\n"}, {kbhit, "keys, silent, polling\n"}};
  for (const auto& reader : kReaders) {
    Pty pty(
        [&reader] {
          const pid_t child = fork();
          if (child == 0) {
            const console::InputObserver leave = {[](console::Input) { TellModes(), std::exit(0); },
                                                  nullptr};
            console::SetInputObserver(&leave);
            reader.read();
          }
          waitpid(child, nullptr, 0);
          TellModes();
          return 0;
        },
        {.echo = true});
    EXPECT_TRUE(pty.Expect(reader.meanwhile));
    EXPECT_TRUE(pty.Expect("lines, echo, waiting\n"));
  }
}

TEST(Keys, AreReadAgainAfterTheProgramWasStopped) {
  if (test::IsUnderValgrind()) GTEST_SKIP() << test::kNoStopInHandlers;
  Pty pty([] {
    const pid_t child = fork();
    if (child == 0) BeJob();
    int status = 0;
    for (int stop = 0; stop < 2; ++stop) {
      waitpid(child, &status, WUNTRACED);
      TellJob(status);
      tcsetpgrp(0, child);
      kill(-child, SIGCONT);
    }
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  });
  ASSERT_TRUE(pty.ExpectRegex("job (\\d+)\n"));
  ASSERT_TRUE(pty.WaitReading());
  for (int stop = 0; stop < 2; ++stop) {
    pty.Send("\x1a");
    ASSERT_TRUE(pty.Expect("signal " + std::to_string(SIGTSTP) + ", lines\n"));
    ASSERT_TRUE(pty.WaitReading());
  }
  pty.Send("k");
  EXPECT_EQ(pty.Wait(), 'k') << "without Return";
}

TEST(Prompt, IsNotInterruptedByAHandledSignal) {
  const std::pair<const char*, std::function<int()>> kReaders[] = {
      {"5\n", [] { return console::ReadNumber(); }},
      {"12345\n", [] { return static_cast<int>(console::ReadLine().size()); }},
      {"y\n", [] { return _get_yes_no() + 4; }},
      {"\x05", [] { return mygetch(); }},
  };
  for (const auto& [keys, read] : kReaders) {
    Console console([read = read] {
      struct sigaction action = {};
      action.sa_handler = [](int) {
        [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, "resized\n", 8);
      };
      sigaction(SIGWINCH, &action, nullptr);
      return read();
    });
    ASSERT_TRUE(console.WaitReading());
    console.Resize(20, 60);
    ASSERT_TRUE(console.Expect("resized\n"));
    ASSERT_TRUE(console.WaitReading());
    console.Send(keys);
    EXPECT_TRUE(console.ExpectResult(5)) << keys;
  }
}

TEST(Keys, CountsTheWaitingBytes) {
  Console console([] {
    WaitForTypeAhead(4);
    const int waiting = _kbhit();
    termios after{};
    tcgetattr(0, &after);
    return (after.c_lflag & ICANON) != 0 ? waiting : -1;
  });
  console.SendLine("abc");
  EXPECT_TRUE(console.ExpectResult(4));
}

TEST(Parse, RequiresTheWholeTextToBeANumber) {
  const struct {
    const char* text;
    unsigned base;
    int result;
    long value;
  } kCases[] = {{"", 10, 0, 0},       {"12", 10, 0, 12}, {"12 ", 10, -1, -1}, {"z", 10, -1, -1},
                {"v", 32, 0, 31},     {"17", 8, 0, 15},  {"18", 8, -1, -1},   {"0x12", 7, 0, 18},
                {"0x12", 10, -1, -1}, {"-3", 10, 0, -3}};
  for (const auto& c : kCases) {
    long value = -1;
    EXPECT_EQ(_str_to_long(c.text, &value, c.base), c.result) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
}

TEST(Dump, PrintsRowsOfSixteenBytesAndMarksTheEnd) {
  unsigned char bytes[32];
  for (unsigned i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<unsigned char>(0x60 + i);
  bytes[0] = 0x1F;
  bytes[1] = 0x20;
  const std::string rule = std::string(60, '-') + '\n';
  const std::string head =
      rule + "ADDRESS   00 01 02 03 04 05 06 07   08 09 0A 0B 0C 0D 0E 0F \n" + rule;
  testing::internal::CaptureStdout();
  EXPECT_GE(dump_mem(bytes, 20), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            head +
                "00000000  1f 20 62 63 64 65 66 67   68 69 6a 6b 6c 6d 6e 6f    . bcdefghijklmno\n"
                "00000010  70 71 72 73 -- -- -- --   -- -- -- -- -- -- -- --    "
                "pqrstuvwxyz{|}~.\n" +
                rule);
  testing::internal::CaptureStdout();
  dump_mem(bytes, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), head + rule);
}

}  // namespace
