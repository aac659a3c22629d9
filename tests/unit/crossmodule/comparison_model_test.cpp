// A plain reimplementation of the comparison rules, checked against the verifiers on random pairs
// of files: the wrong fields and the numbers of rows must agree. CVN_SEEDS is the number of pairs
// per stage.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <set>

#include "ModuleVerification.h"
#include "Stage.h"
#include "VerifyRun.h"

namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

/// Findings of a comparison.
struct Finding {
  Lines fields;  // as returned by `FieldsOf`
  int64_t compared = 0;
  int64_t goldenSelected = 0;
  int64_t dumpSelected = 0;

  void Add(const Row& golden, std::size_t column, const std::string& value,
           const std::string& dump) {
    fields.push_back(golden[0] + " " + std::to_string(column) + " " + value + " " + dump);
  }
  void AddMissing(const Row& golden, const std::vector<std::size_t>& columns) {
    for (std::size_t i = 0; i < columns.size(); ++i) Add(golden, i, golden[columns[i]], "-1");
  }
  int64_t Selected() const { return std::max(goldenSelected, dumpSelected); }
};

int Int(const std::string& text) {
  return std::atoi(text.c_str());
}

int64_t CountIf(const Rows& rows, const std::function<bool(std::size_t index)>& selects) {
  int64_t count = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) count += selects(i) ? 1 : 0;
  return count;
}

// Reads a row of both files, or of one of them after the other lagged.
enum class Next { kBoth, kGolden, kSample, kEnd };

/// Two files read in parallel, and how often one of them had no row left.
struct BothFiles {
  const Rows& golden;
  const Rows& sample;
  std::size_t g = 0;  // rows read
  std::size_t s = 0;
  int ends = 0;

  /// Reads the next rows. Returns false if a required row is missing.
  bool Read(Next next) {
    const bool noGolden = next != Next::kSample && g == golden.size();
    const bool noSample = next != Next::kGolden && s == sample.size();
    if (next != Next::kSample && !noGolden) ++g;
    if (next != Next::kGolden && !noSample) ++s;
    ends += (noGolden ? 1 : 0) + (noSample ? 1 : 0);
    return !noGolden && !noSample;
  }
};

/// The comparison of the OMX stages. `rateColumn` is 0 if there is no rate.
Finding Omx(const Rows& golden, const Rows& sample, std::size_t warmUp, std::size_t rateColumn,
            const std::function<bool(const Row&, const Row&, Finding&)>& differ) {
  const auto isStart = [&](const Row& row) {
    return rateColumn != 0 && Int(row[0]) < Int(row[rateColumn]) / 500;
  };
  Finding found;
  found.goldenSelected =
      CountIf(golden, [&](std::size_t i) { return i >= warmUp && !isStart(golden[i]); });
  found.dumpSelected =
      CountIf(sample, [&](std::size_t i) { return i >= warmUp && !isStart(sample[i]); });
  std::vector<std::size_t> all(golden.empty() ? 0 : golden[0].size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;

  BothFiles files{golden, sample};
  for (Next next = Next::kBoth; next != Next::kEnd && files.ends < 2;) {
    if (!files.Read(next) || (files.g <= warmUp && files.s <= warmUp)) continue;
    const Row& goldenRow = golden[files.g - 1];
    const Row& sampleRow = sample[files.s - 1];
    const int goldenNumber = Int(goldenRow[0]);
    const int sampleNumber = Int(sampleRow[0]);
    if (isStart(goldenRow)) {
      next = Next::kGolden;
    } else if (isStart(sampleRow)) {
      next = Next::kSample;
    } else if (goldenNumber != sampleNumber) {
      found.AddMissing(goldenRow, all);
      next = goldenNumber < sampleNumber ? Next::kGolden : Next::kSample;
    } else {
      ++found.compared;
      next = differ(goldenRow, sampleRow, found) ? Next::kEnd : Next::kBoth;
    }
  }
  return found;
}

Finding OmxInput(const Rows& golden, const Rows& sample) {
  return Omx(golden, sample, 10, 0, [](const Row& g, const Row& s, Finding& found) {
    bool differs = false;
    for (const std::size_t column : {0U, 2U, 3U, 4U}) {
      if (g[column] == s[column]) continue;
      found.Add(g, column, g[column], s[column]);
      differs = true;
    }
    return differs;
  });
}

Finding OmxOutput(const Rows& golden, const Rows& sample) {
  return Omx(golden, sample, 120, 5, [](const Row& g, const Row& s, Finding& found) {
    bool differs = false;
    for (const std::size_t column : {0U, 4U, 5U, 6U}) {
      if (g[column] == s[column]) continue;
      if (column == 5 && std::abs(Int(g[5]) - Int(s[5])) <= 6000) continue;
      found.Add(g, column, g[column], s[column]);
      differs = true;
    }
    return differs;
  });
}

Finding Dvo(const Rows& golden, const Rows& sample) {
  const auto isEnd = [](const Row& row) { return row[0] == "EOS"; };
  const auto isStart = [](const Row& row) { return Int(row[0]) < Int(row[2]) / 500; };
  const auto selects = [&](const Rows& rows) {
    return CountIf(rows, [&](std::size_t i) {
      return !isEnd(rows[i]) && Int(rows[i][0]) >= 120 && !isStart(rows[i]);
    });
  };
  const std::vector<std::size_t> listed = {0, 2, 3};
  Finding found;
  found.goldenSelected = selects(golden);
  found.dumpSelected = selects(sample);
  BothFiles files{golden, sample};
  int firstChecked = -1;
  bool inStep = false;
  bool startIsMissing = false;
  int lastSample = 0;
  for (Next next = Next::kBoth; next != Next::kEnd && files.ends < 2;) {
    if (!files.Read(next)) continue;
    const Row& goldenRow = golden[files.g - 1];
    const Row& sampleRow = sample[files.s - 1];
    const int goldenNumber = Int(goldenRow[0]);
    const int sampleNumber = Int(sampleRow[0]);
    if (isEnd(sampleRow)) break;
    if (isEnd(goldenRow) || goldenNumber < 120) {
      next = Next::kGolden;
      continue;
    }
    if (firstChecked == -1) firstChecked = goldenNumber;
    if (!inStep) inStep = sampleNumber == firstChecked;
    if (!inStep) {
      if (sampleNumber > firstChecked && !startIsMissing) found.AddMissing(goldenRow, listed);
      startIsMissing = startIsMissing || sampleNumber > firstChecked;
      next = Next::kSample;
    } else if (goldenNumber < sampleNumber) {
      found.AddMissing(goldenRow, listed);
      next = Next::kGolden;
    } else if (sampleNumber < goldenNumber) {
      if (sampleNumber == lastSample && Int(sampleRow[4]) == 1) {
        for (std::size_t i = 0; i < listed.size(); ++i)
          found.Add(goldenRow, i, goldenRow[listed[i]], sampleRow[listed[i]]);
      }
      next = Next::kSample;
    } else {
      next = Next::kBoth;
      lastSample = sampleNumber;
      if (isStart(goldenRow)) continue;
      if (Int(sampleRow[4]) < 0) {
        found.Add(goldenRow, 0, goldenRow[0], sampleRow[0]);
        ++found.compared;
        break;
      }
      const bool rate = goldenRow[2] != sampleRow[2];
      const bool pts = goldenRow[3] != sampleRow[3];
      const bool tellsRate = rate && goldenRow[1] == "2";
      if (tellsRate) found.Add(goldenRow, 1, goldenRow[2], sampleRow[2]);
      if (pts) found.Add(goldenRow, 2, goldenRow[3], sampleRow[3]);
      if (!rate || tellsRate || pts) ++found.compared;
      if (rate || pts) break;
    }
  }
  return found;
}

Finding Vdec(const Rows& golden, const Rows& sample) {
  Finding found;
  found.goldenSelected = static_cast<int64_t>(golden.size());
  found.dumpSelected = static_cast<int64_t>(sample.size());
  for (std::size_t i = 0; i < std::min(golden.size(), sample.size()); ++i) {
    ++found.compared;
    for (std::size_t column = 0; column < golden[i].size(); ++column) {
      if (column != 6 && golden[i][column] != sample[i][column])
        found.Add(golden[i], column, golden[i][column], sample[i][column]);
    }
  }
  return found;
}

/// The column comparison of VO and Scaler. Rows before the tolerance has passed are not compared:
/// before row `known` it is `unknown` rows, from then on `rows`.
struct Tolerance {
  std::size_t unknown;
  std::size_t known;
  std::size_t rows;
};

Finding Columns(const Rows& golden, const Rows& sample, const Tolerance& tolerance,
                std::size_t counter, std::size_t rateColumn,
                const std::set<std::size_t>& prefixed) {
  Finding found;
  const std::size_t both = std::min(golden.size(), sample.size());
  for (std::size_t i = 0; i < both; ++i) {
    if (i < (i < tolerance.known ? tolerance.unknown : tolerance.rows)) continue;
    ++found.compared;
    for (std::size_t column = 0; column < golden[i].size(); ++column) {
      if (column == counter) continue;
      std::string values[] = {golden[i][column], sample[i][column]};
      for (std::string& value : values) {
        if (column == rateColumn) value = std::to_string((Int(value) + 50) / 1000);
        if (prefixed.contains(column)) value = "0x" + value;
      }
      if (values[0] != values[1]) found.Add(golden[i], column, values[0], values[1]);
    }
  }
  for (std::size_t i = both; i < golden.size(); ++i) found.Add(golden[i], 0, golden[i][0], "-1");
  for (std::size_t i = both; i < sample.size(); ++i)
    found.fields.push_back(sample[i][0] + " 0 -1 " + sample[i][0]);
  found.goldenSelected = found.compared + static_cast<int64_t>(golden.size() - both);
  found.dumpSelected = found.compared + static_cast<int64_t>(sample.size() - both);
  return found;
}

std::size_t TwoSeconds(const Row& row, std::size_t rateColumn, int rounding) {
  return 2 * static_cast<std::size_t>((Int(row[rateColumn]) + rounding) / 1000);
}

Finding Vo(const Rows& golden, const Rows& sample) {
  // Golden's frame 0 contains the rate.
  const auto first = std::ranges::find(golden, "0", [](const Row& row) { return row[0]; });
  const auto known = static_cast<std::size_t>(first - golden.begin());
  const std::size_t rows = first == golden.end() ? 1 : TwoSeconds(*first, 6, 100);
  return Columns(golden, sample, {1, known, rows}, 2, 99, {});
}

Finding Scaler(const Rows& golden, const Rows& sample) {
  std::set<std::size_t> checksums;
  for (std::size_t i = 4; i <= 18; ++i) checksums.insert(i);
  const std::size_t rows = golden.empty() ? 100 : TwoSeconds(golden[0], 20, 50);
  return Columns(golden, sample, {100, 0, rows}, 1, 20, checksums);
}

Finding Audio(const Rows& golden, const Rows& sample) {
  const auto hex = [](const std::string& text) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%x", static_cast<unsigned>(Int(text)));
    return std::string(digits);
  };
  const auto start = [](const Rows& rows) {
    std::size_t i = 0;
    while (i < rows.size() && Int(rows[i++][5]) < 90000) {
    }
    return i;
  };
  Finding found;
  std::size_t g = start(golden);
  std::size_t s = start(sample);
  found.goldenSelected = static_cast<int64_t>(golden.size() - g);
  found.dumpSelected = static_cast<int64_t>(sample.size() - s);
  while (g < golden.size() && s < sample.size()) {
    std::size_t gi = g++;
    std::size_t si = s++;
    while (golden[gi][5] != sample[si][5]) {
      if (Int(sample[si][5]) > Int(golden[gi][5])) {
        if (g == golden.size()) break;
        gi = g++;
      } else {
        if (s == sample.size()) break;
        si = s++;
      }
    }
    if (golden[gi][5] == sample[si][5]) ++found.compared;
    for (const std::size_t column : {4U, 2U, 3U}) {
      if (golden[gi][column] != sample[si][column])
        found.Add(golden[gi], column, hex(golden[gi][column]), hex(sample[si][column]));
    }
  }
  return found;
}

struct Model {
  MODULE_TYPE module;
  Finding (*compare)(const Rows& golden, const Rows& sample);
  std::vector<int> changed;  // columns that mutations change
  std::size_t markerColumn = 0;
};

const Model kModels[] = {
    {MODULE_OMXIN, OmxInput, {1, 2, 3, 4}}, {MODULE_OMXOUT, OmxOutput, {1, 2, 3, 4, 5, 6}},
    {MODULE_VDEC, Vdec, {1, 3, 5, 6, 23}},  {MODULE_DVO, Dvo, {1, 2, 3}, 4},
    {MODULE_VO, Vo, {1, 2, 8, 10, 25, 26}}, {MODULE_SCALER, Scaler, {1, 2, 4, 18, 20, 21}},
    {MODULE_AUDIO, Audio, {1, 2, 3, 4, 6}},
};

class Pair {
 public:
  Pair(const Model& model, unsigned seed)
      : model_(model), random_(seed), columns_(FindStage(model.module)->columns) {
    const int rows = 100 + Below(200);
    for (int i = 0; i < rows; ++i) golden.push_back(NewRow(i));
    sample = golden;
    for (int defects = Below(4); defects > 0; --defects) Spoil(Below(3) == 0 ? golden : sample);
  }

  std::string Text(const Rows& rows) const {
    std::string text = "title, MaxFALL\n";
    const bool blanks = columns_[0].notation == Notation::kText;
    for (const Row& row : rows) {
      for (std::size_t i = 0; i < row.size(); ++i)
        text += (i == 0 ? "" : blanks ? ", " : ",") + row[i];
      text += '\n';
    }
    return text;
  }

  Rows golden;
  Rows sample;

 private:
  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

  Row NewRow(int number) {
    Row row;
    for (const StageColumn& column : columns_) row.push_back(Value(column, number));
    return row;
  }

  std::string Value(const StageColumn& column, int number) {
    if (column.unit == Unit::kFrame) return std::to_string(number);
    if (column.unit == Unit::kMilliFramesPerSecond) return "30000";
    if (std::string(column.name) == "marker") return "0";
    if (std::string(column.name) == "frame_kind") return std::to_string(1 + Below(2));
    if (std::string(column.name) == "pts" && model_.module == MODULE_AUDIO)
      return std::to_string(1 + number * 1920);
    return std::to_string(1 + Below(9));
  }

  void Spoil(Rows& rows) {
    if (rows.size() < 3) return;
    const auto at = static_cast<std::size_t>(Below(static_cast<int>(rows.size()) - 1));
    const auto row = rows.begin() + static_cast<std::ptrdiff_t>(at);
    switch (Below(7)) {
      case 0:
        rows.erase(row);
        break;
      case 1:
        rows.insert(row, *row);
        break;
      case 2:
        std::iter_swap(row, row + 1);
        break;
      case 3:
        rows.resize(at + 1);
        break;
      case 4:
        if (model_.markerColumn != 0) (*row)[model_.markerColumn] = Below(2) == 0 ? "1" : "-1";
        break;
      default:
        const auto column = static_cast<std::size_t>(
            model_
                .changed[static_cast<std::size_t>(Below(static_cast<int>(model_.changed.size())))]);
        const bool isRate = columns_[column].unit == Unit::kMilliFramesPerSecond;
        // Rates that result in the same start; some differ so little that they only cause a
        // warning.
        (*row)[column] =
            isRate ? (Below(2) == 0 ? "30400" : "36001") : std::to_string(10 + Below(90));
        break;
    }
  }

  const Model& model_;
  std::mt19937 random_;
  std::span<const StageColumn> columns_;
};

TEST(ComparisonModel, AgreesWithTheVerifiersOnRandomPairs) {
  const char* more = std::getenv("CVN_SEEDS");
  const unsigned seeds = more == nullptr ? 60 : static_cast<unsigned>(std::atoi(more));
  for (const Model& model : kModels) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
      const Pair pair(model, seed);
      const Finding expected = model.compare(pair.golden, pair.sample);
      const TemporaryFile golden("golden", pair.Text(pair.golden));
      const TemporaryFile sample("sample", pair.Text(pair.sample));
      CM_Verify_Result result(model.module);
      scripted::Play("", [&] { return CompareStage(result, golden.Path(), sample.Path()), 0; });
      ASSERT_EQ(FieldsOf(result), expected.fields)
          << Module_Type_To_String_Simple(model.module) << " seed " << seed;
      ASSERT_EQ(result.coverage.compared, expected.compared)
          << Module_Type_To_String_Simple(model.module) << " seed " << seed;
      ASSERT_EQ(result.coverage.Selected(), expected.Selected())
          << Module_Type_To_String_Simple(model.module) << " seed " << seed;
    }
  }
}

}  // namespace
