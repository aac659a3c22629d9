#include "ResultWriters.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include "OutputFile.h"
#include "Text.h"

namespace runner {
namespace {

class FileWriter : public RunListener {
 public:
  FileWriter(const std::string& path, int standardOutput) : file_(path, standardOutput) {}
  bool Good() const override { return file_.Good(); }

 protected:
  void Write(const std::string& text) { file_.Write(text); }
  void Write(Spool& spool) { spool.CopyTo(file_); }
  int Descriptor() const { return file_.Descriptor(); }

 private:
  OutputFile file_;
};

/// JUnit XML: a suite a module, in the order of their first tests. A blocked test is an error of
/// the type BLOCKED. The whole document is written at the end: a suite's totals stand before its
/// cases, which wait in files until then.
class JUnitWriter : public FileWriter {
 public:
  JUnitWriter(const std::string& path, int standardOutput)
      : FileWriter(path, standardOutput), path_(path) {}

  bool Good() const override {
    return FileWriter::Good() &&
           std::ranges::all_of(suites_, [](const Suite& suite) { return suite.cases.Good(); });
  }
  void RunStarted(std::size_t) override {}
  void TestEnded(const TestResult& result) override {
    Suite& suite = SuiteOf(result.test.moduleClass);
    suite.seconds += result.seconds;
    ++suite.totals.of[static_cast<std::size_t>(result.verdict)];
    std::string text = "    <testcase" + Attribute("classname", result.test.moduleClass) +
                       Attribute("name", result.test.id + " " + result.test.name) +
                       Attribute("time", SecondsText(result.seconds)) + ">\n" + Problem(result);
    if (!result.output.empty())
      text += "      <system-out>" + XmlText(result.output) + "</system-out>\n";
    suite.cases.Add(text + "    </testcase>\n");
  }
  void RunEnded(const Totals& totals) override {
    Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" +
          Attribute("name", "cvntester") + Counts(totals, totals.seconds) + ">\n");
    for (Suite& suite : suites_) {
      Write("  <testsuite" + Attribute("name", suite.name) + Counts(suite.totals, suite.seconds) +
            ">\n");
      Write(suite.cases);
      Write("  </testsuite>\n");
    }
    Write("</testsuites>\n");
  }

 private:
  struct Suite {
    Suite(std::string suiteName, const std::string& path)
        : name(std::move(suiteName)), cases(path) {}

    std::string name;
    Spool cases;
    Totals totals{};
    double seconds = 0;
  };

  Suite& SuiteOf(const std::string& name) {
    const auto [at, isNew] = indexes_.try_emplace(name, suites_.size());
    if (isNew) suites_.emplace_back(name, path_);
    return suites_[at->second];
  }

  static std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + XmlText(value) + '"';
  }

  static std::string Counts(const Totals& totals, double seconds) {
    const auto count = [&](Verdict verdict) { return totals.Of(verdict); };
    return Attribute("tests", std::to_string(totals.Run() + count(Verdict::kSkipped) +
                                             count(Verdict::kBlocked))) +
           Attribute("failures", std::to_string(count(Verdict::kFail))) +
           Attribute("errors", std::to_string(count(Verdict::kError) + count(Verdict::kBlocked))) +
           Attribute("skipped", std::to_string(count(Verdict::kSkipped))) +
           Attribute("time", SecondsText(seconds));
  }

  static std::string Problem(const TestResult& result) {
    const std::string name(VerdictName(result.verdict));
    const std::string message = Attribute("message", result.message);
    switch (result.verdict) {
      case Verdict::kPass:
        return "";
      case Verdict::kFail:
        return "      <failure" + message + Attribute("type", name) + "/>\n";
      case Verdict::kSkipped:
        return "      <skipped" + message + "/>\n";
      default:
        return "      <error" + message + Attribute("type", name) + "/>\n";
    }
  }

  std::string path_;
  std::deque<Suite> suites_;
  std::map<std::string, std::size_t> indexes_;
};

/// TAP 14: a test point a test; what went wrong in a block behind it.
class TapWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t tests) override {
    planned_ = tests > 0;
    Write("TAP version 14\n" + (planned_ ? Plan(tests) : ""));
  }
  void TestEnded(const TestResult& result) override {
    ++told_;
    const bool skipped = result.verdict == Verdict::kSkipped;
    const bool fine = skipped || result.verdict == Verdict::kPass;
    std::string text = (fine ? "ok " : "not ok ") + std::to_string(told_) + " - " +
                       Description(result.test.id + " " + result.test.name);
    text += skipped ? " # SKIP " + Description(result.message) + "\n" : "\n";
    Write(fine ? text : text + Block(result));
  }
  void RunEnded(const Totals&) override {
    if (!planned_) Write(Plan(told_));
  }

 private:
  static std::string Plan(std::size_t tests) { return "1.." + std::to_string(tests) + "\n"; }

  static std::string Description(const std::string& text) {
    std::string description;
    for (const char c : text) {
      if (c == '#' || c == '\\') description += '\\';
      description += c;
    }
    return description;
  }

  static std::string Block(const TestResult& result) {
    std::string text = "  ---\n  verdict: " + std::string(VerdictName(result.verdict)) + "\n";
    if (!result.message.empty()) text += "  message: " + JsonText(result.message) + "\n";
    if (!result.log.empty()) text += "  log: " + JsonText(result.log) + "\n";
    return text + "  seconds: " + SecondsText(result.seconds) + "\n  ...\n";
  }

  bool planned_ = true;
  std::size_t told_ = 0;
};

/// JSON lines: every event as it happens.
class JsonWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t tests) override {
    Write("{\"event\": \"run-start\", \"version\": " + JsonText(CVN_VERSION) +
          ", \"tests\": " + (tests > 0 ? std::to_string(tests) : "null") + "}\n");
  }
  void TestStarted(const PlannedTest& test) override {
    Write("{\"event\": \"test-start\", " + Test(test) + "}\n");
  }
  void TestEnded(const TestResult& result) override {
    Write("{\"event\": \"test-end\", " + Test(result.test) + ", \"verdict\": " +
          JsonText(VerdictName(result.verdict)) + ", \"message\": " + JsonText(result.message) +
          ", \"seconds\": " + SecondsText(result.seconds) + ", \"log\": " + JsonText(result.log) +
          ", \"earlier\": " + (result.earlier ? "true" : "false") +
          ", \"output\": " + JsonText(result.output) + "}\n");
  }
  void RunEnded(const Totals& totals) override {
    std::string text = "{\"event\": \"run-end\", \"listed\": " + std::to_string(totals.listed);
    for (std::size_t i = 0; i < kVerdictNames.size(); ++i)
      text += ", " + JsonText(kVerdictNames[i]) + ": " + std::to_string(totals.of[i]);
    Write(text + ", \"seconds\": " + SecondsText(totals.seconds) + "}\n");
  }

 private:
  static std::string Test(const PlannedTest& test) {
    return "\"number\": " + std::to_string(test.number) +
           ", \"round\": " + std::to_string(test.round) + ", \"test\": " + JsonText(test.id) +
           ", \"module\": " + JsonText(test.moduleClass) + ", \"name\": " + JsonText(test.name) +
           ", \"description\": " + JsonText(test.description);
  }
};

/// LAVA: a signal a test, each in one write. Where the overlay's lava-test-case is on the path it
/// writes the signal itself.
class LavaWriter : public FileWriter {
 public:
  using FileWriter::FileWriter;

  void RunStarted(std::size_t) override {}
  void TestEnded(const TestResult& result) override {
    if (result.earlier) return;  // told in the life before
    const std::string id = Id(result.test.id);
    const char* word = Word(result.verdict);
    if (CallTestCase(id, word)) return;
    Write("<LAVA_SIGNAL_TESTCASE TEST_CASE_ID=" + id + " RESULT=" + word + ">\n");
  }
  void RunEnded(const Totals&) override {}

 private:
  static const char* Word(Verdict verdict) {
    switch (verdict) {
      case Verdict::kPass:
        return "pass";
      case Verdict::kBlocked:
        return "unknown";
      case Verdict::kSkipped:
        return "skip";
      default:
        return "fail";
    }
  }

  static std::string Id(std::string id) {
    for (char& c : id) c = c == '/' ? '.' : c == '@' ? '_' : c;
    return id;
  }

  bool CallTestCase(std::string id, std::string word) {
    if (!hasCommand_) return false;
    std::string command = "lava-test-case";
    std::string option = "--result";
    char* arguments[] = {command.data(), id.data(), option.data(), word.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, Descriptor(), STDOUT_FILENO);
    pid_t pid = -1;
    int status = -1;
    hasCommand_ = posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    return hasCommand_ && waitpid(pid, &status, 0) == pid && status == 0;
  }

  bool hasCommand_ = true;  // until it could not be started
};

template <class Writer>
std::unique_ptr<RunListener> Make(const std::string& path, int standardOutput) {
  return std::make_unique<Writer>(path, standardOutput);
}

}  // namespace

std::string Totals::Text() const {
  const auto count = [](std::size_t number, const char* what) {
    return std::to_string(number) + " " + what;
  };
  return count(listed, "listed = ") + count(Run(), "run + ") +
         count(Of(Verdict::kSkipped), "skipped + ") + count(Of(Verdict::kBlocked), "blocked; ") +
         count(Of(Verdict::kPass), "passed, ") + count(Of(Verdict::kFail), "failed, ") +
         count(Of(Verdict::kError), "errors");
}

std::vector<std::unique_ptr<RunListener>> MakeWriters(const Outputs& outputs, int standardOutput) {
  const struct {
    const std::string& path;
    std::unique_ptr<RunListener> (*make)(const std::string&, int);
  } kinds[] = {{outputs.junit, Make<JUnitWriter>},
               {outputs.tap, Make<TapWriter>},
               {outputs.json, Make<JsonWriter>},
               {outputs.lava, Make<LavaWriter>}};
  std::vector<std::unique_ptr<RunListener>> writers;
  for (const auto& kind : kinds) {
    if (!kind.path.empty()) writers.push_back(kind.make(kind.path, standardOutput));
  }
  return writers;
}

}  // namespace runner
