// A directory for files that nobody keeps.
#pragma once

#include <string>

namespace runner {

/// A new directory of this program's own, gone with everything in it at the end of the scope.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Empty when there is none.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace runner
