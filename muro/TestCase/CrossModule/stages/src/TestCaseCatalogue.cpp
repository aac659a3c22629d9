#include "TestCaseCatalogue.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <iomanip>
#include <memory>
#include <ostream>
#include <sstream>
#include <utility>

#include "Ansi.h"
#include "CrossModuleLog.h"
#include "SettingFile.h"
#include "Settings.h"
#include "VerifyResult.h"

namespace {

constexpr char kCurrentCaseFile[] = "/tmp/cross_module/file_format.cfg";
constexpr char kUserCaseFile[] = "config/user_add_testcase.cfg";
constexpr char kOverwriteFile[] = "golden_overwrite.config";

// The names of 601 to 604 describe other conversions than their files contain; golden data are
// named after the names.
constexpr struct {
  TEST_CASE_TYPE type;
  const char* name;
  const char* contentFile;
  int32_t hdrFile;
} kBuiltIn[] = {
    {kUnknownTestCase, "unknown", "unknown", 0},
    {kFirstTestCase, "h264-FrtChg", "[R101]h264-FrtChg.ts", 0},
    {102, "h264-ResChg", "[R102]h264-ResChg.ts", 0},
    {201, "hevc-FrtChg", "[R201]hevc-FrtChg.mp4", 0},
    {202, "hevc-ResChg", "[R202]hevc-ResChg.mp4", 0},
    {301, "vp9-FrtChg", "[R301]vp9-FrtChg.webm", 0},
    {302, "vp9-ResChg", "[R302]vp9-ResChg.webm", 0},
    {401, "memc", "[R401]memc.ts", 0},
    {kAvSyncTestCase, "avSync", "[R501]AVsync_dp_AAC_200_48k_25fps.mp4", 0},
    {601, "hdr10-sdr", "[R601]SDRtoHDR.ts", 1},
    {602, "hlg-hdr10", "[R602]HDRtoHLG.ts", 1},
    {603, "hlg-sdr", "[R603]SDRtoHLG.ts", 1},
    {604, "sdr-hlg", "[R604]HLGtoSDR.ts", 1},
};

TEST_CASE_TYPE currentTestCase = kUnknownTestCase;

/// Line k of the file is the flag of list entry k; extra lines are ignored.
void ReadOverwriteFlags(std::vector<CM_TestCase>& cases) {
  const auto lines = FileLines(CrossModuleHome() + kOverwriteFile);
  for (std::size_t k = 1; lines && k < cases.size() && k <= lines->size(); ++k) {
    const std::string& line = (*lines)[k - 1];
    if (line.empty() && lines->size() == 1) break;  // an empty file
    int32_t& flag = cases[k].goldenOverwritten;
    if (std::from_chars(line.data(), line.data() + line.size(), flag).ec != std::errc()) {
      CmLog("Init_TestCase_List") << kOverwriteFile << " line " << k
                                  << " is not a number, skipped: " << line << '\n';
    }
  }
}

/// True if a text of the user's file can be part of shell commands without doing harm: words of
/// which only the first may be a path or an option.
bool IsHarmless(const std::string& text) {
  std::istringstream words(text);
  std::string word;
  for (bool first = true; std::getline(words, word, ' '); first = false) {
    if (word.empty()) continue;
    if (!IsShellWord(word) || (!first && std::isalnum(static_cast<unsigned char>(word[0])) == 0))
      return false;
  }
  return true;
}

/// Reports data that could not be written to the file below the home.
void TellUnwritten(const char* function, std::ofstream& file, const char* name) {
  if (file.flush()) return;
  CmLog(function) << ansi::kFail << "ERROR: can not write " << CrossModuleHome() << name
                  << ansi::kReset << '\n';
}

}  // namespace

CM_TestCase::CM_TestCase(TEST_CASE_TYPE number, std::string caseName, std::string file, int32_t hdr)
    : type(number),
      name(std::move(caseName)),
      contentFile(std::move(file)),
      displayName(name),
      hdrFile(hdr) {}

std::string CM_TestCase::Get_TestCase_Number() const {
  return std::to_string(type);
}

std::string CM_TestCase::Get_TestCase_Name() const {
  return Get_TestCase_Number() + "-" + displayName;
}

std::string CM_TestCase::Get_Dump_Backup_Name(MODULE_TYPE module) const {
  return "dump-" + Get_TestCase_Name() + "-" + Module_Type_To_String_Simple(module) + ".txt";
}

std::string CM_TestCase::Get_Dump_Backup_Path(MODULE_TYPE module) const {
  return CrossModuleHome() + "dump_tmp/" + Get_Dump_Backup_Name(module);
}

std::string CM_TestCase::Get_Golden_Path(MODULE_TYPE module) const {
  return CrossModuleHome() + "golden_data/playback/" +
         (Get_FreeRun_Mode() != 0 ? "free_run_golden/" : "") + Get_Dump_Backup_Name(module);
}

std::ostream& operator<<(std::ostream& out, const CM_TestCase& testCase) {
  const std::ios_base::fmtflags flags = out.flags();
  out << testCase.Get_TestCase_Number() << ' ' << std::right << std::setw(20)
      << testCase.displayName << ansi::kPlain << " path: " << ansi::kGrey << ContentHome()
      << testCase.contentFile << ansi::kPlain;
  out.flags(flags);
  return out;
}

std::vector<CM_TestCase>& TestCaseList() {
  static std::vector<CM_TestCase> cases;
  return cases;
}

std::vector<CM_Module>& ModuleTypeList() {
  static std::vector<CM_Module> modules;
  return modules;
}

std::vector<CM_TestCase> BuiltInTestCases() {
  std::vector<CM_TestCase> cases;
  for (const auto& row : kBuiltIn)
    cases.emplace_back(row.type, row.name, row.contentFile, row.hdrFile);
  return cases;
}

void ReadTestCaseList() {
  TestCaseList() = BuiltInTestCases();
  Get_User_Add_TestCase();
  ReadOverwriteFlags(TestCaseList());
}

int Init_TestCase_List() {
  static bool done = false;
  if (done) return 0;
  done = true;
  Init_Content_Path(static_cast<USB_HTTP_MODE_TYPE>(Get_USB_HTTP_Mode()));
  ReadTestCaseList();
  return 0;
}

void Get_User_Add_TestCase() {
  auto lines = FileLines(CrossModuleHome() + kUserCaseFile);
  if (!lines) return;
  lines->resize(3);
  const std::string& name = (*lines)[0];
  const std::string& content = (*lines)[2];
  for (const std::string* text : {&name, &content}) {
    if (IsHarmless(*text)) continue;
    CmLog(__func__) << ansi::kFail << "ERROR: " << kUserCaseFile << " is broken, no test case "
                    << kUserTestCase << '\n';
    return;
  }
  int32_t hdr = 0;
  std::istringstream((*lines)[1]) >> hdr;
  TestCaseList().emplace_back(kUserTestCase, name, content, hdr);
}

int Set_User_Add_TestCase(const std::string& name, int hdr, const std::string& file) {
  std::ofstream stored = OpenEmpty(CrossModuleHome() + kUserCaseFile);
  stored << name << '\n' << hdr << '\n' << file << '\n';
  TellUnwritten(__func__, stored, kUserCaseFile);
  return 0;
}

void Init_Module_List() {
  if (!ModuleTypeList().empty()) return;
  // Results and paths live as long as the program, because the records point to them.
  static std::deque<CM_Verify_Result> results;
  static std::deque<std::string> dumpPaths;
  for (const Stage& stage : kStages) {
    CM_Verify_Result& result = results.emplace_back(stage.module);
    std::string& dumpPath = dumpPaths.emplace_back(std::string(kDumpDirectory) + stage.dumpFile);
    ModuleTypeList().push_back({stage.module, &result, &dumpPath});
  }
}

CM_Module* Get_Module_by_ID(MODULE_TYPE id) {
  for (CM_Module& module : ModuleTypeList()) {
    if (module.type == id) return &module;
  }
  CmLog("Get_Module_by_ID") << "Error! Can not find the module with ID:" << static_cast<int>(id)
                            << '\n';
  return nullptr;
}

std::string Module_Type_Inte_To_String(int mask) {
  std::string text;
  for (const CM_Module& module : ModuleTypeList()) {
    std::string name = Module_Type_To_String_Simple(module.type);
    if ((mask & module.type) == 0) {
      name.assign(name.size(), ' ');
      name[0] = '-';
    }
    text += name;
  }
  return text;
}

CM_TestCase* FindTestCase(TEST_CASE_TYPE type) {
  std::vector<CM_TestCase>& cases = TestCaseList();
  return std::to_address(std::ranges::find(cases, type, &CM_TestCase::type));
}

int Set_Current_TestCase(TEST_CASE_TYPE type) {
  currentTestCase = type;
  OpenEmpty(kCurrentCaseFile) << type << '\n';
  return 0;
}

CM_TestCase* Get_Current_TestCase() {
  if (currentTestCase == kUnknownTestCase) {
    const auto stored = FirstLine(kCurrentCaseFile);
    Set_Current_TestCase(stored ? std::atoi(stored->c_str()) : kFirstTestCase);
  }
  return FindTestCase(currentTestCase);
}

bool IsKnown(const CM_TestCase* testCase) {
  return testCase != TestCaseList().data() + TestCaseList().size();
}

CM_TestCase* KnownTestCase(const char* function) {
  Init_TestCase_List();
  Init_Module_List();
  CM_TestCase* testCase = Get_Current_TestCase();
  if (IsKnown(testCase)) return testCase;
  CmLog(function) << ansi::kFail << "ERROR: unknown test case\n";
  return nullptr;
}

void Keep_Golden_Overwrite() {
  std::ofstream file = OpenEmpty(CrossModuleHome() + kOverwriteFile);
  for (std::size_t k = 1; k < TestCaseList().size(); ++k) {
    file << TestCaseList()[k].goldenOverwritten << '\n';
  }
  TellUnwritten(__func__, file, kOverwriteFile);
}
