// Compares the prompting tests listed in the modules' rows with the tests that actually prompt.
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

/// Waits return immediately, so tests prompt without delay; some poll endlessly.
constexpr auto kLongEnough = std::chrono::seconds(1);

/// Tests that run first, since some tests reach their prompt only on such a board: after power-on,
/// and with an initialised panel.
constexpr const char* kPreparations[] = {"", "VbeModule/27"};

void Prepare(const char* id) {
  for (const runner::TestEntry& entry : runner::AllTests()) {
    if (entry.id == id) entry.test->Execute();
  }
}

/// Runs a test on a board prepared in this way until it reads the console. Returns true if it did
/// so before the operator was asked for the verdict, or asked for a cable to be unplugged.
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

TEST(PromptingTest, RowsMarkTheTestsThatReadTheConsole) {
  if (test::IsEmulated()) GTEST_SKIP() << test::kNoRobustMutex;
  TestFrame::GetInstance()->DoInit();
  std::string missing;
  std::string surplus;
  for (const runner::TestEntry& entry : runner::AllTests()) {
    // The prompts of cross-module tests depend on the board's settings; they are tested on a board.
    if (!entry.test->hasFunction() || entry.moduleClass.starts_with("CM")) continue;
    if (entry.id == "K2vHalDeviceModule/3")
      continue;  // never prompts: it polls until it is interrupted
    const bool asks = AsksSomething(*entry.test);
    if (asks && !entry.test->asks()) missing += "    \"" + entry.id + "\",\n";
    if (!asks && entry.test->asks()) surplus += "    \"" + entry.id + "\",\n";
  }
  EXPECT_EQ(missing, "") << "these tests prompt, but their rows do not say so";
  EXPECT_EQ(surplus, "") << "these tests never prompt, but their rows say so";
}

}  // namespace
