// Settings of the cross-module test: the source of content, the destination of reports, and facts
// about the board. Each setting is the first line of a small text file; a missing file means the
// default, a failed write is not reported, and the new value is valid until the program ends.
#pragma once

#include <cstdint>
#include <string>

/// Where the test content is.
enum USB_HTTP_MODE_TYPE : int32_t {
  MODE_USB = 1,
  MODE_EMMC = 2,
  MODE_HTTP = 3,
};

/// Destination of reports; the first two bits.
enum SEND_REPORT_TO_TYPE : int32_t {
  SEND_REPORT_NONE = 0,
  SEND_REPORT_USB = 1,
  SEND_REPORT_TFTP = 2,
  SEND_REPORT_USB_TFTP = 3,
};

/// Sets the process-wide directories for the board's operating system. To be called before anything
/// else of the cross-module test; later calls do nothing.
void CM_Playback_Init();

/// Directory of settings, golden data and reports, with its closing "/". Tests may change it.
const std::string& CrossModuleHome();
void SetCrossModuleHome(const std::string& home);

/// The text with every "{home}" replaced by the cross-module home.
std::string WithHome(const char* text);

/// True if the board was prepared for playback tests, that is, if the cross-module home exists.
/// Only the preparation creates it.
bool Check_If_CrossModulePlayback_Env_Setup();

/// Where the USB stick is mounted.
const std::string& UsbMountPoint();

/// Directory or URL of the content, and the player command up to it. Set by `Init_Content_Path`.
const std::string& ContentHome();
const std::string& PlayerCommandPrefix();

/// Sets the two above for a content source. eMMC content that does not exist yet is copied from the
/// USB stick. An unknown source is reported and changes nothing. Returns 0, or -1 for an unknown
/// source.
int Init_Content_Path(USB_HTTP_MODE_TYPE mode);

/// Content source. The first read builds the content paths and rewrites the file.
int Set_USB_HTTP_Mode(USB_HTTP_MODE_TYPE mode);
int Get_USB_HTTP_Mode();

/// Destination of reports (`SEND_REPORT_TO_TYPE`); the file is read in every call.
int Set_Report_Send_To(SEND_REPORT_TO_TYPE to);
int Get_Report_Send_To();
const char* Send_Report_Type_To_String(int to);

/// Free-run mode, 0 or 1. Any other value truncates the file and returns -1.
int Set_FreeRun_Mode(int mode);
int Get_FreeRun_Mode();

/// Send the reports of passed tests too, 0 or 1. Any other value truncates the file and returns -1.
int Set_SendPassReport(int on);
int Get_SendPassReport();

/// Send dumps to the TFTP server after each test, 0 or 1. Any other value truncates the file.
/// Returns 0.
int Set_Auto_Send_DumpData(int on);
int Get_Auto_Send_DumpData();

/// Test cases of the customized automatic run; "-" if never set.
int Set_Customized_TestCase_List(const std::string& list);
std::string Get_Customized_TestCase_List();

/// TFTP server's name or address; "-" for none. Prompts the operator if it was never set.
std::string Get_TFTP_IP();
/// Prompts the operator for the TFTP server until the answer is an address or empty, and stores it.
std::string Set_TFTP_IP_by_User();

/// True if an address returned by Get_TFTP_IP() names a server.
bool NamesTftpServer(const std::string& address);

/// Time stamp of the test round, "MMDD_HHMMSS"; "-" if there is none.
void Set_Test_Timestamp();
std::string Get_Test_Timestamp();

/// The board's software version: fingerprint and build date, "--" if not available.
std::string Get_SW_Version();

/// Verbosity of the verification: 0 or 1. Not stored.
void Set_Debug_Level(int level);
int Get_Debug_Level();
