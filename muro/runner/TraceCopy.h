// The part of a growing trace file that belongs to one test.
#pragma once

#include <sys/types.h>

#include <string>

namespace runner {

class TraceCopy {
 public:
  /// Notes the present end of the file; an empty path means that there is no trace.
  explicit TraceCopy(const std::string& path);

  /// Copies what was appended since then. True also if there is no trace; false if the copy could
  /// not be written.
  bool Keep(const std::string& copyPath) const;

 private:
  std::string path_;
  off_t begin_ = 0;
};

}  // namespace runner
