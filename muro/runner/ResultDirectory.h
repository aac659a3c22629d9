// The directory of one run: one log per test, and the journal used to resume an interrupted run.
//
//   journal            what was run, and a line when a test starts and ends, synced to the disk
//   results.jsonl      further data of the run and of its tests (RunRecord)
//   logs/0001-ID.log   what the first test printed and what was typed
//   logs/0001-ID.trace the HAL calls of that test, where the run has a trace
//   logs/0001-ID.evidence/
//                      evidence of the eyes for that test, and files that the test attached
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "RunEvents.h"

namespace runner {

/// The head of the journal.
struct RunHead {
  std::string directory;           // working directory of the run
  std::vector<std::string> words;  // its command line
  std::vector<std::string> tests;  // ids of the selected tests, in list order
};

/// A test of the journal.
struct JournalEntry {
  std::string id;      // unique in the run
  bool ended = false;  // false: the run was interrupted during this test
  Verdict verdict = Verdict::kError;
  int result = 1;  // as for the report's line
  double seconds = 0;
  std::string message;
  bool suspect = false;  // the board was unhealthy after it
};

/// Reads the journal of the run whose results are in `directory`, which may still be running. A
/// truncated line is left out. Returns a one-line error, empty on success.
std::string ReadJournal(const std::string& directory, RunHead& head,
                        std::vector<JournalEntry>& entries);

/// The log of one test. Of very long output it keeps the beginning, and the end for the results.
class TestLog {
 public:
  TestLog() = default;
  ~TestLog();
  TestLog(const TestLog&) = delete;
  TestLog& operator=(const TestLog&) = delete;

  /// Opens the file; without a path only the end is kept. False if the file cannot be created.
  bool Open(const std::string& path);
  void Add(std::string_view text);
  /// Syncs and closes the file. False if anything could not be written.
  bool Close();
  /// The end of the added text, cleaned (`CleanText`).
  std::string CleanTail() const;

 private:
  int fd_ = -1;
  bool good_ = true;
  std::size_t size_ = 0;
  std::string tail_;
};

class ResultDirectory {
 public:
  ResultDirectory() = default;
  ~ResultDirectory();
  ResultDirectory(const ResultDirectory&) = delete;
  ResultDirectory& operator=(const ResultDirectory&) = delete;

  /// Creates the directory, which must be new or empty, and begins the journal. Returns a one-line
  /// error, empty on success.
  std::string Create(const std::string& path, const RunHead& head);

  /// Opens the directory of an earlier run, which must have ended, and reads its journal. A
  /// truncated line is dropped. Returns a one-line error, empty on success.
  std::string Open(const std::string& path, RunHead& head, std::vector<JournalEntry>& entries);

  bool IsOpen() const { return journal_ >= 0; }
  /// Adds a start or an end to the journal and syncs it to the disk. False on failure.
  bool NoteStart(const PlannedTest& test) const;
  bool NoteEnd(const TestResult& result, int reportResult) const;

  /// Path of a test's file, with the extension "log" or "trace", or of its directory "evidence";
  /// `LogName` is relative to the directory.
  std::string LogName(const PlannedTest& test, const std::string& extension) const;
  std::string LogPath(const PlannedTest& test, const std::string& extension) const;
  /// The existing evidence files of a test, sorted, relative to the directory.
  std::vector<std::string> EvidenceOf(const PlannedTest& test) const;
  /// Stores the files that a test gave as its evidence. False on failure.
  bool KeepAttachments(const PlannedTest& test,
                       const std::map<std::string, std::string>& contentByName) const;
  /// The file of all results as JSON lines (`RunRecord`).
  std::string RecordPath() const { return path_ + "/results.jsonl"; }

 private:
  bool Note(const std::string& line) const;

  std::string path_;
  int journal_ = -1;
};

/// The last part of a log file, cleaned; empty if it cannot be read.
std::string ReadCleanTail(const std::string& path);

}  // namespace runner
