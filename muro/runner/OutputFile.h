// Files that results are written to.
#pragma once

#include <string>
#include <string_view>

namespace runner {

/// Writes all bytes, and waits while the file cannot accept more. False on failure.
bool WriteAll(int fd, std::string_view bytes);

class OutputFile {
 public:
  /// Creates or truncates the file; "-" means `standardOutput`. `Good` returns whether that
  /// succeeded.
  OutputFile(const std::string& path, int standardOutput);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Writes a whole text, in a single write if the system accepts it.
  void Write(std::string_view text);
  bool Good() const { return good_; }
  int Descriptor() const { return fd_; }

 private:
  int fd_;
  bool owned_;
  bool good_;
};

/// Text kept until the end of a run: in a file without a name, since it may exceed the memory of a
/// board.
class Spool {
 public:
  /// Creates the file in the directory of `path`, where its text will go; in /tmp if that is not
  /// possible.
  explicit Spool(const std::string& path);
  ~Spool();
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;

  void Add(std::string_view text);
  /// Writes everything that was added to `file`.
  void CopyTo(OutputFile& file);
  bool Good() const { return good_; }

 private:
  int fd_;
  bool good_;
};

}  // namespace runner
