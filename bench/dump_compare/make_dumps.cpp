// make_dumps STAGE ROWS KIND GOLDEN SAMPLE: a pair of dumps for the benchmark. Exit status 2:
// invalid usage.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "DumpGenerator.h"

namespace {

using player::FrameValues;

/// How the sample differs from the golden file.
struct Kind {
  std::string_view name;
  int64_t clock90k;          // the board's clock at the start of the sample's run
  int64_t changeEvery;       // one field differs in every n-th row; 0: in none
  int64_t spoilEvery = 0;    // every n-th row is disturbed; 0: none
  bool isUnrelated = false;  // a different clip with a different frame rate
  bool isOneRow = false;     // both files repeat their first row
};
constexpr Kind kKinds[] = {
    {"equal", 0, 0},
    {"clock", 12345678, 0},
    {"percent", 12345678, 100},
    {"every", 12345678, 1},
    {"events", 12345678, 0, 1000},
    {"unrelated", 12345678, 0, 0, true},
    {"one_row", 12345678, 0, 0, false, true},
};

/// Changes a different column in every row, but not the frame number or the clock.
void Change(const player::DumpFormat& format, int64_t row, FrameValues& values) {
  const auto count = static_cast<int64_t>(format.columns.size());
  for (int64_t i = row;; ++i) {
    const player::Column& column = format.columns[static_cast<std::size_t>(i % count)];
    if (column.value == &FrameValues::frameNumber || column.value == &FrameValues::clock90k) {
      continue;
    }
    values.*column.value += 1 + row % 1000;
    return;
  }
}

/// A row after a disturbance: lost, duplicated, damaged or with a different value.
std::string Spoiled(const player::DumpFormat& format, int64_t row, const Kind& kind,
                    FrameValues values) {
  const int64_t turn = row % kind.spoilEvery == kind.spoilEvery / 2 ? row / kind.spoilEvery % 4 : 4;
  if (turn == 0) return "";
  if (turn == 2) values.inputSize += 1, values.crcDecoded += 1, values.crcOutput += 1;
  if (turn == 2) values.crcScalerInput += 1, values.audioCheck += 1;
  if (turn == 3) Change(format, 7, values);
  const std::string text = player::RowOf(format, values);
  return turn == 1 ? text + text : text;
}

void Write(const char* path, player::Stage stage, int64_t rows, const Kind& kind) {
  player::Clip clip;
  clip.hdr = true;
  if (kind.isUnrelated) clip.seed = 77, clip.frameRateMilliHz = 59000;
  const player::DumpFormat& format = player::FormatOf(stage);
  std::ofstream out(path);
  out << player::TitleOf(format);
  for (int64_t row = 0; row < rows; ++row) {
    FrameValues values =
        player::ValuesOf(clip, {kind.clock90k, 0}, stage, kind.isOneRow ? 300 : row);
    if (kind.changeEvery != 0 && row % kind.changeEvery == 0) Change(format, row, values);
    out << (kind.spoilEvery == 0 ? player::RowOf(format, values)
                                 : Spoiled(format, row, kind, values));
  }
  out << player::EndOf(format);
}

}  // namespace

int main(int argc, char** argv) {
  for (const player::Stage stage : player::kAllStages) {
    for (const Kind& kind : kKinds) {
      if (argc != 6 || player::FormatOf(stage).stageName != argv[1] || kind.name != argv[3]) {
        continue;
      }
      const int64_t rows = std::atoll(argv[2]);
      const Kind golden{
          .name = "golden", .clock90k = 0, .changeEvery = 0, .isOneRow = kind.isOneRow};
      Write(argv[4], stage, rows, golden);
      Write(argv[5], stage, kind.isOneRow ? rows - 10 : rows, kind);
      return 0;
    }
  }
  std::fprintf(stderr, "usage: make_dumps STAGE ROWS KIND GOLDEN SAMPLE\n");
  return 2;
}
