// Verifying stages, and the resulting report: console, file and destination.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "AvSync.h"
#include "BoardFiles.h"
#include "CMplaybackTestCase.h"
#include "DetailedVerdict.h"
#include "ModuleVerification.h"
#include "ReportDelivery.h"
#include "Scripted.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"
#include "VerifyReport.h"
#include "VerifyResult.h"

namespace {

using crossmodule::WithoutColours;
using player::ParseDefect;
using scripted::Play;

// The report is written and cleaned here; the commands that move it are only recorded.
constexpr char kTemporaryReport[] = "/tmp/cross_module/report.verify.tmp.txt";

bool Contains(const std::string& text, const std::string& wanted) {
  return text.find(wanted) != std::string::npos;
}

class CrossModuleReport : public testing::Test {
 protected:
  void SetUp() override {
    home_.Write("config/timeStamp.config", "0315_142501\n");
    home_.Write("config/tftp_ip.cfg", "10.0.0.2\n");
    home_.Write("config/report_send_to_USB_TFTP.config", "0\n");
    crossmodule::PretendBoardFile("/home/core.1st");
    Play("", [] { return Set_FreeRun_Mode(0), Set_SendPassReport(0), Init_TestCase_List(); });
    Init_Module_List();
    Set_Current_TestCase(101);
    Set_Debug_Level(0);
    scripted::OnCommand([](const std::string& command) {
      return crossmodule::MovesAReport(command) ? crossmodule::RunForReal(command) : 0;
    });
  }

  void TearDown() override { crossmodule::RemoveVolatileFiles(); }

  static scripted::Run VerifyAll() {
    Play("", [] { return Verify_All_Modules(), 0; });
    return Play("", [] { return Print_Verify_Result() ? 0 : 1; });
  }

  /// The stored report of test case 101; `number` follows the time if it is not the first report.
  std::string StoredReport(const std::string& number = "") const {
    return scripted::ReadFile(ReportPath(number));
  }
  std::string ReportPath(const std::string& number = "") const {
    return home_.Path() + "report/report_101-h264-FrtChg_0315_142501" + number + ".txt";
  }

  crossmodule::Home home_;
};

constexpr char kHead[] =
    "Test case     : 101-h264-FrtChg\n"
    "Content       : /tmp/usb/cross_module_content_v1/[R101]h264-FrtChg.ts\n"
    "Golden data   : normal\n"
    "Test time     : 0315_142501\n"
    "PCB SW version: --\n"
    "\n"
    "CVN - Cross Module Test - Playback Verify Report\n"
    "\n";

constexpr char kTableHead[] =
    " List The 1st Erro Frame of All Module\n"
    "[Test-101-h264-FrtChg-Overview]\n"
    "Module    Result     FrameCount(Dump/Golden)  ErrCount(frame/field)  1stErrFrame  FieldName"
    "     Value(Dump/Golen)\n";

constexpr char kIntegrationHead[] =
    "\n"
    "[Video-Integration]\n"
    "      Frame  Module                             ErrField  1stModule  FieldName     "
    "Value(Dump/Golen)\n";

std::string PassLine(const std::string& module, const std::string& count = "599/599") {
  return module + "PASS                       " + count +
         "                    0/0            -  -             (no---data)\n";
}

TEST_F(CrossModuleReport, ReportsTheBadStageFrameAndField) {
  home_.Play(101, {ParseDefect("VDEC:change:300:crc")});
  const auto run = VerifyAll();
  EXPECT_EQ(run.result, 1);
  const std::string tables =
      kTableHead + PassLine("[OMXIN]   ") + PassLine("[OMXOUT]  ") +
      "[VDEC]    FAIL!                      599/599                    1/1          300  crc"
      "           edce52ee/edce52ef\n" +
      PassLine("[DVO]     ") + PassLine("[VO]      ") + PassLine("[Scaler]  ") +
      PassLine("[Audio]   ", "467/467") +
      " First bad stage: [VDEC]   frame 300, crc = edce52ee/edce52ef\n" + kIntegrationHead +
      "        300  -    -     VDEC-  - -     -               1  [VDEC]     crc           "
      "edce52ee/edce52ef\n\n";
  EXPECT_TRUE(Contains(WithoutColours(run.output), tables)) << run.output;
  EXPECT_TRUE(Contains(run.output, "\033[0;32;31mFAIL!\033[m")) << "the console keeps its colours";

  const std::string report = StoredReport();
  const std::string columns = "Module Column Name:\n[OMXIN] 0:frame_no, 1:90k_counter, ";
  EXPECT_EQ(report.substr(0, report.find(columns)), kHead + tables);
  EXPECT_TRUE(Contains(report, "\n[DVO]    0:frame_no, 1:frame_rate, 2:pts.L\n")) << report;
  EXPECT_FALSE(Contains(report, "\033"));

  const std::string path = ReportPath();
  const std::vector<std::string> commands = scripted::Commands();
  ASSERT_GE(commands.size(), 2U);
  EXPECT_EQ(commands[commands.size() - 2], "mkdir -p " + home_.Path() + "report/");
  EXPECT_EQ(commands.back(), std::string("mv ") + kTemporaryReport + " " + path);
  EXPECT_TRUE(Contains(WithoutColours(run.output),
                       "[CrossModule][Print_Verify_Result] DONE. report:" + path + "\n"));

  Play("", [] { return Print_Verify_Result() ? 0 : 1; });
  EXPECT_EQ(StoredReport("_2"), report) << "printing again counts the same";
  EXPECT_EQ(StoredReport(), report) << "and overwrites nothing";
}

TEST_F(CrossModuleReport, ShowsTheDefectsOfEachStage) {
  home_.Play(101,
             {ParseDefect("OMXIN:drop:400"), ParseDefect("VO:change:350:crc_vo=255"),
              ParseDefect("VO:change:350:width=1"), ParseDefect("DVO:repeat:349"),
              ParseDefect("Scaler:truncate:598"), ParseDefect("Audio:change:200:pcm_data_crc=1")});
  std::filesystem::remove(home_.Path() + "golden_data/playback/dump-101-h264-FrtChg-VDEC.txt");
  const auto run = VerifyAll();
  EXPECT_EQ(run.result, 1);
  const std::string shown = WithoutColours(run.output);
  for (const char* line : {
           "[OMXIN]   FAIL!                      598/599                    1/5          400  "
           "frame_no      (no---data)/400\n",
           "[VDEC]    FAIL!              599/(no---data)                    0/0            -  -  "
           "           (no---data)  not verified\n",
           "[DVO]     FAIL!                      599/599                    1/3          350  "
           "frame_no      349/350\n",
           "[VO]      FAIL!                      599/599                    1/2          350  width"
           "         1/1920\n",
           " First bad stage: [OMXIN] frame 400, frame_no = (no---data)/400\n"
           " Sound besides: [Audio]  frame 200, pcm_data_crc = 1/4cd24eef\n",
           "        350  -    -     -   DVOVO-     -               5  [DVO]      frame_no      "
           "349/350\n",
       })
    EXPECT_TRUE(Contains(shown, line)) << line << shown;
  for (std::size_t at = 0; at < shown.size(); at = shown.find('\n', at) + 1) {
    const std::string line = shown.substr(at, shown.find('\n', at) - at);
    if (line.starts_with('[') && !line.starts_with("[CrossModule]")) {
      EXPECT_LE(line.size(), 136U) << line;
    }
  }
}

TEST_F(CrossModuleReport, IsSentAccordingToTheSettings) {
  const struct {
    const char* destination;
    bool fails;
    int sendPassReport;
    bool sent;
  } kCases[] = {{"0", true, 1, false},
                {"1", false, 0, false},
                {"1", false, 1, true},
                {"1", true, 0, true},
                {"2", true, 0, true}};
  for (const auto& test : kCases) {
    home_.Write("config/report_send_to_USB_TFTP.config", test.destination);
    Play("", [&] { return Set_SendPassReport(test.sendPassReport); });
    home_.Play(101, test.fails ? std::vector{ParseDefect("OMXOUT:drop:500")}
                               : std::vector<player::Defect>());
    const auto run = VerifyAll();
    EXPECT_EQ(run.result, test.fails ? 1 : 0);
    EXPECT_EQ(Contains(run.output, "[Send_Report_File]"), test.sent)
        << test.destination << test.fails << test.sendPassReport;
  }
}

TEST_F(CrossModuleReport, OverwritesNoOtherReport) {
  home_.Write("config/report_send_to_USB_TFTP.config", "2\n");
  home_.Play(101, {ParseDefect("VO:garble:300")});
  std::string sent;
  for (int round = 1; round <= 10; ++round) {
    const auto run = VerifyAll();
    std::string number;
    if (round > 1) number.append("_").append(std::to_string(round));
    EXPECT_TRUE(Contains(StoredReport(number), "[VO]      FAIL!")) << round;
    EXPECT_TRUE(
        Contains(run.output, "report_101-h264-FrtChg_0315_142501" + number + ".txt 10.0.0.2\n"))
        << run.output;
    EXPECT_EQ(Get_Report_Name(kReportArchive, false),
              "report_101-h264-FrtChg_0315_142501" + number + ".tar.gz");
  }
}

TEST_F(CrossModuleReport, IsNotSentIfItWasNotStored) {
  home_.Write("config/report_send_to_USB_TFTP.config", "3\n");
  home_.Play(101, {ParseDefect("VO:garble:300")});
  const std::string path = ReportPath();
  const struct {
    const char* what;
    std::function<int(const std::string& command)> shell;
    const char* copy;
  } kFaults[] = {
      {"no space to move it",
       [&](const std::string& command) {
         return command.ends_with(path) ? 1 : crossmodule::RunForReal(command);
       },
       kTemporaryReport},
      {"emptied by the cleaning",
       [&](const std::string& command) {
         if (command.ends_with(".tmp /tmp/cross_module/report.verify.tmp.txt"))
           return crossmodule::RunForReal("> /tmp/cross_module/report.verify.tmp.txt");
         return crossmodule::MovesAReport(command) ? crossmodule::RunForReal(command) : 0;
       },
       "/tmp/cross_module/report.verify.tmp.txt.Orig"},
  };
  for (const auto& fault : kFaults) {
    std::filesystem::remove(path);
    scripted::OnCommand(fault.shell);
    const std::string shown = WithoutColours(VerifyAll().output);
    EXPECT_TRUE(Contains(shown, "ERROR: the report is not in " + path +
                                    ", it is not sent, a copy is in " + fault.copy + "\n"))
        << fault.what << shown;
    EXPECT_FALSE(Contains(shown, "[Send_Report_File]")) << fault.what;
    EXPECT_FALSE(Contains(shown, "DONE. report:")) << fault.what;
    EXPECT_TRUE(Contains(scripted::ReadFile(fault.copy), "[VO]  "));
  }
}

TEST_F(CrossModuleReport, ShowsNoOlderDumpsOfARejectedRun) {
  home_.Play(101, {ParseDefect("vdec:corrupt:200")});
  for (const CM_Module& module : ModuleTypeList())
    std::filesystem::rename(*module.dumpPath, *module.dumpPath + ".old");
  Play("", [] { return Verify_All_Modules(Dumps::kOfARefusedRun), 0; });
  for (const CM_Module& module : ModuleTypeList())
    std::filesystem::rename(*module.dumpPath + ".old", *module.dumpPath);
  const auto run = Play("", [] { return Print_Verify_Result() ? 0 : 1; });
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(
      Contains(WithoutColours(run.output),
               "[VDEC]    FAIL!              (no---data)/599                    0/0         "
               "   -  -             (no---data)  not run\n"))
      << run.output;
  EXPECT_FALSE(Contains(run.output, "First bad stage")) << "no stage failed";
  EXPECT_FALSE(Contains(run.output, "damaged")) << "causes of an older run";
}

TEST_F(CrossModuleReport, ContainsTheAvSyncOfItsCase) {
  Set_Current_TestCase(501);
  home_.Play(501, {});
  EXPECT_EQ(Play("", [] { return CMplaybackTestCase::CMplayback_Verify_AVsync(nullptr); }).result,
            0);
  home_.Play(501, {ParseDefect("Audio:late:0:21")});
  const auto run = VerifyAll();
  EXPECT_EQ(run.result, 1) << "every stage passed";
  const std::string report =
      scripted::ReadFile(home_.Path() + "report/report_501-avSync_0315_142501.txt");
  EXPECT_TRUE(Contains(report, "[Audio]   PASS"));
  EXPECT_TRUE(
      report.ends_with("\nFAIL: 10 of 10 flashes outside the tolerance\n"
                       " First bad stage: [OMXIN] or [Audio], the sound 21 ms late\n"))
      << report;
  EXPECT_TRUE(Contains(WithoutColours(run.output), "AV sync: FAIL, 10 of 10 flashes outside"));

  home_.Play(501, {});
  EXPECT_EQ(VerifyAll().result, 0);
  home_.Play(501, {ParseDefect("Audio:change:300:pcm_data_crc=1")});
  EXPECT_EQ(VerifyAll().result, 1) << "passing A/V sync does not hide a failed stage";
}

TEST_F(CrossModuleReport, ReportsWriteErrors) {
  home_.Play(101, {});
  std::filesystem::create_directories(kTemporaryReport);
  const std::size_t commandsBefore = scripted::Commands().size();
  const auto run = VerifyAll();
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, std::string("ERROR: can not write ") + kTemporaryReport));
  EXPECT_TRUE(Contains(run.output, "[Audio]   \033[1;32mPASS"));
  EXPECT_EQ(scripted::Commands().size(), commandsBefore);
}

TEST_F(CrossModuleReport, ReportsTheDemoClipInASeparateLine) {
  const auto demo = [&](const std::vector<player::Defect>& defects) {
    home_.Play(101, defects);
    Get_Current_TestCase()->contentFile = "goodDemo.cfg";
    return WithoutColours(VerifyAll().output);
  };
  const std::string title =
      "[CrossModule][Print_Verify_Result] (VIP) Start Test \n[CrossModule][Print_Verify_Result] ";
  EXPECT_TRUE(Contains(demo({}), title + "VO(0) PASS -> scaler(0) PASS\n"));
  EXPECT_TRUE(Contains(demo({ParseDefect("Scaler:change:300:crc_od")}),
                       title + "VO(0) PASS -> scaler(1) FAIL\n"));
}

TEST_F(CrossModuleReport, AnalysesTheAvSyncOfTheDumps) {
  home_.Play(501, {});
  Set_Current_TestCase(501);
  const auto analyse = [] { return Play("", [] { return Verify_AVsync() ? 0 : 1; }); };
  const auto clip = analyse();
  EXPECT_EQ(clip.result, 0);
  EXPECT_TRUE(Contains(clip.output, "| frame     100   0ms ")) << clip.output;
  const std::string content = Get_Current_TestCase()->contentFile;
  Get_Current_TestCase()->contentFile = "goodDemo.cfg";
  EXPECT_TRUE(Contains(analyse().output, "| frame     100   -10ms "));
  Get_Current_TestCase()->contentFile = content;
  EXPECT_TRUE(Contains(analyse().output, "| frame     100   0ms "))
      << "the offset belongs to the demo clip";
  std::filesystem::remove(home_.Path() + "dump_tmp/dump-501-avSync-Audio.txt");
  const auto silent = analyse();
  EXPECT_EQ(silent.result, 1);
  EXPECT_TRUE(Contains(silent.output, "dump-501-avSync-Audio.txt\n")) << silent.output;
}

TEST_F(CrossModuleReport, RejectsAnUnknownTestCase) {
  Set_Current_TestCase(999);
  EXPECT_EQ(Play("", [] { return Verify_AVsync() ? 1 : 0; }).result, 0);
  for (const auto& run : {Play("", [] { return Verify_Module(MODULE_VO), 0; }),
                          Play("", [] { return Print_Verify_Result() ? 1 : 0; })}) {
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(run.output.ends_with("ERROR: unknown test case\n")) << run.output;
  }
}

TEST_F(CrossModuleReport, VerifiesAStageInSteps) {
  home_.Play(101, {ParseDefect("VDEC:change:300:crc")});
  const CM_Module& vdec = *Get_Module_by_ID(MODULE_VDEC);
  const std::string dump = home_.Path() + "dump_tmp/dump-101-h264-FrtChg-VDEC.txt";
  const std::string golden = home_.Path() + "golden_data/playback/dump-101-h264-FrtChg-VDEC.txt";
  const std::string tag = "\033[1;33m[CrossModule][Verify_Module] \033[0;37m";
  const std::string start =
      tag + "=======> Verify: [VDEC]  \n" + tag + "Verify the Test Case  : 101-h264-FrtChg\n";
  const std::string detail =
      "\033[1;33m[CrossModule][Print_RWA_Verify_Result] \033[0;37m[VDEC]  verify result ==>  "
      "\033[0;32;31mFAIL, error field count:1\033[m\n"
      "\033[1;33m[CrossModule][Print_RWA_Verify_Result] \033[0;37m    0  frame   300,field:    3,"
      "dump:  edce52ee,golden:  edce52ef\n";
  const auto verify = [] { return Play("", [] { return Verify_Module(MODULE_VDEC), 0; }).output; };

  const std::string found = start + tag + "Dump   file: " + dump + " exist\n" + tag +
                            "Goldan file: " + golden + " exist\n";
  const std::string single = verify();
  EXPECT_TRUE(single.starts_with(found)) << single;
  EXPECT_TRUE(single.ends_with(detail)) << single;
  EXPECT_EQ(vdec.result->wrongFields.size(), 1U);

  for (const int level : {0, 1}) {
    Set_Debug_Level(level);
    const auto all = Play("", [] { return Verify_All_Modules(), 0; });
    EXPECT_EQ(Contains(all.output, detail), level == 1);
    Set_Debug_Level(0);
    EXPECT_TRUE(verify().ends_with(detail)) << "verifying all has ended";
  }

  std::filesystem::remove(golden);
  EXPECT_EQ(verify(), start + tag + "Dump   file: " + dump + " exist\n" + tag +
                          "\033[0;32;31mERROR: Goldan file: " + golden + " NOT exist!\n");
  std::filesystem::remove(dump);
  EXPECT_EQ(verify(), start + tag + "\033[0;32;31mERROR: Dump file: " + dump + " NOT exist!\n");
  EXPECT_EQ(vdec.result->wrongFields.size(), 1U) << "the previous result is kept";
  Play("", [] { return Verify_All_Modules(), 0; });
  EXPECT_TRUE(vdec.result->columnNames.empty()) << "verifying all clears it";

  const auto unknown = Play("", [] { return Verify_Module(static_cast<MODULE_TYPE>(64)), 0; });
  EXPECT_TRUE(unknown.output.ends_with(tag + "ERROR: unknown module: 64\n")) << unknown.output;
}

TEST(DetailedVerdict, KeepsItsLineAndReportsWhyItDidNotPass) {
  const std::string tag = "\033[1;33m[CrossModule][Print_RWA_Verify_Result] \033[0;37m";
  CM_Verify_Result result(MODULE_AUDIO);
  result.columnNames = {"frame_no"};
  result.coverage.compared = 899;
  const auto print = [&] { return Print_RWA_Verify_Result(&result), 0; };
  EXPECT_EQ(Play("", print).output, tag + "[Audio] verify result ==>  \033[0;32;32mPASS\033[m\n");
  result.addVerifyStatus(15);
  EXPECT_EQ(Play("", print).output,
            tag + "[Audio] verify result ==>  \033[0;32;32mPASS\033[m (verify status 15)\n" + tag +
                "\033[0;32;31mnot passed: too little to compare\033[m\n");
  result.verifyStatus = 0;
  result.coverage = {0, 899, 0};
  EXPECT_EQ(Play("", print).output, tag + "[Audio] verify result ==>  \033[0;32;32mPASS\033[m\n" +
                                        tag + "\033[0;32;31mnot passed: compared 0 of 899\033[m\n");
}

}  // namespace
