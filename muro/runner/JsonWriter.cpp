#include "FileWriter.h"
#include "JsonLines.h"
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
    Write("{\"event\": \"test-start\", " + TestMembers(test) + "}\n");
  }
  void TestFound(const std::string& json) override { Write(json + "\n"); }
  void TestEnded(const TestResult& result) override {
    Write(TestEndLine(result, ", \"output\": " + JsonText(result.output)));
  }
  void RunEnded(const Totals& totals) override { Write(RunEndLine(totals)); }
};

}  // namespace

std::unique_ptr<RunListener> MakeJsonWriter(const std::string& path, int standardOutput) {
  return std::make_unique<JsonWriter>(path, standardOutput);
}

}  // namespace runner
