// Unusual and malformed rows in every column of every stage: what the verifier reports of them, and
// which events the analysis finds, as transcripts.
#include <algorithm>
#include <utility>

#include "Expected.h"
#include "ModuleVerification.h"
#include "Pictures.h"
#include "StageAnalysis.h"
#include "VerifyRun.h"

namespace {

constexpr std::size_t kRows = 170;
constexpr std::size_t kFirstChanged = 140;  // all stages compare rows from here on

/// A value in place of another one.
struct FieldEdit {
  const char* name;
  std::string (*edit)(const std::string& field);
};

const FieldEdit kFieldEdits[] = {
    {"empty", [](const std::string&) { return std::string(); }},
    {"a letter", [](const std::string&) { return std::string("x"); }},
    {"letter behind", [](const std::string& field) { return field + "x"; }},
    {"letter before", [](const std::string& field) { return "x" + field; }},
    {"negative", [](const std::string& field) { return "-" + field; }},
    {"zero", [](const std::string&) { return std::string("0"); }},
    {"zeros before", [](const std::string& field) { return "000" + field; }},
    {"one digit more", [](const std::string& field) { return field + "1"; }},
    {"blanks", [](const std::string& field) { return " " + field + " "; }},
    {"2^32", [](const std::string&) { return std::string("4294967296"); }},
    {"two", [](const std::string& field) { return field + "," + field; }},
    {"NUL", [](const std::string& field) { return field + std::string(1, '\0'); }},
};

/// A change of the rows at a place.
struct RowEdit {
  const char* name;
  void (*edit)(Lines& rows, std::size_t at);
};

const RowEdit kRowEdits[] = {
    {"missing", [](Lines& rows, std::size_t at) { rows.erase(rows.begin() + long(at)); }},
    {"all missing from there", [](Lines& rows, std::size_t at) { rows.resize(at); }},
    {"twice", [](Lines& rows, std::size_t at) { rows.insert(rows.begin() + long(at), rows[at]); }},
    {"five times",
     [](Lines& rows, std::size_t at) { rows.insert(rows.begin() + long(at), 4, rows[at]); }},
    {"after the next", [](Lines& rows, std::size_t at) { std::swap(rows[at], rows[at + 1]); }},
    {"20 rows later",
     [](Lines& rows, std::size_t at) {
       std::rotate(rows.begin() + long(at), rows.begin() + long(at) + 1,
                   rows.begin() + long(at) + 20);
     }},
    {"empty", [](Lines& rows, std::size_t at) { rows[at].clear(); }},
    {"an empty row before",
     [](Lines& rows, std::size_t at) { rows.insert(rows.begin() + long(at), ""); }},
    {"only commas", [](Lines& rows, std::size_t at) { rows[at] = ",,,,,,,"; }},
    {"a title", [](Lines& rows, std::size_t at) { rows[at] = rows[0]; }},
    {"the first row", [](Lines& rows, std::size_t at) { rows[at] = rows[1]; }},
    {"joined with the next", [](Lines& rows, std::size_t at) { rows[at] += rows[at + 1]; }},
    {"carriage return", [](Lines& rows, std::size_t at) { rows[at] += '\r'; }},
    {"comma behind", [](Lines& rows, std::size_t at) { rows[at] += ','; }},
    {"126 characters", [](Lines& rows, std::size_t at) { rows[at].resize(126, '0'); }},
    {"127 characters", [](Lines& rows, std::size_t at) { rows[at].resize(127, '0'); }},
    {"128 characters", [](Lines& rows, std::size_t at) { rows[at].resize(128, '0'); }},
    {"300 characters", [](Lines& rows, std::size_t at) { rows[at].resize(300, '0'); }},
    {"127 with blanks", [](Lines& rows, std::size_t at) { rows[at].resize(127, ' '); }},
    {"still",
     [](Lines& rows, std::size_t at) {
       for (std::size_t i = 1; i < 8; ++i) rows[at + i] = rows[at];
     }},
};

/// Replaces a field of the row; with `ends`, the row ends behind it.
void Replace(std::string& row, std::size_t column, const FieldEdit* edit) {
  std::size_t begin = 0;
  for (; column > 0; --column) begin = row.find(',', begin) + 1;
  const std::size_t end = std::min(row.find(',', begin), row.size());
  if (edit == nullptr)
    row.resize(end);
  else
    row.replace(begin, end - begin, edit->edit(row.substr(begin, end - begin)));
}

/// Runs a stage's verifier and analysis on edited copies of one file.
class Examination {
 public:
  explicit Examination(const Stage& stage) : stage_(stage) {
    Pictures pictures = PlainPictures(kRows);
    for (Picture& picture : pictures) picture.pts += (int64_t{1} << 31) - 400'000;
    std::string text = FileText(stage, pictures);
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
      rows_.push_back(text.substr(0, end));
    AddReport("unchanged", Report(rows_, rows_));
  }

  /// Edits the dump, golden, and both.
  template <typename Edit>
  void Add(const std::string& name, std::size_t at, Edit edit) {
    Lines edited = rows_;
    edit(edited, at);
    AddReport(name + ", dump", Report(rows_, edited));
    AddReport(name + ", golden", Report(edited, rows_));
    AddReport(name + ", both", Report(edited, edited));
  }

  /// Every report, below the edits that it results from.
  std::string Transcript() const {
    std::string text;
    for (const auto& [report, edits] : reports_) text += edits + ":\n" + report;
    return text;
  }

 private:
  void AddReport(const std::string& edit, const std::string& report) {
    const auto known =
        std::ranges::find(reports_, report, &std::pair<std::string, std::string>::first);
    if (known == reports_.end())
      reports_.emplace_back(report, edit);
    else
      known->second += "\n" + edit;
  }

  std::string Report(const Lines& golden, const Lines& dump) const {
    const TemporaryFile goldenFile("golden", Text(golden));
    const TemporaryFile dumpFile("sample", Text(dump));
    CM_Verify_Result result(stage_.module);
    scripted::Play("", [&] {
      CompareStage(result, goldenFile.Path(), dumpFile.Path());
      return 0;
    });
    const Coverage& covered = result.coverage;
    std::string text = "  " + std::to_string(covered.compared) + " compared, " +
                       std::to_string(covered.goldenOnly) + " and " +
                       std::to_string(covered.dumpOnly) + " alone\n";
    const Lines fields = FieldsOf(result);
    for (std::size_t i = 0; i < std::min<std::size_t>(fields.size(), 3); ++i)
      text += "  " + fields[i] + "\n";
    if (fields.size() > 3) text += "  ... " + std::to_string(fields.size()) + "\n";
    return text + Described(AnalyseStage(stage_.module, goldenFile.Path(), dumpFile.Path()));
  }

  const Stage& stage_;
  Lines rows_;                                                // with the title
  std::vector<std::pair<std::string, std::string>> reports_;  // in order, with their edits
};

class MalformedRows : public testing::TestWithParam<std::size_t> {};

TEST_P(MalformedRows, AreReportedAsBefore) {
  const Stage& stage = kStages[GetParam()];
  Examination examination(stage);
  std::size_t turn = 0;
  for (std::size_t column = 0; column < stage.columns.size(); ++column) {
    const std::string name = std::string(stage.columns[column].name) + " ";
    const auto edit = [&](const FieldEdit* field) {
      examination.Add(name + (field == nullptr ? "last" : field->name), kFirstChanged,
                      [&](Lines& rows, std::size_t at) { Replace(rows[at], column, field); });
    };
    edit(nullptr);
    for (std::size_t i = 0; i < 4; ++i) edit(&kFieldEdits[turn++ % std::size(kFieldEdits)]);
  }
  for (const RowEdit& row : kRowEdits) {
    for (const std::size_t at : {std::size_t{1}, kFirstChanged})
      examination.Add("row " + std::to_string(at) + " " + row.name, at, row.edit);
  }
  EXPECT_TRUE(test::IsAsExpected("malformed/" + std::string(stage.simpleName) + ".txt",
                                 examination.Transcript()));
}

INSTANTIATE_TEST_SUITE_P(Stages, MalformedRows, testing::Range<std::size_t>(0, std::size(kStages)),
                         [](const auto& stage) { return kStages[stage.param].simpleName; });

}  // namespace
