// One playback run: the commands for the board, their order, and the conditions that stop a run.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <span>

#include "GoldenData.h"
#include "PlaybackRun.h"
#include "PreparedBoard.h"

namespace {

std::vector<std::string> emptiedLogs;

}  // namespace

// Logs have fixed paths outside the test's directory.
extern "C" int truncate(const char* path, off_t length) noexcept {
  EXPECT_EQ(length, 0);
  emptiedLogs.emplace_back(path);
  return 0;
}

namespace {

using namespace crossmodule;
using scripted::CommandsOf;

constexpr char kMountStick[] = R"(echo 1 > /proc/usercalls
echo 3 > /proc/sys/vm/drop_caches
umount /tmp/usb
mkdir /tmp/usb
mount /dev/block/sda /tmp/usb
)";
constexpr char kTree[] = R"(echo osd_pattern=1 1 0x0 > /proc/cvngdma/dbg
echo osd_pattern=1 1 0x0 > /proc/cvngdma/dbg
HOME/gst_root/usr/bin/dvo-scalar-setup
)";
constexpr char kPermissive[] = "setenforce 0\n";
constexpr char kDiskUse[] = "du -h -d1 /tmp/cross_module/  \n";
constexpr char kTestModeOff[] = R"(rm -f /tmp/OMX_MURO_CONFIG
echo testmode=0 > /dev/cvnvdec
echo testmode=0 > /dev/cvndvo
echo testmode=0 > /dev/vodev
echo testmode=0 > /dev/vscdev
echo testmode=0 > /dev/vpqdev
echo fw@ testmode=0 > /dev/cvnaudio
)";
constexpr char kBoardPlayer[] =
    "HOME/gst_root/usr/bin/gst-cvn-test-1.0 --gst-debug=0 -c IP1+IP2  -pf "
    "/tmp/usb/cross_module_content_v1/";
constexpr char kServerPlayer[] =
    "gst_root/usr/bin/gst-cvn-test-1.0 --gst-debug=0 -c IP1+IP2  -pu "
    "http://content.local/cross_module_content_v1/[R101]h264-FrtChg.ts";
constexpr char kSorvexPlayer[] =
    "gst-cvn-test-1.0 \"playbin3 uri=file://HOME/cross_module_content_v1/[R101]h264-FrtChg.ts "
    "video-sink=dvovideosink audio-sink=cvnalsasink\" -p -c IP1+IP2\n";

std::string TestMode(const std::string& pictureQuality) {
  return std::string(kTestModeOff) +
         R"(echo testresult=/tmp/cross_module/dump_omx_output.txt > /tmp/OMX_MURO_CONFIG
echo testresult=/tmp/cross_module/dump_omx_input.txt >> /tmp/OMX_MURO_CONFIG
echo testmode=1 testresult=/tmp/cross_module/dump_vdec.txt > /dev/cvnvdec
echo testmode=1 testresult=/tmp/cross_module/dump_dvo.txt > /dev/cvndvo
echo testmode=1 testresult=/tmp/cross_module/dump_vo.txt > /dev/vodev
echo testmode=1 testresult=/tmp/cross_module/dump_scaler.txt > /dev/vscdev
echo testmode=)" +
         pictureQuality + R"( > /dev/vpqdev
echo fw@ testmode=1 /tmp/cross_module/dump_audio.txt > /dev/cvnaudio
)" + kDiskUse;
}

/// The files that control the media stack.
std::string Signals(const std::string& freeRun, const std::string& adaptive) {
  return freeRun + " /tmp/GST_DVO_FREERUN\nmkdir -p /tmp/cross_module\n" +
         "chmod -R 777 /tmp/cross_module\n" + adaptive +
         " /tmp/GST_DVO_FORCE_ADAPTIVE\nrm -f /tmp/var/log/dpq_logfile.log.gz\n";
}

std::string PressKey(const std::string& code) {
  return "nilo-send -f -n 1 nilo://com.kelvra.inputgenerator/pushKeyEvent '{\"keycodenum\": " +
         code + ", \"eventtype\":\"keypressed\"}'\n";
}

/// Repeats a text for every stage; "DUMP" and "STAGE" are replaced by its two names.
std::string ForStages(const std::string& text) {
  const std::pair<const char*, const char*> kStages[] = {
      {"omx_input", "OMXIN"}, {"omx_output", "OMXOUT"}, {"vdec", "VDEC"},  {"dvo", "DVO"},
      {"vo", "VO"},           {"scaler", "Scaler"},     {"audio", "Audio"}};
  std::string all;
  for (const auto& [dump, stage] : kStages)
    all += Replaced(Replaced(text, "DUMP", dump), "STAGE", stage);
  return all;
}

std::string RemoveDumps() {
  return ForStages("rm -f /tmp/cross_module/dump_DUMP.txt\n");
}

/// The commands that keep the dumps of a test case, by its name.
std::string Backup(const std::string& name) {
  const std::string target = "HOME/dump_tmp/dump-" + name + "-STAGE.txt\n";
  return "mkdir -p HOME/dump_tmp/\n" +
         ForStages("rm -f " + target + "cp /tmp/cross_module/dump_DUMP.txt " + target);
}

class CrossModuleRun : public PreparedBoard {
 protected:
  static scripted::Run Run(CM_TestCase* testCase) {
    return scripted::Play("", [&] { return Run_Playback_Test_Case(testCase); });
  }
  static scripted::Run Run(int testCase) { return Run(FindTestCase(testCase)); }
};

TEST_F(CrossModuleRun, OnAndroidFromTheStick) {
  Boot(kAndroid, MODE_USB);
  PlugStick(101);
  setenv("LD_LIBRARY_PATH", "/lib", 1);
  const std::string start = RemoveDumps() + kMountStick;
  EXPECT_EQ(Run(101).commands, Commands(start + Signals("rm -f", "touch") + kTree + kPermissive +
                                        TestMode("1") + kBoardPlayer + "[R101]h264-FrtChg.ts\n" +
                                        kTestModeOff + Backup("101-h264-FrtChg")));
  const std::string log = "/tmp/var/log/dpq_";
  EXPECT_EQ(emptiedLogs, (Lines{log + "acpu1.log", log + "acpu2.log", log + "logfile.log",
                                log + "vcpu1.log", log + "vcpu2.log"}));
  EXPECT_EQ(getenv("LD_LIBRARY_PATH"), nullptr);
  EXPECT_EQ(getenv("GST_PLUGIN_PATH_1_0"), Home() + "gst_root/usr/lib/gstreamer-1.0");
  PlugStick(601);
  EXPECT_EQ(Run(601).commands,
            Commands(start + Signals("rm -f", "rm -f") + kPermissive + TestMode("2") +
                     kBoardPlayer + "[R601]SDRtoHDR.ts\n" + kTestModeOff + Backup("601-hdr10-sdr")))
      << "the environment is set up once";
  EXPECT_EQ(scripted::ReadFile(Path("file_format.cfg")), "601\n");
}

TEST_F(CrossModuleRun, OnSorvexFromItsOwnStorage) {
  Boot(kSorvex, MODE_EMMC);
  PretendFiles({"/tmp/enableDebugMode"});
  Write("cross_module_content_v1/[R101]h264-FrtChg.ts", "");
  WriteVolatile("freeRun.config", "1\n");
  Write("config/auto_send_dumpData_to_TFTP.config", "1\n");
  const std::string display = "touch /tmp/runningCrossModule\n" + PressKey("114") +
                              "echo osd_ctrl=0 0 > /proc/cvngdma/dbg\n";
  const std::string end = kSorvexPlayer + ("rm /tmp/runningCrossModule\n" + PressKey("115"));
  const std::string keep =
      Backup("101-h264-FrtChg") +
      ForStages("cd HOME/dump_tmp ;tftp -p -l dump-101-h264-FrtChg-STAGE.txt 10.0.0.9\n");
  EXPECT_EQ(Run(101).commands,
            Commands(RemoveDumps() + Signals("touch", "touch") + display + "dvo-scalar-setup\n" +
                     kPermissive + TestMode("1") + end + kTestModeOff + keep));
  PretendFiles({});
  scripted::Play("", [] { return Set_FreeRun_Mode(0); });
  EXPECT_EQ(Run(101).commands, Commands(RemoveDumps() + Signals("rm -f", "touch") + display +
                                        kPermissive + kDiskUse + end + keep))
      << "its drivers are not switched unless requested";
}

TEST_F(CrossModuleRun, FromTheServer) {
  unsetenv("CVN_HTTP_CONTENT_SERVER");
  for (const char* os : {kPelxos, kSorvex}) {
    InAnEarlierProgram([&] {
      PretendAddressAtLook(1);
      Boot(os, MODE_HTTP);
      const std::filesystem::path before = std::filesystem::current_path();
      std::filesystem::path ofPlayer;
      scripted::OnCommand([&](const std::string& command) {
        if (command == kServerPlayer) ofPlayer = std::filesystem::current_path();
        return 0;
      });
      const auto commands = Run(101).commands;
      EXPECT_EQ(std::ranges::count(commands, kServerPlayer), 1) << "the quote is not closed";
      EXPECT_TRUE(std::filesystem::equivalent(ofPlayer, Home())) << "its path is relative";
      EXPECT_EQ(std::filesystem::current_path(), before);
      const Lines network = Commands(
          "mount -o rw,remount /system\n"
          "ifconfig eth0 up; busybox udhcpc -s /vendor/corvana/udhcpc.script; route\n"
          "mkdir /tmp/cross_module/; touch /tmp/cross_module/isPcbIpSetuped.cfg\n");
      EXPECT_TRUE(std::ranges::equal(network, std::span(commands).subspan(7, 3)));
    });
  }
}

TEST_F(CrossModuleRun, StopsIfSomethingIsMissing) {
  Boot(kAndroid, MODE_USB);
  EXPECT_EQ(Run(999).commands, Lines{});
  EXPECT_EQ(Run(nullptr).result, -1);

  const auto withoutStick = Run(101);
  EXPECT_EQ(withoutStick.commands,
            Commands(RemoveDumps() + "echo 1 > /proc/usercalls\nls /dev/block\n"));
  EXPECT_EQ(withoutStick.result, 1);

  PlugStick(102);
  const auto withoutContent = Run(101);
  EXPECT_EQ(withoutContent.commands.back() + "\n", kDiskUse) << "drivers stay in test mode";
  EXPECT_EQ(withoutContent.result, -1);

  SetCrossModuleHome(Home() + "missing/");
  const auto withoutHome = Run(101);
  EXPECT_EQ(withoutHome.commands, Commands(RemoveDumps() + kMountStick));
  EXPECT_EQ(withoutHome.result, 1);
  EXPECT_TRUE(withoutHome.output.ends_with(
      Message("Test_Start",
              "\033[0;32;31mErro!! Playback Test Environment has not been setuped.\033[m\n") +
      Message("Test_Start",
              "HINT: please run \"0 .Playback Test Environment init.\" before you test\n")));
}

TEST_F(CrossModuleRun, ManualPlayDoesNotTouchContentAndEnvironment) {
  Boot(kAndroid, MODE_USB);
  setenv("LD_LIBRARY_PATH", "/lib", 1);
  Set_Manual_Play(true);
  EXPECT_EQ(CommandsOf([] { Test_Start(0); }),
            Commands(RemoveDumps() + Signals("rm -f", "touch") + kPermissive + TestMode("1")));
  EXPECT_EQ(CommandsOf(Test_End), Commands(kTestModeOff + Backup("101-h264-FrtChg")));
  EXPECT_STREQ(getenv("LD_LIBRARY_PATH"), "/lib");

  EXPECT_EQ(CommandsOf(Test_End), Commands(kTestModeOff)) << "dumps are kept once per run";
  CommandsOf([] { Test_Start(0); });
  EXPECT_EQ(CommandsOf(Backup_Dump_File), Commands(Backup("101-h264-FrtChg")));
}

}  // namespace
