#include "interface/Identities.h"

#include <algorithm>

namespace record {

uint32_t Identities::Of(const void* address) {
  const std::lock_guard lock(mutex_);
  const auto found = numbers_.find(address);
  return found == numbers_.end() ? 0 : found->second;
}

uint32_t Identities::OfOrNew(const void* address) {
  const std::lock_guard lock(mutex_);
  const auto [found, isNew] = numbers_.try_emplace(address, last_ + 1);
  if (isNew) addresses_[++last_] = address;
  return found->second;
}

void Identities::Enter(const void* address) {
  const std::lock_guard lock(mutex_);
  if (address == nullptr) return;
  numbers_[address] = ++last_;
  addresses_[last_] = address;
}

void Identities::Bind(const void* address, uint32_t number) {
  const std::lock_guard lock(mutex_);
  if (number == 0 || address == nullptr) return;
  numbers_[address] = number;
  addresses_[number] = address;
  last_ = std::max(last_, number);
}

void* Identities::Find(uint32_t number) {
  const std::lock_guard lock(mutex_);
  const auto found = addresses_.find(number);
  return found == addresses_.end() ? nullptr : const_cast<void*>(found->second);
}

}  // namespace record
