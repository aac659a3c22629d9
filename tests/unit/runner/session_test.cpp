// Tests run without an operator: prompts, keys, limits and results.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>

#include "ConsoleInput.h"
#include "Emulated.h"
#include "Remarks.h"
#include "runner/Descriptors.h"
#include "runner/TestSession.h"

namespace {

int forksUntilRefusal = 0;  // 0 for none

}  // namespace

extern "C" pid_t fork() noexcept {
  if (forksUntilRefusal > 0 && --forksUntilRefusal == 0) {
    errno = EAGAIN;
    return -1;
  }
  static const auto systemFork = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"));
  return systemFork();
}

namespace {

using runner::AnswerRule;
using runner::Outcome;
using runner::Verdict;

struct Played {
  Outcome outcome;
  std::string console;
};

constexpr runner::Limits kUsual = {.timeoutS = 6, .idleS = 4};
/// Limits for tests with much output, which valgrind makes slow.
constexpr runner::Limits kPatient = {.timeoutS = 60, .idleS = 30};

/// Runs a function as a test that judges itself, unless `byOperator`.
Played Play(int (*function)(char*), const std::vector<AnswerRule>& rules, bool byOperator = false,
            const runner::Limits& limits = kUsual) {
  ST_THAL_TEST_CASE_T record{1, "name", "description", function, !byOperator};
  TestCase test(&record);
  const runner::TestEntry entry{&test, "Module", "Module/1", "", ""};
  Played played;
  runner::TestSession session(entry, rules, limits,
                              [&](std::string_view text) { played.console += text; });
  played.outcome = session.Run([] { return false; });
  return played;
}

std::vector<AnswerRule> Rules(const std::string& prompt, const std::string& answer,
                              bool keys = false) {
  return {{"Module/1", prompt, {{keys, answer}}}};
}

int AskInPieces(char*) {
  std::fputs("first ", stdout);
  std::fflush(stdout);
  usleep(1);
  std::fputs("second=", stdout);
  return console::ReadNumber() == 42 ? 0 : 1;
}

int PrintMuch(char*) {
  for (int i = 0; i < 1600; ++i) std::puts("a line...");
  return 0;
}

TEST(SessionTest, FinalOutputIsNotLost) {
  const ST_THAL_TEST_CASE_T record{1, "name", "description", PrintMuch, true};
  TestCase test(&record);
  const runner::TestEntry entry{&test, "Module", "Module/1", "", ""};
  const std::vector<AnswerRule> rules;
  std::size_t bytes = 0;
  runner::TestSession session(entry, rules, kUsual, [&](std::string_view text) {
    // The test ends before the rest is read.
    if (bytes == 0) std::this_thread::sleep_for(std::chrono::milliseconds(200));
    bytes += text.size();
  });
  EXPECT_EQ(session.Run([] { return false; }).verdict, Verdict::kPass);
  EXPECT_EQ(bytes, 16'000U);
}

TEST(SessionTest, PromptPrintedInPiecesIsAnsweredWhenComplete) {
  const Played played = Play(AskInPieces, Rules("first second=", "42"));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process of the test is left";
  EXPECT_EQ(played.outcome.verdict, Verdict::kPass) << played.outcome.message;
  EXPECT_EQ(played.console, "first second=42\n");
}

TEST(SessionTest, RemarksAreInTheResultAndNotInTheOutput) {
  const Played played = Play(
      [](char*) {
        std::fputs("before ", stdout);
        Remark("one");
        Remark("two\033[1m");
        std::fputs("after", stdout);
        return 0;
      },
      {});
  EXPECT_EQ(played.outcome.verdict, Verdict::kPass);
  EXPECT_EQ(played.outcome.message, "one; two");
  EXPECT_EQ(played.console, "before after");
}

std::string AllBytes() {
  std::string bytes;
  for (int i = 0; i < 10'000; ++i) bytes += static_cast<char>(i);
  return bytes;
}

TEST(SessionTest, AttachmentsAreCompleteAndAnswersAreLocatedInTheOutput) {
  const auto attaching = [](char* argument) {
    Attach("a b.svg", AllBytes());
    Attach("../outside", AllBytes());
    Attach("empty", "");
    Attach("too long", std::string(std::size_t{5} << 20, 'x'));
    return AskInPieces(argument);
  };
  const Played played = Play(attaching, Rules("first second=", "42"), false, kPatient);
  const auto& files = played.outcome.attachments;
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files.at("empty"), "");
  EXPECT_TRUE(files.at("a b.svg") == AllBytes());
  EXPECT_EQ(played.console, "first second=42\n");
  ASSERT_EQ(played.outcome.typed.size(), 1U);
  const runner::Typed answer = played.outcome.typed[0];
  EXPECT_EQ(played.console.substr(answer.at, answer.length), "42\n");
}

TEST(SessionTest, MissingAnswerBlocksTheTest) {
  for (const char* wrong : {"other=", "second", "second=?"}) {
    const Played played = Play(AskInPieces, Rules(wrong, "42"), false, {.timeoutS = 6, .idleS = 1});
    EXPECT_EQ(played.outcome.verdict, Verdict::kBlocked);
    EXPECT_EQ(played.outcome.message, "no answer to 'first second='");
    EXPECT_EQ(played.outcome.result, 1);
  }
  const auto unjudged = Play([](char*) { return 0; }, {}, true, {.timeoutS = 6, .idleS = 1});
  EXPECT_EQ(unjudged.outcome.verdict, Verdict::kBlocked);
}

TEST(SessionTest, FailedForkIsAnErrorOfTheHarness) {
  // The first fork starts the guard, the second one is made by the guard.
  for (const int refused : {1, 2}) {
    forksUntilRefusal = refused;
    const Played played = Play([](char*) { return 0; }, {});
    EXPECT_TRUE(played.outcome.harness);
    EXPECT_EQ(played.outcome.verdict, Verdict::kError);
    EXPECT_EQ(played.outcome.message, "no process: Resource temporarily unavailable");
  }
}

TEST(SessionTest, OperatorDecidesTheVerdict) {
  const auto ok = [](char*) { return 0; };
  EXPECT_EQ(Play(ok, Rules("*FAIL*", "y"), true).outcome.verdict, Verdict::kPass);
  EXPECT_EQ(Play(ok, Rules("*FAIL*", "n"), true).outcome.verdict, Verdict::kFail);
}

/// Runs a test judged by the operator, or one that passes by itself, with these eyes.
Outcome Judge(
    const std::string& eyes, bool byOperator, bool (*interrupted)() = [] { return false; }) {
  ST_THAL_TEST_CASE_T record{1, "name", "description", [](char*) { return 0; }, !byOperator};
  TestCase test(&record);
  const runner::TestEntry entry{&test, "Module", "Module/1", "", ""};
  const std::vector<AnswerRule> yes = Rules("*", "y");
  runner::TestSession session(
      entry, yes, {}, [](std::string_view) {},
      {.command = eyes, .always = true, .limitS = 1, .evidence = testing::TempDir() + "evidence"});
  return session.Run(interrupted);
}

bool eyesLooked = false;

TEST(SessionTest, EyesReplaceTheAnswersAndFailuresOfEyesNeverPass) {
  const struct {
    const char* command;
    Verdict verdict;
    const char* message;
  } kCases[] = {
      {"echo noise; echo all bars in place", Verdict::kPass, "eyes: yes, all bars in place"},
      {"echo black; exit 1", Verdict::kFail, "eyes: no, black"},
      {"echo no rule; exit 2", Verdict::kBlocked, "eyes: cannot tell, no rule (exit status 2)"},
      {"no-such-command 2>/dev/null", Verdict::kBlocked, "eyes: cannot tell, exit status 127"},
      {"kill -SEGV $$", Verdict::kBlocked, "eyes: cannot tell, killed by signal 11 SIGSEGV"},
      {"sleep 1000", Verdict::kBlocked, "eyes: cannot tell, no answer in 1 s"},
      {"sleep 1000 & exit 0", Verdict::kPass, "eyes: yes"},
      {"[ \"$CVN_TEST\" = Module/1 ] && [ -d \"$CVN_EVIDENCE\" ] && echo \"$CVN_QUESTION\"",
       Verdict::kPass, ""},
  };
  for (const bool byOperator : {true, false}) {
    for (const auto& [command, verdict, message] : kCases) {
      const Outcome outcome = Judge(command, byOperator);
      EXPECT_EQ(outcome.verdict, verdict) << command;
      EXPECT_EQ(outcome.result, verdict == Verdict::kPass ? 0 : 1) << command;
      EXPECT_EQ(outcome.message,
                *message != '\0' ? message
                : byOperator     ? "eyes: yes, Please check the result PASS or FAIL by 'Y' or 'N'"
                                 : "eyes: yes, at the end of the test");
    }
  }
  for (const bool byOperator : {true, false}) {
    eyesLooked = false;
    const Outcome stopped = Judge("sleep 1000", byOperator, [] {
      eyesLooked = eyesLooked || std::filesystem::exists(testing::TempDir() + "evidence");
      return eyesLooked;
    });
    EXPECT_TRUE(stopped.interrupted);
    EXPECT_EQ(stopped.message, "the run was interrupted");
    EXPECT_EQ(stopped.verdict, Verdict::kError);
  }
}

TEST(SessionTest, EyesCanKeepEvidenceFromBeforeTheTest) {
  ST_THAL_TEST_CASE_T record{1, "name", "description", [](char*) { return 0; }, true};
  TestCase test(&record);
  const runner::TestEntry entry{&test, "Module", "Module/1", "", ""};
  const std::vector<AnswerRule> none;
  const std::string look =
      "if [ \"$CVN_QUESTION\" = 'before the test' ]; then echo seen >\"$CVN_EVIDENCE/kept\"; exit "
      "1; fi;"
      "cat \"$CVN_EVIDENCE/kept\"";
  runner::TestSession session(entry, none, {}, [](std::string_view) {},
                              {.command = look,
                               .always = true,
                               .before = true,
                               .limitS = 10,
                               .evidence = testing::TempDir() + "evidence"});
  const Outcome outcome = session.Run([] { return false; });
  EXPECT_EQ(outcome.verdict, Verdict::kPass);
  EXPECT_EQ(outcome.message, "eyes: yes, seen");
}

TEST(SessionTest, KeysAreTypedAtKeyPrompts) {
  const auto keys = [](char*) {
    std::fputs("press", stdout);
    std::string typed;
    while (typed.size() < 3) typed += console::ReadKey();
    return typed == "\033[A" ? 0 : 1;
  };
  EXPECT_EQ(Play(keys, Rules("press", "\033[A", true)).outcome.verdict, Verdict::kPass);
}

TEST(SessionTest, PollingTestContinuesUntilAKeyIsTyped) {
  const auto polling = [](char*) {
    for (int i = 0;; ++i) {
      std::printf("poll %d\n", i);
      if (kbhit() != 0) return mygetch() == 'q' && i >= 3 ? 0 : 1;
      if (test::IsUnderValgrind()) usleep(1000);  // so that the reader keeps up
    }
  };
  EXPECT_EQ(
      Play(polling, Rules("poll 3", "q", true), false, test::IsUnderValgrind() ? kPatient : kUsual)
          .outcome.verdict,
      Verdict::kPass);
}

TEST(SessionTest, AnswersAreNotDiscardedAsTypeAhead) {
  const auto number = [](char*) {
    int port = 0;
    for (int i = 0; i < 3; ++i) {
      std::printf("port %d ? ", i);
      if (_get_number_with_range(&port, 0, 3, 10) != 0 || port != i) return 1;
    }
    return _get_yes_no_with_text("sure") == 1 ? 0 : 1;
  };
  const std::vector<AnswerRule> rules = {
      {"Module", "port*", {{false, "0"}, {false, "1"}, {false, "2"}}},
      {"Module", "sure*", {{false, "y"}}}};
  EXPECT_EQ(Play(number, rules).outcome.verdict, Verdict::kPass);
}

int LookForAKeyForEver(char*) {
  std::puts("ends with a key");
  while (kbhit() == 0) usleep(1000);
  return 0;
}

int HangAfterALookForAKey(char*) {
  std::puts("ends with a key");
  for (kbhit();;) pause();
}

TEST(SessionTest, TestWaitingForTheOperatorIsBlockedByAnyTimeLimit) {
  const struct {
    int (*function)(char*);
    runner::Limits limits;
    Verdict verdict;
    const char* message;
  } cases[] = {
      {AskInPieces,
       {.timeoutS = 0.5, .idleS = 60},
       Verdict::kBlocked,
       "no answer to 'first second='"},
      {AskInPieces,
       {.timeoutS = 0.5, .idleS = 0},
       Verdict::kBlocked,
       "no answer to 'first second='"},
      {AskInPieces,
       {.timeoutS = 0, .idleS = 0.5},
       Verdict::kBlocked,
       "no answer to 'first second='"},
      {LookForAKeyForEver,
       {.timeoutS = 1, .idleS = 0},
       Verdict::kBlocked,
       "no answer to 'ends with a key'"},
      {HangAfterALookForAKey,
       {.timeoutS = 1, .idleS = 0},
       Verdict::kError,
       "timeout: still running after 1 s"},
      {HangAfterALookForAKey,
       {.timeoutS = 60, .idleS = 1},
       Verdict::kError,
       "timeout: no output for 1 s"},
  };
  for (const auto& [function, limits, verdict, message] : cases) {
    const Played played = Play(function, {}, false, limits);
    EXPECT_EQ(played.outcome.verdict, verdict) << message;
    EXPECT_EQ(played.outcome.message, message);
  }
}

TEST(SessionTest, TestDoesNotInheritTheRunnersFiles) {
  for (int fd = 3; fd < 1024; ++fd) close(fd);  // inherited from the parent process
  runner::NoteForeignDescriptors();
  const std::string path = testing::TempDir() + "results";
  const int results = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ASSERT_GE(results, 0);
  const Played played = Play(
      [](char*) {
        for (int fd = 3; fd < 1024; ++fd)
          [[maybe_unused]] const ssize_t written = write(fd, "stray bytes of a driver", 23);
        return 0;
      },
      {});
  EXPECT_EQ(played.outcome.verdict, Verdict::kPass) << played.outcome.message;
  EXPECT_EQ(lseek(results, 0, SEEK_END), 0);
  close(results);
  unlink(path.c_str());
}

TEST(SessionTest, ClosedStandardStreamsAreReplaced) {
  const pid_t child = fork();
  if (child == 0) {
    close(STDIN_FILENO);
    close(STDERR_FILENO);
    runner::OpenStandardStreams();
    struct stat nowhere {
    }, in{}, error{};
    const bool replaced = stat("/dev/null", &nowhere) == 0 && fstat(STDIN_FILENO, &in) == 0 &&
                          fstat(STDERR_FILENO, &error) == 0 && in.st_rdev == nowhere.st_rdev &&
                          error.st_rdev == nowhere.st_rdev;
    _exit(replaced ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SessionTest, EndOfInputFailsTheTest) {
  const Played played = Play(AskInPieces, Rules("*", "\x04", true));
  EXPECT_EQ(played.outcome.verdict, Verdict::kFail);
}

TEST(SessionTest, UndefinedAndMissingResultsAreErrors) {
  const struct {
    int (*function)(char*);
    const char* message;
    runner::Limits limits = {};
  } cases[] = {
      {[](char*) { return 2; }, "undefined result 2"},
      {[](char*) -> int { _exit(0); }, "exited with status 0 during the test"},
      {[](char*) -> int {
         std::signal(SIGTERM, SIG_IGN);  // only SIGKILL ends it
         for (;;) pause();
       },
       "timeout: no output for 1 s",
       {.idleS = 1}},
      {[](char*) -> int {
         for (;;) std::puts("again");
       },
       "timeout: still running after 2 s",
       {.timeoutS = 2}},
  };
  for (const auto& [function, message, limits] : cases) {
    const Played played = Play(function, {}, false, limits);
    EXPECT_EQ(played.outcome.verdict, Verdict::kError);
    EXPECT_EQ(played.outcome.message, message);
  }
}

TEST(SessionTest, LastLineBeforeACrashIsKept) {
  const Played played = Play(
      [](char*) -> int {
        std::puts("before the end");
        abort();
      },
      {});
  EXPECT_EQ(played.outcome.message, "killed by signal 6 SIGABRT");
  EXPECT_TRUE(played.console.starts_with("before the end\n")) << played.console;
}

}  // namespace
