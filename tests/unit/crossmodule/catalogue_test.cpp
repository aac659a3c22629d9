// The catalogue: cases and stages, the names made of them, and values kept in files.
#include "TestCaseCatalogue.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Settings.h"
#include "TemporaryHome.h"
#include "VerifyResult.h"

namespace {

using scripted::Play;

constexpr char kUserFile[] = "config/user_add_testcase.cfg";
constexpr char kOverwriteFile[] = "golden_overwrite.config";

class Catalogue : public TemporaryHome {
 protected:
  /// Builds both lists and returns the output.
  static std::string Build() {
    const auto run = Play("", [] {
      Init_Module_List();
      return Init_TestCase_List();
    });
    EXPECT_EQ(run.result, 0);
    return run.output;
  }
  static const CM_TestCase& Case(TEST_CASE_TYPE type) {
    for (const CM_TestCase& testCase : TestCaseList()) {
      if (testCase.type == type) return testCase;
    }
    ADD_FAILURE() << "no case " << type;
    return TestCaseList().front();
  }
};

class CrossModuleCatalogue : public AfterReboot {
 protected:
  CrossModuleCatalogue() { Play("", Init_TestCase_List); }
};

TEST_F(CrossModuleCatalogue, NamesFilesByCaseAndStage) {
  SetCrossModuleHome("/data/cross_module/");
  const CM_TestCase& first = TestCaseList()[1];
  EXPECT_EQ(first.Get_TestCase_Name(), "101-h264-FrtChg");
  EXPECT_EQ(first.Get_Dump_Backup_Path(MODULE_OMXIN),
            "/data/cross_module/dump_tmp/dump-101-h264-FrtChg-OMXIN.txt");
  EXPECT_EQ(first.Get_Golden_Path(MODULE_VDEC),
            "/data/cross_module/golden_data/playback/dump-101-h264-FrtChg-VDEC.txt");
  Play("", [] { return Set_FreeRun_Mode(1); });
  EXPECT_EQ(
      first.Get_Golden_Path(MODULE_VDEC),
      "/data/cross_module/golden_data/playback/free_run_golden/dump-101-h264-FrtChg-VDEC.txt");
  EXPECT_EQ(first.Get_Dump_Backup_Path(MODULE_VDEC),
            "/data/cross_module/dump_tmp/dump-101-h264-FrtChg-VDEC.txt");
}

TEST_F(Catalogue, FileNamesAreUniqueForAllCasesAndStages) {
  Build();
  std::set<std::string> names;
  for (const CM_TestCase& testCase : TestCaseList()) {
    for (const CM_Module& module : ModuleTypeList()) {
      names.insert(testCase.Get_Dump_Backup_Name(module.type));
    }
  }
  EXPECT_EQ(names.size(), 13U * 7U);
  // Golden data use the names that differ from the conversions.
  for (const char* name :
       {"dump-601-hdr10-sdr-Scaler.txt", "dump-602-hlg-hdr10-Audio.txt",
        "dump-603-hlg-sdr-OMXOUT.txt", "dump-604-sdr-hlg-DVO.txt", "dump-501-avSync-VO.txt"}) {
    EXPECT_TRUE(names.contains(name)) << name;
  }
}

TEST_F(Catalogue, PrintsRightAlignedCasesOnALeftAlignedStream) {
  setenv("CVN_HTTP_CONTENT_SERVER", "server", 1);
  Write("config/selectHttpUsb.cfg", "3\n");
  Build();
  std::ostringstream out;
  out << std::left << std::hex << Case(102) << '|' << std::setw(4) << 10 << '|';
  EXPECT_EQ(out.str(),
            "102          h264-ResChg\033[0;37m path: \033[1;30m"
            "http://server/cross_module_content_v1/[R102]h264-ResChg.ts\033[0;37m|a   |");
}

TEST_F(Catalogue, UserCaseIsListedAtTheNextStart) {
  InAnEarlierProgram([] {
    Build();
    EXPECT_EQ(Set_User_Add_TestCase("old", 0, "old.ts"), 0);
    EXPECT_EQ(Set_User_Add_TestCase("my clip", 1, "sub/my clip.ts"), 0);
    EXPECT_EQ(TestCaseList().size(), 13U);
  });
  EXPECT_EQ(Text(kUserFile), "my clip\n1\nsub/my clip.ts\n");
  Build();
  ASSERT_EQ(TestCaseList().size(), 14U);
  const CM_TestCase& user = TestCaseList().back();
  EXPECT_EQ(user.Get_TestCase_Name(), "900-my clip");
  EXPECT_EQ(user.contentFile, "sub/my clip.ts");
  EXPECT_EQ(user.hdrFile, 1);
  EXPECT_EQ(Build(), "");
  EXPECT_EQ(TestCaseList().size(), 14U) << "the list is built only once";
  EXPECT_EQ(ModuleTypeList().size(), 7U);
}

TEST_F(Catalogue, ReadsIncompleteUserCaseFiles) {
  const struct {
    const char* text;
    const char* name;
    const char* file;
    int32_t hdr;
  } kCases[] = {
      {"clip\nyes\nclip.ts\n", "900-clip", "clip.ts", 0},
      {"clip\n1x\nclip.ts\nmore\n", "900-clip", "clip.ts", 1},
      {"clip\n\nclip.ts", "900-clip", "clip.ts", 0},
      {"clip\n", "900-clip", "", 0},
      {"", "900-", "", 0},
  };
  for (const auto& c : kCases) {
    TestCaseList().clear();
    Write(kUserFile, c.text);
    Get_User_Add_TestCase();
    ASSERT_EQ(TestCaseList().size(), 1U) << c.text;
    EXPECT_EQ(TestCaseList()[0].Get_TestCase_Name(), c.name) << c.text;
    EXPECT_EQ(TestCaseList()[0].contentFile, c.file) << c.text;
    EXPECT_EQ(TestCaseList()[0].hdrFile, c.hdr) << c.text;
  }
}

TEST_F(Catalogue, EmptyOverwriteFileIsAcceptedWithoutWarning) {
  Write(kOverwriteFile, "");
  EXPECT_EQ(Build().find("skipped"), std::string::npos);
  for (const CM_TestCase& testCase : TestCaseList()) EXPECT_EQ(testCase.goldenOverwritten, 0);
}

TEST_F(Catalogue, OverwriteLinesApplyToTheCasesInOrder) {
  Write(kOverwriteFile, "0\n1\n");
  EXPECT_EQ(Build().find("skipped"), std::string::npos);
  for (const CM_TestCase& testCase : TestCaseList()) {
    EXPECT_EQ(testCase.goldenOverwritten, testCase.type == 102 ? 1 : 0) << testCase.type;
  }
}

TEST_F(Catalogue, MalformedOverwriteLinesAreReportedAndExtraOnesIgnored) {
  Write(kOverwriteFile, "1\nyes\n\n1 x\n99999999999\n1\n0\n0\n0\n0\n0\n1\nsurplus\n1\n");
  const std::string output = Build();
  std::string told;
  for (const char* line : {"2 is not a number, skipped: yes\n", "3 is not a number, skipped: \n",
                           "5 is not a number, skipped: 99999999999\n"}) {
    told += Message("Init_TestCase_List", std::string(kOverwriteFile) + " line " + line);
  }
  EXPECT_TRUE(output.ends_with(told)) << output;
  std::string flags;
  for (const CM_TestCase& testCase : TestCaseList()) {
    flags += std::to_string(testCase.goldenOverwritten);
  }
  EXPECT_EQ(flags, "0100101000001");
}

TEST_F(Catalogue, EachStageHasAResultAndADump) {
  Build();
  std::set<const void*> results;
  for (const CM_Module& module : ModuleTypeList()) {
    results.insert(module.result);
    EXPECT_EQ(module.result->moduleType, module.type);
    EXPECT_EQ(Get_Module_by_ID(module.type), &module);
  }
  EXPECT_EQ(results.size(), 7U);
  EXPECT_EQ(*Get_Module_by_ID(MODULE_OMXOUT)->dumpPath, "/tmp/cross_module/dump_omx_output.txt");
  EXPECT_EQ(*Get_Module_by_ID(MODULE_VO)->dumpPath, "/tmp/cross_module/dump_vo.txt");
  EXPECT_EQ(*Get_Module_by_ID(MODULE_AUDIO)->dumpPath, "/tmp/cross_module/dump_audio.txt");
  for (const int unknown : {64, 0, 3}) {
    const auto run = Play("", [unknown] {
      return Get_Module_by_ID(static_cast<MODULE_TYPE>(unknown)) == nullptr ? 1 : 0;
    });
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.output, Message("Get_Module_by_ID", "Error! Can not find the module with ID:" +
                                                          std::to_string(unknown) + "\n"));
  }
}

TEST_F(Catalogue, MaskTextHasAColumnForEachStage) {
  Build();
  const struct {
    int mask;
    const char* text;
  } kCases[] = {
      {0, "-    -     -   -  - -     -    "},
      {4, "-    -     VDEC-  - -     -    "},
      {4 | 16 | 32 | 64, "-    -     VDEC-  VOScaler-    "},
      {1 | 2 | 8 | 128, "OMXINOMXOUT-   DVO- -     Audio"},
      {-1, "OMXINOMXOUTVDECDVOVOScalerAudio"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Module_Type_Inte_To_String(c.mask), c.text) << c.mask;
}

TEST_F(CrossModuleCatalogue, CurrentCaseIsStoredForDriversAndTheNextStart) {
  EXPECT_EQ(Get_Current_TestCase()->type, 101) << "after a reboot";
  EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "101\n");
  EXPECT_EQ(Set_Current_TestCase(604), 0);
  EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "604\n");
  WriteVolatile("file_format.cfg", "102\n");
  EXPECT_EQ(Get_Current_TestCase()->type, 604) << "this program uses its own value";
}

TEST_F(CrossModuleCatalogue, UnknownCurrentCaseIsKept) {
  InAnEarlierProgram([] { Set_Current_TestCase(999); });
  EXPECT_FALSE(IsKnown(Get_Current_TestCase()));
  EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "999\n");
}

TEST_F(CrossModuleCatalogue, CurrentCaseZeroIsReadAgain) {
  for (const char* text : {"0\n", "none\n", ""}) {
    WriteVolatile("file_format.cfg", text);
    ASSERT_TRUE(IsKnown(Get_Current_TestCase()));
    EXPECT_EQ(Get_Current_TestCase()->name, "unknown");
    EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "0\n");
  }
  WriteVolatile("file_format.cfg", "102 and more\n");
  EXPECT_EQ(Get_Current_TestCase()->type, 102);
}

}  // namespace
