#include "Settings.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <optional>
#include <string_view>

#include "Ansi.h"
#include "BoardSystem.h"
#include "ConsoleInput.h"
#include "CrossModuleLog.h"
#include "SettingFile.h"

namespace {

constexpr char kNone[] = "-";
constexpr int kUnread = -1;

std::string crossModuleHome = "/data/cross_module/";
std::string usbMountPoint = "/tmp/usb";

int contentSource = 0;             // 0: not read yet
std::string tftpAddress = "NULL";  // not read yet
std::string timeStamp = kNone;     // not read yet
int debugLevel = 0;

/// A setting that is on or off; the members are what differs between the three of them.
struct Switch {
  const char* setter;  // name of its Set_ function, for messages
  const char* file;    // its file name below `directory`
  bool isVolatile;     // below the dump directory, lost after a reboot; otherwise below the home
  const char* confirmation;  // printed before the new value; null: print nothing
  int cache = kUnread;
};

Switch freeRun{"Set_FreeRun_Mode", "freeRun.config", true, "set free run mode: "};
Switch sendPassReport{"Set_SendPassReport", "IsSendReportIfPass.config", true,
                      "Send Pass Report: "};
Switch autoSendDump{"Set_Auto_Send_DumpData", "config/auto_send_dumpData_to_TFTP.config", false,
                    nullptr};

std::string HomeFile(const char* name) {
  return crossModuleHome + name;
}

std::string PathOf(const Switch& setting) {
  return setting.isVolatile ? std::string(kDumpDirectory) + setting.file : HomeFile(setting.file);
}

template <typename Value>
void Store(const std::string& path, const Value& value) {
  OpenEmpty(path) << value << '\n';
}

/// Truncates the file before it checks the value, so an invalid value results in the default at the
/// next start.
int Set(Switch& setting, int value) {
  std::ofstream file = OpenEmpty(PathOf(setting));
  if (value != 0 && value != 1) {
    CmLog(setting.setter) << "Error: canot identify mode " << value << '\n';
    return -1;
  }
  setting.cache = value;
  file << value << '\n';
  if (setting.confirmation != nullptr) {
    CmLog(setting.setter) << setting.confirmation << value << '\n';
  }
  return 0;
}

int StoredValue(const Switch& setting) {
  return std::atoi(FirstLine(PathOf(setting)).value_or("0").c_str());
}

int Get(Switch& setting) {
  if (setting.cache == kUnread) setting.cache = StoredValue(setting);
  return setting.cache;
}

/// Texts that are allowed in a shell command as a server: a name or an address, nothing, or "-".
bool IsServerAddress(std::string_view text) {
  if (text.empty() || text == kNone) return true;
  return text[0] != '-' && std::ranges::all_of(text, [](unsigned char c) {
           return std::isalnum(c) != 0 || c == '.' || c == '-' || c == ':';
         });
}

/// The address read from the file, or none if it is invalid.
std::string KeptServerAddress(const std::string& stored) {
  if (IsServerAddress(stored)) return stored;
  CmLog("Get_TFTP_IP") << "Not a server's name or address, ignored: " << stored << '\n';
  return kNone;
}

std::string AskServerAddress() {
  static constexpr char kFunction[] = "Set_TFTP_IP_by_User";
  for (;;) {
    CmLog(kFunction) << "Please enter your TFTP Server IP" << ansi::kGrey
                     << "(Just input \"-\" to skip/clean setting)" << ansi::kReset << ":";
    console::NotePrompt("Please enter your TFTP Server IP");
    std::string address = console::ReadLine();
    if (IsServerAddress(address)) return address;
    CmLog(kFunction) << "Not a server's name or address: " << address << '\n';
  }
}

/// The text after `key` and one more character, if the line begins with the key.
std::optional<std::string> ValueOf(std::string_view line, std::string_view key) {
  if (!line.starts_with(key)) return std::nullopt;
  return std::string(line.substr(std::min(key.size() + 1, line.size())));
}

}  // namespace

void CM_Playback_Init() {
  static bool done = false;
  if (done) return;
  done = true;
  const BoardSystem& system = ThisBoardSystem();
  crossModuleHome = system.home;
  usbMountPoint = system.usbMountPoint;
}

const std::string& CrossModuleHome() {
  return crossModuleHome;
}

void SetCrossModuleHome(const std::string& home) {
  crossModuleHome = home;
}

std::string WithHome(const char* text) {
  return Replaced(text, "{home}", crossModuleHome);
}

bool Check_If_CrossModulePlayback_Env_Setup() {
  return access(crossModuleHome.substr(0, crossModuleHome.size() - 1).c_str(), F_OK) == 0;
}

const std::string& UsbMountPoint() {
  return usbMountPoint;
}

int Set_USB_HTTP_Mode(USB_HTTP_MODE_TYPE mode) {
  std::ofstream file = OpenEmpty(HomeFile("config/selectHttpUsb.cfg"));
  Init_Content_Path(mode);
  file << static_cast<int>(mode) << '\n';
  contentSource = mode;
  CmLog("Set_USB_HTTP_Mode") << "set mode: " << static_cast<int>(mode)
                             << ", testing file home = " << ContentHome() << '\n';
  return 0;
}

int Get_USB_HTTP_Mode() {
  if (contentSource == 0) {
    const std::string stored = FirstLine(HomeFile("config/selectHttpUsb.cfg")).value_or("1");
    Set_USB_HTTP_Mode(static_cast<USB_HTTP_MODE_TYPE>(std::atoi(stored.c_str())));
  }
  return contentSource;
}

int Set_Report_Send_To(SEND_REPORT_TO_TYPE to) {
  Store(HomeFile("config/report_send_to_USB_TFTP.config"), static_cast<int>(to));
  CmLog("Set_Report_Send_To") << "Send Report to:" << Send_Report_Type_To_String(to) << '\n';
  return 0;
}

int Get_Report_Send_To() {
  const auto stored = FirstLine(HomeFile("config/report_send_to_USB_TFTP.config"));
  return stored ? std::atoi(stored->c_str()) : SEND_REPORT_USB_TFTP;
}

const char* Send_Report_Type_To_String(int to) {
  switch (to) {
    case SEND_REPORT_NONE:
      return "Don't Send Report";
    case SEND_REPORT_USB:
      return "Send to USB only";
    case SEND_REPORT_TFTP:
      return "Send to TFTP only";
    case SEND_REPORT_USB_TFTP:
      return "Send to both USB & TFTP";
    default:
      return "(can not identify type)";
  }
}

int Set_FreeRun_Mode(int mode) {
  return Set(freeRun, mode);
}

int Get_FreeRun_Mode() {
  return Get(freeRun);
}

int Set_SendPassReport(int on) {
  return Set(sendPassReport, on);
}

int Get_SendPassReport() {
  return Get(sendPassReport);
}

int Set_Auto_Send_DumpData(int on) {
  Set(autoSendDump, on);
  return 0;
}

int Get_Auto_Send_DumpData() {
  // Unlike for the other two settings, the first read writes the file.
  if (autoSendDump.cache == kUnread) Set_Auto_Send_DumpData(StoredValue(autoSendDump));
  return autoSendDump.cache;
}

int Set_Customized_TestCase_List(const std::string& list) {
  Store(HomeFile("config/customized_test_num.cfg"), list);
  return 0;
}

std::string Get_Customized_TestCase_List() {
  return FirstLine(HomeFile("config/customized_test_num.cfg")).value_or(kNone);
}

std::string Get_TFTP_IP() {
  if (tftpAddress == "NULL") {
    const auto stored = FirstLine(HomeFile("config/tftp_ip.cfg"));
    tftpAddress = stored ? KeptServerAddress(*stored) : Set_TFTP_IP_by_User();
  }
  return tftpAddress;
}

bool NamesTftpServer(const std::string& address) {
  return !address.empty() && address != kNone && address != "NULL";
}

std::string Set_TFTP_IP_by_User() {
  std::string address = AskServerAddress();
  Store(HomeFile("config/tftp_ip.cfg"), address);
  tftpAddress = address;
  CmLog("Set_TFTP_IP_by_User") << "Current TFTP Server IP is " << address << '\n';
  // Without a server, reports can only go to the USB stick.
  if (address == kNone) Set_Report_Send_To(SEND_REPORT_USB);
  return address;
}

void Set_Test_Timestamp() {
  const std::time_t now = std::time(nullptr);
  const std::tm* local = std::localtime(&now);
  if (local == nullptr) {
    CmLog("Set_Test_Timestamp") << "ERROR! t= NULL \n";
    return;
  }
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, "%02d%02d_%02d%02d%02d", local->tm_mon + 1, local->tm_mday,
                local->tm_hour, local->tm_min, local->tm_sec);
  timeStamp = stamp;
  Store(HomeFile("config/timeStamp.config"), stamp);
  CmLog("Set_Test_Timestamp") << "Test Time: " << stamp << '\n';
}

std::string Get_Test_Timestamp() {
  if (timeStamp == kNone) {
    const std::string stored = FirstLine(HomeFile("config/timeStamp.config")).value_or(kNone);
    // It becomes part of file names in shell commands.
    timeStamp = stored.empty() || IsShellWord(stored) ? stored : kNone;
  }
  return timeStamp;
}

std::string Get_SW_Version() {
  std::ifstream properties("/default.prop");
  if (!properties) return "--";
  std::string fingerprint;
  std::string date;
  for (std::string line; std::getline(properties, line);) {
    if (auto value = ValueOf(line, "ro.bootimage.build.fingerprint")) fingerprint = *value;
    if (auto value = ValueOf(line, "ro.bootimage.build.date")) date = *value;
  }
  return fingerprint + ansi::kGrey + " (" + date + ")";
}

void Set_Debug_Level(int level) {
  debugLevel = level;
}

int Get_Debug_Level() {
  return debugLevel;
}
