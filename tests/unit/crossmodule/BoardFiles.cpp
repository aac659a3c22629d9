#include "BoardFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "DumpGenerator.h"
#include "PlayedCases.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"

namespace crossmodule {

namespace {

std::string Dump(const player::Clip& clip, int64_t clock, player::Stage stage,
                 const std::vector<player::Defect>& defects) {
  std::ostringstream text;
  player::WriteDump(text, clip, {.clock90k = clock}, stage, defects);
  return text.str();
}

constexpr const char* kBoardFiles[] = {"/vendor/manifest.xml", "/vendor/corvana/pelxos",
                                       "/home/core.1st"};

std::string pretendedFile;

}  // namespace

// The libc's own would look at the machine that the tests run on.
extern "C" int access(const char* path, int mode) {
  for (const std::string file : kBoardFiles) {
    if (file == path) return file == pretendedFile ? 0 : -1;
  }
  return faccessat(AT_FDCWD, path, mode, 0);
}

void PretendBoardFile(const std::string& path) {
  pretendedFile = path;
}

Home::Home() {
  path_ = testing::TempDir() + "cross_module_XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no directory " + path_);
  path_ += '/';
  SetCrossModuleHome(path_);
}

Home::~Home() {
  std::filesystem::remove_all(path_);
}

void Home::Write(const std::string& name, const std::string& text) const {
  const std::filesystem::path path = path_ + name;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

void Home::Play(int testCase, const std::vector<player::Defect>& defects) {
  Init_Module_List();
  const player::PlayedCase& played = player::FindCase(testCase);
  dumps_.clear();
  for (const player::Stage stage : player::kAllStages) {
    const std::string name = player::DumpNameOf(played, stage);
    Write("golden_data/playback/" + name, Dump(played.clip, 1000, stage, {}));
    Write("dump_tmp/" + name, Dump(played.clip, 2000, stage, defects));
    dumps_.push_back(path_ + "dump_tmp/" + name);
  }
  for (std::size_t i = 0; i < dumps_.size(); ++i) ModuleTypeList()[i].dumpPath = &dumps_[i];
}

void RemoveVolatileFiles() {
  for (const char* file : {"file_format.cfg", "freeRun.config", "IsSendReportIfPass.config",
                           "report.verify.tmp.txt", "report.verify.tmp.txt.tmp"})
    std::filesystem::remove(std::string("/tmp/cross_module/") + file);
}

std::string WithoutColours(const std::string& text) {
  static const std::regex kColour("\033\\[[0-9;]*m");
  return std::regex_replace(text, kColour, "");
}

}  // namespace crossmodule
