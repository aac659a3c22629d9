// Settings, the user's test case, the list of overwritten golden files and the file of comparison
// settings, as a crash may leave them.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "TestCase/CrossModule/stages/src/Settings.h"
#include "TestCase/CrossModule/stages/src/TestCaseCatalogue.h"
#include "TestCase/CrossModule/verify/src/ColumnCompare.h"

namespace {

/// The cross-module home, with "/".
const std::string& Home() {
  static const std::string home = [] {
    std::string directory = fuzz::NewDirectory() + "/";
    std::filesystem::create_directory(directory + "config");
    return directory;
  }();
  return home;
}

void ReadCatalogue(std::string_view text) {
  fuzz::WriteFile(Home() + "config/user_add_testcase.cfg", text);
  fuzz::WriteFile(Home() + "golden_overwrite.config", text);
  ReadTestCaseList();
  for (const CM_TestCase& testCase : TestCaseList()) testCase.Get_TestCase_Name();
  const CM_TestCase& last = TestCaseList().back();
  fuzz::Plant("user's test case", last.type > 604 && last.hdrFile == 2);
  fuzz::Plant("overwritten golden files", TestCaseList()[3].goldenOverwritten > 1);
}

void ReadSettings(std::string_view text) {
  fuzz::WriteFile(Home() + "config/report_send_to_USB_TFTP.config", text);
  fuzz::WriteFile(Home() + "config/customized_test_num.cfg", text);
  Send_Report_Type_To_String(Get_Report_Send_To());
  Get_Customized_TestCase_List();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::BeQuiet();
  SetCrossModuleHome(Home());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ReadCatalogue(text);
  ReadSettings(text);
  const fuzz::MemoryFile file(text);
  _VOUT_INFO_COMPARE_SETTING setting;
  ReadVoutSetting(file.Path(), setting);
  fuzz::Plant("comparison settings", setting.errTolerance_sec > 5);
  return 0;
}
