// Holds the list of tests that prompt against what the tests do.
#include <gtest/gtest.h>

#include <string>

#include "SimHal.h"
#include "TestFrame.h"
#include "runner/ConsoleMarks.h"
#include "runner/IsolatedTest.h"
#include "runner/TestList.h"

namespace {

/// Runs a test on a board that was just switched on, until it reads the console. True when it did
/// so before the operator was asked for the verdict, or wanted a cable to be pulled.
bool AsksSomething(TestCase& test) {
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
    runner::MarkWaiting(key);
    return test.Execute();
  }),
            "");
  std::string output;
  while (child.Wait(1000, output)) {
    marks.Read(output);
    output.clear();
  }
  marks.Read(output);
  return asks || printed.find("Please Disconnect") != std::string::npos;
}

TEST(PromptingTest, TheListNamesThoseTestsThatReadTheConsole) {
  TestFrame::GetInstance()->DoInit();
  std::string missing;
  std::string surplus;
  for (const runner::TestEntry& entry : runner::AllTests()) {
    if (!entry.test->hasFunction()) continue;
    const bool asks = AsksSomething(*entry.test);
    if (asks && !entry.prompts) missing += "    \"" + entry.id + "\",\n";
    if (!asks && entry.prompts) surplus += "    \"" + entry.id + "\",\n";
  }
  EXPECT_EQ(missing, "") << "these need their operator and belong into PromptingTests.cpp";
  EXPECT_EQ(surplus, "") << "these need nobody";
}

}  // namespace
