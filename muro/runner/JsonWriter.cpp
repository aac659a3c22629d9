#include "FileWriter.h"
#include "ResultWriters.h"
#include "Text.h"

namespace runner {
namespace {

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
  void TestFound(const std::string& json) override { Write(json + "\n"); }
  void TestEnded(const TestResult& result) override {
    Write("{\"event\": \"test-end\", " + Test(result.test) + ", \"verdict\": " +
          JsonText(VerdictName(result.verdict)) + ", \"message\": " + JsonText(result.message) +
          ", \"seconds\": " + SecondsText(result.seconds) + ", \"prompts\": " +
          std::to_string(result.prompts) + ", \"log\": " + JsonText(result.log) +
          ", \"earlier\": " + (result.earlier ? "true" : "false") +
          (result.suspect ? ", \"suspect\": true" : "") + Figures(result) +
          (result.evidence.empty() ? "" : ", \"evidence\": " + JsonList(result.evidence)) +
          ", \"output\": " + JsonText(result.output) + "}\n");
  }
  void RunEnded(const Totals& totals) override {
    std::string text = "{\"event\": \"run-end\", \"listed\": " + std::to_string(totals.listed);
    for (std::size_t i = 0; i < kVerdictNames.size(); ++i)
      text += ", " + JsonText(kVerdictNames[i]) + ": " + std::to_string(totals.of[i]);
    Write(text + ", \"skipped_rounds\": " + std::to_string(totals.skippedRounds) +
          ", \"seconds\": " + SecondsText(totals.seconds) + "}\n");
  }

 private:
  static std::string Figures(const TestResult& result) {
    std::string text;
    for (const Figure& figure : result.figures)
      text += ", " + JsonText(figure.name) + ": " + std::to_string(figure.value);
    return text;
  }
  static std::string Test(const PlannedTest& test) {
    return "\"number\": " + std::to_string(test.number) +
           ", \"round\": " + std::to_string(test.round) + ", \"test\": " + JsonText(test.id) +
           ", \"module\": " + JsonText(test.moduleClass) + ", \"name\": " + JsonText(test.name) +
           ", \"description\": " + JsonText(test.description);
  }
};

}  // namespace

std::unique_ptr<RunListener> MakeJsonWriter(const std::string& path, int standardOutput) {
  return std::make_unique<JsonWriter>(path, standardOutput);
}

}  // namespace runner
