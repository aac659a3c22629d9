#include "TestRun.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <utility>

#include "OutputFile.h"
#include "Problem.h"
#include "TestSession.h"
#include "Text.h"
#include "TraceCopy.h"

namespace runner {
namespace {

volatile std::sig_atomic_t interruptSignal = 0;

void NoteInterrupt(int signal) {
  interruptSignal = signal;
}

bool Interrupted() {
  return interruptSignal != 0;
}

bool Counts(Verdict verdict) {
  return verdict == Verdict::kFail || verdict == Verdict::kError || verdict == Verdict::kBlocked;
}

/// The report's line is due for every test that was run.
bool WriteReportLine(TestCase& test, int result) {
  const MutedOutput muted;
  return test.Finish(result);
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    // nohup and the like mean what they say.
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
  std::signal(SIGPIPE, SIG_IGN);
}

MutedOutput::MutedOutput() {
  std::fflush(stdout);
  saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

MutedOutput::~MutedOutput() {
  std::fflush(stdout);
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
}

Plan::Plan(std::size_t tests, const Options& options)
    : order_(tests),
      seed_(options.shuffleSeed),
      lastRound_(options.untilFail && !options.repeatGiven ? 0 : options.repeat) {
  next_ = tests;
}

std::optional<Plan::Step> Plan::Next() {
  if (next_ == order_.size()) {
    const bool wasLast = lastRound_ != 0 && round_ == lastRound_;
    if (order_.empty() || wasLast) return std::nullopt;
    BeginRound();
  }
  return Step{order_[next_++], round_};
}

/// An order that is the same on every machine for the same seed and round.
void Plan::BeginRound() {
  ++round_;
  next_ = 0;
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  if (!seed_) return;
  std::mt19937_64 random(uint64_t{*seed_} << 32 | static_cast<uint32_t>(round_));
  for (std::size_t left = order_.size(); left > 1; --left)
    std::swap(order_[left - 1], order_[static_cast<std::size_t>(random() % left)]);
}

std::size_t Plan::Size() const {
  return order_.size() * static_cast<std::size_t>(lastRound_);
}

TestRun::TestRun(const Options& options, std::vector<TestEntry> tests,
                 std::vector<AnswerRule> rules, ResultDirectory& directory,
                 std::vector<std::unique_ptr<RunListener>> listeners)
    : options_(options),
      tests_(std::move(tests)),
      rules_(std::move(rules)),
      directory_(directory),
      listeners_(std::move(listeners)),
      plan_(tests_.size(), options) {}

int TestRun::Do(const std::vector<JournalEntry>& earlier) {
  for (const auto& listener : listeners_)
    listener->RunStarted(options_.untilFail ? 0 : plan_.Size());
  while (const auto step = plan_.Next()) {
    const PlannedTest test = Planned(*step);
    const TestEntry& entry = tests_[step->index];
    if (test.number <= earlier.size()) {
      TakeOver(test, entry, earlier[test.number - 1]);
    } else {
      Decide(test, entry);
    }
    if (!stop_.empty() && (options_.untilFail || harnessFailed_)) plan_.EndWithRound();
  }
  if (Interrupted() && !harnessFailed_) Fail("the run was interrupted");
  for (const auto& listener : listeners_) listener->RunEnded(totals_);
  return Status();
}

PlannedTest TestRun::Planned(const Plan::Step& step) {
  const TestEntry& entry = tests_[step.index];
  std::string id = entry.id;
  if (step.round > 1) id.append("@").append(std::to_string(step.round));
  return {++totals_.listed,
          step.round,
          id,
          entry.moduleClass,
          CleanLine(entry.test->getName()),
          CleanLine(entry.test->getDescription())};
}

/// A test of the journal counts and is reported as if it had been run here.
void TestRun::TakeOver(const PlannedTest& test, const TestEntry& entry,
                       const JournalEntry& earlier) {
  TestResult result{test,
                    earlier.verdict,
                    earlier.message,
                    earlier.seconds,
                    ReadCleanTail(directory_.LogPath(test, "log")),
                    "",
                    true};
  if (earlier.id != test.id) {
    Fail("the journal does not fit: " + earlier.id + " where " + test.id + " is due");
    result.verdict = Verdict::kSkipped;
    result.message = stop_;
  } else if (!earlier.ended) {
    result.message = "the run was cut off in this test";
    if (!directory_.NoteEnd(result, earlier.result)) Fail("the journal cannot be written");
  }
  if (result.verdict != Verdict::kSkipped && !WriteReportLine(*entry.test, earlier.result))
    Fail("the report cannot be written");
  if (result.verdict != Verdict::kSkipped) result.log = directory_.LogName(test, "log");
  Tell(result);
}

void TestRun::Decide(const PlannedTest& test, const TestEntry& entry) {
  if (Interrupted() && stop_.empty()) Fail("the run was interrupted");
  const std::string reason = ReasonToSkip(entry);
  if (reason.empty()) {
    Execute(test, entry);
  } else {
    Skip(test, reason);
  }
}

std::string TestRun::ReasonToSkip(const TestEntry& entry) const {
  if (!stop_.empty()) return stop_;
  if (!entry.test->hasFunction()) return "has no function";
  return options_.noOperator && entry.NeedsOperator() ? "needs an operator" : "";
}

void TestRun::Execute(const PlannedTest& test, const TestEntry& entry) {
  TestLog log;
  const bool kept = directory_.IsOpen();
  if (kept && !(directory_.NoteStart(test) && log.Open(directory_.LogPath(test, "log"))))
    Fail("the result directory cannot be written");
  for (const auto& listener : listeners_) listener->TestStarted(test);

  const TraceCopy trace(options_.trace);
  TestSession session(entry, rules_, options_.limits, [&](std::string_view text) {
    log.Add(text);
    for (const auto& listener : listeners_) listener->TestPrinted(std::string(text));
  });
  const Outcome outcome = session.Run(Interrupted);
  if (outcome.harness) Fail("a test cannot be run: " + outcome.message);

  TestResult result{test, outcome.verdict, CleanLine(outcome.message), outcome.seconds, "", ""};
  if (!WriteReportLine(*entry.test, outcome.result)) {
    Fail("the report cannot be written");
    result.verdict = Verdict::kError;
    result.message = stop_;
  }
  const bool stored = log.Close() && (!kept || trace.Keep(directory_.LogPath(test, "trace")));
  result.output = log.CleanTail();
  if (kept) result.log = directory_.LogName(test, "log");
  // What an interruption did to a test is no result of it: a resumed run says that it was cut off.
  const bool journalled = !kept || Interrupted() || directory_.NoteEnd(result, outcome.result);
  if (!stored || !journalled) Fail("the result directory cannot be written");
  Tell(result);
}

void TestRun::Skip(const PlannedTest& test, const std::string& reason) {
  const TestResult result{test, Verdict::kSkipped, reason, 0, "", ""};
  const bool ownDecision = !harnessFailed_;
  if (directory_.IsOpen() && ownDecision &&
      !(directory_.NoteStart(test) && directory_.NoteEnd(result, 0))) {
    Fail("the result directory cannot be written");
  }
  Tell(result);
}

void TestRun::Tell(const TestResult& result) {
  ++totals_.of[static_cast<std::size_t>(result.verdict)];
  totals_.seconds += result.seconds;
  for (const auto& listener : listeners_) listener->TestEnded(result);
  if ((options_.stopOnFail || options_.untilFail) && Counts(result.verdict) && stop_.empty())
    stop_ = "stopped after " + result.test.id;
}

void TestRun::Fail(const std::string& problem) {
  if (!harnessFailed_) PrintProblem(problem);
  harnessFailed_ = true;
  stop_ = problem;
}

int TestRun::Status() const {
  const bool told = std::ranges::all_of(listeners_, [](const auto& l) { return l->Good(); });
  if (harnessFailed_ || !told || !totals_.AddUp()) return kHarnessFailed;
  if (totals_.Run() != totals_.Of(Verdict::kPass) || totals_.Of(Verdict::kBlocked) > 0)
    return kSomeFailed;
  return totals_.Run() == 0 ? kNothingRan : kAllPassed;
}

}  // namespace runner
