// Reading rows: the reader, rows that may be skipped as equal, frame counts, and malformed files in
// every stage.
#include "RowReader.h"

#include <array>
#include <cstring>
#include <random>
#include <sstream>

#include "DumpGenerator.h"
#include "VerifyRun.h"

namespace {

using player::Stage;

TEST(RowReader, SplitsLinesLikeTheStandardLibrary) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < 400'000) {
    text += std::string(random() % (random() % 20 == 0 ? 5000 : 200), 'x');
    if (random() % 5 != 0) text += '\n';
  }
  const TemporaryFile file("rows", text);
  for (const std::size_t limit : {std::size_t{65}, std::size_t{127}, RowReader::kRowLimit}) {
    RowReader reader(file.Path());
    std::FILE* const expected = std::fopen(file.Path().c_str(), "r");
    std::vector<char> line(limit + 1);
    std::string_view row;
    while (std::fgets(line.data(), static_cast<int>(line.size()), expected) != nullptr) {
      ASSERT_TRUE(reader.Next(row, limit));
      ASSERT_EQ(row, line.data());
    }
    EXPECT_FALSE(reader.Next(row, limit));
    EXPECT_EQ(row, line.data()) << "unchanged at the end of the file";
    std::fclose(expected);
  }
}

TEST(RowReader, ReadsWholeLinesAndSkipsBlankRows) {
  const TemporaryFile file("rows", std::string(5000, 't') + "\n\n \t\r\nrow\nlast");
  RowReader reader(file.Path());
  std::string_view row;
  EXPECT_EQ(reader.NextLine().size(), RowReader::kRowLimit);
  EXPECT_TRUE(reader.NextFilled(row));
  EXPECT_EQ(row, "row\n");
  EXPECT_EQ(reader.NextLine(), "last");
  EXPECT_EQ(reader.NextLine(), "");
  EXPECT_FALSE(RowReader("/nonexistent").NextFilled(row));
  EXPECT_EQ(RowReader(testing::TempDir()).NextLine(), "") << "a directory has no rows";
}

TEST(RowReader, ReadsFieldsAndNumbersLikeTheStandardLibrary) {
  using namespace std::string_literals;
  std::array<std::string_view, 4> fields;
  EXPECT_EQ(SplitRow(", a,, b c\n", {',', ' '}, fields), 3U);
  EXPECT_EQ(fields, (std::array<std::string_view, 4>{"a", "b", "c\n", ""}));
  EXPECT_EQ(SplitRow("a,b\0c,d"s, {',', ' '}, fields), 2U);
  EXPECT_EQ(SplitRow("a,b,c,d,e", {',', ' '}, fields), 4U);
  for (const char* text : {"12", " -7x", "+5", "x", "", "4294967295", "99999999999999999999",
                           "-99999999999999999999", "9223372036854775806", "- 5"}) {
    // Result of atoi on systems with a 64-bit long.
    EXPECT_EQ(ToNumber(text), static_cast<int32_t>(std::strtoll(text, nullptr, 10))) << text;
  }
  std::array<int32_t, 3> numbers{};
  int32_t* const targets[] = {&numbers[0], &numbers[1], &numbers[2]};
  EXPECT_EQ(ReadNumbers(",7,,x9,-3,4\n", targets), 3U);
  EXPECT_EQ(numbers, (std::array<int32_t, 3>{7, 0, -3}));
  EXPECT_EQ(ReadNumbers("1\0,2,3"s, targets), 1U);
}

TEST(RowItems, AreReadLikeScanf) {
  const RowFormat format{4, 1U << 2, 1};
  for (const char* row : {"1,2,ff,4\n", "1;2;0xFF;-4", " 1, 2,-f,\t4 \r\n", "1,2,fg,4", "1,2,,4",
                          "1,2x,3,4\n", "x", "12345678901,2,123456789,4", "1 ,2,3,4", "1,2,ff"}) {
    RowItems items{};
    std::array<long long, 4> expected{};
    const int read = std::sscanf(row, "%lld%*c%lld%*c%llx%*c%lld", &expected[0], &expected[1],
                                 reinterpret_cast<unsigned long long*>(&expected[2]), &expected[3]);
    const std::size_t count = ReadItems(row, format, items);
    EXPECT_EQ(count, static_cast<std::size_t>(std::max(read, 0))) << row;
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_EQ(items[i], static_cast<int32_t>(expected[i])) << row << " " << i;
  }
  RowItems items{};
  EXPECT_EQ(ReadItems("1,2,3,4,5\n", format, items), 3U) << "too many";
  EXPECT_EQ(ReadItems("1,2,3,4,\n", format, items), 4U);
}

/// A row with up to two bytes changed, inserted or removed.
std::string Mutate(std::string row, std::mt19937& random) {
  constexpr char kBytes[] = {'0', '7', 'a', ',', ' ', '-', 'x', '\0', '\r', '\n'};
  for (auto changes = random() % 3; changes > 0; --changes) {
    const auto at = random() % row.size();
    const char byte = kBytes[random() % sizeof kBytes];
    if (random() % 3 == 0)
      row.insert(at, 1, byte);
    else if (random() % 2 == 0 && row.size() > 2)
      row.erase(at, 1);
    else
      row[at] = byte;
  }
  return row;
}

TEST(RowReader, CountsAsManyFieldsAsItSplits) {
  std::mt19937 random(3);
  std::array<std::string_view, 99> fields;
  for (int i = 0; i < 30000; ++i) {
    std::string row;
    for (auto length = random() % 40; length > 0; --length) row += ", x,1 \n\xAC"[random() % 9];
    row = Mutate(row + '\n', random);
    const bool hasNul = row.find('\0') != std::string::npos;
    ASSERT_EQ(CountFields(row), hasNul ? 0 : SplitRow(row, {',', ' '}, fields)) << row;
  }
  EXPECT_EQ(CountFields(std::string(1023, ',')), 0U);
  EXPECT_EQ(CountFields(""), 0U);
}

TEST(RowItems, OfAPairEqualThoseOfTheSingleRows) {
  constexpr RowFormat kFormat{5, 1U << 3, 1};
  std::mt19937 random(2);
  for (int i = 0; i < 30000; ++i) {
    const std::string row = "12,345,6,ab,7890\n";
    const std::string golden = Mutate(i % 4 == 0 ? row.substr(0, row.size() - 1) : row, random);
    const std::string sample = Mutate(row, random);
    const ItemPair pair(golden, sample, kFormat);
    RowItems items{};
    const std::size_t count = ReadItems(sample, kFormat, items);
    ASSERT_EQ(pair.sampleCount, count) << golden << "|" << sample;
    ASSERT_EQ(pair.goldenCount, ReadItems(golden, kFormat, items));
    ReadItems(sample, kFormat, items);
    for (std::size_t k = 0; k < pair.readable; ++k) {
      ASSERT_EQ(pair.sample[k], items[k]) << golden << "|" << sample;
    }
  }
}

TEST(RowItems, EqualRowsHaveEqualItems) {
  constexpr RowFormat kFormat{24, 1U << 3, 6};
  std::mt19937 random(3);
  SameItems sameItems(kFormat);
  int found = 0;
  for (int i = 0; i < 30000; ++i) {
    const auto row = [&](int64_t clock) {
      const auto values =
          player::ValuesOf({.hdr = i % 2 == 0}, {.clock90k = clock}, Stage::kVdec, i);
      return player::RowOf(player::FormatOf(Stage::kVdec), values);
    };
    std::string golden = row(100);
    std::string sample = row(static_cast<int64_t>(random()));
    const bool both = random() % 2 == 0;
    if (both)
      golden = sample = Mutate(golden, random);
    else
      sample = Mutate(sample, random);
    golden.resize(golden.find('\n') + 1);
    if (golden.empty()) continue;
    const SameRow same = sameItems.Find(golden, sample + "1,2\n");
    if (same.length == 0) continue;
    ++found;
    ASSERT_LE(same.length, sample.size());
    const ItemPair pair(golden, sample.substr(0, same.length), kFormat);
    ASSERT_TRUE(pair.whole) << golden << sample;
    for (std::size_t k = 0; k < kFormat.itemCount; ++k) {
      if (k == kFormat.counterItem) continue;
      ASSERT_EQ(pair.golden[k], pair.sample[k]) << golden << sample;
    }
    ASSERT_EQ(std::to_string(pair.golden[0]), same.text);
  }
  EXPECT_GT(found, 9000) << "rows that were not mutated are equal";
}

TEST(RowItems, TextRowsAreComparedWithoutTheSecondField) {
  std::mt19937 random(4);
  int found = 0;
  for (int i = 0; i < 30000; ++i) {
    std::string golden = std::to_string(i) + ", 500, 1920, 1, 60000\n";
    std::string sample = std::to_string(i) + ", 70000, 1920, 1, 60000\n";
    if (random() % 2 == 0)
      golden = sample = Mutate(golden, random);
    else
      sample = Mutate(sample, random);
    golden.resize(golden.find('\n') + 1);
    if (golden.empty()) continue;
    const SameRow same = SameButSecondField(golden, sample);
    if (same.length == 0) continue;
    ++found;
    std::array<std::string_view, 5> a;
    std::array<std::string_view, 5> b;
    SplitRow(golden, {',', ' '}, a);
    SplitRow(std::string_view(sample).substr(0, same.length), {',', ' '}, b);
    a[1] = b[1] = "";
    ASSERT_EQ(a, b) << golden << sample;
  }
  EXPECT_GT(found, 9000);
}

TEST(FrameCount, CountsIncreasingNumbersAndTheWarmUpAsABlock) {
  const auto rows = [](int first, int last) {
    std::string text = "frame_no,x\n";
    for (int i = first; i <= last; ++i) text += std::to_string(i) + ",1\n";
    return text;
  };
  std::string overlong;
  while (overlong.size() < 3000) overlong += ",7";
  struct Count {
    std::string text;
    int32_t frames;
  };
  for (const Count& count :
       {Count{"", 0}, Count{rows(0, 9), 10}, Count{rows(1, 9), 9}, Count{rows(0, 119), 120},
        Count{rows(0, 120), 120}, Count{rows(0, 130), 130}, Count{rows(120, 130), 130},
        Count{rows(50, 121), 121}, Count{"t\n0\n1\n1\n0\n-1\n-1\n2\n", 5},
        Count{"t\n5,\nEOS\n\n6" + overlong, 2}, Count{"t\n5,1\n 6 ,2\n7", 3},
        Count{"t\n5,\n99999999999999999999,\n", 1}}) {
    const TemporaryFile file("count", count.text);
    EXPECT_EQ(CountFrames(file.Path()), count.frames) << count.text.substr(0, 40);
  }
  EXPECT_EQ(CountFrames("/nonexistent"), 0);
}

struct StageVerifier {
  Stage stage;
  Verifier verify;
  std::string goldenMessage, sampleMessage;  // for a file that cannot be opened
};
const StageVerifier kStages[] = {
    {Stage::kOmxIn, Verify_OMX_Input, "", ""},
    {Stage::kOmxOut, Verify_OMX_Output, "", ""},
    {Stage::kVdec, Verify_VDEC, "Dump_Info(VDEC) - open text file1 fail\n",
     "Dump_Info(VDEC) - open text file2 fail\n"},
    {Stage::kDvo, Verify_DVO, "", ""},
    {Stage::kVo, Verify_VO, "Test case(VOUT) - open text file1 fail\n",
     "Test case(VOUT) - open text file2 fail\n"},
    {Stage::kScaler, Verify_Scaler, "Test case(SCALER) - open text file1 fail\n",
     "Test case(SCALER) - open text file2 fail\n"},
    {Stage::kAudio, Verify_Audio, "[Cross Module][Audio] muro open golden file failed\n",
     "[Cross Module][Audio] muro open test file failed\n"},
};

TEST(Verifiers, MissingFilesSetTheirStatusBits) {
  const TemporaryFile there("there", "title\n");
  for (const StageVerifier& stage : kStages) {
    for (const int bits : {1, 2, 3}) {
      CM_Verify_Result result(MODULE_VO);
      const auto run = scripted::Play("", [&] {
        stage.verify(result, (bits & 1) != 0 ? "/nonexistent" : there.Path(),
                     (bits & 2) != 0 ? "/nonexistent" : there.Path());
        return 0;
      });
      EXPECT_EQ(result.verifyStatus, bits);
      EXPECT_FALSE(result.columnNames.empty());
      const std::string messages = ((bits & 1) != 0 ? stage.goldenMessage : "") +
                                   ((bits & 2) != 0 ? stage.sampleMessage : "");
      EXPECT_NE(run.output.find(messages), std::string::npos) << run.output;
    }
  }
}

/// A sample whose rows from 150 on are malformed in some way.
struct Breakage {
  const char* name;
  std::string (*apply)(const Lines& rows);
  // Per stage: F: a wrong field or status; D: only the frame counts differ; P: passes.
  const char* outcomes;
};

std::string With(Lines rows, std::size_t at, const std::string& row) {
  rows[at] = row;
  return Text(rows);
}

constexpr std::size_t kAt = 150;

const Breakage kBreakages[] = {
    {"whole", Text, "PPPPPPP"},
    {"empty", [](const Lines&) { return std::string(); }, "DDDDFFD"},
    {"title only", [](const Lines& rows) { return rows[0] + "\n"; }, "DDDDFFD"},
    // The first row counts as the title, and the warm-up takes one more row.
    {"no title", [](const Lines& rows) { return Text(Lines(rows.begin() + 1, rows.end())); },
     "FFFPFFP"},
    {"ends in half a line",
     [](const Lines& rows) {
       const std::string text = Text(Lines(rows.begin(), rows.begin() + kAt));
       return text + rows[kAt].substr(0, rows[kAt].size() / 2);
     },
     "FFFFFFF"},
    {"too many columns", [](const Lines& rows) { return With(rows, kAt, rows[kAt] + ",1,2,3"); },
     "FFFPFFP"},
    {"far too many columns",
     [](const Lines& rows) {
       std::string row = rows[kAt];
       for (int i = 0; i < 300; ++i) row += ", 999999";
       return With(rows, kAt, row);
     },
     "FFFFFFF"},
    {"no numbers", [](const Lines& rows) { return With(rows, kAt, "a,b,c,d,e,f,g,h"); }, "FFFFFFD"},
    {"NUL bytes",
     [](const Lines& rows) {
       return With(rows, kAt, rows[kAt].substr(0, 1) + std::string(9, '\0'));
     },
     "FFFFFFF"},
    {"a line of 1 MB", [](const Lines& rows) { return With(rows, kAt, std::string(1 << 20, '7')); },
     "FFFFFFF"},
    {"no newline at the end",
     [](const Lines& rows) {
       std::string text = Text(rows);
       text.pop_back();
       return text;
     },
     "FFPPPPP"},
    {"other line ends",
     [](const Lines& rows) {
       std::string text;
       for (const std::string& row : rows) text += row + "\r\n";
       return text;
     },
     "FFPPPPP"},
};

TEST(Verifiers, MalformedDumpsGiveTheExpectedResultAndNeverHang) {
  for (std::size_t i = 0; i < std::size(kStages); ++i) {
    std::ostringstream out;
    player::WriteDump(out, {.frameCount = 600, .hdr = true}, {}, kStages[i].stage);
    const std::string golden = out.str();
    std::istringstream in(golden);
    Lines rows;
    for (std::string line; std::getline(in, line);) rows.push_back(line);
    const TemporaryFile goldenFile("counted", golden);
    for (const Breakage& breakage : kBreakages) {
      const std::string sample = breakage.apply(rows);
      const TemporaryFile sampleFile("counted_sample", sample);
      const VerifyRun run = RunVerifier(kStages[i].verify, golden, sample);
      const bool failed = !run.fields.empty() || run.result.verifyStatus != 0;
      const bool dropped = CountFrames(goldenFile.Path()) != CountFrames(sampleFile.Path());
      EXPECT_EQ(failed    ? 'F'
                : dropped ? 'D'
                          : 'P',
                breakage.outcomes[i])
          << breakage.name << " in " << player::FormatOf(kStages[i].stage).stageName << "\n"
          << run.console.substr(0, 2000);
      // The same garbage in both files proves nothing, but the comparison must still end.
      RunVerifier(kStages[i].verify, sample, sample);
      RunVerifier(kStages[i].verify, sample, golden);
    }
  }
}

}  // namespace
