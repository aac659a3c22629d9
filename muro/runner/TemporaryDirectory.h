// A directory for temporary files.
#pragma once

#include <string>

namespace runner {

/// A new private directory, removed with all its contents at the end of the scope.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Empty if it could not be created.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace runner
