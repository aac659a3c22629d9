#include "AnswerNotes.h"

#include <utility>

#include "Answers.h"
#include "Text.h"

namespace runner {
namespace {

constexpr std::size_t kKeptPrompt = 8192;

}  // namespace

AnswerNotes::AnswerNotes(const std::string& key, Listener listener)
    : listener_(std::move(listener)),
      marks_(key, {[this](std::string_view text) { Printed(text); },
                   [this](console::Input) { prompt_ = LastLine(CleanText(printed_)); },
                   [this](console::Input kind, const std::string& testId, const std::string& text) {
                     Taken(kind, testId, text);
                   },
                   {},
                   // The menu's question is not part of the test's output.
                   [this] { Forget(); }}) {}

void AnswerNotes::Printed(std::string_view text) {
  listener_.printed(text);
  printed_ += text;
  if (printed_.size() > 2 * kKeptPrompt) printed_.erase(0, printed_.size() - kKeptPrompt);
}

void AnswerNotes::Taken(console::Input kind, const std::string& testId, const std::string& text) {
  if (!testId.empty())
    listener_.noted(FormatAnswer(testId, prompt_, {kind == console::Input::kKey, text}));
  Forget();
}

void AnswerNotes::Forget() {
  printed_.clear();
  prompt_.clear();
}

}  // namespace runner
