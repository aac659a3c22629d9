#include "ConsoleWriter.h"

#include <unistd.h>

#include <cmath>
#include <cstdlib>

#include "OutputFile.h"
#include "Text.h"

namespace runner {
namespace {

constexpr const char* kColors[] = {"\033[32m", "\033[31m", "\033[31m", "\033[33m", "\033[36m"};

bool WantsColor(const std::string& color, bool isTerminal) {
  if (color != "auto") return color == "always";
  const char* noColor = std::getenv("NO_COLOR");
  return isTerminal && (noColor == nullptr || *noColor == '\0');
}

std::string Minutes(double seconds) {
  char text[32];
  const long whole = std::lround(seconds);
  std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  return text;
}

}  // namespace

ConsoleWriter::ConsoleWriter(std::FILE* file, const std::string& color, bool verbose)
    : fd_(fileno(file)),
      isTerminal_(isatty(fd_) != 0),
      inColor_(WantsColor(color, isTerminal_)),
      verbose_(verbose) {
  std::fflush(file);
}

void ConsoleWriter::RunStarted(std::size_t tests) {
  planned_ = tests;
  start_ = std::chrono::steady_clock::now();
}

/// Numbers of done, failed and remaining tests and the remaining time, on a line that is
/// overwritten.
void ConsoleWriter::TestStarted(const PlannedTest& test) {
  if (!isTerminal_ || verbose_) return;
  const std::size_t done = test.number - 1;
  std::string text = std::to_string(done) + " done, " +
                     std::to_string(totals_.Of(Verdict::kFail) + totals_.Of(Verdict::kError) +
                                    totals_.Of(Verdict::kBlocked)) +
                     " failed";
  if (planned_ > 0) text += ", " + std::to_string(planned_ - done) + " left";
  if (planned_ > 0 && timed_ > 0) {
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start_;
    const double each = spent.count() / static_cast<double>(timed_);
    text += ", about " + Minutes(each * static_cast<double>(planned_ - done));
  }
  Print("\r[" + text + "] " + test.id + "\033[K");
  progressShown_ = true;
}

void ConsoleWriter::TestPrinted(const std::string& text) {
  if (!verbose_ || text.empty()) return;
  Print(text);
  midLine_ = text.back() != '\n';
}

void ConsoleWriter::TestEnded(const TestResult& result) {
  ClearProgress();
  ++totals_.of[static_cast<std::size_t>(result.verdict)];
  if (!result.earlier) ++timed_;
  Print(Painted(result.verdict) + " " + result.test.Title() + " (" + SecondsText(result.seconds) +
        " s)" + (result.message.empty() ? "" : ": ") + result.message + "\n");
}

void ConsoleWriter::RunEnded(const Totals& totals) {
  ClearProgress();
  Print(totals.Text() + ", " + SecondsText(totals.seconds) + " s\n");
}

/// Bypasses the buffer of the file, which loses text if a write would have to wait.
void ConsoleWriter::Print(const std::string& text) const {
  WriteAll(fd_, text);
}

void ConsoleWriter::ClearProgress() {
  if (progressShown_) Print("\r\033[K");
  if (midLine_) Print("\n");
  progressShown_ = false;
  midLine_ = false;
}

std::string ConsoleWriter::Painted(Verdict verdict) const {
  std::string name(VerdictName(verdict));
  name.resize(7, ' ');
  return inColor_ ? kColors[static_cast<std::size_t>(verdict)] + name + "\033[m" : name;
}

}  // namespace runner
