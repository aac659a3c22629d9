// Holds what the rows of tests say of prompts against what the tests do.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "Emulated.h"
#include "SimHal.h"
#include "TestFrame.h"
#include "runner/ConsoleMarks.h"
#include "runner/IsolatedTest.h"
#include "runner/TestList.h"

namespace {

/// Waits pass without being waited, so what a test asks it asks at once; some poll for ever.
constexpr auto kLongEnough = std::chrono::seconds(1);

/// What runs before a test, since some tests get as far as their prompt on such a board only: on
/// one that was just switched on, and on one whose panel is up.
constexpr const char* kPreparations[] = {"", "VbeModule/27"};

void Prepare(const char* id) {
  for (const runner::TestEntry& entry : runner::AllTests()) {
    if (entry.id == id) entry.test->Execute();
  }
}

/// Runs a test on a board so prepared until it reads the console. True when it did so before the
/// operator was asked for the verdict, or wanted a cable to be pulled.
bool AsksAfter(const char* preparation, TestCase& test) {
  const auto deadline = std::chrono::steady_clock::now() + kLongEnough;
  simhal::Reset();
  const std::string key = runner::MakeMarkKey();
  runner::IsolatedTest child;
  std::string printed;
  bool asks = false;
  runner::MarkReader marks(key, {[&](std::string_view text) { printed += text; },
                                 [&](console::Input) {
                                   asks = asks || printed.find("PASS or FAIL") == std::string::npos;
                                   child.Stop();
                                 },
                                 {}});
  EXPECT_EQ(child.Start([&] {
    Prepare(preparation);
    runner::MarkWaiting(key);
    return test.Execute();
  }),
            "");
  std::string output;
  while (child.Wait(100, output)) {
    marks.Read(output);
    output.clear();
    if (std::chrono::steady_clock::now() > deadline) child.Stop();
  }
  marks.Read(output);
  return asks || printed.find("Please Disconnect") != std::string::npos;
}

bool AsksSomething(TestCase& test) {
  return std::ranges::any_of(kPreparations,
                             [&](const char* preparation) { return AsksAfter(preparation, test); });
}

TEST(PromptingTest, RowsNameThoseTestsThatReadTheConsole) {
  if (test::IsEmulated()) GTEST_SKIP() << test::kNoRobustMutex;
  TestFrame::GetInstance()->DoInit();
  std::string missing;
  std::string surplus;
  for (const runner::TestEntry& entry : runner::AllTests()) {
    // What the cross-module tests ask hangs on the board's settings; they are looked at on a board.
    if (!entry.test->hasFunction() || entry.moduleClass.starts_with("CM")) continue;
    if (entry.id == "K2vHalDeviceModule/3") continue;  // asks nothing: somebody has to end it
    const bool asks = AsksSomething(*entry.test);
    if (asks && !entry.test->asks()) missing += "    \"" + entry.id + "\",\n";
    if (!asks && entry.test->asks()) surplus += "    \"" + entry.id + "\",\n";
  }
  EXPECT_EQ(missing, "") << "these ask, and their rows do not say so";
  EXPECT_EQ(surplus, "") << "these never ask, whatever their rows say";
}

}  // namespace
