#include "TestSession.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "ConsoleInput.h"
#include "Signals.h"
#include "Text.h"

namespace runner {
namespace {

constexpr int kLookMs = 50;
constexpr double kLooksAgainS = 5;  // tests poll for keys more often than this

constexpr char kInterrupted[] = "the run was interrupted";
constexpr std::size_t kKeptPrompt = 8192;
constexpr std::size_t kLongestAttachments = std::size_t{4} << 20;

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string Limit(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%g s", seconds);
  return text;
}

/// Appends `text` to a line.
void AddTo(std::string& line, const std::string& text) {
  line += (line.empty() ? "" : "; ") + text;
}

/// In the child: runs the test; the end of input is a failure, as it is for an operator.
int RunTest(TestCase& test, const std::string& key) {
  MarkWaiting(key);
  console::SetEndOfInputHandler([] { LeaveChild(1); });
  return test.Execute();
}

}  // namespace

TestSession::TestSession(const TestEntry& entry, const std::vector<AnswerRule>& rules,
                         const Limits& limits, Listener listener, EyesSettings eyes)
    : entry_(entry),
      limits_(limits),
      listener_(std::move(listener)),
      eyes_(std::move(eyes)),
      answers_(rules, entry),
      marks_(key_,
             {[this](std::string_view text) { Printed(text); },
              [this](console::Input kind) { Waiting(kind); },
              {},
              [this](const std::string& text) { AddTo(remarks_, CleanLine(text)); },
              {},
              [this](const std::string& json) { outcome_.findings.push_back(json); },
              [this](const std::string& name, const std::string& part) { Attached(name, part); }}) {
}

Outcome TestSession::Run(bool (*interrupted)()) {
  interrupted_ = interrupted;
  if (eyes_.before) LookBefore();
  const std::string error = test_.Start([this] { return RunTest(*entry_.test, key_); });
  if (!error.empty()) {
    outcome_.message = error;
    outcome_.harness = true;
    return outcome_;
  }
  std::string output;
  for (bool more = true; more;) {
    more = test_.Wait(kLookMs, output);
    if (!output.empty()) marks_.Read(output);
    output.clear();
    if (more && !broken_ && interrupted()) {
      outcome_.interrupted = true;
      Break(Verdict::kError, kInterrupted);
    }
    WatchLimits();
  }
  marks_.End();
  outcome_.seconds = SecondsSince(start_);
  Judge(test_.End());
  if (eyes_.always && !looked_ && !broken_ && test_.End().kind == ChildEnd::kReturned)
    LookAtTheEnd();
  return outcome_;
}

void TestSession::Printed(std::string_view text) {
  lastOutput_ = Clock::now();
  Tell(text);
  printed_ += text;
  if (printed_.size() > 2 * kKeptPrompt) printed_.erase(0, printed_.size() - kKeptPrompt);
}

void TestSession::Tell(std::string_view text) {
  told_ += text.size();
  listener_(text);
}

/// Content beyond the limit is left out.
void TestSession::Attached(const std::string& name, const std::string& part) {
  const bool isFileName = !name.empty() && name[0] != '.' && name.find('/') == std::string::npos;
  lastOutput_ = Clock::now();
  attached_ += part.size();
  if (!isFileName) return;
  if (attached_ <= kLongestAttachments)
    outcome_.attachments[name] += part;
  else
    outcome_.attachments.erase(name);
}

void TestSession::Waiting(console::Input kind) {
  if (broken_) return;
  if (LastLine(CleanText(printed_)) != Trimmed(TestCase::kVerdictQuestion)) {
    ++outcome_.prompts;
  } else if (!eyes_.command.empty()) {
    AskEyes();
    return;
  }
  const auto answer = answers_.Next(printed_, kind);
  waiting_ = !answer;
  waitsFor_ = kind;
  waitingSince_ = Clock::now();
  if (!answer) return;
  Answer(*answer);
}

void TestSession::Answer(const std::string& keys) {
  test_.Type(keys);
  outcome_.typed.push_back({told_, keys.size()});
  Tell(keys);
  lastOutput_ = Clock::now();
  printed_.clear();
}

/// Looks at the panel; the time that it takes does not count as the test's.
Sight TestSession::LookAt(std::string_view question) {
  const auto before = Clock::now();
  Sight sight = Look(eyes_, entry_.id, std::string(question), interrupted_);
  looked_ = true;
  start_ += Clock::now() - before;
  Tell(std::string("[").append(sight.Text()).append("]\n"));
  return sight;
}

/// The look before the test is for the command's own use; its status has no effect.
void TestSession::LookBefore() {
  LookAt("before the test");
  looked_ = false;
  start_ = lastOutput_ = Clock::now();
}

void TestSession::AskEyes() {
  const Sight sight = LookAt(Trimmed(TestCase::kVerdictQuestion));
  if (interrupted_()) return;  // its effect is decided in one place
  if (sight.kind == Sight::kCannotTell) {
    Break(Verdict::kBlocked, sight.Text());
    return;
  }
  AddTo(remarks_, sight.Text());
  Answer(sight.kind == Sight::kYes ? "y\n" : "n\n");
}

/// A test does not pass unless eyes have confirmed it.
void TestSession::LookAtTheEnd() {
  const Sight sight = LookAt("at the end of the test");
  if (interrupted_()) {
    outcome_.verdict = Verdict::kError;
    outcome_.message = kInterrupted;
    outcome_.result = 1;
    outcome_.interrupted = true;
    return;
  }
  AddTo(outcome_.message, sight.Text());
  if (outcome_.verdict != Verdict::kPass || sight.kind == Sight::kYes) return;
  outcome_.verdict = sight.kind == Sight::kNo ? Verdict::kFail : Verdict::kBlocked;
  outcome_.result = 1;
}

void TestSession::WatchLimits() {
  const struct {
    double seconds;
    Clock::time_point since;
    const char* message;
  } limits[] = {{limits_.timeoutS, start_, "timeout: still running after "},
                {limits_.idleS, lastOutput_, "timeout: no output for "}};
  for (const auto& limit : limits) {
    if (limit.seconds <= 0 || SecondsSince(limit.since) <= limit.seconds) continue;
    if (IsWaiting(limit.seconds)) {
      Break(Verdict::kBlocked, "no answer to '" + LastLine(CleanText(printed_)) + "'");
    } else {
      Break(Verdict::kError, limit.message + Limit(limit.seconds));
    }
  }
}

/// A test that only polls for a key counts as waiting as long as it keeps polling.
bool TestSession::IsWaiting(double limitS) const {
  const bool looksNoMore = waitsFor_ == console::Input::kPoll &&
                           SecondsSince(waitingSince_) > std::min(kLooksAgainS, limitS / 2);
  return waiting_ && !looksNoMore;
}

void TestSession::Break(Verdict verdict, const std::string& message) {
  if (broken_) return;
  broken_ = true;
  outcome_.verdict = verdict;
  outcome_.message = message;
  test_.Stop();
}

void TestSession::Judge(const ChildEnd& end) {
  if (broken_) return;
  switch (end.kind) {
    case ChildEnd::kReturned:
      outcome_.result = end.value;
      if (end.value == 0) outcome_.verdict = Verdict::kPass;
      if (end.value == 1) outcome_.verdict = Verdict::kFail;
      if (end.value != 0 && end.value != 1)
        outcome_.message = "undefined result " + std::to_string(end.value);
      if (!remarks_.empty()) AddTo(outcome_.message, remarks_);
      break;
    case ChildEnd::kExited:
      outcome_.message = "exited with status " + std::to_string(end.value) + " during the test";
      break;
    case ChildEnd::kSignalled:
      outcome_.message = "killed by " + SignalText(end.value);
      break;
    case ChildEnd::kGuardLost:
      outcome_.message = "the test killed its supervisor process, " + SignalText(end.value);
      break;
    case ChildEnd::kNotStarted:
      outcome_.message = std::string("no process: ") + std::strerror(end.value);
      outcome_.harness = true;
      break;
  }
  if (end.leftChildren > 0) {
    AddTo(outcome_.message,
          "left " + std::to_string(end.leftChildren) + " process(es) running, ended");
  }
}

}  // namespace runner
