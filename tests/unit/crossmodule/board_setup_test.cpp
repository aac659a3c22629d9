// Setting up the board, its stick, network and user interface, and golden data.
#include <gtest/gtest.h>

#include <cstdlib>

#include "BoardConnections.h"
#include "BoardSetup.h"
#include "CMplaybackTestCase.h"
#include "Environment.h"
#include "GoldenData.h"
#include "PreparedBoard.h"

namespace {

using namespace crossmodule;
using scripted::CommandsOf;
using scripted::Play;

class CrossModuleSetup : public PreparedBoard {};

TEST_F(CrossModuleSetup, PreparesEachOperatingSystem) {
  constexpr char kSorvexSystem[] = R"(mount -o rw,remount /
mount -o rw,remount /system
mount -o rw,remount /vendor
ln -sv /data/cross_module/gst_root/usr/lib /usr
mkdir /usr/share
ln -sv /data/cross_module/gst_root/usr/share/alsa/ /usr/share)"
                                   "\t\n"
                                   "touch /data/noAndroidMode\n"
                                   "touch /home/cross_module/muroMode\n";
  const struct {
    const char* os;
    std::string busybox;
    std::string extra;   // after the home
    std::string system;  // before the reboot
  } kBoards[] = {{kAndroid, "/vendor/cvn_rootfs/bin/busybox", "", ""},
                 {kPelxos, "/vendor/corvana/busybox", "", "cp HOME/gst_root/usr/lib/* /usr/lib/\n"},
                 {kSorvex, "busybox", "mkdir -p /data/cross_module/\n", kSorvexSystem}};
  for (const auto& board : kBoards) {
    PretendBoardFile(board.os);
    const auto run = scripted::Play("", [] { return PrepareBoard(), 0; });
    const bool isSorvex = board.os == std::string_view(kSorvex);
    EXPECT_EQ(run.output.find("Sorvex CrossModule Init Process\n") != run.output.npos, isSorvex);
    EXPECT_EQ(run.commands,
              Commands("mkdir -p HOME/\nmkdir HOME/config\n" + board.extra + board.busybox +
                       " tar -jx -f /vendor/corvana/gst_root.tar.bz2 -C HOME/\n"
                       "cp /vendor/corvana/gstomx.conf HOME/gst_root/usr/etc/xdg/gstomx.conf\n"
                       "chmod 755 /vendor/corvana/udhcpc.script\n" +
                       board.busybox +
                       " tar -zxv -f /vendor/corvana/golden_data.tar.gz -C HOME/\n"
                       "rm -f HOME/golden_overwrite.config\n" +
                       board.system + "sync\nreboot\n"));
  }
}

TEST_F(CrossModuleSetup, PreparesAPreparedBoardAgainOnRequest) {
  Boot(kAndroid, MODE_USB);
  const auto prepare = [](const std::string& typed) {
    return Play(typed, [] { return CMplaybackTestCase::CMplaybackTest_Env_Init(nullptr); });
  };
  EXPECT_FALSE(prepare("1\n").commands.empty());
  for (const auto& [no, result] : {std::pair{"2\n", 0}, {"yes\n", 1}, {"\n", 1}}) {
    EXPECT_EQ(prepare(no).commands, Lines{});
    EXPECT_EQ(prepare(no).result, result) << no;
  }
  SetCrossModuleHome(Home() + "missing/");
  EXPECT_FALSE(prepare("").commands.empty()) << "a new board is prepared without a prompt";
}

TEST_F(CrossModuleSetup, OtherEntriesDoNotCreateTheHome) {
  Boot(kAndroid, MODE_USB);
  SetCrossModuleHome(Home() + "missing/");
  const std::string report = "/tmp/cross_module/report.verify.tmp.txt";
  EXPECT_EQ(CommandsOf([] {
              Set_USB_HTTP_Mode(MODE_EMMC);
              EXPECT_EQ(Backup_Dump_File(), -1);
              EXPECT_EQ(CMplaybackTestCase::CMplaybackTest_Package_AllInOne(nullptr), 1);
              EXPECT_EQ(CMplaybackTestCase::CMplayback_Verify_All(nullptr), 1);
            }),
            (Lines{"mv " + report + " " + report + ".Orig", "mv " + report + ".tmp " + report}))
      << "the report is not moved away";
}

TEST_F(CrossModuleSetup, AddsTheTreeToThePathOnce) {
  Boot(kPelxos, MODE_USB);
  const std::string tree = Home() + "gst_root/usr/bin/";
  const struct {
    const char* old;
    std::string now;
  } kPaths[] = {{nullptr, tree}, {"/bin", tree + ":/bin"}, {"/gst_root/bin", "/gst_root/bin"}};
  for (const auto& path : kPaths) {
    InAnEarlierProgram([&] {
      path.old == nullptr ? unsetenv("PATH") : setenv("PATH", path.old, 1);
      CommandsOf([] { Setup_GST_Env_Var(true); });
      EXPECT_EQ(getenv("PATH"), path.now);
      EXPECT_EQ(getenv("LD_LIBRARY_PATH"), Home() + "gst_root/usr/lib");
      Setup_GST_Env_Var(false);
      EXPECT_EQ(CommandsOf([] { Setup_GST_Env_Var(true); }), Lines{});
      EXPECT_EQ(getenv("LD_LIBRARY_PATH"), nullptr) << "set only once per program";
    });
  }
}

TEST_F(CrossModuleSetup, MountsTheFirstDeviceOfTheStick) {
  Boot(kPelxos, MODE_USB);
  for (const std::string device : {"/dev/block/sdc", "/dev/block/sdb", "/dev/block/sda"}) {
    PretendFiles({device, "/dev/block/sdc"});
    EXPECT_EQ(CommandsOf([] { EXPECT_EQ(Mount_USB(), 0); }),
              Commands("echo 1 > /proc/usercalls\necho 3 > /proc/sys/vm/drop_caches\n"
                       "umount /media/ext1:\nmkdir /media/ext1:\nmount " +
                       device + " /media/ext1:\nmount -o remount,rw /media/ext1:\n"));
  }
  PretendFiles({"/dev/block/sda", "/dev/block/sda1"});
  const auto run = Play("", Mount_USB);
  EXPECT_EQ(run.commands[4], "mount /dev/block/sda1 /media/ext1:");
  EXPECT_NE(run.output.find("OK, found /dev/block/sda\n"), std::string::npos);
  EXPECT_EQ(scripted::WaitedUs(), 0U);
}

TEST_F(CrossModuleSetup, WaitsTenSecondsForAStick) {
  Boot(kAndroid, MODE_USB);
  const auto without = Play("", Mount_USB);
  EXPECT_EQ(without.result, -1);
  EXPECT_TRUE(without.output.ends_with(
      Message("Mount_USB",
              "\033[0;32;31merror! Can not found usb on this device\033[m, mount USB skip. Result "
              "of \"ls /dev/block:\"\n") +
      Message("Mount_USB", "STOP test\n")));
  EXPECT_EQ(scripted::Waits(), std::vector<unsigned long>(10, 1'000'000));
}

TEST_F(CrossModuleSetup, BringsTheNetworkUpOncePerBootIfNeeded) {
  const struct {
    int source;
    std::string server;
    int reportsTo;
    int sendsDumps;
    bool needed;
  } kSettings[] = {{MODE_HTTP, "-", 1, 0, true},        {MODE_USB, "10.0.0.9", 2, 0, true},
                   {MODE_USB, "10.0.0.9", 3, 0, true},  {MODE_USB, "10.0.0.9", 1, 1, true},
                   {MODE_USB, "10.0.0.9", 1, 0, false}, {MODE_USB, "-", 3, 1, false},
                   {MODE_EMMC, "", 3, 1, false},        {MODE_EMMC, "NULL", 3, 0, false}};
  for (const auto& s : kSettings) {
    InAnEarlierProgram([&] {
      Write("config/tftp_ip.cfg", s.server + "\n");
      Write("config/report_send_to_USB_TFTP.config", std::to_string(s.reportsTo));
      Write("config/auto_send_dumpData_to_TFTP.config", std::to_string(s.sendsDumps));
      Boot(kAndroid, s.source);
      EXPECT_EQ(!CommandsOf(Setup_PCB_IP).empty(), s.needed)
          << s.source << s.server << s.reportsTo << s.sendsDumps;
      PretendFiles({"/tmp/cross_module/isPcbIpSetuped.cfg"});
      EXPECT_EQ(CommandsOf(Setup_PCB_IP), Lines{});
    });
  }
}

TEST_F(CrossModuleSetup, TriesTheNetworkThreeTimes) {
  Boot(kAndroid, MODE_HTTP);
  const std::string attempt =
      "ifconfig eth0 up; /vendor/cvn_rootfs/bin/busybox udhcpc -s /vendor/corvana/udhcpc.script; "
      "route\n";
  const std::string mark = "mkdir /tmp/cross_module/; touch /tmp/cross_module/isPcbIpSetuped.cfg\n";
  const struct {
    int look;
    std::string attempts;
    int result;
  } kCables[] = {{2, attempt + attempt + mark, 0},
                 {3, attempt + attempt + attempt + mark, 0},
                 {0, attempt + attempt + attempt, -1}};  // no mark: the cable may be reconnected
  for (const auto& cable : kCables) {
    PretendAddressAtLook(cable.look);
    const auto run = Play("", Setup_PCB_IP);
    EXPECT_EQ(run.commands, Commands("mount -o rw,remount /system\n" + cable.attempts));
    EXPECT_EQ(run.result, cable.result);
  }
  PretendAddressAtLook(0);
  const auto entry = [] { return CMplaybackTestCase::CMplaybackTest_Setup_PCB_IP(nullptr); };
  EXPECT_EQ(Play("", entry).result, 1) << "the menu entry did nothing";
}

TEST_F(CrossModuleSetup, SwitchesAndroidByItsMarkerAndRebootsOnAChange) {
  Boot(kAndroid, MODE_USB);
  const std::string osd = "echo osd_pattern=0 0 0xf > /proc/cvngdma/dbg\n";
  const struct {
    bool enabled;
    std::string typed;
    std::string commands;
  } kSwitches[] = {{true, "1", "touch /data/noAndroidMode\n" + osd + "sync\nreboot\n"},
                   {true, "0", "rm /data/noAndroidMode\n" + osd},
                   {false, "1", "touch /data/noAndroidMode\n" + osd},
                   {false, "0", "rm /data/noAndroidMode\n" + osd + "sync\nreboot\n"},
                   {false, "", ""},
                   {true, "2", ""}};
  for (const auto& s : kSwitches) {
    PretendFiles(s.enabled ? Lines{} : Lines{"/data/noAndroidMode"});
    EXPECT_EQ(CommandsOf([] { CMplaybackTestCase::CMplaybackTest_Enable_Android(nullptr); },
                         s.typed + "\n"),
              Commands(s.commands))
        << s.enabled << s.typed;
  }
}

TEST_F(CrossModuleSetup, ReplacesGoldenDataByAllDumpsOrNone) {
  Boot(kAndroid, MODE_USB);
  Set_Current_TestCase(999);
  EXPECT_EQ(CommandsOf([] { EXPECT_EQ(Overwrite_Local_Golden(), -1); }), Lines{}) << "unknown";
  Set_Current_TestCase(102);
  std::string copies;
  for (const char* stage : {"OMXIN", "OMXOUT", "VDEC", "DVO", "VO", "Scaler", "Audio"}) {
    EXPECT_EQ(CommandsOf([] { EXPECT_EQ(Overwrite_Local_Golden(), -1); }), Lines{}) << stage;
    const std::string name = std::string("dump-102-h264-ResChg-") + stage + ".txt";
    Write("dump_tmp/" + name, "");
    copies += "cp HOME/dump_tmp/" + name + " HOME/golden_data/playback/" + name + "\n";
  }
  EXPECT_FALSE(Exists("golden_overwrite.config"));
  EXPECT_EQ(CommandsOf([] { EXPECT_EQ(Overwrite_Local_Golden(), 0); }), Commands(copies));
  EXPECT_EQ(Text("golden_overwrite.config"), "0\n1\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n");
  CommandsOf(Restore_Local_Golden);
  EXPECT_EQ(FindTestCase(102)->goldenOverwritten, 0);
}

}  // namespace
