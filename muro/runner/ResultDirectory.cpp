#include "ResultDirectory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "InputFile.h"
#include "OutputFile.h"
#include "Text.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr char kInUse[] = ": is in use by another run";
constexpr char kTitle[] = "cvntester journal 1";
constexpr std::size_t kLongestLog = std::size_t{8} << 20;
constexpr std::size_t kTail = std::size_t{32} << 10;
constexpr std::size_t kLargestJournal = std::size_t{64} << 20;

std::string SystemError(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

/// New names in a directory are on the disk only after the directory has been synced.
void SyncDirectory(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

/// Locks a journal against other runs until its last descriptor is closed. A run killed a moment
/// ago may have a descriptor left in a process that is about to end.
bool Lock(int journal) {
  constexpr int kTries = 50;
  for (int i = 0; i < kTries; ++i) {
    if (flock(journal, LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK) return errno == ENOLCK || errno == EOPNOTSUPP;
    usleep(20'000);
  }
  return false;
}

std::string Line(std::vector<std::string> fields) {
  for (std::string& field : fields) field = Escaped(field);
  return Joined(fields, "\t") + '\n';
}

std::string HeadText(const RunHead& head) {
  std::string text = Line({kTitle}) + Line({"directory", head.directory});
  for (const std::string& word : head.words) text += Line({"word", word});
  for (const std::string& test : head.tests) text += Line({"test", test});
  return text + Line({"tests", std::to_string(head.tests.size())});
}

template <class Number>
bool Parse(const std::string& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool ReadEnd(const std::vector<std::string>& fields, JournalEntry& entry) {
  if (fields.size() != 6 || fields[1] != entry.id) return false;
  const auto name = std::ranges::find(kVerdictNames, fields[2]);
  if (name == kVerdictNames.end()) return false;
  entry.ended = true;
  entry.verdict = static_cast<Verdict>(name - kVerdictNames.begin());
  entry.message = fields[5];
  return Parse(fields[3], entry.result) && Parse(fields[4], entry.seconds);
}

/// Parses one journal line. Returns false if the line is malformed.
bool ReadLine(const std::string& line, RunHead& head, std::vector<JournalEntry>& entries,
              bool& headIsWhole) {
  std::vector<std::string> fields;
  for (const std::string& field : Split(line, '\t')) {
    const auto value = Unescaped(field);
    if (!value) return false;
    fields.push_back(*value);
  }
  const std::string& kind = fields[0];
  if (kind == "end") return !entries.empty() && ReadEnd(fields, entries.back());
  if (fields.size() != 2) return false;
  const std::string& value = fields[1];
  if (kind == "suspect") {
    if (entries.empty() || !entries.back().ended || entries.back().id != value) return false;
    return entries.back().suspect = true, true;
  }
  if (kind == "directory") return head.directory = value, true;
  if (kind == "word") return head.words.push_back(value), true;
  if (kind == "test") return head.tests.push_back(value), true;
  if (kind == "tests") return headIsWhole = value == std::to_string(head.tests.size()), true;
  if (kind != "start") return false;
  entries.emplace_back().id = value;
  return true;
}

/// Reads the complete lines of a journal; `size` is set to their length in bytes.
std::string ReadWholeLines(const std::string& journal, RunHead& head,
                           std::vector<JournalEntry>& entries, std::size_t& size) {
  std::string text;
  std::string problem = ReadInputFile(journal, kLargestJournal + 1, text);
  if (!problem.empty()) return problem;
  if (text.size() > kLargestJournal) return journal + ": is larger than 64 MiB";
  size = text.rfind('\n') + 1;  // npos + 1 is 0
  text.resize(size);

  std::vector<std::string> lines = Split(text, '\n');
  lines.pop_back();
  bool headIsWhole = false;
  if (lines.empty() || lines[0] != kTitle) return journal + ": not a cvntester journal";
  for (std::size_t i = 1; i < lines.size(); ++i) {
    if (!ReadLine(lines[i], head, entries, headIsWhole))
      return journal + ":" + std::to_string(i + 1) + ": malformed journal line";
  }
  return headIsWhole ? "" : journal + ": truncated before the first test; start a new run";
}

}  // namespace

std::string ReadJournal(const std::string& directory, RunHead& head,
                        std::vector<JournalEntry>& entries) {
  std::size_t size = 0;
  return ReadWholeLines(directory + "/journal", head, entries, size);
}

TestLog::~TestLog() {
  if (fd_ >= 0) close(fd_);
}

bool TestLog::Open(const std::string& path) {
  fd_ = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  good_ = fd_ >= 0;
  return good_;
}

void TestLog::Add(std::string_view text) {
  tail_ += text;
  if (tail_.size() > 2 * kTail) tail_.erase(0, tail_.size() - kTail);
  const std::size_t room = kLongestLog - std::min(kLongestLog, size_);
  size_ += text.size();
  if (fd_ >= 0 && room > 0) good_ = WriteAll(fd_, text.substr(0, room)) && good_;
}

bool TestLog::Close() {
  if (fd_ < 0) return good_;
  if (size_ > kLongestLog) {
    const std::string note =
        "\n[" + std::to_string(size_ - kLongestLog) + " more bytes were dropped]\n";
    good_ = WriteAll(fd_, note) && good_;
  }
  good_ = fsync(fd_) == 0 && good_;
  good_ = close(fd_) == 0 && good_;
  fd_ = -1;
  return good_;
}

std::string TestLog::CleanTail() const {
  return CleanText(std::string_view(tail_).substr(tail_.size() - std::min(tail_.size(), kTail)));
}

ResultDirectory::~ResultDirectory() {
  if (journal_ >= 0) close(journal_);
}

std::string ResultDirectory::Create(const std::string& path, const RunHead& head) {
  std::error_code error;
  if (fs::exists(path, error) && !fs::is_empty(path, error))
    return path + ": directory is not empty; use a new directory or --resume";
  fs::create_directories(path + "/logs", error);
  if (error) return path + ": " + error.message();
  path_ = path;
  const std::string journal = path + "/journal";
  journal_ = open(journal.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0644);
  if (journal_ < 0) return SystemError(journal);
  if (!Lock(journal_)) return path + kInUse;
  if (!Note(HeadText(head))) return SystemError(journal);
  SyncDirectory(path);
  return "";
}

std::string ResultDirectory::Open(const std::string& path, RunHead& head,
                                  std::vector<JournalEntry>& entries) {
  // The run resumes in its original working directory.
  std::error_code error;
  path_ = fs::absolute(path, error);
  const std::string journal = path_ + "/journal";
  journal_ = open(journal.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (journal_ < 0) return SystemError(journal);
  if (!Lock(journal_)) return path + kInUse;
  std::size_t size = 0;
  std::string problem = ReadWholeLines(journal, head, entries, size);
  if (!problem.empty()) return problem;
  if (ftruncate(journal_, static_cast<off_t>(size)) != 0) return SystemError(journal);
  return "";
}

bool ResultDirectory::NoteStart(const PlannedTest& test) const {
  return Note(Line({"start", test.id}));
}

bool ResultDirectory::NoteEnd(const TestResult& result, int reportResult) const {
  // The test's log is on the disk before its end is noted.
  SyncDirectory(path_ + "/logs");
  std::string text =
      Line({"end", result.test.id, std::string(VerdictName(result.verdict)),
            std::to_string(reportResult), SecondsText(result.seconds), result.message});
  if (result.suspect) text += Line({"suspect", result.test.id});
  return Note(text);
}

bool ResultDirectory::Note(const std::string& line) const {
  return WriteAll(journal_, line) && fdatasync(journal_) == 0;
}

std::string ResultDirectory::LogName(const PlannedTest& test, const std::string& extension) const {
  std::string id = test.id;
  std::replace(id.begin(), id.end(), '/', '.');
  char number[16];
  std::snprintf(number, sizeof number, "%04zu", test.number);
  return "logs/" + std::string(number) + "-" + id + "." + extension;
}

std::string ResultDirectory::LogPath(const PlannedTest& test, const std::string& extension) const {
  return path_ + "/" + LogName(test, extension);
}

std::vector<std::string> ResultDirectory::EvidenceOf(const PlannedTest& test) const {
  std::vector<std::string> names;
  const std::string directory = LogName(test, "evidence");
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(path_ + "/" + directory, error))
    names.push_back(directory + "/" + entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

bool ResultDirectory::KeepAttachments(
    const PlannedTest& test, const std::map<std::string, std::string>& contentByName) const {
  if (contentByName.empty()) return true;
  const std::string directory = LogPath(test, "evidence");
  std::error_code error;
  fs::create_directories(directory, error);
  return std::ranges::all_of(contentByName, [&](const auto& file) {
    OutputFile out(directory + "/" + file.first, -1);
    out.Write(file.second);
    return out.Good();
  });
}

std::string ReadCleanTail(const std::string& path) {
  std::string text;
  ReadInputFile(path, kLongestLog + kTail, text);  // a missing log has no tail
  return CleanText(std::string_view(text).substr(text.size() - std::min(text.size(), kTail)));
}

}  // namespace runner
