#include "ConsoleMarks.h"

#include <unistd.h>

#include <cstdio>
#include <random>

#include "OutputFile.h"
#include "Remarks.h"
#include "TestList.h"
#include "Text.h"

namespace runner {
namespace {

// An application program command, which terminals ignore.
constexpr std::string_view kEnd = "\033\\";
constexpr std::string_view kKinds = "LKP";  // in the order of console::Input
constexpr char kRemark = '#';
constexpr char kFinding = '*';
constexpr char kAttachment = '+';
constexpr std::size_t kLongestMark = 16384;
constexpr std::size_t kAttachedPart = 3072;  // escaping makes a byte at most four

std::string markBegin;

std::string BeginOf(const std::string& key) {
  return "\033_cvn" + key;
}

void Write(const std::string& body) {
  const std::string mark = markBegin + body + std::string(kEnd);
  std::fflush(stdout);
  // While a test polls for keys the terminal is non-blocking, and a partial mark is useless.
  WriteAll(STDOUT_FILENO, mark);
}

char Letter(console::Input kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

void WriteWaiting(console::Input kind) {
  Write({'?', Letter(kind)});
}

std::string RunningTestId() {
  if (TestCase::Running() == nullptr) return "";
  for (const TestEntry& entry : AllTests()) {
    if (entry.test == TestCase::Running()) return entry.id;
  }
  return "";
}

void WriteRemark(const std::string& text) {
  Write(kRemark + Escaped(text));
}

void WriteFinding(const std::string& json) {
  Write(kFinding + Escaped(json));
}

/// A long file is sent in parts.
void WriteAttachment(const std::string& name, const std::string& content) {
  std::string_view rest = content;
  do {
    const std::string_view part = rest.substr(0, kAttachedPart);
    Write(kAttachment + Escaped(name) + '\t' + Escaped(part));
    rest.remove_prefix(part.size());
  } while (!rest.empty());
}

void WriteTaken(console::Input kind, std::string_view text) {
  Write(std::string{'!', Letter(kind)} + RunningTestId() + '\t' + Escaped(text));
}

void WriteBegin(const TestCase&) {
  Write(">");
}

constexpr console::InputObserver kWaitingObserver = {WriteWaiting, nullptr};
constexpr console::InputObserver kFullObserver = {WriteWaiting, WriteTaken};

/// Length of the longest suffix of `text` that is a prefix of `word`.
std::size_t BegunLength(std::string_view text, std::string_view word) {
  std::size_t length = std::min(text.size(), word.size() - 1);
  while (!text.ends_with(word.substr(0, length))) --length;
  return length;
}

}  // namespace

std::string MakeMarkKey() {
  std::random_device device;
  char key[17];
  std::snprintf(key, sizeof key, "%08x%08x", device(), device());
  return key;
}

void MarkWaiting(const std::string& key) {
  markBegin = BeginOf(key);
  console::SetInputObserver(&kWaitingObserver);
  SetRemarkListener(WriteRemark);
  SetFindingListener(WriteFinding);
  SetAttachmentListener(WriteAttachment);
}

void MarkSession(const std::string& key) {
  markBegin = BeginOf(key);
  TestCase::SetBeginObserver(WriteBegin);
  console::SetInputObserver(&kFullObserver);
}

MarkReader::MarkReader(const std::string& key, Listener listener)
    : begin_(BeginOf(key)), listener_(std::move(listener)) {}

void MarkReader::Read(std::string_view bytes) {
  kept_ += bytes;
  std::string_view rest = kept_;
  for (;;) {
    const auto begin = rest.find(begin_);
    const std::size_t printed =
        begin != std::string_view::npos ? begin : rest.size() - BegunLength(rest, begin_);
    if (printed > 0) listener_.printed(rest.substr(0, printed));
    rest.remove_prefix(printed);
    const auto end = begin == std::string_view::npos ? begin : rest.find(kEnd, begin_.size());
    if (end == std::string_view::npos) break;
    Act(rest.substr(begin_.size(), end - begin_.size()));
    rest.remove_prefix(end + kEnd.size());
  }
  kept_ = rest;
  if (kept_.size() > kLongestMark) End();
}

void MarkReader::End() {
  if (!kept_.empty()) listener_.printed(kept_);
  kept_.clear();
}

void MarkReader::Act(std::string_view mark) const {
  if (mark == ">" && listener_.testBegins) listener_.testBegins();
  const auto tell = [&](const std::function<void(std::string)>& listener) {
    if (listener) listener(Unescaped(mark.substr(1)).value_or(""));
  };
  if (mark.starts_with(kRemark)) {
    tell(listener_.remarked);
  } else if (mark.starts_with(kFinding)) {
    tell(listener_.found);
  } else if (mark.starts_with(kAttachment)) {
    ActOnAttachment(mark.substr(1));
  } else {
    ActOnInput(mark);
  }
}

void MarkReader::ActOnAttachment(std::string_view mark) const {
  const auto tab = mark.find('\t');
  if (tab == std::string_view::npos || !listener_.attached) return;
  listener_.attached(Unescaped(mark.substr(0, tab)).value_or(""),
                     Unescaped(mark.substr(tab + 1)).value_or(""));
}

void MarkReader::ActOnInput(std::string_view mark) const {
  const auto kind = mark.size() < 2 ? std::string_view::npos : kKinds.find(mark[1]);
  if (kind == std::string_view::npos) return;
  const auto input = static_cast<console::Input>(kind);
  if (mark[0] == '?') {
    if (listener_.waiting) listener_.waiting(input);
    return;
  }
  const auto tab = mark.find('\t');
  if (tab == std::string_view::npos || !listener_.taken) return;
  listener_.taken(input, std::string(mark.substr(2, tab - 2)),
                  Unescaped(mark.substr(tab + 1)).value_or(""));
}

}  // namespace runner
