// The journal of an interrupted run, garbled in any way, and the command line that it contains.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzFile.h"
#include "runner/Options.h"
#include "runner/ResultDirectory.h"

namespace {

const std::string& Directory() {
  static const std::string directory = fuzz::NewDirectory();
  return directory;
}

struct Journal {
  std::string error;
  runner::RunHead head;
  std::vector<runner::JournalEntry> entries;
};

/// Reads the journal; if the run can be resumed, adds the start of another test.
Journal ReadAndGoOn() {
  Journal journal;
  runner::ResultDirectory directory;
  journal.error = directory.Open(Directory(), journal.head, journal.entries);
  if (journal.error.empty())
    fuzz::Require(directory.NoteStart({1, 1, "Next/1", "Next", "", ""}), "no start noted");
  return journal;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  fuzz::WriteFile(Directory() + "/journal", {reinterpret_cast<const char*>(data), size});
  const Journal first = ReadAndGoOn();
  if (!first.error.empty()) {
    fuzz::Require(first.error.find('\n') == std::string::npos, "an error is not one line");
    return 0;
  }
  fuzz::Plant("time of an entry", !first.entries.empty() && first.entries[0].seconds > 2);
  const Journal second = ReadAndGoOn();
  fuzz::Require(second.error.empty(), "a journal that was gone on with is refused");
  fuzz::Require(second.entries.size() == first.entries.size() + 1, "an entry is lost or doubled");
  fuzz::Require(second.entries.back().id == "Next/1", "the next test's line is spoilt");

  runner::Options options;
  runner::ParseOptions(first.head.words, options);
  return 0;
}
