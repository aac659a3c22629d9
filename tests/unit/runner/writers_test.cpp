// Writing results in all formats: nothing is lost or duplicated.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>

#include "Scripted.h"
#include "TestReport.h"
#include "runner/ConsoleWriter.h"
#include "runner/ResultWriters.h"
#include "runner/RunRecord.h"
#include "runner/TestRun.h"

namespace {

namespace fs = std::filesystem;
using runner::Verdict;

class WritersTest : public testing::Test {
 protected:
  WritersTest() { fs::create_directories(directory_); }
  ~WritersTest() override { fs::remove_all(directory_); }

  std::string Text(const std::string& name) const {
    std::ifstream file(directory_ / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  fs::path directory_ = testing::TempDir() + "writers";
};

runner::TestResult Result(const std::string& id, Verdict verdict) {
  return {{1, 1, id, "A", "name", "what it does"}, verdict, "", 0, "", ""};
}

TEST_F(WritersTest, NonBlockingConsoleLosesNoOutput) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
  std::size_t got = 0;
  std::thread reader([&] {
    char block[4096];
    for (ssize_t count = 0; (count = read(ends[0], block, sizeof block)) > 0;)
      got += static_cast<std::size_t>(count);
  });
  const std::size_t size = std::size_t{4} << 20;  // many times the size of a pipe
  std::FILE* file = fdopen(ends[1], "w");
  runner::ConsoleWriter(file, "never", true).TestPrinted(std::string(size, 'x'));
  std::fclose(file);
  reader.join();
  close(ends[0]);
  EXPECT_EQ(got, size);
}

TEST_F(WritersTest, FailingOrHangingLavaCommandWritesOneSignal) {
  constexpr char kSignal[] = "<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=A.1 RESULT=pass>\n";
  const std::string say = "echo \"<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=$1 RESULT=$3>\"\n";
  const char* oldPath = std::getenv("PATH");
  const std::string path = oldPath == nullptr ? "/bin:/usr/bin" : oldPath;
  setenv("PATH", (directory_.string() + ":" + path).c_str(), 1);
  for (const std::string& script : {say, std::string("exit 1\n"), say + "exit 1\n",
                                    std::string("exec sleep 1000\n"), say + "exec sleep 1000\n"}) {
    std::ofstream(directory_ / "lava-test-case") << "#!/bin/sh\n" << script;
    chmod((directory_ / "lava-test-case").c_str(), 0755);
    const auto writer = runner::MakeLavaWriter(directory_ / "lava", -1);
    writer->TestEnded(Result("A/1", Verdict::kPass));
    EXPECT_EQ(Text("lava"), kSignal) << script;
  }
  std::ofstream(directory_ / "lava-test-case") << "#!/bin/sh\nexit 0\n";
  runner::MakeLavaWriter(directory_ / "lava", -1)->TestEnded(Result("A/1", Verdict::kPass));
  EXPECT_EQ(Text("lava"), "") << "the command has sent its signal in another way";
  setenv("PATH", path.c_str(), 1);
}

TEST_F(WritersTest, DescriptionIsWrittenNextToTheName) {
  const fs::path path = directory_ / "result";
  for (const runner::ResultFormat format : {runner::kJUnit, runner::kTap, runner::kJson}) {
    runner::Outputs outputs;
    outputs[format] = path;
    auto writers = runner::MakeWriters(outputs, -1);
    writers[0]->RunStarted(1);
    writers[0]->TestEnded(Result("A/1", Verdict::kFail));
    writers[0]->RunEnded({});
    EXPECT_NE(Text("result").find("what it does"), std::string::npos) << Text("result");
  }
  std::FILE* file = std::fopen(path.c_str(), "w");
  runner::ConsoleWriter(file, "never", false).TestEnded(Result("A/1", Verdict::kFail));
  std::fclose(file);
  EXPECT_EQ(Text("result"), "FAIL    A/1 name (what it does) (0.000 s)\n");
}

TEST_F(WritersTest, EveryVerdictIsWrittenInEveryFormat) {
  constexpr const char* kTap[] = {"ok 1 - A/1 ", "not ok 2 - A/2 ", "not ok 3 - A/3 ",
                                  "not ok 4 - A/4 ", "ok 5 - A/5 "};
  constexpr const char* kLava[] = {"pass", "fail", "fail", "unknown", "skip"};
  constexpr const char* kPtest[] = {"PASS", "FAIL", "FAIL", "FAIL", "SKIP"};
  constexpr const char* kJUnit[] = {
      "<testcase", "<failure message=\"why\"", "<error message=\"why\" type=\"ERROR\"",
      "<error message=\"why\" type=\"BLOCKED\"", "<skipped message=\"why\""};
  constexpr Verdict kVerdicts[] = {Verdict::kPass, Verdict::kFail, Verdict::kError,
                                   Verdict::kBlocked, Verdict::kSkipped};
  runner::Outputs outputs;
  for (std::size_t format = 0; format < outputs.size(); ++format)
    outputs[format] = (directory_ / std::to_string(format)).string();
  setenv("PATH", directory_.c_str(), 1);  // no lava-test-case
  auto writers = runner::MakeWriters(outputs, -1);
  runner::Totals totals{.listed = std::size(kVerdicts)};
  for (const auto& writer : writers) writer->RunStarted(0);  // open-ended, as with --until-fail
  for (std::size_t i = 0; i < std::size(kVerdicts); ++i) {
    runner::TestResult result = Result("A/" + std::to_string(i + 1), kVerdicts[i]);
    result.message = i == 0 ? "" : "why";
    result.test.description = R"(a\b #c)";
    ++totals.of[static_cast<std::size_t>(kVerdicts[i])];
    for (const auto& writer : writers) writer->TestEnded(result);
  }
  for (const auto& writer : writers) writer->RunEnded(totals);
  writers.clear();
  const auto told = [&](runner::ResultFormat format) { return Text(std::to_string(format)); };
  const auto has = [&](runner::ResultFormat format, const std::string& text) {
    return told(format).find(text) != std::string::npos;
  };
  EXPECT_TRUE(told(runner::kTap).starts_with("TAP version 14\nok 1")) << told(runner::kTap);
  EXPECT_TRUE(told(runner::kTap).ends_with("\n1..5\n")) << told(runner::kTap);
  EXPECT_TRUE(has(runner::kTap, R"((a\\b \#c))")) << told(runner::kTap);
  EXPECT_TRUE(has(runner::kTap, "# SKIP why\n")) << told(runner::kTap);
  EXPECT_TRUE(has(runner::kJUnit, R"(tests="5" failures="1" errors="2" skipped="1")"))
      << told(runner::kJUnit);
  for (std::size_t i = 0; i < std::size(kVerdicts); ++i) {
    const std::string name(runner::VerdictName(kVerdicts[i]));
    EXPECT_TRUE(has(runner::kTap, kTap[i])) << told(runner::kTap);
    EXPECT_TRUE(has(runner::kJUnit, kJUnit[i])) << told(runner::kJUnit);
    EXPECT_TRUE(has(runner::kJson, "\"verdict\": \"" + name + '"')) << told(runner::kJson);
    EXPECT_TRUE(has(runner::kLava,
                    "TEST_CASE_ID=A." + std::to_string(i + 1) + " RESULT=" + kLava[i] + ">\n"))
        << told(runner::kLava);
    EXPECT_TRUE(has(runner::kPtest, std::string(kPtest[i])
                                        .append(": A/")
                                        .append(std::to_string(i + 1))
                                        .append(" name (a\\b #c)\n")))
        << told(runner::kPtest);
  }
}

/// Collects the results of tests.
class Listener : public runner::RunListener {
 public:
  explicit Listener(std::vector<runner::TestResult>& results) : results_(results) {}
  void RunStarted(std::size_t) override {}
  void TestEnded(const runner::TestResult& result) override { results_.push_back(result); }
  void RunEnded(const runner::Totals&) override {}
  bool Good() const override { return true; }

 private:
  std::vector<runner::TestResult>& results_;
};

TEST_F(WritersTest, StopOnFailEndsTheRunAfterTheFirstTest) {
  constexpr ST_THAL_TEST_CASE_T kBlocked = {1, "asks", "", [](char*) { return 0; }, false};
  constexpr ST_THAL_TEST_CASE_T kFails = {1, "fails", "", [](char*) { return 1; }, true};
  constexpr ST_THAL_TEST_CASE_T kPasses = {2, "passes", "", [](char*) { return 0; }, true};
  TestCase passes(&kPasses);
  for (const auto& [record, verdict] :
       {std::pair(&kBlocked, Verdict::kBlocked), std::pair(&kFails, Verdict::kFail)}) {
    TestCase first(record);
    scripted::RedirectReport();
    testing::internal::CaptureStdout();
    ASSERT_TRUE(report::StartOwn());
    runner::ResultDirectory nowhere;
    std::vector<runner::TestResult> told;
    std::vector<std::unique_ptr<runner::RunListener>> listeners;
    listeners.push_back(std::make_unique<Listener>(told));
    runner::Options options;
    options.stopOnFail = true;
    options.limits.idleS = 1;
    const std::vector<runner::TestEntry> tests = {{&first, "A", "A/1", "", ""},
                                                  {&passes, "A", "A/2", "", ""}};
    runner::TestRun run(options, tests, {}, nowhere, std::move(listeners));
    EXPECT_EQ(run.Do({}), 1);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0].verdict, verdict);
    EXPECT_EQ(told[1].verdict, Verdict::kSkipped);
    EXPECT_EQ(told[1].message, "stopped after A/1");
  }
}

TEST_F(WritersTest, TerminalShowsProgressAndRemainingTime) {
  int master = -1;
  int slave = -1;
  ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
  FILE* terminal = fdopen(slave, "w");
  runner::ConsoleWriter writer(terminal, "never", false);
  writer.RunStarted(100'000'000);
  runner::TestResult first = Result("A/1", Verdict::kFail);
  first.test.number = 1;
  writer.TestStarted(first.test);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  writer.TestEnded(first);
  runner::PlannedTest second = first.test;
  second.number = 2;
  second.id = "A/2";
  writer.TestStarted(second);
  char block[1024];
  std::string shown;
  while (shown.find("A/2") == shown.npos) {
    const ssize_t got = read(master, block, sizeof block);
    ASSERT_GT(got, 0) << shown;
    shown.append(block, static_cast<std::size_t>(got));
  }
  EXPECT_TRUE(std::regex_search(shown, std::regex(R"(\r\[0 done, 0 failed, 100000000 left\] A/1)")))
      << shown;
  EXPECT_TRUE(std::regex_search(
      shown, std::regex(R"(\r\[1 done, 1 failed, 99999999 left, about \d{4,}:[0-5]\d\] A/2)")))
      << shown;
  std::fclose(terminal);
  close(master);
}

TEST_F(WritersTest, IgnoredSignalsAndClosedPipesDoNotEndTheProgram) {
  std::signal(SIGHUP, SIG_IGN);  // as under nohup
  runner::CatchInterrupts();
  struct sigaction hangUp {};
  sigaction(SIGHUP, nullptr, &hangUp);
  EXPECT_TRUE(hangUp.sa_handler == SIG_IGN);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[0]);
  runner::Outputs outputs;
  outputs[runner::kTap] = "-";
  const auto writers = runner::MakeWriters(outputs, ends[1]);
  writers[0]->RunStarted(1);
  writers[0]->TestEnded(Result("A/1", Verdict::kPass));
  EXPECT_FALSE(writers[0]->Good()) << "results that were not delivered";
  close(ends[1]);
}

TEST_F(WritersTest, RecordOfAResumedRunIsAppended) {
  constexpr ST_THAL_TEST_CASE_T kRecord = {1, "na\"me", "does", [](char*) { return 0; }, true};
  TestCase test(&kRecord);
  const std::vector<runner::TestEntry> tests = {{&test, "A", "A/1", "", ""}};
  const fs::path path = directory_ / "results.jsonl";
  for (const bool resumed : {false, true}) {
    runner::RunRecord record(path, tests, {{"board", "lab \\ 7"}}, resumed);
    record.RunStarted(2);
    runner::TestResult earlier = Result("A/0", Verdict::kFail);
    earlier.earlier = resumed;
    record.TestEnded(earlier);
    runner::TestResult answered = Result("A/1", Verdict::kPass);
    answered.typed = {{5, 2}, {19, 1}};
    record.TestFound(R"({"event": "frame-event"})");
    record.TestEnded(answered);
    record.RunExits(resumed ? 0 : 99);
    EXPECT_TRUE(record.Good());
    if (!resumed)
      std::ofstream(path, std::ios::app) << R"({"event": "test-sta)";  // as after a power failure
  }
  std::ifstream file(path);
  std::string events;
  for (std::string line; std::getline(file, line);) {
    const std::string begin = R"({"event": ")";
    events += line.ends_with('}')
                  ? line.substr(begin.size(), line.find('"', begin.size()) - begin.size())
                  : "half a line";
    events += ' ';
  }
  EXPECT_EQ(events,
            "run-start test-listed test-end frame-event test-end run-exit half a line "
            "run-start test-listed frame-event test-end run-exit ");
  const std::string text = Text("results.jsonl");
  for (const char* member : {R"("labels": {"board": "lab \\ 7"})", R"("typed": [[5, 2], [19, 1]])",
                             R"("name": "na\"me", "description": "does")", R"("status": 99)",
                             R"("resumed": true)", R"("build": "cvntester )"})
    EXPECT_NE(text.find(member), std::string::npos) << member << " in " << text;
}

TEST_F(WritersTest, LostLogOrReportLineIsAnError) {
  constexpr ST_THAL_TEST_CASE_T kRecord = {1, "name", "", [](char*) { return 0; }, true};
  TestCase test(&kRecord);
  const runner::TestEntry entry{&test, "A", "A/1", "", ""};
  for (const bool logIsLost : {true, false}) {
    const fs::path directory = directory_ / (logIsLost ? "log" : "report");
    const std::string reportPath = scripted::RedirectReport();
    testing::internal::CaptureStdout();
    ASSERT_TRUE(report::StartOwn());
    runner::ResultDirectory results;
    ASSERT_EQ(results.Create(directory, {"/", {}, {"A/1"}}), "");
    if (logIsLost) fs::remove_all(directory / "logs");
    if (!logIsLost) std::ofstream(reportPath, std::ios::app) << "by somebody else\n";
    const std::string reportBefore = scripted::ReadFile(reportPath);
    std::vector<runner::TestResult> told;
    std::vector<std::unique_ptr<runner::RunListener>> listeners;
    listeners.push_back(std::make_unique<Listener>(told));
    const runner::Options options;
    runner::TestRun run(options, {entry}, {}, results, std::move(listeners));
    EXPECT_EQ(run.Do({}), 99);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].verdict, Verdict::kError);
    EXPECT_EQ(scripted::ReadFile(reportPath) == reportBefore, !logIsLost);
    std::ifstream journal(directory / "journal");
    const std::string text{std::istreambuf_iterator<char>(journal), {}};
    EXPECT_NE(text.find("\tERROR\t"), std::string::npos) << text;
  }
}

}  // namespace
