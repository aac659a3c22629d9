#include "JsonLines.h"

#include "Text.h"

namespace runner {

std::string TestMembers(const PlannedTest& test) {
  return "\"number\": " + std::to_string(test.number) +
         ", \"round\": " + std::to_string(test.round) + ", \"test\": " + JsonText(test.id) +
         ", \"module\": " + JsonText(test.moduleClass) + ", \"name\": " + JsonText(test.name) +
         ", \"description\": " + JsonText(test.description);
}

std::string TestEndLine(const TestResult& result, const std::string& own) {
  std::string figures;
  for (const Figure& figure : result.figures)
    figures += ", " + JsonText(figure.name) + ": " + std::to_string(figure.value);
  return "{\"event\": \"test-end\", " + TestMembers(result.test) +
         ", \"verdict\": " + JsonText(VerdictName(result.verdict)) +
         ", \"message\": " + JsonText(result.message) +
         ", \"seconds\": " + SecondsText(result.seconds) +
         ", \"prompts\": " + std::to_string(result.prompts) + ", \"log\": " + JsonText(result.log) +
         ", \"earlier\": " + (result.earlier ? "true" : "false") +
         (result.suspect ? ", \"suspect\": true" : "") + figures +
         (result.evidence.empty() ? "" : ", \"evidence\": " + JsonList(result.evidence)) + own +
         "}\n";
}

std::string RunEndLine(const Totals& totals) {
  std::string text = "{\"event\": \"run-end\", \"listed\": " + std::to_string(totals.listed);
  for (std::size_t i = 0; i < kVerdictNames.size(); ++i)
    text += ", " + JsonText(kVerdictNames[i]) + ": " + std::to_string(totals.of[i]);
  return text + ", \"skipped_rounds\": " + std::to_string(totals.skippedRounds) +
         ", \"seconds\": " + SecondsText(totals.seconds) + "}\n";
}

}  // namespace runner
