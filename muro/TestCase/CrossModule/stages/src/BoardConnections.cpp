#include "BoardConnections.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "Ansi.h"
#include "BoardSystem.h"
#include "CrossModuleLog.h"
#include "Settings.h"
#include "Shell.h"

namespace {

constexpr int kUsbWaitSeconds = 10;
constexpr int kAddressAttempts = 3;
constexpr char kAddressMarker[] = "/tmp/cross_module/isPcbIpSetuped.cfg";

constexpr const char* kDisks[] = {"/dev/block/sda", "/dev/block/sdb", "/dev/block/sdc"};
constexpr const char* kMountable[] = {"/dev/block/sda1", "/dev/block/sda", "/dev/block/sdb",
                                      "/dev/block/sdc"};

/// The first of the paths that exists; null if there is none.
template <std::size_t kCount>
const char* FirstExisting(const char* const (&paths)[kCount]) {
  for (const char* path : paths) {
    if (access(path, F_OK) == 0) return path;
  }
  return nullptr;
}

const char* WaitForDisk() {
  for (int waitedSeconds = 0;; ++waitedSeconds) {
    const char* disk = FirstExisting(kDisks);
    if (disk != nullptr || waitedSeconds == kUsbWaitSeconds) return disk;
    CmLog("Mount_USB") << "sleep 1 second, waiting for /dev/block/sda (OR sdb, sdc)...\n";
    sleep(1);
  }
}

void TellNoDisk() {
  CmLog("Mount_USB") << ansi::kFail << "error! Can not found usb on this device" << ansi::kReset
                     << ", mount USB skip. Result of \"ls /dev/block:\"\n";
  RunShell("ls /dev/block");
  CmLog("Mount_USB") << "STOP test\n";
}

/// The disk whose stick this program mounted last; empty if none.
std::string mountedDisk;

bool NeedsNetwork() {
  if (Get_USB_HTTP_Mode() == MODE_HTTP) return true;
  const bool sends =
      (Get_Report_Send_To() & SEND_REPORT_TFTP) != 0 || Get_Auto_Send_DumpData() != 0;
  return sends && NamesTftpServer(Get_TFTP_IP());
}

bool HasAddress(const char* interface) {
  ifaddrs* all = nullptr;
  if (getifaddrs(&all) != 0) return false;
  bool found = false;
  for (const ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
    found |= std::strcmp(one->ifa_name, interface) == 0 && one->ifa_addr != nullptr &&
             one->ifa_addr->sa_family == AF_INET;
  }
  freeifaddrs(all);
  return found;
}

/// Requests an address until there is one. Returns false if there is none.
bool RequestAddress() {
  const std::string busybox = ThisBoardSystem().networkBusybox;
  for (int attempt = 0; attempt < kAddressAttempts; ++attempt) {
    RunShell("ifconfig eth0 up; " + busybox + " udhcpc -s /vendor/corvana/udhcpc.script; route");
    if (HasAddress("eth0")) return true;
  }
  CmLog("Setup_PCB_IP") << "no address on eth0 after " << kAddressAttempts << " attempts\n";
  return false;
}

}  // namespace

int Mount_USB() {
  const std::string& mountPoint = UsbMountPoint();
  RunShell("echo 1 > /proc/usercalls");
  CmLog(__func__) << "echo 1 > /proc/usercalls done, wait " << kUsbWaitSeconds
                  << " seconds for usb(sda, sda1)... \n";
  mountedDisk.clear();
  const char* disk = WaitForDisk();
  if (disk == nullptr) {
    TellNoDisk();
    return -1;
  }
  CmLog(__func__) << "OK, found " << disk << '\n';
  RunShell("echo 3 > /proc/sys/vm/drop_caches");
  RunShell("umount " + mountPoint);
  RunShell("mkdir " + mountPoint);
  const char* partition = FirstExisting(kMountable);
  const std::string device = partition != nullptr ? partition : disk;  // removed meanwhile
  CmLog(__func__) << "Mount USB from  \"" << device << "\" to  \"" << mountPoint << "\" \n";
  RunShell("mount " + device + " " + mountPoint);
  mountedDisk = disk;
  if (ThisBoardSystem().remountsStick) RunShell("mount -o remount,rw " + mountPoint);
  return 0;
}

bool ReachStick() {
  const bool isThere = !mountedDisk.empty() && access(mountedDisk.c_str(), F_OK) == 0;
  return isThere || Mount_USB() == 0;
}

int Setup_PCB_IP() {
  if (access(kAddressMarker, F_OK) == 0) return 0;
  if (!NeedsNetwork()) return 1;
  for (const char* hint :
       {"Hint: if stop in \"Sending discover...\" so long time",
        "      (1)please check your mac address is usable",
        "      (2)if no network, please change setting by \"7 .Config - Send Report to TFTP?\""}) {
    CmLog(__func__) << hint << '\n';
  }
  RunShell("mount -o rw,remount /system");
  if (!RequestAddress()) return -1;  // not marked as done: the cable may be plugged in again
  RunShell(std::string("mkdir /tmp/cross_module/; touch ") + kAddressMarker);
  return 0;
}
