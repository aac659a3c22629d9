#include "UserTestCase.h"

#include <string>
#include <string_view>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/SettingFile.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "ConsoleInput.h"
#include "MenuItem.h"
#include "Shell.h"

namespace {

/// True for a text that can be part of a file name.
bool IsName(std::string_view text) {
  return IsShellWord(text) && text.find('/') == text.npos;
}

/// Asks until the answer is accepted.
std::string Ask(const char* function, const std::string& question,
                bool (*accepts)(std::string_view), const char* refusal) {
  for (;;) {
    CmLog(function) << question;
    console::NotePrompt(question);
    std::string answer = console::ReadLine();
    if (accepts(answer)) return answer;
    CmLog(function) << refusal << answer << '\n';
  }
}

int AskHdr(const char* function) {
  for (;;) {
    const int hdr = AskSelection(function, "HDR file? [0]No, [1]Yes : ");
    if (hdr == 0 || hdr == 1) return hdr;
    CmLog(function) << kNotRecognised << '\n';
  }
}

}  // namespace

void AddUserTestCase(const char* function) {
  CmLog(function) << "This is the list of all the file in " << ContentHome() << '\n';
  RunShell("ls -la " + ContentHome());
  const std::string file =
      Ask(function, "Please input yout file name in " + ContentHome() + ": ", IsShellWord,
          "Not a file name of one word without special characters: ");
  const std::string name = Ask(function, "Please give a test case name(ex. user-content): ", IsName,
                               "Not a name of one word without special characters: ");
  Set_User_Add_TestCase(name, AskHdr(function), file);
}
