// What each row of each module's table executes, compared with the row's name and description.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BoardFiles.h"
#include "Emulated.h"
#include "Expected.h"
#include "ModuleList.h"
#include "Scripted.h"
#include "SimHal.h"
#include "k2v/vbe.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vfe_vby1rx.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

namespace {

using Words = std::vector<std::string>;
using Lines = std::vector<std::string>;

constexpr std::time_t kNow = 1'700'000'000;
constexpr int kMostWaits = 12;  // for a row that polls endlessly
constexpr char kCallMark[] = "\n@call ";
constexpr std::string_view kHalPrefix = "K2V_RHAL_";

/// The words of a name or a sentence in lower case: "HDMI_GetAVMute" becomes "hdmi get av mute".
Words WordsOf(std::string_view text) {
  Words words(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto is = [&](std::size_t at, int (*kind)(int)) {
      return at < text.size() && kind(static_cast<unsigned char>(text[at])) != 0;
    };
    const bool begins =
        is(i, std::isupper) && i > 0 &&
        (is(i - 1, std::islower) || (is(i - 1, std::isalnum) && is(i + 1, std::islower)));
    if (begins || !is(i, std::isalnum)) words.emplace_back();
    if (is(i, std::isalnum))
      words.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
  }
  std::erase(words, "");
  return words;
}

/// Whether the longer one of two names ends with the words of the shorter one.
bool AreOneName(const Words& a, const Words& b) {
  const std::size_t count = std::min(a.size(), b.size());
  return count > 0 && std::equal(a.end() - static_cast<std::ptrdiff_t>(count), a.end(),
                                 b.end() - static_cast<std::ptrdiff_t>(count));
}

/// The words that name what a function sets or gets.
Words SubjectOf(std::string_view function) {
  Words words = WordsOf(function);
  std::erase_if(words, [](const std::string& word) {
    return word == "set" || word == "get" || word == "extend" || word == "ui";
  });
  return words;
}

/// Observed behaviour of a row.
struct Played {
  std::string told;   // the name that the test prints at its start, or in its verdict
  std::string shown;  // the first line, if there is no such name
  Lines calls;        // HAL calls, without "K2V_RHAL_"
};

pid_t player = 0;

/// Prints the calls made by the playing process, once.
void PrintCalls() {
  if (getpid() != player) return;
  player = 0;
  std::fflush(stdout);
  for (const std::string& call : simhal::Calls())
    dprintf(STDOUT_FILENO, "%s%s", kCallMark, call.c_str());
}

enum class Board : uint8_t { kClosed, kOpen };

/// Opens the drivers as an operator does first.
void OpenDrivers() {
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(0);
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_VBY1RX_Initialize();
  K2V_RHAL_VFE_VBY1RX_Open();
  K2V_RHAL_VBE_TRIDFMT_Initialize();
  K2V_RHAL_VBE_TRIDFMT_Open();
  K2V_RHAL_VPQ_Initialize();
  K2V_RHAL_VPQ_Open();
  K2V_RHAL_VPQ_LED_Initialize(0, 0);
  K2V_RHAL_VPQEX_Init();
  K2V_RHAL_VPQEX_Open();
  simhal::ClearCalls();
}

/// Runs a row on a new board, in a separate process, repeating the same answers. A function may
/// fail.
scripted::Run RunOf(TestCase& row, const std::string& answer, Board board = Board::kClosed,
                    const std::string& failing = "") {
  constexpr std::size_t kAnswerBytes = 80;
  std::string answers;
  while (answers.size() < kAnswerBytes) answers += answer;
  scripted::StopClock(kNow);  // the seed of random values
  simhal::Reset();
  if (board == Board::kOpen) OpenDrivers();
  simhal::Fail("K2V_RHAL_HDCP2_LoadKeys", -1);  // making keys takes long and identifies no row
  if (!failing.empty()) simhal::Fail(failing, -1);
  scripted::Run run = scripted::PlayApart(answers, [&row] {
    player = getpid();
    std::atexit(PrintCalls);
    scripted::OnWait([waits = 0](unsigned long) mutable {
      if (++waits == kMostWaits) PrintCalls(), _exit(0);
    });
    const int result = row.Execute();
    PrintCalls();
    return result;
  });
  run.output = crossmodule::WithoutColours(run.output);
  return run;
}

/// The name that a driver test, a unit test or a menu entry prints first, or a link test last.
std::string NameIn(const std::string& output) {
  static const std::regex kBeginnings[] = {
      std::regex("^\n?[^\n]*,(\\w+) ,\\d+ ?\n"),
      std::regex("^ \\[muro\\](\\w+)\n"),
      std::regex("^ ?(VPQ_FunctionTest_HAL_\\w+) ?\n"),
      std::regex("^\\[CrossModule\\]\\[Executing item: (\\w+)\\] START"),
      std::regex("^\n=+\n= Test (\\w+) \n"),
      std::regex("^\\[VBE\\] Test Case: (\\w+)\\.\\.\\."),
  };
  static const std::regex kVerdict("\n(TestFunc_\\w+)(?:\\(\\w+\\))? (?:Passed|Failed)\\.\n");
  const std::string beginning = output.substr(0, 300);
  std::smatch match;
  for (const std::regex& name : kBeginnings) {
    if (std::regex_search(beginning, match, name)) return match[1];
  }
  return std::regex_search(output, match, kVerdict) ? match[1] : std::string();
}

Played Play(TestCase& row) {
  std::string output = RunOf(row, "1\n").output;
  Played played;
  const std::string mark = kCallMark;
  for (auto at = output.rfind(mark); at != output.npos; at = output.rfind(mark)) {
    std::string call = output.substr(at + mark.size());
    if (call.starts_with(kHalPrefix)) call.erase(0, kHalPrefix.size());
    played.calls.insert(played.calls.begin(), call);
    output.resize(at);
  }
  played.told = NameIn(output);
  const auto judging = output.find(std::string(row.getName()) + " has been executed");
  if (played.told.empty()) played.shown = output.substr(0, std::min(judging, output.find('\n')));
  return played;
}

/// The number of rows of each module, and the rows whose texts do not name what they execute: the
/// name, or the beginning of the first line or call, or "-" if nothing happens. After "=" is the
/// called function if it differs from the row's name.
constexpr char kUnsaid[] = R"(
Hdcp2Module 9
VfeHdmiModule 17
  0 TestCase1 | 1 TestCase2 | 2 TestCase3 | 3 TestCase4 | 7 VFE_HDMI_GetConnectionState
  8 VFE_HDMI_ReadEDID | 9 VFE_HDMI_Get_isHDMI20Supported | 10 VFE_HDMI_Get_HDCP_Version
  14 VFE_HDMI_isHDCP22Supported | 16 VFE_HDMI_GetSourceKSVData
VfeVby1rxModule 4
  0 TestCase1 | 1 TestCase2 | 2 TestCase3 | 3 GetTimingInfo
VscModule 40
  0 Set video wid: | 1 OverScan_Trans_Garbage | 3 OverScan_PIP | 4 PatternSize_PIP | 6 VideoStell
  7 - | 8 RGB444InHDMI | 9 - | 10 - | 11 InoutVideo_Freeze | 12 InoutVideo_Read
  13 InoutVideo_Write | 14 Capture_DataVerify | 15 The V2G interface
  16-23 VSC_FunctionTest_HAL_VSC_Switch_Source Exit | 24 VFE_HDMI_Initialize | 25 Input Src
  28 Choose input Src:
VpqModule 43
  6 HAL_VPQ_SetSharpness | 8 HAL_VPQ_GetHistoData
VpqExtModule 111
  19 HAL_VPQ_GetColorGain | 20 HAL_VPQ_SetColorGainExtend | 21 HAL_VPQ_GetFleshTone
  22 HAL_VPQ_SetFleshTone | 24 HAL_VPQ_SetBackLight | 25 HAL_VPQ_SetPanelBL
  26 HAL_VPQ_GetGammaNum | 27 HAL_VPQ_SetGamma | 37 HAL_VPQ_GetODLevel
  38 HAL_VPQ_SetODReadEnable | 64 HAL_VPQ_GetENGMENU | 81 HAL_VPQEX_notifyPlatformColorTemp
  84 HAL_VPQ_SetSRLevel | 85 HAL_VPQ_GetPanelPqPath = VPQEX_GetPanelPqPath
  86 HAL_VPQ_GetPanelPqName = VPQEX_GetPanelPqName | 89 HAL_VPQEX_GetDataAccess
  92 HAL_VPQEX_GDBC_Set_UI_DCR_BackLight
VbeModule 42
  0 Panel Size | 1 - | 3 VBE_DISP_SetDisplayFormat | 4 VBE_DISP_TCON_Initialize
  7 VBE_INPUT_TYPE_2DTO3D | 8 VBE_INPUT_TYPE_SIDEBYSIDE result | 9 VBE_INPUT_TYPE_TOPNBOTTOM
  10 VBE_INPUT_TYPE_FIELD_ALTERNATIVE | 11 VBE_INPUT_TYPE_CHECKERBOARD
  12 VBE_INPUT_TYPE_LINE_INTERLEAVE_HALF | 13 VBE_INPUT_TYPE_COLUMN_INTERLEAVE
  14 VBE_INPUT_TYPE_FRAMEPAC | 15 VBE_INPUT_TYPE_FRAMESEQ | 16 VBE_INPUT_TYPE_LINE_ALTERNATIVE
  17 VBE_INPUT_TYPE_SIDEBYSIDE_FULL | 18 VBE_INPUT_TYPE_DUALSTREAM | 19 VBE_INPUT_TYPE_3DOFF
  20 VBE_TRIDFMT_CtrlDepth | 21 VBE_TRIDFMT_SetConvValue | 22 VBE_TRIDFMT_ToggleOutputLRFrame
  23 VBE_TRIDFMT_ToggleInputLRFrame | 24 VBE_TRIDFMT_SetConvValue | 25 VBE_TRIDFMT_CtrlDepth
  26 VBE_TRIDFMT_AutoConvergenceEnable | 27 VBE_DISP_Initialize({inch=55 | 29 - | 37 - | 38 -
  39 HdmiConnectionNotify | 40 VBE_DISP_OLED_SETORBIT
UTGalModule 7
UTHdcp2Module 12
UTSvpModule 2
  0 TestCase1 | 1 TestCase2
UTVfeHdmiModule 29
  1 GetRxPortCnt | 9 EnableHPD | 17 GetDRMInfo | 28 getHDCPReceiverId
UTVpqModule 245
  15 = VPQ_SetContrast | 107 = VPQEX_GetPixelinfo | 112 = VPQEX_SetGammaCurve
  117 = VPQEX_SetCurve4HDR | 119 = VPQEX_GetHDRDolbyStatus | 233 = VPQ_SetDolbyColor
UTThermalModule 2
  0 TestCase1 | 1 TestCase2
CMplaybackModule 26
  0 Env_Init | 1 AutoTest_Customized | 2 AutoTest_AVsync | 3 RdTestCombo_Tolva3DemoBaord
  4 Report_Send_To | 5 Config_TFTP_IP | 6 Enable_Android | 8 StartTestCase
  9 Overwrite_Local_Golden | 10 Restore_Local_Golden | 15 Verify_All | 16 Verify_AVsync
  17 SetTestCaseGolden | 18 Switch_Usb_Http | 19 Config_Freerun | 20 Config_Debug_Level
  21 Config_SendPassReport | 22 Package_AllInOne | 23 Config_Auto_Send_DumpData
  24 Send_Dump_To_TFTP | 25 AutoTest_All
CMAutoTest 5
  0 Env_Init | 1 RdTestCombo_Tolva3DemoBaord | 2 Report_Send_To | 3 Config_TFTP_IP
  4 Enable_Android
CRlinkModule 27
  26 1 -> speed Up
K2vHalDeviceModule 4
)";

struct Unsaid {
  std::string name;  // empty if the row's texts contain it
  std::string call;
};

struct ModuleFacts {
  std::size_t count = 0;
  std::map<int, Unsaid> unsaid;
};

ModuleFacts FactsOf(const std::string& module) {
  static const std::regex kItem("(\\d+)(?:-(\\d+))? ([^|\n]*?) ?(?:= (\\w+))? ?[|\n]");
  const std::string all = kUnsaid;
  std::smatch section;
  const std::regex kSection("\n" + module + " (\\d+)\n((?:  .*\n)*)");
  if (!std::regex_search(all, section, kSection)) return {};
  ModuleFacts facts = {std::stoul(section[1]), {}};
  const std::string items = section[2];
  for (std::sregex_iterator item(items.begin(), items.end(), kItem), end; item != end; ++item) {
    const int first = std::stoi(item->str(1));
    const int last = item->str(2).empty() ? first : std::stoi(item->str(2));
    for (int row = first; row <= last; ++row) facts.unsaid[row] = {item->str(3), item->str(4)};
  }
  return facts;
}

/// The text of a row without the words around the name.
std::string NamePartOf(const char* text) {
  static const std::regex kBefore("^(Test|testing) ");
  static const std::regex kBehind("( \\(.*\\)|[ _](Function )?[Tt]est| function|[ .])$");
  return std::regex_replace(std::regex_replace(text, kBefore, ""), kBehind, "");
}

std::string FunctionOf(const std::string& call) {
  return call.substr(0, call.find('('));
}

bool HasWord(const std::string& name, const char* word) {
  return std::ranges::count(WordsOf(name), word) != 0;
}

/// Whether all calls call a function, or read the values that it sets.
bool AreCallsOf(const Lines& calls, const std::string& function) {
  const bool gets = HasWord(function, "get");
  const bool sets = HasWord(function, "set");
  const auto isSetter = [](const std::string& call) { return HasWord(FunctionOf(call), "set"); };
  return (!gets || std::ranges::none_of(calls, isSetter)) &&
         (!sets || calls.empty() || std::ranges::any_of(calls, isSetter)) &&
         std::ranges::all_of(calls, [&](const std::string& call) {
           return AreOneName(SubjectOf(function), SubjectOf(FunctionOf(call)));
         });
}

bool ContainsInAnyCase(const std::string& text, const std::string& part) {
  const auto same = [](unsigned char a, unsigned char b) {
    return std::tolower(a) == std::tolower(b);
  };
  return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

bool Does(const Played& played, const std::string& name, const std::string& called) {
  if (name.empty()) return false;
  if (name == "-") return played.told.empty() && played.shown.empty() && played.calls.empty();
  const std::string first = played.calls.empty() ? "" : played.calls[0];
  // A row named after a HAL function calls no other function.
  const auto hal = name.find("HAL_");
  const bool isNamed = hal != name.npos && called.empty();
  const std::string function = isNamed ? name.substr(hal + 4) : called;
  if (!function.empty() && !AreCallsOf(played.calls, function)) return false;
  if (!played.told.empty()) return AreOneName(WordsOf(name), WordsOf(played.told));
  return ContainsInAnyCase(played.shown, name) || first.starts_with(name) ||
         AreOneName(SubjectOf(name), SubjectOf(FunctionOf(first)));
}

class ModuleRows : public testing::TestWithParam<ModuleEntry> {};

TEST_P(ModuleRows, ExecuteWhatTheirTextsName) {
  testing::internal::CaptureStdout();
  Module* module = GetParam().instance();
  testing::internal::GetCapturedStdout();
  ModuleFacts facts = FactsOf(GetParam().className);
  EXPECT_EQ(module->Tests().size(), facts.count);
  // The operator judges the scaler tests; all other tests judge themselves.
  const bool isScaler = std::string_view(GetParam().className) == "VscModule";
  const crossmodule::Home home;
  int number = -1;
  for (const auto& row : module->Tests()) {
    ++number;
    // The receiver's unit tests have their own numbers, which their transcript contains.
    EXPECT_TRUE(std::string_view(GetParam().className) == "UTVfeHdmiModule" ||
                row->getId() == module->Tests().front()->getId() + number)
        << row->getName() << " has the number " << row->getId();
    EXPECT_EQ(row->isAutoJudged(), !isScaler) << "row " << number << ", " << row->getName();
    if (!row->hasFunction()) continue;
    const Played played = Play(*row);
    const auto& [name, call] = facts.unsaid[number];
    const bool does = !name.empty() ? Does(played, name, call)
                                    : Does(played, NamePartOf(row->getDescription()), call) ||
                                          Does(played, NamePartOf(row->getName()), call);
    EXPECT_TRUE(does) << "row " << number << ", \"" << row->getName() << "\", \""
                      << row->getDescription() << "\", announces \"" << played.told
                      << "\", shows \"" << played.shown << "\", calls \""
                      << testing::PrintToString(played.calls) << '"';
  }
  crossmodule::RemoveVolatileFiles();
}

/// Answers that the operator repeats until the row ends, or a key of each kind for the adjusters.
constexpr const char* kAnswers[] = {"1\n", "2\n0\n", "3\n4\n5\n6\n7\n8\n9\n10\n", "-1\n",
                                    "0\np\n1\na\n2\nw\n3\ne\n>\n<\n?\n"};

/// What a row prints, then its calls and its result.
Lines LinesOf(TestCase& row, const std::string& answers, Board board,
              const std::string& failing = "") {
  // Before values that differ from run to run or with the sources.
  constexpr std::string_view kDiffering[] = {"addr = ", "child_pid(", ".cpp,", "Clock_Value",
                                             "start_"};
  static const std::regex kHome("\\S*/cross_module_\\w{6}/");
  static const std::regex kValue(
      R"((addr = |start_\d = |child_pid\(|\.cpp,\w+ ,|Clock_Value(?:\(\d\))? = )\w+)");
  Lines lines;
  const scripted::Run run = RunOf(row, answers, board, failing);
  std::istringstream output(run.output);
  for (std::string line; std::getline(output, line);) {
    // There a session polls before its notifications arrive.
    if (test::IsUnderValgrind() && line.ends_with(": sleep")) continue;
    if (std::ranges::any_of(kDiffering, [&](auto text) { return line.find(text) != line.npos; }))
      line = std::regex_replace(line, kValue, "$1…");
    if (line.find("/cross_module_") != line.npos) line = std::regex_replace(line, kHome, "HOME/");
    lines.push_back(line);
  }
  lines.push_back("result " + std::to_string(run.result));
  return lines;
}

/// Lines that differ in their numbers only.
struct Shape {
  Lines first;
  int others = 0;
  int64_t sum = 0;  // of the numbers in the others
};

/// Replaces the numbers of a line by '#' and returns their sum.
int64_t TakeNumbers(std::string& line) {
  int64_t sum = 0;
  std::string text;
  for (const char* at = line.c_str(); *at != '\0';) {
    char* end = nullptr;
    if (std::isdigit(static_cast<unsigned char>(*at)) == 0) {
      text += *at++;
      continue;
    }
    sum += std::strtoll(at, &end, at[1] == 'x' ? 16 : 10) * (text.ends_with('-') ? -1 : 1);
    text += '#';
    at = end;
  }
  line = text;
  return sum;
}

/// Lines that occur more or less often than usual, in order of their first occurrence. Of those
/// with one shape only the first two are shown.
std::string Differences(const Lines& usual, const Lines& lines) {
  std::map<std::string, int> more;
  for (const std::string& line : lines) ++more[line];
  for (const std::string& line : usual) --more[line];
  std::map<std::string, Shape> shapes;
  Lines order;
  for (const auto* side : {&usual, &lines}) {
    for (const std::string& line : *side) {
      const int count = std::exchange(more[line], 0);
      if (count == 0) continue;
      std::string name = (count < 0 ? "-" : "+") + line;
      const int64_t sum = TakeNumbers(name);
      const auto [at, isNew] = shapes.try_emplace(name);
      if (isNew) order.push_back(name);
      Shape& shape = at->second;
      if (shape.first.size() < 2) {
        shape.first.push_back((count < 0 ? "" : "+") + std::to_string(count) + ' ' + line);
      } else {
        ++shape.others;
        shape.sum += count * sum;
      }
    }
  }
  std::string text;
  for (const std::string& name : order) {
    const auto& [first, others, sum] = shapes[name];
    for (const std::string& line : first) text += line + '\n';
    if (others > 0)
      text += "   " + std::to_string(others) + " more, their numbers add up to " +
              std::to_string(sum) + '\n';
  }
  return text;
}

/// The lines without the results of a function.
Lines WithoutResultsOf(const std::string& function, Lines lines) {
  for (std::string& line : lines) {
    if (line.starts_with("@call " + function + "(")) line.resize(line.rfind(" = "));
  }
  return lines;
}

/// The functions that are called, in order of their first call.
Lines FunctionsIn(const Lines& lines) {
  Lines functions;
  for (const std::string& line : lines) {
    const std::string function = FunctionOf(line.starts_with("@call ") ? line.substr(6) : "");
    if (!function.empty() && std::ranges::find(functions, function) == functions.end())
      functions.push_back(function);
  }
  return functions;
}

std::string TitleOf(TestCase& row) {
  std::string title =
      "==== " + std::to_string(row.getId()) + ' ' + row.getName() + ", " + row.getDescription();
  if (row.asks()) title += ", asks";
  if (row.isDisruptive()) title += ", is disruptive";
  return title + '\n';
}

/// What a row prints and calls with the usual answer, and what changes on the other board, with
/// other answers, and if one of the functions fails that it calls.
std::string TranscriptOf(TestCase& row, Board board) {
  std::string text = TitleOf(row);
  const auto add = [&text](const std::string& title, const std::string& changes) {
    if (!changes.empty()) text += title + changes;
  };
  const Lines usual = LinesOf(row, kAnswers[0], board);
  add("", Differences({}, usual));
  const Board other = board == Board::kOpen ? Board::kClosed : Board::kOpen;
  add(other == Board::kOpen ? "-- open\n" : "-- closed\n",
      Differences(usual, LinesOf(row, kAnswers[0], other)));
  std::set<std::string> failed;
  for (const std::string answers : kAnswers) {
    const Lines lines = LinesOf(row, answers, board);
    add("-- answers " + std::regex_replace(answers, std::regex("\n"), " ") + '\n',
        Differences(usual, lines));
    for (const std::string& function : FunctionsIn(lines)) {
      if (!failed.insert(function).second) continue;
      add("-- " + function + " fails\n",
          Differences(WithoutResultsOf(function, lines),
                      WithoutResultsOf(function, LinesOf(row, answers, board, function))));
    }
  }
  return text;
}

/// Whether the order of what the row's threads or processes do differs from run to run.
bool IsAtOnce(TestCase& row) {
  return std::string_view(row.getDescription()).find("simultaneously") != std::string_view::npos;
}

TEST_P(ModuleRows, PrintAndCallAsBefore) {
  const std::string_view name = GetParam().className;
  const crossmodule::Home home;
  setenv("TZ", "UTC0", 1);
  testing::internal::CaptureStdout();
  Module* module = GetParam().instance();
  testing::internal::GetCapturedStdout();
  // An operator opens the drivers of picture quality first; other tests open theirs.
  const Board board = name.find("Vpq") != name.npos ? Board::kOpen : Board::kClosed;
  std::string text;
  for (const auto& row : module->Tests()) {
    text += row->hasFunction() && !IsAtOnce(*row) ? TranscriptOf(*row, board) : TitleOf(*row);
  }
  EXPECT_TRUE(test::IsAsExpected("rows/" + std::string(name) + ".txt", text));
}

INSTANTIATE_TEST_SUITE_P(All, ModuleRows,
                         testing::ValuesIn(ModuleList().begin(), ModuleList().end()),
                         [](const auto& module) { return module.param.className; });

}  // namespace

void PrintTo(const ModuleEntry& module, std::ostream* out) {
  *out << module.className;
}
