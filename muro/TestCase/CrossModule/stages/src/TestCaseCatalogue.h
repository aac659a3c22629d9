// The catalogue: media files to play, the stages that dump them, and the names derived from both.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "Stage.h"

class CM_Verify_Result;

/// Number of a test case. The hundreds digit is the feature; 0 is "unknown", 900 is the user's own.
using TEST_CASE_TYPE = int32_t;

inline constexpr TEST_CASE_TYPE kUnknownTestCase = 0;
inline constexpr TEST_CASE_TYPE kFirstTestCase = 101;
inline constexpr TEST_CASE_TYPE kAvSyncTestCase = 501;
inline constexpr TEST_CASE_TYPE kUserTestCase = 900;

/// One media file that is played end to end.
class CM_TestCase {
 public:
  CM_TestCase(TEST_CASE_TYPE number, std::string caseName, std::string file, int32_t hdr);

  /// "101"
  std::string Get_TestCase_Number() const;
  /// "101-h264-FrtChg"
  std::string Get_TestCase_Name() const;
  /// "dump-101-h264-FrtChg-VDEC.txt"
  std::string Get_Dump_Backup_Name(MODULE_TYPE module) const;
  /// Path at which the stage's dump of this case is stored.
  std::string Get_Dump_Backup_Path(MODULE_TYPE module) const;
  /// True for the demo clip, whose sound is early and whose outcome is checked in a separate line.
  bool IsDemo() const { return contentFile == "goodDemo.cfg"; }
  /// Golden file of the stage; free-run mode has a separate set.
  std::string Get_Golden_Path(MODULE_TYPE module) const;

  TEST_CASE_TYPE type;
  std::string name;
  std::string contentFile;  // relative to the content home
  std::string displayName;  // used in all printed texts and file names
  int32_t hdrFile;          // 1: high dynamic range
  int32_t reserved = 0;
  int32_t goldenOverwritten = 0;  // 1: the user has replaced the golden data
};

/// Writes number, display name and the content's path, with colours.
std::ostream& operator<<(std::ostream& out, const CM_TestCase& testCase);

/// A stage with its dump and the result of its last verification.
struct CM_Module {
  MODULE_TYPE type;
  CM_Verify_Result* result;
  const std::string* dumpPath;
};

/// The test cases that every board has, entry 0 "unknown". Reads and changes nothing.
std::vector<CM_TestCase> BuiltInTestCases();

/// Reads the list of test cases: those that every board has, the user's, and which golden files
/// were overwritten.
void ReadTestCaseList();
/// Builds the list of test cases once. Returns 0.
int Init_TestCase_List();
/// Builds the list of stages once.
void Init_Module_List();

/// All test cases in catalogue order, entry 0 "unknown", and all stages. Built by the functions
/// above.
std::vector<CM_TestCase>& TestCaseList();
std::vector<CM_Module>& ModuleTypeList();

/// Appends the user's own test case if there is one.
void Get_User_Add_TestCase();
/// Stores a test case of the user, which is added to the catalogue at the next start. Returns 0.
int Set_User_Add_TestCase(const std::string& name, int hdr, const std::string& file);

/// The stage's record; null, after a message, for an unknown stage.
CM_Module* Get_Module_by_ID(MODULE_TYPE id);

/// The names of the stages in a mask, each in a separate column; "-" for a stage that is not in it.
std::string Module_Type_Inte_To_String(int mask);

/// The test case with a number; the position after the last one if there is none (see `IsKnown`).
CM_TestCase* FindTestCase(TEST_CASE_TYPE type);
/// Makes a test case the current one, also for the drivers. Returns 0.
int Set_Current_TestCase(TEST_CASE_TYPE type);
/// The current test case; the position after the last one if its number is unknown (see `IsKnown`).
CM_TestCase* Get_Current_TestCase();
/// False for the position after the last test case, which must not be dereferenced.
bool IsKnown(const CM_TestCase* testCase);
/// The current test case of a built catalogue; null, after a message of `function`, if its number
/// is unknown.
CM_TestCase* KnownTestCase(const char* function);

/// Stores which test cases have the user's golden data, for the next start.
void Keep_Golden_Overwrite();
