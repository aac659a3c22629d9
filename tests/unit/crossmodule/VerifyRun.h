// Runs one verifier on two literal files and returns its output and findings.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "Scripted.h"
#include "Verifiers.h"
#include "VerifyResult.h"

using Lines = std::vector<std::string>;
using Verifier = void (*)(CM_Verify_Result&, const std::string&, const std::string&);

/// A temporary file, removed at the end.
class TemporaryFile {
 public:
  TemporaryFile(const std::string& name, const std::string& text)
      : path_(testing::TempDir() + name) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

/// A wrong field as "frame column golden dump".
inline Lines FieldsOf(const CM_Verify_Result& result) {
  Lines fields;
  for (const VerifyFailField& field : result.wrongFields) {
    fields.push_back(std::to_string(field.frameNumber) + " " + std::to_string(field.columnIndex) +
                     " " + field.goldenValue + " " + field.dumpValue);
  }
  return fields;
}

struct VerifyRun {
  CM_Verify_Result result;
  Lines fields;
  std::string console;  // "[muro:#]" for the line numbers of the source
};

/// Runs a verifier on two files of these texts.
inline VerifyRun RunVerifier(Verifier verify, const std::string& golden,
                             const std::string& sample) {
  const TemporaryFile goldenFile("golden", golden);
  const TemporaryFile sampleFile("sample", sample);
  CM_Verify_Result result(MODULE_VDEC);
  const auto run = scripted::Play("", [&] {
    verify(result, goldenFile.Path(), sampleFile.Path());
    return 0;
  });
  std::string console = std::regex_replace(run.output, std::regex(R"(\[muro:\d+\])"), "[muro:#]");
  for (const TemporaryFile* file : {&goldenFile, &sampleFile}) {
    for (auto at = console.find(file->Path()); at != std::string::npos;
         at = console.find(file->Path())) {
      console.replace(at, file->Path().size(), file == &goldenFile ? "GOLDEN" : "SAMPLE");
    }
  }
  Lines fields = FieldsOf(result);
  return {std::move(result), std::move(fields), std::move(console)};
}

inline std::string Text(const Lines& rows) {
  std::string text;
  for (const std::string& row : rows) text += row + "\n";
  return text;
}
