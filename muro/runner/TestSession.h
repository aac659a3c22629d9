// One unattended test run: answers typed, limits kept, the end judged.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Answers.h"
#include "ConsoleMarks.h"
#include "Eyes.h"
#include "IsolatedTest.h"
#include "RunEvents.h"
#include "RunSettings.h"
#include "TestList.h"
#include "Verdict.h"

namespace runner {

/// The result of a test.
struct Outcome {
  Verdict verdict = Verdict::kError;
  std::string message;  // one clean line; empty if there is nothing to report
  double seconds = 0;
  int result = 1;            // for the report's line: 0 pass, 1 fail, anything else undefined
  int prompts = 0;           // how often it waited for input before the question for the verdict
  bool interrupted = false;  // ended because the run was interrupted
  bool harness = false;      // the harness could not run the test at all
  std::vector<std::string> findings;  // JSON objects, one line each
  std::vector<Typed> typed;           // positions of the answers in the listener's text
  std::map<std::string, std::string> attachments;  // files of the test: content by name
};

class TestSession {
 public:
  /// Receives what the test prints and what is typed, as a terminal would show it.
  using Listener = std::function<void(std::string_view text)>;

  /// With `eyes`, the command answers the question for the verdict, and rules for it are not used.
  TestSession(const TestEntry& entry, const std::vector<AnswerRule>& rules, const Limits& limits,
              Listener listener, EyesSettings eyes = {});

  /// Runs the test to its end. The result is an error as soon as `interrupted` returns true.
  Outcome Run(bool (*interrupted)());

 private:
  using Clock = std::chrono::steady_clock;

  void Printed(std::string_view text);
  void Tell(std::string_view text);
  void Attached(const std::string& name, const std::string& part);
  void Waiting(console::Input kind);
  void Answer(const std::string& keys);
  void LookBefore();
  void AskEyes();
  void LookAtTheEnd();
  Sight LookAt(std::string_view question);
  void WatchLimits();
  bool IsWaiting(double limitS) const;
  void Break(Verdict verdict, const std::string& message);
  void Judge(const ChildEnd& end);

  const TestEntry& entry_;
  Limits limits_;
  Listener listener_;
  EyesSettings eyes_;
  bool looked_ = false;
  bool (*interrupted_)() = nullptr;
  std::string key_ = MakeMarkKey();
  AnswerScript answers_;
  IsolatedTest test_;
  MarkReader marks_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point lastOutput_ = start_;
  std::string printed_;       // since the last answer
  std::size_t told_ = 0;      // bytes passed to the listener
  std::size_t attached_ = 0;  // bytes
  console::Input waitsFor_ = console::Input::kLine;
  Clock::time_point waitingSince_;
  bool waiting_ = false;  // for an answer that no rule gives
  bool broken_ = false;   // the verdict is known before the test's end
  std::string remarks_;
  Outcome outcome_;
};

}  // namespace runner
