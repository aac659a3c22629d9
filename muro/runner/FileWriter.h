// Base of the writers of result files.
#pragma once

#include <string>

#include "OutputFile.h"
#include "RunEvents.h"

namespace runner {

class FileWriter : public RunListener {
 public:
  FileWriter(const std::string& path, int standardOutput) : file_(path, standardOutput) {}
  bool Good() const override { return file_.Good(); }

 protected:
  void Write(const std::string& text) { file_.Write(text); }
  void Write(Spool& spool) { spool.CopyTo(file_); }
  int Descriptor() const { return file_.Descriptor(); }

 private:
  OutputFile file_;
};

}  // namespace runner
