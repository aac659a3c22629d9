// What fuzzers share: files that live in memory, findings, and quiet.
#pragma once

#include <string>
#include <string_view>

namespace fuzz {

/// Ends the program as a finding, with `what` on standard error, when it does not hold.
void Require(bool holds, const char* what);

/// Several files in one text: takes the text up to the next line "--" away. The last file is the
/// rest.
std::string_view NextFile(std::string_view& text);

/// A finding when it holds and the environment variable CVN_PLANT names this fault. So a fuzzer can
/// show that it gets past its reader: it has to find what only parsed text can trigger
/// about.
void Plant(const char* fault, bool holds);

/// A file with the given bytes; it is gone with the object.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// A path by which the file can be opened as often as wanted.
  const std::string& Path() const { return path_; }

 private:
  int file_;
  std::string path_;
};

/// A new directory below /dev/shm or, where that is not there, the temporary directory; it stays.
std::string NewDirectory();

/// Writes a whole file.
void WriteFile(const std::string& path, std::string_view bytes);

/// Sends what the program prints nowhere; libFuzzer itself writes to standard error.
void BeQuiet();

}  // namespace fuzz
