// A file that results are written to.
#pragma once

#include <string>
#include <string_view>

namespace runner {

/// Writes all bytes. False when that failed.
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

}  // namespace runner
