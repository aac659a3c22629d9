// The board that a page shows: it can be switched off, and another one switched on in its place.
#pragma once

#include <sys/types.h>

#include <string>

#include "BoardFiles.h"

namespace panel {

class LiveBoard {
 public:
  explicit LiveBoard(cvnsim::BoardFiles files) : files_(std::move(files)) {}

  /// Attaches this process to the board that is on. Returns an error, or "" on success.
  std::string Find();

  const cvnsim::BoardFiles& Files() const { return files_; }

 private:
  cvnsim::BoardFiles files_;
  dev_t device_ = 0;
  ino_t inode_ = 0;  // of the state file that is mapped
};

/// The board as JSON: ports, windows, what is around it, the whole state as text, the last calls.
/// The process must be attached to it.
std::string BoardJson(const cvnsim::BoardFiles& files);

/// `text` as a JSON string.
std::string JsonString(const std::string& text);

}  // namespace panel
