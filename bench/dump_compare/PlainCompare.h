// Shared by the simple programs of this benchmark: they differ in how they read a row, and
// otherwise do the same work, printing the verifiers' own messages where these occur in every row.
#pragma once

#include <cstdio>

#include "Stages.h"

/// Prints the differences of two rows. Returns their number.
inline int CompareRows(const BenchStage& stage, const int* golden, const int* sample) {
  const bool isVdec = stage.name == "VDEC";
  int differences = 0;
  for (std::size_t i = 0; i < stage.columnCount; ++i) {
    if (golden[i] == sample[i] || HasBit(stage.ignored, i)) continue;
    ++differences;
    if (!isVdec) continue;
    std::printf("vdec info compare fail in frame %d, column %zu ,val=%x %x \n", golden[0], i,
                static_cast<unsigned>(golden[i]), static_cast<unsigned>(sample[i]));
  }
  if (isVdec && differences == 0) std::printf("vdec info compare frame %d PASS !!!\n", golden[0]);
  if (isVdec && differences != 0) {
    std::printf("vdec info compare frame %d Fail %d item !!!\n", golden[0], differences);
  }
  if (stage.name == "Audio" && differences != 0) {
    std::puts("[Cross Module][Audio] data no matched");
    std::puts("frame, misc, rate, channel, crc, pts");
    for (const int* row : {golden, sample}) {
      std::printf("%d, %d, %d, %d, %d, %d\n", row[0], row[1], row[2], row[3], row[4], row[5]);
    }
  }
  return differences;
}

/// Compares the files of the command line; `readRow` reads each row. Returns the exit status: 0 no
/// differences, 1 differences, 2 invalid usage.
template <class ReadRow>
int CompareFiles(int argc, char** argv, ReadRow readRow) {
  const BenchStage* const stage = argc == 4 ? FindStage(argv[1]) : nullptr;
  std::FILE* const golden = stage != nullptr ? std::fopen(argv[2], "r") : nullptr;
  std::FILE* const sample = stage != nullptr ? std::fopen(argv[3], "r") : nullptr;
  char title[1024];
  if (golden == nullptr || sample == nullptr ||
      std::fgets(title, sizeof title, golden) == nullptr ||
      std::fgets(title, sizeof title, sample) == nullptr) {
    std::fprintf(stderr, "usage: %s STAGE GOLDEN SAMPLE\n", argv[0]);
    return 2;
  }
  int goldenRow[32];
  int sampleRow[32];
  int differences = 0;
  while (readRow(golden, *stage, goldenRow) && readRow(sample, *stage, sampleRow)) {
    differences += CompareRows(*stage, goldenRow, sampleRow);
  }
  return differences == 0 ? 0 : 1;
}
