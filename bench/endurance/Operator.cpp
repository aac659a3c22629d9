#include "Operator.h"

#include <chrono>
#include <stdexcept>

#include "runner/Text.h"

namespace endurance {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kChoice[] = "Please enter a choice :";
constexpr char kReported[] = "Test Report file generated at ";
constexpr char kPullCable[] = "3.1 Please Disconnect";
constexpr std::chrono::seconds kLimit(300);
constexpr int kMostAnswers = 200;
constexpr int kStepMs = 20;
constexpr int kSilenceMs = 200;  // by then input has been read, even if nothing is printed

bool IsMenu(const std::string& text) {
  constexpr std::size_t kEnd = 200;
  const std::string end = text.substr(text.size() - std::min(text.size(), kEnd));
  return runner::Trimmed(runner::CleanText(end)).ends_with(kChoice);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

Operator::Operator(NightBoard& board, test::Pty& pty, const std::vector<runner::AnswerRule>& rules)
    : board_(board), pty_(pty), rules_(rules) {
  Listen();
}

void Operator::Run(const runner::TestEntry& test) {
  Walk(test.position);
  AnswerPrompts(test);
}

void Operator::RunAll(const std::string& position, const runner::TestEntry& prompting) {
  Walk(position);
  AnswerPrompts(prompting);
}

void Operator::Quit() {
  pty_.SendLine("q");
}

/// Goes back to the main menu if the path leads to another module, and types the last choice of the
/// path without waiting for the output.
void Operator::Walk(const std::string& position) {
  std::vector<std::string> way = runner::Split(position, ' ');
  const std::string last = way.back();
  way.pop_back();
  if (way != menu_) {
    for (; !menu_.empty(); menu_.pop_back()) Choose("p");
    for (const std::string& choice : way) Choose(choice);
    menu_ = way;
  }
  pty_.SendLine(last);
}

void Operator::Choose(const std::string& choice) {
  pty_.SendLine(choice);
  if (!IsMenu(Listen())) throw std::runtime_error("no menu after the choice " + choice);
}

void Operator::AnswerPrompts(const runner::TestEntry& test) {
  runner::AnswerScript answers(rules_, test);
  for (int typed = 0;; ++typed) {
    const std::string text = Listen();
    toldReported_ += CountOf(text, kReported);
    if (IsMenu(text)) return;
    const auto kind = pty_.TakesKeys() ? console::Input::kKey : console::Input::kLine;
    const auto answer = answers.Next(text, kind);
    if (!answer || typed == kMostAnswers)
      throw std::runtime_error(test.id + (answer ? " prompts endlessly: " : " gets no answer: ") +
                               text);
    pty_.Send(*answer);
  }
}

/// Unplugs the cable of port 0 and plugs it in again.
void Operator::PullCable() const {
  board_.Cvnsim("unplug 0");
  board_.Cvnsim("after 5 s plug 0 3840x2160p60 hdr");
}

/// What the harness prints until it waits for the operator.
std::string Operator::Listen() {
  const auto giveUp = Clock::now() + kLimit;
  std::string text = pty_.TakeOutput(kSilenceMs);
  std::size_t pulled = 0;
  for (;;) {
    for (; pulled < CountOf(text, kPullCable); ++pulled) PullCable();
    if (pty_.WaitReading(kStepMs)) {
      const std::string more = pty_.TakeOutput(0);
      if (more.empty()) return text;
      text += more;
      continue;
    }
    text += pty_.TakeOutput(kStepMs);
    if (Clock::now() > giveUp || pty_.Wait(0) >= 0)
      throw std::runtime_error("the harness does not continue: " + text);
  }
}

}  // namespace endurance
