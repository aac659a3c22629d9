#include <algorithm>
#include <iterator>

#include "FrameLog.h"
#include "RowReader.h"
#include "StageFiles.h"
#include "Verifiers.h"

namespace {

constexpr std::size_t kCrc = ColumnOf(kVdecColumns, Unit::kChecksum);
constexpr RowFormat kFormat = FormatOf(kVdecColumns);

/// Skips the title row; prints `message` if its last word is the one that titles end with.
void SkipTitle(RowReader& file, const char* message) {
  const std::string title(WithoutLineEnd(file.NextLine()));
  const auto word = title.find_last_of(", \t") + 1;
  if (std::string_view(title).substr(word) == "MaxFALL") std::puts(message);
}

void Fail(CM_Verify_Result& result, FrameLog& log, int32_t frame, const ItemPair& pair,
          std::size_t item, HiddenDifference hidden = HiddenDifference::kNone) {
  const int32_t golden = pair.golden[item];
  const int32_t sample = pair.sample[item];
  AppendWrongField(result, frame, item, ItemText(golden, item == kCrc && item < pair.goldenCount),
                   ItemText(sample, item == kCrc && item < pair.sampleCount), hidden);
  log << "vdec info compare fail in frame " << frame << ", " << kVdecColumns[item].name << " ,val=";
  log.Hex(golden) << " ";
  log.Hex(sample) << " \n";
}

/// Compares two rows item by item. Returns false if one of them is incomplete: then its first
/// unreadable item is the last difference, and the items after it are not compared.
bool CompareRows(CM_Verify_Result& result, FrameLog& log, std::string_view goldenRow,
                 std::string_view sampleRow) {
  const ItemPair pair(goldenRow, sampleRow, kFormat);
  const int32_t frame = ToNumber(goldenRow);
  int32_t failed = 0;
  for (std::size_t i = 0; i < pair.readable; ++i) {
    if (pair.golden[i] == pair.sample[i] || i == kFormat.counterItem) continue;
    Fail(result, log, frame, pair, i);
    ++failed;
  }
  if (!pair.whole) {
    Fail(result, log, frame, pair, pair.readable, HiddenDifference::kMalformedRow);
    ++failed;
  }
  log << "vdec info compare frame " << frame;
  if (failed == 0) {
    log << " PASS !!!\n";
  } else {
    log << " Fail " << failed << " item !!!\n";
  }
  return pair.whole;
}

}  // namespace

void Verify_VDEC(CM_Verify_Result& result, const std::string& goldenPath,
                 const std::string& samplePath) {
  ListColumns(result, kVdecColumns);
  StageFiles files(goldenPath, samplePath);
  if (!files.AreOpen(result, "Dump_Info(VDEC) - open text file1 fail",
                     "Dump_Info(VDEC) - open text file2 fail")) {
    return;
  }
  SkipTitle(files.golden, "DumpInfo(VDEC) - File1 title string end!");
  SkipTitle(files.sample, "DumpInfo(VDEC) - File2 title string end!");

  FrameLog log;
  SameItems sameItems(kFormat);
  std::string_view golden;
  std::string_view sample;
  int32_t compared = 0;
  bool whole = true;
  while (whole && files.golden.NextFilled(golden)) {
    if (const SameRow same = sameItems.Find(golden, files.sample.Ahead()); same.length != 0) {
      log << "vdec info compare frame " << same.text << " PASS !!!\n";
      files.sample.Skip(same.length);
    } else if (files.sample.NextFilled(sample)) {
      whole = CompareRows(result, log, golden, sample);
    } else {
      result.coverage.goldenOnly = 1;
      break;
    }
    ++compared;
  }
  result.putVerifyFrameCount(compared);
  result.coverage.compared = compared;
  result.coverage.goldenOnly += files.golden.CountFilledLines();
  result.coverage.dumpOnly = files.sample.CountFilledLines();
}
