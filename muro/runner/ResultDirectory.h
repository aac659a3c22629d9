// The directory of one run: a log a test, and the journal by which a run that was cut off goes on.
//
//   journal            what was run, and a line when a test starts and ends, synced to the disk
//   results.jsonl      what else is known of the run and of its tests (RunRecord)
//   logs/0001-ID.log   what the first test printed and what was typed
//   logs/0001-ID.trace the HAL calls of that test, where the run has a trace
//   logs/0001-ID.evidence/
//                      what eyes left of that test, and files that it gave itself
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "RunEvents.h"

namespace runner {

/// What the journal begins with.
struct RunHead {
  std::string directory;           // working directory of the run
  std::vector<std::string> words;  // its command line
  std::vector<std::string> tests;  // ids of the selected tests, in list order
};

/// A test of the journal.
struct JournalEntry {
  std::string id;      // unique in the run
  bool ended = false;  // false: the run was cut off in this test
  Verdict verdict = Verdict::kError;
  int result = 1;  // as for the report's line
  double seconds = 0;
  std::string message;
  bool suspect = false;  // the board was not well after it
};

/// Reads the journal of the run whose results are in `directory`, which may still go on. A line
/// that was cut off is left out. Returns an error in one line, empty when all is well.
std::string ReadJournal(const std::string& directory, RunHead& head,
                        std::vector<JournalEntry>& entries);

/// The log of one test. Of very long output the beginning is kept, and the end for the results.
class TestLog {
 public:
  TestLog() = default;
  ~TestLog();
  TestLog(const TestLog&) = delete;
  TestLog& operator=(const TestLog&) = delete;

  /// Opens the file; without a path only the end is kept. False when it cannot be made.
  bool Open(const std::string& path);
  void Add(std::string_view text);
  /// Syncs and closes the file. False when anything could not be written.
  bool Close();
  /// The end of what was added, clean.
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

  /// Makes the directory, which must be new or empty, and begins the journal. Returns an error in
  /// one line, empty when all is well.
  std::string Create(const std::string& path, const RunHead& head);

  /// Opens the directory of an earlier run, which must not go on any more, and reads its journal. A
  /// line that was cut off is dropped. Returns an error in one line, empty when all is well.
  std::string Open(const std::string& path, RunHead& head, std::vector<JournalEntry>& entries);

  bool IsOpen() const { return journal_ >= 0; }
  /// Notes a start or an end and syncs it to the disk. False when that failed.
  bool NoteStart(const PlannedTest& test) const;
  bool NoteEnd(const TestResult& result, int reportResult) const;

  /// Path of a test's file, with the extension "log" or "trace", or its directory "evidence";
  /// `LogName` is relative to the directory.
  std::string LogName(const PlannedTest& test, const std::string& extension) const;
  std::string LogPath(const PlannedTest& test, const std::string& extension) const;
  /// The files that are there as a test's evidence, sorted, relative to the directory.
  std::vector<std::string> EvidenceOf(const PlannedTest& test) const;
  /// Stores the files that a test gave as its evidence. False when that failed.
  bool KeepAttachments(const PlannedTest& test,
                       const std::map<std::string, std::string>& contentByName) const;
  /// The file of all results as JSON lines (`RunRecord`).
  std::string RecordPath() const { return path_ + "/results.jsonl"; }

 private:
  bool Note(const std::string& line) const;

  std::string path_;
  int journal_ = -1;
};

/// The last part of a log file, clean; empty when it cannot be read.
std::string ReadCleanTail(const std::string& path);

}  // namespace runner
