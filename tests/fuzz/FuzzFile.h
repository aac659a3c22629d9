// Shared by the fuzzers: files in memory, findings, and silencing the program's output.
#pragma once

#include <string>
#include <string_view>

namespace fuzz {

/// Ends the program as a finding, with `what` on standard error, if `holds` is false.
void Require(bool holds, const char* what);

/// Splits several files in one text: removes the text up to the next line "--" and returns it. The
/// last file is the remaining text.
std::string_view NextFile(std::string_view& text);

/// Reports a finding if `holds` is true and the environment variable CVN_PLANT names this fault. It
/// shows that a fuzzer gets past its parser: only input that was parsed can trigger a planted
/// fault.
void Plant(const char* fault, bool holds);

/// A file with the given bytes; it is removed with the object.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// A path by which the file can be opened any number of times.
  const std::string& Path() const { return path_; }

 private:
  int file_;
  std::string path_;
};

/// Creates a directory in /dev/shm or, if that does not exist, in the temporary directory; it is
/// not removed.
std::string NewDirectory();

/// Writes a whole file.
void WriteFile(const std::string& path, std::string_view bytes);

/// Discards the program's output; libFuzzer itself writes to standard error.
void BeQuiet();

}  // namespace fuzz
