#include "BoardTools.h"

#include "Settings.h"

std::string BusyboxCommand() {
  switch (Get_Board_OS_System()) {
    case OS_ANDROID_O:
      return "/vendor/cvn_rootfs/bin/busybox";
    case OS_PELXOS:
      return "/vendor/corvana/busybox";
    default:
      return "busybox";
  }
}
