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
  if (isNew) ++last_;
  return found->second;
}

void Identities::Enter(const void* address) {
  const std::lock_guard lock(mutex_);
  if (address != nullptr) numbers_[address] = ++last_;
}

void Identities::Bind(const void* address, uint32_t number) {
  const std::lock_guard lock(mutex_);
  if (number == 0) return;
  std::erase_if(numbers_, [=](const auto& entry) { return entry.second == number; });
  numbers_[address] = number;
  last_ = std::max(last_, number);
}

void* Identities::Find(uint32_t number) {
  const std::lock_guard lock(mutex_);
  for (const auto& [address, known] : numbers_) {
    if (known == number) return const_cast<void*>(address);
  }
  return nullptr;
}

}  // namespace record
