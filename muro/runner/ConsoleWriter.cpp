#include "ConsoleWriter.h"

#include <unistd.h>

#include <cmath>
#include <cstdlib>

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
    : file_(file),
      isTerminal_(isatty(fileno(file)) != 0),
      inColor_(WantsColor(color, isTerminal_)),
      verbose_(verbose) {}

void ConsoleWriter::RunStarted(std::size_t tests) {
  planned_ = tests;
  start_ = std::chrono::steady_clock::now();
}

/// Done, failed, left and the time that is left, on a line that is written over again and again.
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
  std::fprintf(file_, "\r[%s] %s\033[K", text.c_str(), test.id.c_str());
  std::fflush(file_);
  progressShown_ = true;
}

void ConsoleWriter::TestPrinted(const std::string& text) {
  if (!verbose_ || text.empty()) return;
  std::fwrite(text.data(), 1, text.size(), file_);
  midLine_ = text.back() != '\n';
}

void ConsoleWriter::TestEnded(const TestResult& result) {
  ClearProgress();
  ++totals_.of[static_cast<std::size_t>(result.verdict)];
  if (!result.earlier) ++timed_;
  std::fprintf(file_, "%s %s %s (%s s)%s%s\n", Painted(result.verdict).c_str(),
               result.test.id.c_str(), result.test.name.c_str(),
               SecondsText(result.seconds).c_str(), result.message.empty() ? "" : ": ",
               result.message.c_str());
  std::fflush(file_);
}

void ConsoleWriter::RunEnded(const Totals& totals) {
  ClearProgress();
  std::fprintf(file_, "%s, %s s\n", totals.Text().c_str(), SecondsText(totals.seconds).c_str());
  std::fflush(file_);
}

void ConsoleWriter::ClearProgress() {
  if (progressShown_) std::fputs("\r\033[K", file_);
  if (midLine_) std::fputc('\n', file_);
  progressShown_ = false;
  midLine_ = false;
}

std::string ConsoleWriter::Painted(Verdict verdict) const {
  std::string name(VerdictName(verdict));
  name.resize(7, ' ');
  return inColor_ ? kColors[static_cast<std::size_t>(verdict)] + name + "\033[m" : name;
}

}  // namespace runner
