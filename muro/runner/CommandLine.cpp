#include "CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

#include "Answers.h"
#include "BuildInfo.h"
#include "ConsoleWriter.h"
#include "Descriptors.h"
#include "DumpVerification.h"
#include "ExitStatus.h"
#include "FileChecks.h"
#include "Guard.h"
#include "HalCheck.h"
#include "Options.h"
#include "OutputFile.h"
#include "Problem.h"
#include "Recorder.h"
#include "ResultDirectory.h"
#include "ResultWriters.h"
#include "RunRecord.h"
#include "Shards.h"
#include "TestCase/CrossModule/playback/src/PlaybackRun.h"
#include "TestFrame.h"
#include "TestList.h"
#include "TestReport.h"
#include "TestRun.h"
#include "Text.h"
#include "Util.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

int Refuse(ExitStatus status, const std::string& problem) {
  PrintProblem(problem + (status == kUsage ? "; try 'cvntester --help'" : ""));
  return status;
}

int Print(const std::string& text) {
  return WriteAll(STDOUT_FILENO, text) ? kAllPassed : kHarnessFailed;
}

/// An output that goes to standard output must be alone there: everything else is redirected to
/// standard error. Returns the descriptor for "-".
int SeparateOutput(const Options& options) {
  const bool isTaken = std::ranges::find(options.outputs, "-") != options.outputs.end() ||
                       options.events == "-" || options.strip == "-";
  if (!isTaken) return STDOUT_FILENO;
  std::fflush(stdout);
  const int standardOutput = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return standardOutput;
}

std::vector<TestEntry> TestsOfFrame() {
  const MutedOutput muted;
  TestFrame::GetInstance()->DoInit();
  return AllTests();
}

/// Keeps only the suspect tests of an earlier run.
std::string KeepSuspects(const std::string& directory, std::vector<TestEntry>& tests) {
  RunHead head;
  std::vector<JournalEntry> entries;
  std::string problem = ReadJournal(directory, head, entries);
  std::erase_if(tests, [&](const TestEntry& test) {
    return std::ranges::none_of(entries, [&](const JournalEntry& entry) {
      return (entry.suspect || !entry.ended) && BaseId(entry.id) == test.id;
    });
  });
  return problem;
}

/// Selects from `all` according to the options. Returns an error, empty on success.
std::string SelectTests(const Options& options, const std::vector<TestEntry>& all,
                        std::vector<TestEntry>& tests) {
  std::string unmatched;
  tests = Select(all, options.patterns, options.excluded, unmatched);
  if (!unmatched.empty()) return "'" + unmatched + "' matches no test";
  std::string problem;
  if (!options.retryFrom.empty()) problem = KeepSuspects(options.retryFrom, tests);
  Durations durations;
  if (problem.empty() && !options.shardTimes.empty())
    problem = ReadDurations(options.shardTimes, durations);
  tests = TestsOf(options.shard, tests, durations);
  return problem;
}

/// Everything that a run needs.
struct Prepared {
  std::vector<TestEntry> tests;
  std::vector<AnswerRule> rules;
};

/// Returns an error, empty on success.
std::string Prepare(const Options& options, const std::vector<TestEntry>& all, Prepared& run) {
  std::string problem = SelectTests(options, all, run.tests);
  if (problem.empty()) problem = CheckFiles(options);
  if (!problem.empty() || options.answers.empty()) return problem;
  problem = LoadAnswers(options.answers, run.rules);
  std::vector<std::string> warnings;
  if (problem.empty()) problem = CheckAnswers(options.answers, run.rules, all, run.tests, warnings);
  for (const std::string& warning : warnings) PrintProblem(warning);
  return problem;
}

int List(const Options& options) {
  std::vector<TestEntry> tests;
  const std::string problem = SelectTests(options, TestsOfFrame(), tests);
  if (!problem.empty()) return Refuse(kUsage, problem);
  if (options.noOperator)
    std::erase_if(tests, [](const TestEntry& entry) { return entry.NeedsOperator(); });
  return Print(FormatList(tests, options.format));
}

bool StartReport() {
  bool started = false;
  {
    const MutedOutput muted;
    started = report::StartOwn();
  }
  Print("Test Report file path : " + std::string(Util::GetTestReportPath()) + "\n");
  return started;
}

/// The operator's labels of the run, its shard, and the run that it retries.
std::vector<Label> LabelsOf(const Options& options) {
  std::vector<Label> labels = options.labels;
  if (options.shard.of > 1) labels.push_back({"shard", options.shard.Text()});
  if (!options.retryFrom.empty()) labels.push_back({"retry-from", CleanLine(options.retryFrom)});
  return labels;
}

/// Runs the selected tests; `earlier` is the content of the journal of a resumed run.
int Execute(const Options& options, Prepared run, ResultDirectory& directory,
            const std::vector<JournalEntry>& earlier, bool resumed) {
  const int standardOutput = SeparateOutput(options);
  auto listeners = MakeWriters(options.outputs, standardOutput);
  listeners.push_back(std::make_unique<ConsoleWriter>(stdout, options.color, options.verbose));
  if (directory.IsOpen())
    listeners.push_back(
        std::make_unique<RunRecord>(directory.RecordPath(), run.tests, LabelsOf(options), resumed));
  if (!std::ranges::all_of(listeners, [](const auto& l) { return l->Good(); }))
    return kHarnessFailed;
  if (!StartReport()) {
    return Refuse(kHarnessFailed, std::string(Util::GetTestReportPath()) +
                                      ": cannot write the report; check that its directory exists");
  }
  Set_Manual_Play(options.manualPlay);
  CatchInterrupts();
  AdoptOrphans();
  return TestRun(options, std::move(run.tests), std::move(run.rules), directory,
                 std::move(listeners))
      .Do(earlier);
}

std::vector<std::string> Ids(const std::vector<TestEntry>& tests) {
  std::vector<std::string> ids;
  ids.reserve(tests.size());
  for (const TestEntry& entry : tests) ids.push_back(entry.id);
  return ids;
}

int Run(const Options& options, const std::vector<std::string>& words) {
  Prepared run;
  const std::vector<TestEntry> all = TestsOfFrame();
  NoteForeignDescriptors();
  const std::string problem = Prepare(options, all, run);
  if (!problem.empty()) return Refuse(kUsage, problem);
  ResultDirectory directory;
  if (!options.results.empty()) {
    std::error_code ignored;
    const RunHead head{fs::current_path(ignored).string(), words, Ids(run.tests)};
    const std::string failure = directory.Create(options.results, head);
    if (!failure.empty()) return Refuse(kHarnessFailed, failure);
  }
  return Execute(options, std::move(run), directory, {}, false);
}

/// The command line in the journal defines what is run and where the results go.
int Resume(const Options& asked) {
  const std::vector<TestEntry> all = TestsOfFrame();
  NoteForeignDescriptors();
  RunHead head;
  std::vector<JournalEntry> earlier;
  ResultDirectory directory;
  std::string problem = directory.Open(asked.results, head, earlier);
  if (!problem.empty()) return Refuse(kHarnessFailed, problem);
  std::error_code error;
  fs::current_path(head.directory, error);
  if (error) return Refuse(kHarnessFailed, head.directory + ": " + error.message());
  Options options;
  problem = ParseOptions(head.words, options);
  Prepared run;
  if (problem.empty()) problem = Prepare(options, all, run);
  if (problem.empty() && Ids(run.tests) != head.tests)
    problem = "the list of selected tests has changed since the run was started";
  if (!problem.empty()) return Refuse(kHarnessFailed, asked.results + ": " + problem);
  if (asked.color != "auto") options.color = asked.color;
  options.verbose = options.verbose || asked.verbose;
  return Execute(options, std::move(run), directory, earlier, true);
}

bool CallsHal(Mode mode) {
  return mode == Mode::kInteractive || mode == Mode::kRun || mode == Mode::kResume;
}

}  // namespace

int Main(const std::vector<std::string>& words, const std::function<int()>& console) {
  Options options;
  const std::string problem = ParseOptions(words, options);
  if (!problem.empty()) return Refuse(kUsage, problem);
  if (CallsHal(options.mode) && !HalIsComplete()) return kHarnessFailed;
  switch (options.mode) {
    case Mode::kHelp:
      return Print(HelpText());
    case Mode::kVersion:
      return Print(VersionText());
    case Mode::kDocument:
      return Print(Document(options.document));
    case Mode::kCheckHal:
      return CheckHal(options.checkedHal);
    case Mode::kList:
      return List(options);
    case Mode::kRun:
      return Run(options, words);
    case Mode::kResume:
      return Resume(options);
    case Mode::kVerify:
      std::signal(SIGPIPE, SIG_IGN);  // results are completed even if nobody reads the report
      return VerifyDumps(options, SeparateOutput(options));
    case Mode::kInteractive:
      break;
  }
  Set_Manual_Play(options.manualPlay);
  return options.record.empty() ? console() : RecordSession(options.record, console);
}

}  // namespace runner
