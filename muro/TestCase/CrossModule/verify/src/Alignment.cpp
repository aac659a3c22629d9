#include "Alignment.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <iterator>

namespace {

using Keys = std::span<const uint64_t>;

/// Maximum number of rows that a shortest edit may remove and insert. Stretches with more edits
/// count as unrelated.
constexpr int kMostEdits = 128;

/// A stretch of both sides; the end indexes are exclusive.
struct Stretch {
  std::size_t golden, goldenEnd;
  std::size_t dump, dumpEnd;

  std::size_t GoldenSize() const { return goldenEnd - golden; }
  std::size_t DumpSize() const { return dumpEnd - dump; }
  bool IsEmpty() const { return golden == goldenEnd || dump == dumpEnd; }
};

struct PlacedKey {
  uint64_t key;
  std::size_t place;

  bool operator<(const PlacedKey& other) const {
    return key != other.key ? key < other.key : place < other.place;
  }
};

/// Rejects most keys that a stretch does not contain, so that they need not be sorted.
class KeyFilter {
 public:
  explicit KeyFilter(Keys keys) : bits_(std::max(std::bit_ceil(keys.size()) * 32, kFewest)) {
    for (const uint64_t key : keys) bits_[Place(key)] = true;
  }

  bool MayHave(uint64_t key) const { return bits_[Place(key)]; }

 private:
  static constexpr std::size_t kFewest = 16384;

  std::size_t Place(uint64_t key) const {
    return static_cast<std::size_t>(key ^ key >> 29) & (bits_.size() - 1);
  }

  std::vector<bool> bits_;
};

/// The keys that occur once and may occur in the other stretch, in ascending order.
std::vector<PlacedKey> UniqueKeys(Keys keys, std::size_t from, std::size_t to,
                                  const KeyFilter& other) {
  std::vector<PlacedKey> all;
  for (std::size_t i = from; i < to; ++i) {
    if (other.MayHave(keys[i])) all.push_back({keys[i], i});
  }
  std::sort(all.begin(), all.end());
  std::vector<PlacedKey> unique;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool hasTwin = (i > 0 && all[i - 1].key == all[i].key) ||
                         (i + 1 < all.size() && all[i + 1].key == all[i].key);
    if (!hasTwin) unique.push_back(all[i]);
  }
  return unique;
}

/// The longest chain of pairs that ascends on both sides; `pairs` ascend in golden.
std::vector<KeyPair> LongestChain(const std::vector<KeyPair>& pairs) {
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> ends;  // by length - 1: the pair with the lowest end of such a chain
  std::vector<std::size_t> before(pairs.size(), kNone);
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto at =
        std::lower_bound(ends.begin(), ends.end(), pairs[i].dump,
                         [&](std::size_t end, std::size_t dump) { return pairs[end].dump < dump; });
    if (at != ends.begin()) before[i] = *std::prev(at);
    if (at == ends.end())
      ends.push_back(i);
    else
      *at = i;
  }
  std::vector<KeyPair> chain;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i])
    chain.push_back(pairs[i]);
  std::ranges::reverse(chain);
  return chain;
}

class Aligner {
 public:
  Aligner(Keys golden, Keys dump) : golden_(golden), dump_(dump) {}

  std::vector<KeyPair> Align() {
    AlignStretch({0, golden_.size(), 0, dump_.size()}, true);
    return std::move(pairs_);
  }

 private:
  bool IsSame(std::size_t golden, std::size_t dump) const { return golden_[golden] == dump_[dump]; }

  /// Aligns the common rows at both ends, then the rest, by anchors or by a shortest edit.
  void AlignStretch(Stretch stretch, bool byAnchors) {
    while (!stretch.IsEmpty() && IsSame(stretch.golden, stretch.dump))
      pairs_.push_back({stretch.golden++, stretch.dump++});
    std::size_t tail = 0;
    while (!stretch.IsEmpty() && IsSame(stretch.goldenEnd - 1, stretch.dumpEnd - 1)) {
      --stretch.goldenEnd, --stretch.dumpEnd;
      ++tail;
    }
    if (!stretch.IsEmpty()) byAnchors ? AlignByAnchors(stretch) : AlignByEdits(stretch);
    for (std::size_t i = 0; i < tail; ++i)
      pairs_.push_back({stretch.goldenEnd + i, stretch.dumpEnd + i});
  }

  std::vector<KeyPair> Anchors(const Stretch& stretch) const {
    const KeyFilter inGolden(golden_.subspan(stretch.golden, stretch.GoldenSize()));
    const KeyFilter inDump(dump_.subspan(stretch.dump, stretch.DumpSize()));
    const auto golden = UniqueKeys(golden_, stretch.golden, stretch.goldenEnd, inDump);
    const auto dump = UniqueKeys(dump_, stretch.dump, stretch.dumpEnd, inGolden);
    std::vector<KeyPair> common;
    for (auto g = golden.begin(), d = dump.begin(); g != golden.end() && d != dump.end();) {
      if (g->key == d->key) common.push_back({g->place, d->place});
      const bool goldenIsNext = g->key <= d->key;
      const bool dumpIsNext = d->key <= g->key;
      if (goldenIsNext) ++g;
      if (dumpIsNext) ++d;
    }
    std::ranges::sort(common, {}, &KeyPair::golden);
    return LongestChain(common);
  }

  void AlignByAnchors(const Stretch& stretch) {
    std::size_t golden = stretch.golden;
    std::size_t dump = stretch.dump;
    for (const KeyPair& anchor : Anchors(stretch)) {
      AlignStretch({golden, anchor.golden, dump, anchor.dump}, false);
      pairs_.push_back(anchor);
      golden = anchor.golden + 1;
      dump = anchor.dump + 1;
    }
    AlignStretch({golden, stretch.goldenEnd, dump, stretch.dumpEnd}, false);
  }

  /// Number of keys of the dump that golden may contain too.
  std::size_t CountCommon(const Stretch& stretch) const {
    return CountCommonKeys(golden_.subspan(stretch.golden, stretch.GoldenSize()),
                           dump_.subspan(stretch.dump, stretch.DumpSize()));
  }

  /// Searches for the smallest number of rows to remove and insert.
  void AlignByEdits(const Stretch& stretch) {
    const auto goldenSize = static_cast<int>(stretch.GoldenSize());
    const auto dumpSize = static_cast<int>(stretch.DumpSize());
    const auto common = static_cast<int>(CountCommon(stretch));
    if (common == 0 || goldenSize + dumpSize - 2 * common > kMostEdits) return;
    reached_.clear();
    for (int edits = 0; edits <= std::min(kMostEdits, goldenSize + dumpSize); ++edits) {
      for (int diagonal = -edits; diagonal <= edits; ++diagonal)
        reached_.push_back(Reach(stretch, edits, diagonal));
      const int last = goldenSize - dumpSize;
      if (std::abs(last) > edits || Reached(edits, last) != goldenSize) continue;
      TakeEdits(stretch, edits, last);
      return;
    }
  }

  /// How far in golden this number of edits leads on a diagonal (golden - dump); `kNowhere` if the
  /// diagonal cannot be reached.
  int Reach(const Stretch& stretch, int edits, int diagonal) const {
    if ((diagonal + edits) % 2 != 0) return kNowhere;
    const auto goldenSize = static_cast<int>(stretch.GoldenSize());
    const auto dumpSize = static_cast<int>(stretch.DumpSize());
    int x = StartOf(edits, diagonal);
    if (x < 0 || x > goldenSize || x - diagonal > dumpSize) return kNowhere;
    while (x < goldenSize && x - diagonal < dumpSize &&
           IsSame(stretch.golden + static_cast<std::size_t>(x),
                  stretch.dump + static_cast<std::size_t>(x - diagonal)))
      ++x;
    return x;
  }

  int Reached(int edits, int diagonal) const {
    if (std::abs(diagonal) > edits) return kNowhere;
    const int place = edits * edits + diagonal + edits;
    return reached_[static_cast<std::size_t>(place)];
  }

  /// True if the best way to a diagonal removes a golden row, false if it inserts a row.
  bool LeavesOut(int edits, int diagonal) const {
    return Reached(edits - 1, diagonal - 1) + 1 > Reached(edits - 1, diagonal + 1);
  }

  int StartOf(int edits, int diagonal) const {
    if (edits == 0) return 0;
    return std::max(Reached(edits - 1, diagonal - 1) + 1, Reached(edits - 1, diagonal + 1));
  }

  /// Follows the edits back from the end and pairs the rows between them.
  void TakeEdits(const Stretch& stretch, int edits, int diagonal) {
    const std::size_t before = pairs_.size();
    for (; edits >= 0; --edits) {
      const int start = StartOf(edits, diagonal);
      for (int x = Reached(edits, diagonal); x-- > start;) {
        pairs_.push_back({stretch.golden + static_cast<std::size_t>(x),
                          stretch.dump + static_cast<std::size_t>(x - diagonal)});
      }
      if (edits > 0) diagonal += LeavesOut(edits, diagonal) ? -1 : 1;
    }
    std::reverse(pairs_.begin() + static_cast<std::ptrdiff_t>(before), pairs_.end());
  }

  static constexpr int kNowhere = -1000000;

  const Keys golden_;
  const Keys dump_;
  std::vector<KeyPair> pairs_;
  std::vector<int> reached_;  // by number of edits, with diagonals from -edits to edits
};

}  // namespace

std::vector<KeyPair> AlignKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump) {
  return Aligner(golden, dump).Align();
}

std::size_t CountCommonKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump) {
  const KeyFilter inGolden(golden);
  return static_cast<std::size_t>(
      std::ranges::count_if(dump, [&](uint64_t key) { return inGolden.MayHave(key); }));
}
