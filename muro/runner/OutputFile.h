// A file that results are written to.
#pragma once

#include <string>
#include <string_view>

namespace runner {

/// Writes all bytes, and waits where the file takes them later. False when that failed.
bool WriteAll(int fd, std::string_view bytes);

class OutputFile {
 public:
  /// Makes the file anew; "-" stands for `standardOutput`. `Good` tells whether that went well.
  OutputFile(const std::string& path, int standardOutput);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Writes a whole text, with one write where the system takes it in one.
  void Write(std::string_view text);
  bool Good() const { return good_; }
  int Descriptor() const { return fd_; }

 private:
  int fd_;
  bool owned_;
  bool good_;
};

/// Text that waits for the end of a run: in a file without a name, since it may become longer than
/// a board has memory.
class Spool {
 public:
  /// The file is made in the directory of `path`, where its text will go; in /tmp when that is no
  /// place for it.
  explicit Spool(const std::string& path);
  ~Spool();
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;

  void Add(std::string_view text);
  /// Writes all that was added to `file`.
  void CopyTo(OutputFile& file);
  bool Good() const { return good_; }

 private:
  int fd_;
  bool good_;
};

}  // namespace runner
