#include "rlink/Ring.h"

#include <algorithm>

namespace sim {

bool Ring::Put(std::span<const uint8_t> data) {
  if (data.size() > Free()) return false;
  const size_t end = (start_ + used_) % bytes_.size();
  const size_t first = std::min(data.size(), bytes_.size() - end);
  std::ranges::copy(data.first(first), bytes_.begin() + static_cast<std::ptrdiff_t>(end));
  std::ranges::copy(data.subspan(first), bytes_.begin());
  used_ += data.size();
  return true;
}

bool Ring::Take(std::span<uint8_t> data) {
  if (data.size() > used_) return false;
  const size_t first = std::min(data.size(), FirstPiece().size());
  std::ranges::copy(FirstPiece().first(first), data.begin());
  std::ranges::copy(SecondPiece().first(data.size() - first), data.subspan(first).begin());
  return Drop(data.size());
}

bool Ring::Drop(size_t count) {
  if (count > used_) return false;
  start_ = (start_ + count) % bytes_.size();
  used_ -= count;
  return true;
}

std::span<uint8_t> Ring::FirstPiece() {
  return {bytes_.data() + start_, std::min(used_, bytes_.size() - start_)};
}

std::span<uint8_t> Ring::SecondPiece() {
  return {bytes_.data(), used_ - FirstPiece().size()};
}

}  // namespace sim
