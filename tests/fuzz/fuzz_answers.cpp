// The operator's answers as a file, and a test's output as prompts. The prompt follows the answers,
// separated by the line "--".
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzFile.h"
#include "TestFrame.h"
#include "runner/Answers.h"
#include "runner/Text.h"

namespace {

const runner::TestEntry& AnyTest() {
  static const runner::TestEntry test = [] {
    TestFrame::GetInstance()->DoInit();
    return runner::AllTests().front();
  }();
  return test;
}

/// A recorded answer is the answer given in a replay: a written rule is read back unchanged.
void RequireRoundTrip(const std::string& prompt, const runner::Answer& answer) {
  const fuzz::MemoryFile file(runner::FormatAnswer("Test/1", prompt, answer));
  std::vector<runner::AnswerRule> rules;
  fuzz::Require(runner::LoadAnswers(file.Path(), rules).empty(), "a written answer is refused");
  fuzz::Require(rules.size() == 1 && rules[0].answers.size() == 1, "a written answer is lost");
  const runner::Answer& read = rules[0].answers[0];
  fuzz::Require(read.keys == answer.keys && read.text == answer.text, "an answer changed");
  fuzz::Require(prompt.empty() || runner::MatchesGlob(rules[0].promptGlob, prompt),
                "a recorded prompt is not known again");
}

void RequireCleanText(std::string_view bytes) {
  const std::string clean = runner::CleanText(bytes);
  fuzz::Require(runner::CleanText(clean) == clean, "clean text gets cleaner");
  fuzz::Require(runner::Unescaped(runner::Escaped(bytes)) == bytes, "escaped bytes changed");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::BeQuiet();
  AnyTest();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::string_view printed(reinterpret_cast<const char*>(data), size);
  const fuzz::MemoryFile file(fuzz::NextFile(printed));
  RequireCleanText(printed);

  std::vector<runner::AnswerRule> rules;
  const std::string error = runner::LoadAnswers(file.Path(), rules);
  fuzz::Require(error.find('\n') == std::string::npos, "an error is not one line");

  fuzz::Plant("answer with an escape",
              !rules.empty() && rules.back().answers.back().text.find('\033') != std::string::npos);
  runner::AnswerScript script(rules, AnyTest());
  for (const auto kind : {console::Input::kLine, console::Input::kKey, console::Input::kLine})
    script.Next(printed, kind);
  const std::string prompt = runner::LastLine(runner::CleanText(printed));
  for (const runner::AnswerRule& rule : rules) {
    for (const runner::Answer& answer : rule.answers) RequireRoundTrip(prompt, answer);
  }
  return 0;
}
