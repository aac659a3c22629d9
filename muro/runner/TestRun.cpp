#include "TestRun.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <utility>

#include "Health.h"
#include "OutputFile.h"
#include "Problem.h"
#include "TemporaryDirectory.h"
#include "TestCase/CrossModule/verify/src/Causes.h"
#include "TestSession.h"
#include "Text.h"
#include "TraceCopy.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

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

/// Every test that was run gets a line in the report.
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
    // Signals that are ignored, as with nohup, stay ignored.
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
    : tests_(tests),
      seed_(options.shuffleSeed),
      lastRound_(options.untilFail && !options.repeatGiven ? 0 : options.repeat),
      open_(options.untilFail || (options.stopOnFail && options.repeat > 1)) {}

/// The order is the same on every machine for the same seed and round.
std::optional<std::vector<std::size_t>> Plan::NextRound() {
  if (tests_ == 0 || (lastRound_ != 0 && round_ == lastRound_)) return std::nullopt;
  ++round_;
  std::vector<std::size_t> order(tests_);
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (!seed_) return order;
  std::mt19937_64 random(uint64_t{*seed_} << 32 | static_cast<uint32_t>(round_));
  for (std::size_t left = order.size(); left > 1; --left)
    std::swap(order[left - 1], order[static_cast<std::size_t>(random() % left)]);
  return order;
}

std::size_t Plan::Size() const {
  return open_ ? 0 : tests_ * static_cast<std::size_t>(lastRound_);
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
  for (const auto& listener : listeners_) listener->RunStarted(plan_.Size());
  if (plan_.HasTests() && !Interrupted()) {
    const std::string problem = BoardProblem(options_.health, "", Interrupted);
    if (!problem.empty()) Fail("board unhealthy before the first test: " + problem);
  }
  while (const auto round = plan_.NextRound()) {
    const std::size_t ranBefore = ledger_.Sums().listed - ledger_.Sums().Of(Verdict::kSkipped);
    DoRound(*round, earlier);
    if (IsLastRound(ranBefore)) break;
  }
  if (!stop_.empty() && !options_.untilFail) ledger_.SkipRounds(plan_.RoundsLeft());
  if (Interrupted() && !harnessFailed_) Fail("the run was interrupted");
  if (const std::string difference = ledger_.Difference(); !difference.empty()) Fail(difference);
  for (const auto& listener : listeners_) listener->RunEnded(ledger_.Sums());
  const int status = Status();
  for (const auto& listener : listeners_) listener->RunExits(status);
  return status;
}

void TestRun::DoRound(const std::vector<std::size_t>& round,
                      const std::vector<JournalEntry>& earlier) {
  const std::vector<PlannedTest> tests = List(round);
  for (std::size_t i = 0; i < round.size(); ++i) {
    const TestEntry& entry = tests_[round[i]];
    if (tests[i].number <= earlier.size()) {
      TakeOver(tests[i], entry, earlier[tests[i].number - 1]);
    } else {
      Decide(tests[i], entry);
    }
  }
}

/// A run ends when it was stopped, and when repeating until a failure would never end because no
/// test runs.
bool TestRun::IsLastRound(std::size_t ranBefore) const {
  const Totals& totals = ledger_.Sums();
  const bool noneRan = totals.listed - totals.Of(Verdict::kSkipped) == ranBefore;
  return !stop_.empty() || (options_.untilFail && noneRan);
}

std::vector<PlannedTest> TestRun::List(const std::vector<std::size_t>& round) {
  std::vector<PlannedTest> tests;
  tests.reserve(round.size());
  for (const std::size_t index : round) {
    const TestEntry& entry = tests_[index];
    std::string id = entry.id;
    if (plan_.Round() > 1) id.append("@").append(std::to_string(plan_.Round()));
    tests.push_back({++listed_, plan_.Round(), id, entry.moduleClass,
                     CleanLine(entry.test->getName()), CleanLine(entry.test->getDescription())});
    ledger_.List(tests.back());
  }
  return tests;
}

/// Counts and reports a test of the journal as if it had been run here.
void TestRun::TakeOver(const PlannedTest& test, const TestEntry& entry,
                       const JournalEntry& earlier) {
  TestResult result{test,
                    earlier.verdict,
                    earlier.message,
                    earlier.seconds,
                    ReadCleanTail(directory_.LogPath(test, "log")),
                    "",
                    0,
                    true,
                    false,
                    earlier.suspect};
  if (earlier.id != test.id) {
    Fail("journal mismatch: found test " + earlier.id + ", expected " + test.id);
    result.verdict = Verdict::kSkipped;
    result.message = stop_;
  } else if (!earlier.ended) {
    result.message = "the run was interrupted during this test";
    result.suspect = true;
    if (!directory_.NoteEnd(result, earlier.result)) Fail("cannot write the journal");
  }
  if (result.verdict != Verdict::kSkipped && !WriteReportLine(*entry.test, earlier.result)) {
    Lose(result, "cannot write the report");
    result.provisional = true;
  }
  if (result.verdict != Verdict::kSkipped) {
    result.log = directory_.LogName(test, "log");
    result.evidence = directory_.EvidenceOf(test);
  }
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
  if (entry.test->isDisruptive() && !options_.disruptive && !IsNamed(entry, options_.patterns))
    return "changes the board permanently; name it exactly or add --disruptive";
  return options_.noOperator && entry.NeedsOperator(!options_.eyes.command.empty())
             ? "requires an operator"
             : "";
}

void TestRun::Execute(const PlannedTest& test, const TestEntry& entry) {
  TestLog log;
  const bool kept = directory_.IsOpen();
  const bool noted = !kept || directory_.NoteStart(test);
  const bool logged = !kept || log.Open(directory_.LogPath(test, "log"));
  if (!noted || !logged) Fail("cannot write the result directory");
  for (const auto& listener : listeners_) listener->TestStarted(test);

  const TraceCopy trace(options_.trace);
  std::optional<TemporaryDirectory> unkept;
  EyesSettings eyes = options_.eyes;
  if (!eyes.command.empty()) {
    std::error_code ignored;
    eyes.evidence = kept ? fs::absolute(directory_.LogPath(test, "evidence"), ignored).string()
                         : unkept.emplace().Path();
  }
  TestSession session(
      entry, rules_, options_.limits,
      [&](std::string_view text) {
        log.Add(text);
        for (const auto& listener : listeners_) listener->TestPrinted(std::string(text));
      },
      eyes);
  const Outcome outcome = session.Run(Interrupted);
  if (outcome.harness) Fail("cannot run a test: " + outcome.message);

  TellFindings(outcome.findings);

  TestResult result{test, outcome.verdict, CleanLine(outcome.message), outcome.seconds, "",
                    "",   outcome.prompts};
  result.typed = outcome.typed;
  if (!WriteReportLine(*entry.test, outcome.result)) Lose(result, "cannot write the report");
  if (!log.Close() || (kept && !(trace.Keep(directory_.LogPath(test, "trace")) &&
                                 directory_.KeepAttachments(test, outcome.attachments))))
    Lose(result, "cannot write the log of the test");
  if (result.verdict == Verdict::kError) CheckBoard(result);
  result.output = log.CleanTail();
  if (kept) result.log = directory_.LogName(test, "log");
  if (kept) result.evidence = directory_.EvidenceOf(test);
  // An interrupted test has no verdict; a resumed run reports it as interrupted.
  result.provisional = kept && outcome.interrupted;
  if (kept && !result.provisional && !(noted && directory_.NoteEnd(result, outcome.result)))
    Lose(result, "cannot write the journal");
  Tell(result);
}

/// Each test runs in a copy of this process, which keeps the count.
void TestRun::TellFindings(const std::vector<std::string>& findings) {
  SetLastEventId(LastEventId() + static_cast<int>(findings.size()));
  for (const std::string& finding : findings) {
    for (const auto& listener : listeners_) listener->TestFound(finding);
  }
}

/// Checks the board after a failed test: on an unhealthy board further tests would only fail as
/// well.
void TestRun::CheckBoard(TestResult& result) {
  if (harnessFailed_ || Interrupted()) return;
  const std::string problem = BoardProblem(options_.health, result.test.id, Interrupted);
  if (problem.empty()) return;
  Fail("board unhealthy after " + result.test.id + ": " + problem);
  result.suspect = true;
}

/// A result that cannot be stored does not count, and the run cannot continue.
void TestRun::Lose(TestResult& result, const std::string& problem) {
  Fail(problem);
  result.verdict = Verdict::kError;
  result.message = problem;
}

void TestRun::Skip(const PlannedTest& test, const std::string& reason) {
  TestResult result{test, Verdict::kSkipped, reason, 0, "", ""};
  result.provisional = directory_.IsOpen() && harnessFailed_;
  if (directory_.IsOpen() && !result.provisional &&
      !(directory_.NoteStart(test) && directory_.NoteEnd(result, 0))) {
    Fail("cannot write the journal");
  }
  Tell(result);
}

void TestRun::Tell(const TestResult& result) {
  ledger_.Store(result);
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
  const Totals& totals = ledger_.Sums();
  if (harnessFailed_ || !told) return kHarnessFailed;
  if (totals.Run() != totals.Of(Verdict::kPass) || totals.Of(Verdict::kBlocked) > 0)
    return kSomeFailed;
  return totals.Run() == 0 ? kNothingRan : kAllPassed;
}

}  // namespace runner
