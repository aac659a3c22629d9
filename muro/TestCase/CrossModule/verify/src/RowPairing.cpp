#include "RowPairing.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <utility>

#include "Alignment.h"

namespace {

/// Maximum distance between a row and its repetition.
constexpr std::size_t kRepeatDistance = 4;

/// Maximum number of rows of a stretch that are considered as moved.
constexpr int kMostMoved = 256;

/// The parts in which two rows have to be equal at one level.
enum KeyPart : unsigned { kPts = 1, kContent = 2, kIdentity = 4, kNumber = 8 };

uint64_t Mixed(uint64_t hash, uint64_t value) {
  hash = (hash ^ value) * 0xbf58476d1ce4e5b9U;
  return hash ^ hash >> 31;
}

class Pairer {
 public:
  Pairer(const RowShape& shape, const std::deque<FrameRow>& golden,
         const std::deque<FrameRow>& dump, const PairingStart& start)
      : shape_(shape),
        golden_(golden),
        dump_(dump),
        frameOffset_(start.frameOffset.value_or(0)),
        knowsNumbers_(start.frameOffset.has_value()) {
    pairing_.golden.resize(golden.size());
    pairing_.dump.resize(dump.size());
    pairing_.repeats.resize(dump.size());
    if (start.firstBelongTogether) Join(0, 0, Bond::kSame);
  }

  /// From the most reliable level to the weakest: numbers only decide between rows that are
  /// otherwise equal.
  Pairing Pair(bool onlyLikeStretches) {
    if (onlyLikeStretches && !AreAlike()) return std::move(pairing_);
    const bool hasBoth = shape_.HasPts() && shape_.HasContent();
    if (knowsNumbers_) PairBy(kPts | kContent | kNumber, Bond::kSame);
    if (!shape_.HasPts()) MarkNumberedRepeats();
    PairBy(kPts | kContent, Bond::kSame);
    PullForward();
    PairMoved();
    PairBy(shape_.HasPts() ? kPts : kIdentity | kNumber, Bond::kPlace);
    MarkRepeats();
    if (hasBoth) PairBy(kContent | kNumber, Bond::kShown);
    if (!hasBoth) PairBy(kNumber, shape_.HasPts() ? Bond::kShown : Bond::kPlace);
    if (!shape_.HasPts()) {
      PairBy(kIdentity, Bond::kPlace);
      ForEachGap([this](const Gap& gap) { PairInOrder(gap); });
    }
    return std::move(pairing_);
  }

 private:
  /// Rows without a partner between two pairs.
  struct Gap {
    std::vector<std::size_t> golden = {};
    std::vector<std::size_t> dump = {};
    int32_t frameOffset;  // of the previous pair
  };

  /// `frameOffset` is 0 for golden's rows.
  static uint64_t KeyOf(const FrameRow& row, unsigned parts, bool isDump, int32_t frameOffset) {
    // A malformed row equals no other row.
    if (!row.whole) return Mixed(isDump ? 1 : 2, static_cast<uint64_t>(row.place) + 1);
    uint64_t key = 0;
    if ((parts & kPts) != 0) key = Mixed(key, row.pts);
    if ((parts & kContent) != 0) key = Mixed(key, row.content);
    if ((parts & kIdentity) != 0) key = Mixed(key, row.identity);
    const int64_t number = int64_t{row.frame} - frameOffset;
    if ((parts & kNumber) != 0) key = Mixed(key, static_cast<uint64_t>(number));
    return key;
  }

  /// True if at least a few rows of the stretches are the same.
  bool AreAlike() const {
    constexpr std::size_t kFewest = 16;  // divisor: at least one row in this many
    std::vector<uint64_t> goldenKeys;
    std::vector<uint64_t> dumpKeys;
    for (const FrameRow& row : golden_) goldenKeys.push_back(KeyOf(row, kPts | kContent, false, 0));
    for (const FrameRow& row : dump_) dumpKeys.push_back(KeyOf(row, kPts | kContent, true, 0));
    return CountCommonKeys(goldenKeys, dumpKeys) * kFewest >= dumpKeys.size();
  }

  void Join(std::size_t golden, std::size_t dump, Bond bond) {
    pairing_.golden[golden] = {bond, dump};
    pairing_.dump[dump] = {bond, golden};
  }

  static bool IsMonotone(Bond bond) { return bond != Bond::kNone && bond != Bond::kMoved; }

  template <class Act>
  void ForEachGap(const Act& act) {
    Gap gap{.frameOffset = frameOffset_};
    std::size_t d = 0;
    const auto takeDump = [&](std::size_t end) {
      for (; d < end; ++d) {
        if (pairing_.dump[d].bond == Bond::kNone && !pairing_.repeats[d] && dump_[d].whole)
          gap.dump.push_back(d);
      }
    };
    const auto flush = [&] {
      if (!gap.golden.empty() && !gap.dump.empty()) act(gap);
    };
    for (std::size_t g = 0; g < golden_.size(); ++g) {
      const Partner partner = pairing_.golden[g];
      if (partner.bond == Bond::kNone && golden_[g].whole) gap.golden.push_back(g);
      if (!IsMonotone(partner.bond)) continue;
      takeDump(partner.place);
      flush();
      d = partner.place + 1;
      gap = {.frameOffset = dump_[partner.place].frame - golden_[g].frame};
    }
    takeDump(dump_.size());
    flush();
  }

  void PairBy(unsigned parts, Bond bond) {
    ForEachGap([&](const Gap& gap) {
      std::vector<uint64_t> goldenKeys;
      std::vector<uint64_t> dumpKeys;
      for (const std::size_t g : gap.golden)
        goldenKeys.push_back(KeyOf(golden_[g], parts, false, 0));
      for (const std::size_t d : gap.dump)
        dumpKeys.push_back(KeyOf(dump_[d], parts, true, gap.frameOffset));
      for (const KeyPair& pair : AlignKeys(goldenKeys, dumpKeys))
        Join(gap.golden[pair.golden], gap.dump[pair.dump], bond);
    });
  }

  bool IsNumberedAs(std::size_t golden, std::size_t dump) const {
    return dump_[dump].frame - frameOffset_ == golden_[golden].frame;
  }

  /// Of rows that show the same, the first one is golden's and the others repeat it. Frame numbers
  /// that contradict this are trusted if they matched before.
  void PullForward() {
    std::size_t free = 0;    // first row of the dump after the previous pair
    bool numbersFit = true;  // of the previous pair
    for (std::size_t g = 0; g < golden_.size(); ++g) {
      const Partner partner = pairing_.golden[g];
      if (!IsMonotone(partner.bond)) continue;
      std::size_t d = std::exchange(free, partner.place + 1);
      while (d < partner.place && !ShowSame(dump_[d], dump_[partner.place])) ++d;
      const bool fitBefore = std::exchange(numbersFit, IsNumberedAs(g, partner.place));
      if (d == partner.place || (fitBefore && numbersFit && !IsNumberedAs(g, d))) continue;
      pairing_.dump[partner.place] = {};
      Join(g, d, partner.bond);
      free = d + 1;
      numbersFit = IsNumberedAs(g, d);
    }
  }

  /// Pairs rows without a time stamp and with different content if equally many are left on both
  /// sides.
  void PairInOrder(const Gap& gap) {
    if (gap.golden.size() != gap.dump.size()) return;
    for (std::size_t i = 0; i < gap.golden.size(); ++i)
      Join(gap.golden[i], gap.dump[i], Bond::kPlace);
  }

  using Places = std::unordered_map<uint64_t, std::size_t>;

  /// The rows without a partner, by their keys.
  Places LoneKeys(const std::deque<FrameRow>& rows, const std::vector<Partner>& partners,
                  unsigned parts, bool isDump) const {
    Places lone;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (partners[i].bond == Bond::kNone && rows[i].whole)
        lone.emplace(KeyOf(rows[i], parts, isDump, isDump ? frameOffset_ : 0), i);
    }
    return lone;
  }

  bool IsAlone(const std::deque<FrameRow>& rows, std::size_t at, unsigned parts) const {
    const uint64_t key = KeyOf(rows[at], parts, true, 0);
    return std::ranges::count_if(rows, [&](const FrameRow& row) {
             return row.whole && KeyOf(row, parts, true, 0) == key;
           }) == 1;
  }

  /// Rows left on both sides with a key that no other row has were moved.
  void PairMoved() {
    for (const unsigned parts : {kPts | kContent | kNumber, kPts | kContent}) {
      const Places golden = LoneKeys(golden_, pairing_.golden, parts, false);
      if (golden.empty()) return;
      int tried = 0;
      for (const auto& [key, d] : LoneKeys(dump_, pairing_.dump, parts, true)) {
        const auto at = golden.find(key);
        if (at == golden.end() || ++tried > kMostMoved) continue;
        if (IsAlone(golden_, at->second, parts) && IsAlone(dump_, d, parts))
          Join(at->second, d, Bond::kMoved);
      }
    }
  }

  /// In a still picture only the number shows that a row repeats the one before.
  void MarkNumberedRepeats() {
    const bool areNumbered =
        golden_.size() > 1 && golden_[0].frame != golden_[golden_.size() - 1].frame;
    for (std::size_t d = 1; areNumbered && d < dump_.size(); ++d) {
      if (pairing_.dump[d].bond == Bond::kNone && dump_[d].frame == dump_[d - 1].frame)
        pairing_.repeats[d] = ShowSame(dump_[d - 1], dump_[d]);
    }
  }

  void MarkRepeats() {
    for (std::size_t d = 0; d < dump_.size(); ++d) {
      if (pairing_.dump[d].bond != Bond::kNone || !dump_[d].whole) continue;
      for (std::size_t back = 1; back <= std::min(d, kRepeatDistance); ++back) {
        const FrameRow& before = dump_[d - back];
        const bool isShown =
            pairing_.repeats[d - back] || pairing_.dump[d - back].bond != Bond::kNone;
        if (!isShown || !ShowSame(before, dump_[d])) continue;
        pairing_.repeats[d] = true;
        break;
      }
    }
  }

  const RowShape& shape_;
  const std::deque<FrameRow>& golden_;
  const std::deque<FrameRow>& dump_;
  const int32_t frameOffset_;
  const bool knowsNumbers_;
  Pairing pairing_;
};

}  // namespace

Pairing PairRows(const RowShape& shape, const std::deque<FrameRow>& golden,
                 const std::deque<FrameRow>& dump, const PairingStart& start) {
  return Pairer(shape, golden, dump, start).Pair(start.pairsOnlyLikeStretches);
}
