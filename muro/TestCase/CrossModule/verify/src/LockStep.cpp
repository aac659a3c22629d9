#include "LockStep.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr std::size_t kTitleLimit = 66 - 1;

bool IsBlank(std::string_view row) {
  return std::ranges::all_of(row, [](unsigned char c) { return std::isspace(c) != 0; });
}

}  // namespace

void PrintMismatch(FrameLog& log, int32_t frameNumber, uint32_t mask) {
  if (mask == 0) return;
  log << "frame_no:" << frameNumber << " field:";
  log.Hex(static_cast<int32_t>(mask), 7) << " error!\n";
}

LockStepWalk::LockStepWalk(CM_Verify_Result& result, StageFiles& files)
    : result_(result),
      golden_{files.golden, {}, 0, false, true},
      sample_{files.sample, {}, 0, false, true} {}

void LockStepWalk::Run() {
  if (!ReadTitle(golden_)) log_ << "read golden title fail\n";
  if (!ReadTitle(sample_)) log_ << "read sample title fail\n";
  ReadMode mode = ReadMode::kBoth;
  while (mode != ReadMode::kEnd && failedReads_ < 2) mode = Step(mode);
  result_.putVerifyFrameCount(compared_);
  for (Side* side : {&golden_, &sample_}) NoteRest(*side);
  result_.coverage = {compared_, golden_.selected - compared_, sample_.selected - compared_};
}

void LockStepWalk::CountAsCompared() {
  if (golden_.isSelected) ++compared_;
}

bool LockStepWalk::ReadTitle(Side& side) {
  std::string_view title;
  const bool isRead = side.file.Next(title, kTitleLimit);
  side.titleGoesOn = isRead && IsPiece(title, kTitleLimit);
  side.startsLine = !side.titleGoesOn;
  return isRead;
}

/// Reads the rows of the mode and judges them. Returns what to read next; after a failed read,
/// which leaves nothing to compare, the same mode again.
ReadMode LockStepWalk::Step(ReadMode mode) {
  const bool goldenIsRead =
      mode == ReadMode::kSampleOnly || ReadGolden(mode == ReadMode::kGoldenOnly);
  if (goldenIsRead && mode == ReadMode::kBoth && TakeSame()) return mode;
  if (goldenIsRead && mode != ReadMode::kSampleOnly) NoteRow(golden_);
  const bool sampleIsRead = mode == ReadMode::kGoldenOnly || ReadSample();
  return goldenIsRead && sampleIsRead ? Judge() : mode;
}

bool LockStepWalk::Read(Side& side) {
  if (!side.file.Next(side.row, kDataLimit)) return false;
  ++side.rowsRead;
  return true;
}

/// Counts the current row if the rules select it. Further pieces of an overlong line do not count
/// as rows.
void LockStepWalk::NoteRow(Side& side) const {
  side.isSelected = side.startsLine && !IsBlank(side.row) && IsSelected(side.row, side.rowsRead);
  if (side.isSelected) ++side.selected;
  side.startsLine = side.row.back() == '\n';
}

void LockStepWalk::NoteRest(Side& side) const {
  while (Read(side)) NoteRow(side);
}

bool LockStepWalk::ReadGolden(bool alone) {
  if (Read(golden_)) return true;
  ++failedReads_;
  if (alone) {
    log_ << "[muro:" << __LINE__ << "] fread golden no:" << golden_.rowsRead << " fail!\n";
  } else {
    log_ << "[muro:" << __LINE__ << "] fread line1:" << golden_.rowsRead
         << " fail! maybe it's the end of file!\n";
  }
  return false;
}

bool LockStepWalk::ReadSample() {
  if (Read(sample_)) {
    NoteRow(sample_);
    return true;
  }
  ++failedReads_;
  log_ << "[muro:" << __LINE__ << "] fread line2:" << sample_.rowsRead
       << " fail! maybe it's the end of file!\n";
  return false;
}

bool LockStepWalk::IsBroken(const char* name, const Side& side, std::size_t fieldCount) {
  const std::string_view row = side.row;
  if (side.titleGoesOn && side.rowsRead == 1) return false;
  if (CountFields(row) >= fieldCount && !IsPiece(row, kDataLimit)) return false;
  if (IsBlank(row)) return false;
  log_ << "[muro:" << __LINE__ << "] " << std::string_view(name) << " row " << side.rowsRead
       << " is broken!\n";
  return true;
}

/// Consumes the sample's row without parsing it if it is the same.
bool LockStepWalk::TakeSame() {
  const std::size_t length = FindSame();
  if (length == 0 || length > kDataLimit) return false;
  sample_.file.Skip(length);
  ++sample_.rowsRead;
  ++compared_;
  ++golden_.selected;
  ++sample_.selected;
  golden_.startsLine = sample_.startsLine = true;
  return true;
}
