// The shell commands that clean, pack and send a report, and their results.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BoardConnections.h"
#include "BoardFiles.h"
#include "CMplaybackTestCase.h"
#include "ReportDelivery.h"
#include "Scripted.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"

namespace {

using namespace crossmodule;
using scripted::CommandsOf;
using scripted::Play;
using Lines = std::vector<std::string>;

class CrossModuleDelivery : public testing::Test {
 protected:
  void SetUp() override {
    home_.Write("config/timeStamp.config", "0315_142501\n");
    home_.Write("config/tftp_ip.cfg", "tv-farm.local\n");
    Play("", [] { return Init_TestCase_List(); });
    Init_Module_List();
    Set_Current_TestCase(101);
  }

  void TearDown() override { crossmodule::RemoveVolatileFiles(); }

  void SendTo(int destination) {
    home_.Write("config/report_send_to_USB_TFTP.config", std::to_string(destination) + "\n");
  }

  crossmodule::Home home_;
};

TEST_F(CrossModuleDelivery, NamesReportsByCaseAndRound) {
  const std::string directory = home_.Path() + "report/";
  EXPECT_EQ(Get_Report_Name(kReportFile, false), "report_101-h264-FrtChg_0315_142501.txt");
  EXPECT_EQ(Get_Report_Name(kReportFile, true),
            directory + "report_101-h264-FrtChg_0315_142501.txt");
  EXPECT_EQ(Get_Report_Name(kReportArchive, true),
            directory + "report_101-h264-FrtChg_0315_142501.tar.gz");
  for (const int other : {0, 1, 3, 5, 7, -1}) EXPECT_EQ(Get_Report_Name(other, true), "") << other;
}

TEST_F(CrossModuleDelivery, PacksWithTheBoardsTools) {
  const struct {
    const char* board;
    bool withReport;
    const char* tar;
  } kCases[] = {{kAndroid, true, "tar -zcf "},
                {kSorvex, false, "tar -zcf "},
                {kPelxos, true, "/vendor/corvana/busybox tar -zcf "}};
  const std::string package = home_.Path() + "report/package_101-h264-FrtChg_0315_142501";
  for (const auto& test : kCases) {
    crossmodule::PretendBoardFile(test.board);
    home_.Write("dump_tmp/dump-101-h264-FrtChg-VO.txt", "a dump\n");
    Lines expected = {"mkdir -p " + package};
    for (const char* stage : {"OMXIN", "OMXOUT", "VDEC", "DVO", "VO", "Scaler", "Audio"})
      expected.push_back("cp " + home_.Path() + "dump_tmp/dump-101-h264-FrtChg-" + stage + ".txt " +
                         package);
    if (test.withReport)
      expected.push_back("cp " + home_.Path() + "report/report_101-h264-FrtChg_0315_142501.txt " +
                         package);
    for (const char* log : {"logfile", "acpu1", "acpu2", "vcpu1", "vcpu2"})
      expected.push_back("cp /tmp/var/log/dpq_" + std::string(log) + ".log " + package);
    expected.push_back("sync");
    expected.push_back("cd " + package + "; " + test.tar +
                       "../report_101-h264-FrtChg_0315_142501.tar.gz .");
    expected.push_back("rm /tmp/cross_module/report.verify.tmp.txt.Orig");
    expected.push_back("rm -rf  " + package);
    EXPECT_EQ(CommandsOf([&] { Package_AllinOne(test.withReport); }), expected);
  }
}

TEST_F(CrossModuleDelivery, SendsToTheConfiguredDestination) {
  const Lines usb = {"mkdir -p /tmp/usb/cross_module_report",
                     "cp /a/b/report.txt /tmp/usb/cross_module_report/"};
  const struct {
    int destination;
    const char* board;
    bool toUsb;
    const char* tftp;
  } kCases[] = {
      {0, kAndroid, false, nullptr},
      {1, kAndroid, true, nullptr},
      {2, kAndroid, false, "/vendor/cvn_rootfs/usr/bin/tftp -p -l "},
      {3, kSorvex, true, "tftp -p -l "},
      {3, kPelxos, true, "/vendor/corvana/busybox tftp -p -l "},
  };
  crossmodule::PretendFiles({"/dev/block/sda"});
  ReachStick();
  for (const auto& test : kCases) {
    crossmodule::PretendBoardFile(test.board);
    SendTo(test.destination);
    Lines expected = {"sync"};
    if (test.toUsb) expected.insert(expected.end(), usb.begin(), usb.end());
    if (test.tftp != nullptr)
      expected.push_back("cd /a/b; " + std::string(test.tftp) + "report.txt tv-farm.local");
    expected.push_back("sync");
    EXPECT_EQ(CommandsOf([] { Send_Report_File("/a/b/report.txt"); }), expected);
  }
  const std::string told = Play("", [] { return Send_Report_File("/a/b/report.txt"), 0; }).output;
  EXPECT_NE(told.find("[Send_Report_File] \033[0;37mSend \033[1;37m/a/b/report.txt\033[m"
                      " ----> [USB]  \"/tmp/usb/cross_module_report\"\n"),
            std::string::npos);
  EXPECT_NE(told.find("[Send_Report_File] \033[0;37mSend \033[1;37m/a/b/report.txt\033[m"
                      " ----> [TFTP] \"tv-farm.local\"\n"),
            std::string::npos);
}

TEST_F(CrossModuleDelivery, SplitsThePathAtItsLastSlash) {
  crossmodule::PretendBoardFile(kSorvex);
  SendTo(2);
  const struct {
    const char* path;
    const char* command;
  } kPaths[] = {{"/report.txt", "cd /; tftp -p -l report.txt tv-farm.local"},
                {"report.txt", "cd .; tftp -p -l report.txt tv-farm.local"}};
  for (const auto& test : kPaths)
    EXPECT_EQ(CommandsOf([&] { Send_Report_File(test.path); }),
              (Lines{"sync", test.command, "sync"}));
}

TEST_F(CrossModuleDelivery, SendsTheKeptDumps) {
  Lines expected;
  for (const char* stage : {"OMXIN", "OMXOUT", "VDEC", "DVO", "VO", "Scaler", "Audio"})
    expected.push_back("cd " + home_.Path() + "dump_tmp ;tftp -p -l dump-101-h264-FrtChg-" + stage +
                       ".txt tv-farm.local");
  EXPECT_EQ(CommandsOf(Send_Dump_To_TFTP), expected);
}

TEST_F(CrossModuleDelivery, MountsTheStickBeforeSending) {
  crossmodule::PretendBoardFile(kAndroid);
  SendTo(1);
  const auto send = [] { return Send_Report_File("/a/report.txt") ? 0 : 1; };
  const Lines copied = {"mkdir -p /tmp/usb/cross_module_report",
                        "cp /a/report.txt /tmp/usb/cross_module_report/", "sync"};
  const auto endsWith = [](const Lines& all, const Lines& end) {
    return all.size() >= end.size() && std::equal(end.rbegin(), end.rend(), all.rbegin());
  };
  const auto none = Play("", send);
  EXPECT_EQ(none.result, 1);
  EXPECT_NE(none.output.find("no USB stick: /a/report.txt not sent to it"), std::string::npos);
  EXPECT_EQ(std::ranges::count(none.commands, copied[1]), 0);

  crossmodule::PretendFiles({"/dev/block/sda", "/dev/block/sda1"});
  const auto first = Play("", send);
  EXPECT_EQ(first.result, 0);
  EXPECT_EQ(std::ranges::count(first.commands, "mount /dev/block/sda1 /tmp/usb"), 1);
  EXPECT_TRUE(endsWith(first.commands, copied));
  const auto second = Play("", send);
  EXPECT_EQ(second.commands, (Lines{"sync", copied[0], copied[1], copied[2]}))
      << "it is still mounted";
  crossmodule::PretendFiles({});
  EXPECT_EQ(Play("", send).result, 1) << "the stick was removed";
}

TEST_F(CrossModuleDelivery, FailsIfNothingWasPackedOrSent) {
  crossmodule::PretendBoardFile(kSorvex);
  const auto package = [] { return CMplaybackTestCase::CMplaybackTest_Package_AllInOne(nullptr); };
  const auto sendDumps = [] { return CMplaybackTestCase::CMplayback_Send_Dump_To_TFTP(nullptr); };
  SendTo(2);
  const auto noDump = Play("", package);
  EXPECT_EQ(noDump.result, 1);
  EXPECT_EQ(noDump.commands, Lines{});
  EXPECT_NE(noDump.output.find("ERROR: no dump of 101-h264-FrtChg to pack"), std::string::npos);

  home_.Write("dump_tmp/dump-101-h264-FrtChg-VO.txt", "a dump\n");
  const struct {
    const char* failing;  // commands that contain this
    int package;
    int sendDumps;
  } kFaults[] = {{"nothing", 0, 0}, {"tftp -p", 1, 1}, {"tar -zcf", 1, 0}, {"-VO.txt tv", 0, 0}};
  for (const auto& fault : kFaults) {
    scripted::OnCommand([&](const std::string& command) {
      return command.find(fault.failing) == std::string::npos ? 0 : 1;
    });
    EXPECT_EQ(Play("", package).result, fault.package) << fault.failing;
    EXPECT_EQ(Play("", sendDumps).result, fault.sendDumps) << fault.failing;
  }
}

TEST_F(CrossModuleDelivery, SendsNothingWithoutAServer) {
  home_.Write("config/tftp_ip.cfg", "-\n");
  SendTo(2);
  const auto send = [] { return Send_Dump_To_TFTP() || Send_Report_File("/a/r.txt") ? 0 : 1; };
  const auto run = Play("", send);
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.commands, (Lines{"sync", "sync"}));
  EXPECT_NE(run.output.find("No TFTP server is set: dumps not sent\n"), std::string::npos);
  EXPECT_NE(run.output.find("No TFTP server is set: /a/r.txt not sent\n"), std::string::npos);
}

TEST_F(CrossModuleDelivery, DoesNothingForAnUnknownTestCase) {
  Set_Current_TestCase(999);
  std::string told;
  EXPECT_EQ(CommandsOf([&] {
              Package_AllinOne(true);
              Send_Dump_To_TFTP();
              told = Get_Report_Name(kReportArchive, true);
            }),
            Lines{});
  EXPECT_EQ(told, "");
  EXPECT_EQ(Play("", [] { return Package_AllinOne(true), 0; }).output,
            "\033[1;33m[CrossModule][Package_AllinOne] \033[0;37m\033[0;32;31mERROR: unknown test "
            "case\n");
}

TEST(ReportCleaning, RemovesOnlyColourSequences) {
  const std::string path = testing::TempDir() + "coloured_";
  const std::string coloured = path + ".Orig";
  const std::string clean = path + ".tmp";
  const struct {
    const char* text;
    const char* clean;
  } kTexts[] = {
      {"", ""},
      {"plain [0;37m text\n\n", "plain [0;37m text\n\n"},
      {"\033[0;32;31mFAIL\033[m a\033[1;30mb", "FAIL ab\n"},
      {"\033[0;32;32m1\033[0;32;34m2\033[0;33m3\033[0;35m4\033[0;36m5\033[0;37m6\033[1;31m7\n"
       "\033[1;32m8\033[1;33m9\033[1;34ma\033[1;35mb\033[1;36mc\033[1;37md\n",
       "1234567\n89abcd\n"},
      {"a\033[0;32\033[1;31m;31mb\n", "ab\n"},
      {"a\033[0;3\033[m3mb\n", "ab\n"},
      {"\033[4munderlined\033\n", "\033[4munderlined\033\n"},
  };
  const Lines moves = {"mv " + path + " " + coloured, "mv " + clean + " " + path};
  for (const auto& test : kTexts) {
    std::ofstream(path) << test.text;
    EXPECT_EQ(CommandsOf([&] { Remove_Color_Code_From_File(path); }), moves);
    EXPECT_EQ(scripted::ReadFile(clean), test.clean);
    EXPECT_EQ(scripted::ReadFile(path), test.text);
  }
  std::remove(path.c_str());
  std::remove(clean.c_str());
}

TEST(ReportCleaning, ReportsFilesThatCannotBeOpened) {
  const auto clean = [] { return Remove_Color_Code_From_File("/nowhere/report.txt"), 0; };
  EXPECT_EQ(CommandsOf(clean), Lines{});
  EXPECT_EQ(Play("", clean).output,
            "\033[1;33m[CrossModule][Remove_Color_Code_From_File] \033[0;37mError! Cannot open "
            "file\n");
}

/// Runs a command in a real shell and returns its output.
std::string Shell(const std::string& command) {
  std::FILE* shell = popen((command + " 2>/dev/null").c_str(), "r");
  std::string output;
  for (int c = std::fgetc(shell); c != EOF; c = std::fgetc(shell)) output += static_cast<char>(c);
  pclose(shell);
  return output;
}

TEST_F(CrossModuleDelivery, StoresAnArchiveNextToTheReport) {
  crossmodule::PretendBoardFile(kSorvex);
  home_.Play(101, {});
  home_.Write("report/report_101-h264-FrtChg_0315_142501.txt", "the report\n");
  for (const std::string& command : CommandsOf([] { Package_AllinOne(true); })) Shell(command);

  const std::string archive = home_.Path() + "report/report_101-h264-FrtChg_0315_142501.tar.gz";
  EXPECT_EQ(Shell("tar -tzf " + archive + " | sort"),
            "./\n./dump-101-h264-FrtChg-Audio.txt\n./dump-101-h264-FrtChg-DVO.txt\n"
            "./dump-101-h264-FrtChg-OMXIN.txt\n./dump-101-h264-FrtChg-OMXOUT.txt\n"
            "./dump-101-h264-FrtChg-Scaler.txt\n./dump-101-h264-FrtChg-VDEC.txt\n"
            "./dump-101-h264-FrtChg-VO.txt\n./report_101-h264-FrtChg_0315_142501.txt\n");
  EXPECT_EQ(Shell("tar -xzOf " + archive + " ./report_101-h264-FrtChg_0315_142501.txt"),
            "the report\n");
  EXPECT_EQ(Shell("tar -xzOf " + archive + " ./dump-101-h264-FrtChg-VO.txt"),
            scripted::ReadFile(home_.Path() + "dump_tmp/dump-101-h264-FrtChg-VO.txt"));
  EXPECT_FALSE(
      std::filesystem::exists(home_.Path() + "report/package_101-h264-FrtChg_0315_142501"));
}

}  // namespace
