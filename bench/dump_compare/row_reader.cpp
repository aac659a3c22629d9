// Cost of reading and comparing one row, without files: part of the figures that dump_compare
// measures on complete programs.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "DumpGenerator.h"
#include "TestCase/CrossModule/verify/src/ColumnCompare.h"
#include "TestCase/CrossModule/verify/src/RowReader.h"

namespace {

using player::Stage;

constexpr int64_t kRows = 5000;  // fits into the cache
constexpr RowFormat kVdecFormat{24, 1U << 3, 6};

/// Rows of a stage's dump from the middle of a long run.
std::vector<std::string> MakeRows(Stage stage, int64_t clock90k) {
  player::Clip clip;
  clip.hdr = true;
  std::vector<std::string> rows;
  for (int64_t row = 200000; row < 200000 + kRows; ++row) {
    rows.push_back(
        player::RowOf(player::FormatOf(stage), player::ValuesOf(clip, {clock90k, 0}, stage, row)));
  }
  return rows;
}

/// Calls `compare(golden, sample)` on every pair of rows whose clocks differ.
template <class Compare>
void OnPairs(benchmark::State& state, Stage stage, Compare compare) {
  const std::vector<std::string> golden = MakeRows(stage, 0);
  const std::vector<std::string> sample = MakeRows(stage, 12345);
  for ([[maybe_unused]] auto _ : state) {
    for (std::size_t i = 0; i < golden.size(); ++i) {
      benchmark::DoNotOptimize(compare(golden[i], sample[i]));
    }
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

void CompareText(benchmark::State& state, Stage stage, const RowFormat& format) {
  SameItems sameItems(format);
  OnPairs(state, stage, [&](std::string_view golden, std::string_view sample) {
    return sameItems.Find(golden, sample).length;
  });
}

void ReadNumbers(benchmark::State& state, Stage stage, const RowFormat& format) {
  OnPairs(state, stage, [&](std::string_view golden, std::string_view sample) {
    return ItemPair(golden, sample, format).whole;
  });
}

void CompareFields(benchmark::State& state, Stage stage) {
  OnPairs(state, stage, [](std::string_view golden, std::string_view sample) {
    return SameButSecondField(golden, sample).length;
  });
}

void SplitFields(benchmark::State& state, Stage stage) {
  OnPairs(state, stage, [](std::string_view golden, std::string_view sample) {
    std::array<std::string_view, 7> fields;
    return SplitRow(golden, {',', ' '}, fields) + SplitRow(sample, {',', ' '}, fields);
  });
}

void NextRow(benchmark::State& state) {
  const std::string path = "/tmp/bench_row_reader." + std::to_string(getpid());
  std::FILE* const file = std::fopen(path.c_str(), "w");
  for (const std::string& row : MakeRows(Stage::kVdec, 0)) std::fputs(row.c_str(), file);
  std::fclose(file);
  for ([[maybe_unused]] auto _ : state) {
    RowReader reader(path);
    std::string_view row;
    while (reader.Next(row)) benchmark::DoNotOptimize(row);
  }
  state.SetItemsProcessed(state.iterations() * kRows);
  std::remove(path.c_str());
}

BENCHMARK(NextRow);
BENCHMARK_CAPTURE(CompareText, vdec, Stage::kVdec, kVdecFormat);
BENCHMARK_CAPTURE(CompareText, vo, Stage::kVo, kVoFormat);
BENCHMARK_CAPTURE(CompareText, scaler, Stage::kScaler, kScalerFormat);
BENCHMARK_CAPTURE(ReadNumbers, vdec, Stage::kVdec, kVdecFormat);
BENCHMARK_CAPTURE(ReadNumbers, vo, Stage::kVo, kVoFormat);
BENCHMARK_CAPTURE(ReadNumbers, scaler, Stage::kScaler, kScalerFormat);
BENCHMARK_CAPTURE(CompareFields, omx_output, Stage::kOmxOut);
BENCHMARK_CAPTURE(CompareFields, audio, Stage::kAudio);
BENCHMARK_CAPTURE(SplitFields, omx_output, Stage::kOmxOut);

}  // namespace

BENCHMARK_MAIN();
