// One test run without its operator: answers typed, limits kept, the end judged.
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

/// What became of a test.
struct Outcome {
  Verdict verdict = Verdict::kError;
  std::string message;  // one clean line; empty when there is nothing to tell
  double seconds = 0;
  int result = 1;            // what the report's line says: 0 pass, 1 fail, anything else undefined
  int prompts = 0;           // how often it waited for input before the question for the verdict
  bool interrupted = false;  // ended because the run was interrupted
  bool harness = false;      // the harness could not run the test at all
  std::vector<std::string> findings;  // JSON objects, a line each
  std::vector<Typed> typed;           // where the answers are in what the listener heard
  std::map<std::string, std::string> attachments;  // files of the test: content by name
};

class TestSession {
 public:
  /// Hears what the test prints and what is typed, as it would stand on a terminal.
  using Listener = std::function<void(std::string_view text)>;

  /// With `eyes`, they answer the question for the verdict, and no rule does.
  TestSession(const TestEntry& entry, const std::vector<AnswerRule>& rules, const Limits& limits,
              Listener listener, EyesSettings eyes = {});

  /// Runs the test to its end. Becomes an error as soon as `interrupted` gives true.
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
  std::size_t told_ = 0;      // bytes that the listener heard
  std::size_t attached_ = 0;  // bytes
  console::Input waitsFor_ = console::Input::kLine;
  Clock::time_point waitingSince_;
  bool waiting_ = false;  // for an answer that no rule gives
  bool broken_ = false;   // the verdict is there before the test's end
  std::string remarks_;
  Outcome outcome_;
};

}  // namespace runner
