// Memory that the slave can access.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rlink.h"

/// One zero-filled page below 4 GiB, freed with the object: by then the slave must not use it any
/// more.
class LinkMemory {
 public:
  LinkMemory();
  ~LinkMemory();
  LinkMemory(const LinkMemory&) = delete;
  LinkMemory& operator=(const LinkMemory&) = delete;

  /// False if no such memory is available.
  bool IsUsable() const { return words_ != nullptr; }
  uint32_t& operator[](size_t index) { return words_[index]; }
  /// The parameter that refers to `bytes` bytes starting at byte `offset`.
  RLNK_CMD_PARAM Param(uint32_t offset, uint32_t bytes) const;

 private:
  uint32_t* words_ = nullptr;
};
