// Files that are truncated, of another kind, or not regular files, in every place that reads them:
// no reader hangs or crashes, and no stage passes unless its rows are complete.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "AvSync.h"
#include "ColumnCompare.h"
#include "Emulated.h"
#include "ModuleVerification.h"
#include "Settings.h"
#include "TemporaryHome.h"
#include "TestCaseCatalogue.h"
#include "VerifyResult.h"

namespace {

namespace fs = std::filesystem;

const unsigned kLimitS = test::IsUnderValgrind() ? 1200 : 60;  // a reader that hangs is killed

std::string Text(const std::string& path) {
  return scripted::ReadFile(path);
}

/// The text with `change` applied to the row in the middle.
std::string InTheMiddle(const std::string& text,
                        const std::function<std::string(const std::string&)>& change) {
  const auto begin = text.find('\n', text.size() / 2) + 1;
  const auto end = std::min(text.find('\n', begin), text.size());
  return text.substr(0, begin) + change(text.substr(begin, end - begin)) + text.substr(end);
}

std::string WithCarriageReturns(const std::string& text) {
  std::string changed;
  for (const char c : text) changed += c == '\n' ? "\r\n" : std::string(1, c);
  return changed;
}

struct Fault {
  const char* name;
  std::function<std::string(const std::string& text)> text;  // the file's content instead
  std::function<int(const char* path)> make;                 // or what replaces the file
  // Stages that pass if only the dump is broken, and if the golden file is broken too.
  const char* passing = "";
  const char* bothPassing = "";
};

const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {"half-written last row",
       [](const std::string& t) {
         return t.substr(0, (t.size() + t.rfind('\n', t.size() - 2)) / 2);
       },
       {}},
      {"empty", [](const std::string&) { return ""; }, {}},
      {"title only", [](const std::string& t) { return t.substr(0, t.find('\n') + 1); }, {}},
      {"one huge line",
       [](const std::string& t) {
         std::string huge = t.substr(0, t.find('\n') + 1);
         for (int i = 0; i < 1'000'000; ++i) huge += "1,2,";
         return huge;
       },
       {}},
      {"one huge number", [](const std::string&) { return std::string(4'000'000, '9'); }, {}},
      {"binary zeros", [](const std::string&) { return std::string(100'000, '\0'); }, {}},
      {"binary zeros in the middle",
       [](const std::string& t) {
         return InTheMiddle(t, [](const std::string& r) { return std::string(4096, '\0') + r; });
       },
       {}},
      {"one column fewer",
       [](const std::string& t) {
         return InTheMiddle(t, [](const std::string& r) { return r.substr(0, r.rfind(',')); });
       },
       {}},
      {"one extra column",
       [](const std::string& t) {
         return InTheMiddle(t, [](const std::string& r) { return r + ",7"; });
       },
       {},
       "DVO Audio ",
       "OMXIN OMXOUT DVO Audio "},
      {"carriage returns",
       WithCarriageReturns,
       {},
       "VDEC DVO VO Scaler Audio ",
       "OMXIN OMXOUT VDEC DVO VO Scaler Audio "},
      {"unrelated text", [](const std::string&) { return "hello world\nand\nmore\n"; }, {}},
      {"a pipe without a writer", {}, [](const char* path) { return mkfifo(path, 0600); }},
      {"a directory", {}, [](const char* path) { return mkdir(path, 0700); }},
      {"an endless device", {}, [](const char* path) { return symlink("/dev/zero", path); }},
      {"a dangling link", {}, [](const char* path) { return symlink("/nowhere/x", path); }},
      {"a file that cannot be read",
       {},
       [](const char* path) { return symlink("/proc/self/mem", path); }},
  };
  return faults;
}

void Break(const std::string& path, const Fault& fault) {
  const std::string text = Text(path);
  fs::remove_all(path);
  if (fault.make) {
    ASSERT_EQ(fault.make(path.c_str()), 0) << path;
  } else {
    std::ofstream(path, std::ios::binary) << fault.text(text);
  }
}

void InAProgram(const std::function<void()>& body) {
  InAnEarlierProgram([&] {
    alarm(kLimitS);
    body();
  });
}

class CrossModuleBroken : public AfterReboot {
 protected:
  CrossModuleBroken() { alarm(kLimitS); }
  ~CrossModuleBroken() override { alarm(0); }

  /// Verifies all stages of the case and returns the names of those that passed.
  static std::string Passing() {
    std::ostringstream passing;
    scripted::Play("", [&] {
      Verify_All_Modules();
      for (const CM_Module& module : ModuleTypeList()) {
        std::ostringstream table;
        module.result->Init_Frame_Count();
        if (module.result->PrintSimpleTable(table))
          passing << Module_Type_To_String_Simple(module.type) << ' ';
      }
      return 0;
    });
    return passing.str();
  }
};

TEST_F(CrossModuleBroken, NoStagePasses) {
  scripted::Play("", [] { return Init_TestCase_List(), Set_Current_TestCase(101); });
  const CM_TestCase& testCase = *Get_Current_TestCase();
  for (const Fault& fault : Faults()) {
    const struct {
      const char* name;
      bool dump;
      bool golden;
    } kSides[] = {{"dump", true, false}, {"golden", false, true}, {"both", true, true}};
    for (const auto& side : kSides) {
      SCOPED_TRACE(std::string(fault.name) + ", " + side.name);
      fs::remove_all(Home() + "dump_tmp");
      fs::remove_all(Home() + "golden_data");
      PutDumps(101);
      ASSERT_EQ(Passing(), "OMXIN OMXOUT VDEC DVO VO Scaler Audio ");
      for (const CM_Module& module : ModuleTypeList()) {
        if (side.dump) Break(testCase.Get_Dump_Backup_Path(module.type), fault);
        if (side.golden) Break(testCase.Get_Golden_Path(module.type), fault);
      }
      EXPECT_EQ(Passing(), side.dump && side.golden ? fault.bothPassing : fault.passing);
    }
  }
}

TEST_F(CrossModuleBroken, NoAvSyncPasses) {
  scripted::Play("", [] { return Init_TestCase_List(), Set_Current_TestCase(501); });
  const auto passes = [] {
    return scripted::Play("", [] { return Verify_AVsync() ? 1 : 0; }).result;
  };
  for (const Fault& fault : Faults()) {
    for (const MODULE_TYPE module : {MODULE_VO, MODULE_SCALER, MODULE_AUDIO}) {
      SCOPED_TRACE(std::string(fault.name) + ", " + Module_Type_To_String_Simple(module));
      fs::remove_all(Home() + "dump_tmp");
      PutDumps(501);
      ASSERT_EQ(passes(), 1);
      Break(*Get_Module_by_ID(module)->dumpPath, fault);
      const auto name = std::string(" ") + Module_Type_To_String_Simple(module) + " ";
      EXPECT_EQ(passes(), (std::string(" ") + fault.passing).find(name) != std::string::npos);
    }
  }
}

/// A setting, how it is read, and its value if its file is not a regular file, if it is empty or
/// contains no valid value, and if it contains "1" with carriage returns at line ends.
struct Setting {
  const char* file;
  std::function<std::string()> get;
  const char* missing;
  const char* senseless;
  const char* one;
};

TEST_F(CrossModuleBroken, SettingsAreDefaultsOrZero) {
  const Setting kSettings[] = {
      {"config/report_send_to_USB_TFTP.config", [] { return std::to_string(Get_Report_Send_To()); },
       "3", "0", "1"},
      {"config/customized_test_num.cfg", Get_Customized_TestCase_List, "-", "", "1"},
      {"config/tftp_ip.cfg", Get_TFTP_IP, "typed", "", "1"},
      {"config/timeStamp.config", Get_Test_Timestamp, "-", "", "1"},
      {"config/auto_send_dumpData_to_TFTP.config",
       [] { return std::to_string(Get_Auto_Send_DumpData()); }, "0", "0", "1"},
      {"config/selectHttpUsb.cfg", [] { return std::to_string(Get_USB_HTTP_Mode()); }, "1", "0",
       "1"},
  };
  for (const Setting& setting : kSettings) {
    for (const Fault& fault : Faults()) {
      SCOPED_TRACE(std::string(setting.file) + ", " + fault.name);
      fs::remove_all(Home() + setting.file);
      Write(setting.file, "1\n");
      Break(Home() + setting.file, fault);
      const bool crlf = std::string(fault.name) == "carriage returns";
      const bool empty = std::string(fault.name) == "empty";
      if (!fault.make && !crlf && !empty) continue;
      InAProgram([&] {
        std::string value;
        scripted::Play("typed\n", [&] { return value = setting.get(), 0; });
        EXPECT_EQ(value, fault.make ? setting.missing : crlf ? setting.one : setting.senseless);
      });
    }
  }
}

TEST_F(CrossModuleBroken, UnsafeShellWordsAreRejected) {
  const struct {
    const char* file;
    std::string text;
    std::function<std::string()> get;
    const char* value;
  } kCases[] = {
      {"config/tftp_ip.cfg", "10.0.0.9; reboot\n", Get_TFTP_IP, "-"},
      {"config/timeStamp.config", "0315 / x\n", Get_Test_Timestamp, "-"},
      {"config/user_add_testcase.cfg", "my / clip\n0\nfile.ts\n",
       [] { return Init_TestCase_List(), std::to_string(TestCaseList().size()); }, "13"},
      {"config/user_add_testcase.cfg", "clip\n1\n$(reboot)\n",
       [] { return Init_TestCase_List(), std::to_string(TestCaseList().size()); }, "13"},
      {"config/user_add_testcase.cfg", "clip\r\n1\r\nfile.ts\r\n",
       [] { return Init_TestCase_List(), TestCaseList().back().displayName; }, "clip"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    Write(c.file, c.text);
    InAProgram([&] {
      std::string value;
      scripted::Play("", [&] { return value = c.get(), 0; });
      EXPECT_EQ(value, c.value);
    });
  }
}

TEST_F(CrossModuleBroken, OtherReadersOfSettingsReturn) {
  for (const Fault& fault : Faults()) {
    SCOPED_TRACE(fault.name);
    for (const char* file : {"config/user_add_testcase.cfg", "golden_overwrite.config", "vout"}) {
      fs::remove_all(Home() + file);
      Write(file, "1\n0\nclip.ts\n");
      Break(Home() + file, fault);
    }
    InAProgram([&] {
      scripted::Play("", [&] {
        Init_TestCase_List();
        _VOUT_INFO_COMPARE_SETTING setting;
        ReadVoutSetting(Home() + "vout", setting);
        EXPECT_EQ(setting.errTolerance_sec, 2);
        return 0;
      });
      EXPECT_GE(TestCaseList().size(), 13U);
    });
  }
}

TEST_F(CrossModuleBroken, UnwritableFilesAreReportedExceptSettings) {
  scripted::Play("", Init_TestCase_List);
  fs::remove_all(Home() + "config");
  const auto added = scripted::Play("", [] { return Set_User_Add_TestCase("clip", 0, "clip.ts"); });
  EXPECT_EQ(crossmodule::WithoutColours(added.output),
            "[CrossModule][Set_User_Add_TestCase] ERROR: can not write " + Home() +
                "config/user_add_testcase.cfg\n");
  ASSERT_EQ(symlink("/dev/full", (Home() + "golden_overwrite.config").c_str()), 0);
  const auto kept = scripted::Play("", [] { return Keep_Golden_Overwrite(), 0; });
  EXPECT_NE(kept.output.find("golden_overwrite.config"), std::string::npos);
}

}  // namespace
