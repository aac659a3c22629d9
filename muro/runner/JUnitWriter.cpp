#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

/// JUnit XML: one suite per module, in the order of their first tests. A blocked test is an error
/// of the type BLOCKED. The whole document is written at the end: a suite's totals precede its
/// cases, which are kept in files until then.
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
                       Attribute("name", result.test.Title()) +
                       Attribute("time", SecondsText(result.seconds)) + ">\n" + Details(result) +
                       Problem(result);
    if (!result.output.empty())
      text += "      <system-out>" + XmlText(result.output) + "</system-out>\n";
    suite.cases.Add(text + "    </testcase>\n");
  }
  void RunEnded(const Totals& totals) override {
    Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" +
          Attribute("name", "cvntester") + Counts(totals, totals.seconds) + ">\n");
    for (Suite& suite : suites_) {
      Write("  <testsuite" + Attribute("name", suite.name) + Counts(suite.totals, suite.seconds) +
            ">\n" + SkippedRounds(totals));
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

  using Property = std::pair<std::string, std::string>;  // name, value

  static std::string Properties(const std::string& indent, const std::vector<Property>& all) {
    if (all.empty()) return "";
    std::string text = indent + "<properties>\n";
    for (const auto& [name, value] : all)
      text += indent + "  <property" + Attribute("name", name) + Attribute("value", value) + "/>\n";
    return text + indent + "</properties>\n";
  }

  static std::string Details(const TestResult& result) {
    std::vector<Property> all;
    for (const Figure& figure : result.figures)
      all.emplace_back(figure.name, std::to_string(figure.value));
    if (result.verdict == Verdict::kPass && !result.message.empty())
      all.emplace_back("message", result.message);
    if (result.suspect) all.emplace_back("suspect", "true");
    for (const std::string& file : result.evidence) all.emplace_back("evidence", file);
    return Properties("      ", all);
  }

  static std::string SkippedRounds(const Totals& totals) {
    if (totals.skippedRounds == 0) return "";
    return Properties("    ", {{"skipped_rounds", std::to_string(totals.skippedRounds)}});
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

}  // namespace

std::unique_ptr<RunListener> MakeJUnitWriter(const std::string& path, int standardOutput) {
  return std::make_unique<JUnitWriter>(path, standardOutput);
}

}  // namespace runner
