#include <algorithm>
#include <charconv>
#include <iterator>

#include "FrameLog.h"
#include "RowReader.h"
#include "StageFiles.h"
#include "Verifiers.h"

namespace {

constexpr const char* kColumns[] = {
    "frame_no",    "width",       "height",    "crc",        "frame_rate",  "pts",
    "90k_counter", "hdrInfo",     "pri_x1",    "pri_x2",     "pri_x3",      "pri_y1",
    "pri_y2",      "pri_y3",      "white_x",   "white_y",    "max_disp_lu", "min_disp_lu",
    "trans_char",  "matrix_coef", "color_pri", "full_range", "max_c_cll",   "max_fall"};
constexpr std::size_t kCrc = 3;
constexpr RowFormat kFormat{std::size(kColumns), 1U << kCrc, 6};

/// Takes the title row; says so when it ends with the word that a title ends with.
void SkipTitle(RowReader& file, const char* message) {
  const std::string title(WithoutLineEnd(file.NextLine()));
  const auto word = title.find_last_of(", \t") + 1;
  if (std::string_view(title).substr(word) == "MaxFALL") std::puts(message);
}

std::string ToText(std::size_t column, int32_t value) {
  char digits[16];
  const auto end = column == kCrc
                       ? std::to_chars(digits, std::end(digits), static_cast<uint32_t>(value), 16)
                       : std::to_chars(digits, std::end(digits), value);
  return {digits, end.ptr};
}

/// Compares two rows item by item. Returns false when one of them is no whole row: its first item
/// that cannot be read is then the last difference, and there is nothing sensible behind it.
bool CompareRows(CM_Verify_Result& result, FrameLog& log, std::string_view goldenRow,
                 std::string_view sampleRow) {
  const ItemPair pair(goldenRow, sampleRow, kFormat);
  const int32_t frame = ToNumber(goldenRow);
  int32_t failed = 0;
  const auto compare = [&](std::size_t i) {
    if (i < pair.readable && (i == kFormat.counterItem || pair.golden[i] == pair.sample[i])) return;
    ++failed;
    AppendWrongField(result, frame, i, ToText(i, pair.golden[i]), ToText(i, pair.sample[i]));
    log << "vdec info compare fail in frame " << frame << ", " << std::string_view(kColumns[i])
        << " ,val=";
    log.Hex(pair.golden[i]) << " ";
    log.Hex(pair.sample[i]) << " \n";
  };
  for (std::size_t i = 0; i < pair.readable; ++i) compare(i);
  if (!pair.whole) compare(pair.readable);
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
  result.columnNames.assign(std::begin(kColumns), std::end(kColumns));
  StageFiles files(goldenPath, samplePath);
  if (!files.AreOpen(result, "Dump_Info(VDEC) - open text file1 fail",
                     "Dump_Info(VDEC) - open text file2 fail")) {
    return;
  }
  SkipTitle(files.golden, "DumpInfo(VDEC) - File1 title string end!");
  SkipTitle(files.sample, "DumpInfo(VDEC) - File2 title string end!");

  FrameLog log;
  std::string_view golden;
  std::string_view sample;
  int32_t compared = 0;
  bool whole = true;
  while (whole && files.golden.NextFilled(golden)) {
    if (const SameRow same = SameItems(golden, files.sample.Ahead(), kFormat); same.length != 0) {
      log << "vdec info compare frame " << same.text << " PASS !!!\n";
      files.sample.Skip(same.length);
    } else if (files.sample.NextFilled(sample)) {
      whole = CompareRows(result, log, golden, sample);
    } else {
      break;
    }
    ++compared;
  }
  result.putVerifyFrameCount(compared);
}
