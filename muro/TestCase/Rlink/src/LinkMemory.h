// Memory that the slave can reach.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rlink.h"

/// One page of zeros below 4 GiB, freed with the object: the slave must have no use for it then.
class LinkMemory {
 public:
  LinkMemory();
  ~LinkMemory();
  LinkMemory(const LinkMemory&) = delete;
  LinkMemory& operator=(const LinkMemory&) = delete;

  /// False where there is no such memory to be had.
  bool IsUsable() const { return words_ != nullptr; }
  uint32_t& operator[](size_t index) { return words_[index]; }
  /// The parameter that refers to `bytes` bytes from byte `offset` on.
  RLNK_CMD_PARAM Param(uint32_t offset, uint32_t bytes) const;

 private:
  uint32_t* words_ = nullptr;
};
