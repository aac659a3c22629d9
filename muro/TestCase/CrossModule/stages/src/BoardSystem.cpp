#include "BoardSystem.h"

#include <unistd.h>

#include "CrossModuleLog.h"

namespace {

constexpr char kTreePlayer[] =
    "{home}gst_root/usr/bin/gst-cvn-test-1.0 --gst-debug=0 -c IP1+IP2  -pf ";

// Target of the links created by the preparation.
constexpr const char* kSorvexHome[] = {"mkdir -p /data/cross_module/"};
constexpr const char* kSorvexPreparation[] = {
    "mount -o rw,remount /",
    "mount -o rw,remount /system",
    "mount -o rw,remount /vendor",
    "ln -sv /data/cross_module/gst_root/usr/lib /usr",
    "mkdir /usr/share",
    "ln -sv /data/cross_module/gst_root/usr/share/alsa/ /usr/share\t",
    "touch /data/noAndroidMode",
    "touch /home/cross_module/muroMode",
};
// Key events of the input generator mark the start and the end of a run.
constexpr char kStartKey[] =
    "nilo-send -f -n 1 nilo://com.kelvra.inputgenerator/pushKeyEvent "
    "'{\"keycodenum\": 114, \"eventtype\":\"keypressed\"}'";
constexpr char kEndKey[] =
    "nilo-send -f -n 1 nilo://com.kelvra.inputgenerator/pushKeyEvent "
    "'{\"keycodenum\": 115, \"eventtype\":\"keypressed\"}'";
constexpr const char* kSorvexRunStart[] = {
    "touch /tmp/runningCrossModule",
    kStartKey,
    "echo osd_ctrl=0 0 > /proc/cvngdma/dbg",
};
constexpr const char* kSorvexRunEnd[] = {
    "rm /tmp/runningCrossModule",
    kEndKey,
};

constexpr const char* kPelxosPreparation[] = {"cp {home}gst_root/usr/lib/* /usr/lib/"};

// In the order in which markers are checked; unknown boards count as the first system.
constexpr BoardSystem kSystems[] = {
    {
        .os = OS_ANDROID_O,
        .marker = "/vendor/manifest.xml",
        .home = "/data/cross_module/",
        .usbMountPoint = "/tmp/usb",
        .remountsStick = false,
        .busybox = "/vendor/cvn_rootfs/bin/busybox",
        .networkBusybox = "/vendor/cvn_rootfs/bin/busybox",
        .tar = "tar -zcf ",
        .tftp = "/vendor/cvn_rootfs/usr/bin/tftp -p -l ",
        .filePlayer = kTreePlayer,
        .filePlayerEnd = "",
        .playerLogTag = "",
        .hasOwnPlayer = false,
        .putsTreeInPath = false,
        .debugModeMarker = nullptr,
        .homeCommands = {},
        .prepareMessage = nullptr,
        .prepareCommands = {},
        .runStart = {},
        .runEnd = {},
    },
    {
        .os = OS_PELXOS,
        .marker = "/vendor/corvana/pelxos",
        .home = "/nvram/data/cross_module/",
        .usbMountPoint = "/media/ext1:",
        .remountsStick = true,
        .busybox = "/vendor/corvana/busybox",
        .networkBusybox = "busybox",
        .tar = "/vendor/corvana/busybox tar -zcf ",
        .tftp = "/vendor/corvana/busybox tftp -p -l ",
        .filePlayer = kTreePlayer,
        .filePlayerEnd = "",
        .playerLogTag = "",
        .hasOwnPlayer = false,
        .putsTreeInPath = true,
        .debugModeMarker = nullptr,
        .homeCommands = {},
        .prepareMessage = nullptr,
        .prepareCommands = kPelxosPreparation,
        .runStart = {},
        .runEnd = {},
    },
    {
        .os = OS_SORVEX,
        .marker = "/home/core.1st",
        .home = "/home/cross_module/",
        .usbMountPoint = "/tmp/usb",
        .remountsStick = false,
        .busybox = "busybox",
        .networkBusybox = "busybox",
        .tar = "tar -zcf ",
        .tftp = "tftp -p -l ",
        // Its player takes a whole pipeline as one quoted text.
        .filePlayer = "gst-cvn-test-1.0 \"playbin3 uri=file://",
        .filePlayerEnd = " video-sink=dvovideosink audio-sink=cvnalsasink\" -p -c IP1+IP2",
        .playerLogTag = "[SORVEX] ",
        .hasOwnPlayer = true,
        .putsTreeInPath = false,
        .debugModeMarker = "/tmp/enableDebugMode",
        .homeCommands = kSorvexHome,
        .prepareMessage = "Sorvex CrossModule Init Process",
        .prepareCommands = kSorvexPreparation,
        .runStart = kSorvexRunStart,
        .runEnd = kSorvexRunEnd,
    },
};

}  // namespace

int Get_Board_OS_System() {
  return ThisBoardSystem().os;
}

const BoardSystem& ThisBoardSystem() {
  for (const BoardSystem& system : kSystems) {
    if (access(system.marker, F_OK) == 0) return system;
  }
  CmLog("Get_Board_OS_System") << "unknown OS, return OS_ANDROID_O\n";
  return kSystems[0];
}
