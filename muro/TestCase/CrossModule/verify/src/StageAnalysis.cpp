#include "StageAnalysis.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "ClockJudge.h"
#include "ComparedRows.h"
#include "EventList.h"
#include "FrameNumbers.h"
#include "FrameRows.h"
#include "RowPairing.h"
#include "RowReader.h"
#include "Settling.h"

namespace {

/// Number of rows examined first when the files begin to differ, and the maximum.
constexpr std::size_t kFirstStretch = 64;
constexpr std::size_t kLongestStretch = 65536;
constexpr std::size_t kStretchGrowth = 4;

/// Number of consecutive pairs after which both files are in step again.
constexpr std::size_t kInStep = 16;

/// One file with the rows read ahead.
class RowQueue {
 public:
  RowQueue(const RowShape& shape, const std::string& path) : shape_(shape), file_(path) {
    file_.NextLine();
  }

  /// Reads until there are `count` rows, or all. Returns false when the file has no more.
  bool Fill(std::size_t count) {
    std::string_view text;
    while (rows.size() < count) {
      if (!file_.NextFilled(text)) return false;
      Take(text);
    }
    return true;
  }

  /// Adds a row that was read from the file.
  void Take(std::string_view text) {
    const bool startsLine = std::exchange(startsLine_, text.back() == '\n');
    if (!startsLine || RowShape::IsEndOfStream(text)) return;
    FrameRow row;
    shape_.Parse(text, row);
    row.pts -= ptsOffset_;
    row.place = read_++;
    rows.push_back(std::move(row));
  }

  /// From now on time stamps are lowered by this offset, including those of the rows read ahead.
  void SetPtsOffset(uint32_t offset) {
    ptsOffset_ = offset;
    for (FrameRow& row : rows) row.pts -= offset;
  }

  RowReader& File() { return file_; }
  bool StartsLine() const { return startsLine_; }
  int64_t CountOne() { return read_++; }
  int64_t RowsRead() const { return read_; }

  std::deque<FrameRow> rows;

 private:
  const RowShape& shape_;
  RowReader file_;
  int64_t read_ = 0;
  uint32_t ptsOffset_ = 0;
  bool startsLine_ = true;  // the next row is not the rest of an overlong line
};

/// Number of settled rows of both stretches.
struct Settled {
  std::size_t golden;
  std::size_t dump;
};

/// The rows up to the end of the last stretch in which both files are in step. Nothing if there is
/// none, or if a moved row crosses it.
std::optional<Settled> FindStep(const Pairing& pairing) {
  std::optional<Settled> found;
  std::size_t run = 0;
  std::size_t openDump = 0;  // rows of the dump before which moved rows have their partners
  std::size_t previous = Partner::kNobody;
  for (std::size_t g = 0; g < pairing.golden.size(); ++g) {
    const Partner& partner = pairing.golden[g];
    if (partner.bond == Bond::kMoved) openDump = std::max(openDump, partner.place + 1);
    const bool isInStep = partner.bond == Bond::kSame && partner.place == previous + 1;
    previous = partner.bond == Bond::kSame ? partner.place : Partner::kNobody - 1;
    run = isInStep ? run + 1 : 1;
    // A repeated row at the end of a stretch may turn out to belong to another row.
    const bool isSure =
        g + kInStep < pairing.golden.size() && partner.place + kInStep < pairing.dump.size();
    if (run >= kInStep && partner.place >= openDump && isSure)
      found = Settled{g + 1, partner.place + 1};
  }
  if (!found) return found;
  for (std::size_t d = 0; d < found->dump; ++d) {
    const Partner& partner = pairing.dump[d];
    if (partner.bond == Bond::kMoved && partner.place >= found->golden) return std::nullopt;
  }
  return found;
}

class Analysis {
 public:
  Analysis(const Stage& stage, const std::string& goldenPath, const std::string& dumpPath)
      : shape_(stage),
        same_(stage),
        golden_(shape_, goldenPath),
        dump_(shape_, dumpPath),
        events_(stage.module),
        settling_(shape_, events_) {
    result_.stage = stage.module;
  }

  StageEvents Do() {
    for (;;) {
      if (golden_.rows.empty() && dump_.rows.empty() && TakeRows()) continue;
      golden_.Fill(1);
      dump_.Fill(1);
      if (golden_.rows.empty() && dump_.rows.empty()) break;
      if (isBeginning_) LearnOffsets();
      if (!TakePair()) Resolve();
    }
    result_.goldenRows = golden_.RowsRead();
    settling_.End(result_);
    return std::move(result_);
  }

 private:
  /// Consumes rows that are the same except for the counter. Returns false if a row has to be
  /// parsed, or if there are no more rows.
  bool TakeRows() {
    std::string_view row;
    if (!golden_.StartsLine() || !dump_.StartsLine() || ptsOffset_ != 0 ||
        !golden_.File().NextFilled(row))
      return false;
    const SameRow same =
        RowShape::IsEndOfStream(row) ? SameRow{} : same_.Find(row, dump_.File().Ahead());
    if (same.length == 0) {
      golden_.Take(row);
      return false;
    }
    isBeginning_ = false;
    settling_.TakeSame(row, golden_.CountOne(), dump_.File().Ahead(), same.counter);
    dump_.CountOne();
    dump_.File().Skip(same.length);
    return true;
  }

  /// True if two rows have the same place by their numbers and show the same picture.
  bool IsInStep(const FrameRow& golden, const FrameRow& dump) const {
    if (!golden.whole || !dump.whole || golden.pts != dump.pts) return false;
    return dump.frame - golden.frame == settling_.FrameOffset() &&
           (golden.identity == dump.identity || shape_.HasPts());
  }

  bool IsInStep() const {
    return !golden_.rows.empty() && !dump_.rows.empty() &&
           IsInStep(golden_.rows.front(), dump_.rows.front());
  }

  /// True if both files have the same malformed row, which is no difference.
  bool IsSameRubbish() const {
    return !golden_.rows.empty() && !dump_.rows.empty() && !golden_.rows.front().whole &&
           golden_.rows.front().text == dump_.rows.front().text;
  }

  /// Consumes the first rows as a pair if they are in step, with or without their pts. Without the
  /// pts this is only reliable if the next rows are in step too.
  bool TakePair() {
    if (IsSameRubbish()) {
      Drop({1, 1});
      return true;
    }
    Bond bond = Bond::kSame;
    if (!IsInStep()) {
      if (!shape_.HasPts() || !golden_.Fill(2) || !dump_.Fill(2)) return false;
      const FrameRow& golden = golden_.rows.front();
      const FrameRow& dump = dump_.rows.front();
      const bool isShown = golden.whole && dump.whole && golden.content == dump.content &&
                           dump.frame - golden.frame == settling_.FrameOffset();
      if (!isShown || !IsInStep(golden_.rows[1], dump_.rows[1])) return false;
      bond = Bond::kShown;
    }
    settling_.TakePair(golden_.rows.front(), dump_.rows.front(), bond);
    Drop({1, 1});
    return true;
  }

  /// A dump whose time stamps and numbers begin at other values keeps this difference.
  void LearnOffsets() {
    isBeginning_ = false;
    if (IsInStep()) return;
    golden_.Fill(kFirstStretch);
    dump_.Fill(kFirstStretch);
    if (shape_.HasPts()) ptsOffset_ = PtsOffset();
    dump_.SetPtsOffset(ptsOffset_);
    const Pairing pairing = PairRows(shape_, golden_.rows, dump_.rows, {});
    for (std::size_t g = 0; g < golden_.rows.size(); ++g) {
      const Partner& partner = pairing.golden[g];
      if (partner.bond == Bond::kSame)
        settling_.SetFrameOffset(dump_.rows[partner.place].frame - golden_.rows[g].frame);
    }
  }

  uint32_t PtsOffset() const {
    std::map<uint32_t, int> votes;
    int unmoved = 0;
    const std::size_t both = std::min(golden_.rows.size(), dump_.rows.size());
    for (std::size_t d = 0; d < dump_.rows.size(); ++d) {
      const FrameRow& dump = dump_.rows[d];
      bool isThere = false;
      for (const FrameRow& golden : golden_.rows) {
        isThere = isThere || golden.pts == dump.pts;
        const bool isAlike =
            golden.frame == dump.frame || (shape_.HasContent() && golden.content == dump.content);
        if (isAlike) ++votes[dump.pts - golden.pts];
      }
      if (isThere) ++unmoved;
      if (d < both) ++votes[dump.pts - golden_.rows[d].pts];
    }
    const auto best =
        std::ranges::max_element(votes, {}, [](const auto& vote) { return vote.second; });
    if (best == votes.end() || 2 * unmoved >= best->second) return 0;
    return best->first;
  }

  /// Examines longer and longer stretches until the files are in step again after their difference.
  /// The last pair before it is examined again, because the next rows may repeat it.
  void Resolve() {
    const std::size_t context = AddLastPair();
    std::size_t size = isLost_ ? kLongestStretch : kFirstStretch;
    for (;; size *= kStretchGrowth) {
      const bool goldenEnds = !golden_.Fill(size);
      const bool isAll = !dump_.Fill(size) && goldenEnds;
      const Pairing pairing = PairRows(shape_, golden_.rows, dump_.rows,
                                       {settling_.FrameOffset(), isLost_, context != 0});
      const std::optional<Settled> step = isAll ? std::nullopt : FindStep(pairing);
      if (!step && !isAll && size < kLongestStretch) continue;
      isLost_ = !step;
      const Settled end = step.value_or(Settled{golden_.rows.size(), dump_.rows.size()});
      settling_.Take({golden_.rows, dump_.rows, pairing, end.golden, end.dump, isAll, context});
      Drop(end);
      return;
    }
  }

  std::size_t AddLastPair() {
    auto last = settling_.LastPair();
    if (!last) return 0;
    golden_.rows.push_front(std::move(last->first));
    dump_.rows.push_front(std::move(last->second));
    return 1;
  }

  void Drop(const Settled& settled) {
    const auto drop = [](std::deque<FrameRow>& rows, std::size_t count) {
      rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(count));
    };
    drop(golden_.rows, settled.golden);
    drop(dump_.rows, settled.dump);
  }

  const RowShape shape_;
  SameRows same_;
  RowQueue golden_;
  RowQueue dump_;
  EventList events_;
  Settling settling_;
  StageEvents result_;
  bool isBeginning_ = true;
  bool isLost_ = false;  // the last stretch ended before the files were in step again
  uint32_t ptsOffset_ = 0;
};

}  // namespace

StageEvents AnalyseStage(MODULE_TYPE module, const std::string& goldenPath,
                         const std::string& dumpPath) {
  const Stage* const stage = FindStage(module);
  if (stage == nullptr) return {};
  return Analysis(*stage, goldenPath, dumpPath).Do();
}
