// What the cross-module test remembers: where content comes from, where reports go, and the facts
// of the board. Each setting is the first line of a small text file; a file that is missing means
// the default, one that cannot be written is not told, and the new value holds until the program
// ends.
#pragma once

#include <cstdint>
#include <string>

/// Where the test content is.
enum USB_HTTP_MODE_TYPE : int32_t {
  MODE_USB = 1,
  MODE_EMMC = 2,
  MODE_HTTP = 3,
};

/// Where reports are sent; the first two bits.
enum SEND_REPORT_TO_TYPE : int32_t {
  SEND_REPORT_NONE = 0,
  SEND_REPORT_USB = 1,
  SEND_REPORT_TFTP = 2,
  SEND_REPORT_USB_TFTP = 3,
};

/// Sets the process-wide directories for the board's operating system. Call it before anything else
/// of the cross-module test; later calls do nothing.
void CM_Playback_Init();

/// Directory of settings, golden data and reports, with its closing "/". Tests may move it.
const std::string& CrossModuleHome();
void SetCrossModuleHome(const std::string& home);

/// The text with the cross-module home in the place of every "{home}".
std::string WithHome(const char* text);

/// True when the board was prepared for playback tests: the cross-module home is there. Only the
/// preparation makes it.
bool Check_If_CrossModulePlayback_Env_Setup();

/// Where the USB stick is mounted.
const std::string& UsbMountPoint();

/// Directory or URL of the content, and the player's command up to it. Set by `Init_Content_Path`.
const std::string& ContentHome();
const std::string& PlayerCommandPrefix();

/// Points the two above at a content source. eMMC content that is not there yet is copied from the
/// USB stick. An unknown source is told and changes nothing. Returns 0, or -1 for an unknown
/// source.
int Init_Content_Path(USB_HTTP_MODE_TYPE mode);

/// Content source. Getting it builds the content paths and rewrites the file, at first use.
int Set_USB_HTTP_Mode(USB_HTTP_MODE_TYPE mode);
int Get_USB_HTTP_Mode();

/// Destination of reports (`SEND_REPORT_TO_TYPE`); the file is read at every call.
int Set_Report_Send_To(SEND_REPORT_TO_TYPE to);
int Get_Report_Send_To();
const char* Send_Report_Type_To_String(int to);

/// Free-run mode, 0 or 1. Any other value empties the file and returns -1.
int Set_FreeRun_Mode(int mode);
int Get_FreeRun_Mode();

/// Send the report of a passed test too, 0 or 1. Any other value empties the file and returns -1.
int Set_SendPassReport(int on);
int Get_SendPassReport();

/// Send dumps to the TFTP server after each test, 0 or 1. Any other value empties the file. Returns
/// 0.
int Set_Auto_Send_DumpData(int on);
int Get_Auto_Send_DumpData();

/// Test cases of the customized automatic run; "-" when never set.
int Set_Customized_TestCase_List(const std::string& list);
std::string Get_Customized_TestCase_List();

/// TFTP server's name or address; "-" for none. Asks the operator when it was never set.
std::string Get_TFTP_IP();
/// Asks the operator for the TFTP server until the answer is none or an address, and keeps it.
std::string Set_TFTP_IP_by_User();

/// Whether an address that Get_TFTP_IP() returned names a server.
bool NamesTftpServer(const std::string& address);

/// Time stamp of the test round, "MMDD_HHMMSS"; "-" when there was none.
void Set_Test_Timestamp();
std::string Get_Test_Timestamp();

/// The board's software version: fingerprint and build date, "--" when not to be had.
std::string Get_SW_Version();

/// How much verification prints: 0 or 1. Not kept beyond the program.
void Set_Debug_Level(int level);
int Get_Debug_Level();
