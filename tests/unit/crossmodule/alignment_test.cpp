// The alignment of keys, compared with a longest common subsequence found by brute force.
#include "TestCase/CrossModule/verify/src/Alignment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Keys = std::vector<uint64_t>;

std::size_t LongestCommon(const Keys& one, const Keys& two) {
  std::vector<std::size_t> before(two.size() + 1), now(two.size() + 1);
  for (const uint64_t key : one) {
    for (std::size_t i = 0; i < two.size(); ++i)
      now[i + 1] = two[i] == key ? before[i] + 1 : std::max(before[i + 1], now[i]);
    before = now;
  }
  return before.back();
}

/// Keys that occur once on both sides, between equal beginnings and ends, are anchors, which may
/// cost other pairs.
bool HasAnchor(Keys one, Keys two) {
  for (int side = 0; side < 2; ++side) {
    while (!one.empty() && !two.empty() && one.back() == two.back()) {
      one.pop_back();
      two.pop_back();
    }
    std::ranges::reverse(one);
    std::ranges::reverse(two);
  }
  return std::ranges::any_of(one, [&](uint64_t key) {
    return std::ranges::count(one, key) == 1 && std::ranges::count(two, key) == 1;
  });
}

TEST(Alignment, PairsAsManyKeysAsPossible) {
  std::mt19937 random(7);
  int compared = 0;
  for (int round = 0; round < 4000; ++round) {
    const auto any = [&] {
      Keys keys(random() % 14);
      for (uint64_t& key : keys) key = 100 + random() % 4;
      return keys;
    };
    const Keys golden = any(), dump = any();
    const auto pairs = AlignKeys(golden, dump);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      ASSERT_EQ(golden.at(pairs[i].golden), dump.at(pairs[i].dump)) << "round " << round;
      ASSERT_TRUE(i == 0 ||
                  (pairs[i - 1].golden < pairs[i].golden && pairs[i - 1].dump < pairs[i].dump))
          << "round " << round;
    }
    if (HasAnchor(golden, dump)) continue;
    ++compared;
    ASSERT_EQ(pairs.size(), LongestCommon(golden, dump)) << "round " << round;
  }
  EXPECT_GT(compared, 2000);
}

}  // namespace
