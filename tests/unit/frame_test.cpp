// Registry, menu tree and menu choices.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "Case.h"
#include "ConsoleInput.h"
#include "Module.h"
#include "ModuleList.h"
#include "Scripted.h"
#include "SimHal.h"
#include "TestFrame.h"
#include "TestReport.h"

namespace {

std::vector<std::string> ChildNames(Case* menu) {
  std::vector<std::string> names;
  for (unsigned short i = 0; i < menu->getChildCount(); ++i) {
    names.emplace_back(menu->getChild(i)->getName());
  }
  return names;
}

Case* Descend(Case* menu, const std::vector<unsigned short>& path) {
  for (const unsigned short index : path) menu = menu->getChild(index);
  return menu;
}

class FrameTest : public testing::Test {
 protected:
  void SetUp() override {
    scripted::RedirectReport();
    frame_ = TestFrame::GetInstance();
    output_ = scripted::Play("", [this] { return frame_->DoInit(), 0; }).output;
  }

  TestFrame* frame_ = nullptr;
  std::string output_;
};

TEST_F(FrameTest, MenusAreInTheOrderOfTheModuleIds) {
  using Names = std::vector<std::string>;
  Case* root = frame_->getCurrentMenu();
  EXPECT_TRUE(output_.starts_with("PHOTO unit Test is disabled\n"));
  EXPECT_EQ(root->getParaent(), nullptr);
  EXPECT_EQ(ChildNames(root), (Names{"HAL Driver Manual Test", "Media Play Manual Test",
                                     "System Driver Manual Test", "Vido Manual Test", "Unit Test",
                                     "Cross Module Test", "Q7T Related Module Test"}));
  EXPECT_EQ(ChildNames(Descend(root, {1})), Names{});
  EXPECT_EQ(ChildNames(Descend(root, {3})),
            (Names{"Vfe Hdmi Function Test", "Vfe Vby1rx Function Test", "Vsc Function Test",
                   "Vpq Function Test", "Vbe Function Test", "VpqExt Function Test"}));
  EXPECT_STREQ(Descend(root, {3, 0})->getDescription(), "Test HDMI MURO ");
  EXPECT_STREQ(Descend(root, {4, 0, 0})->getDescription(), "for example ****");
  EXPECT_EQ(ChildNames(Descend(root, {4, 0})),
            (Names{"UTGal Function Test", "UTHdcp2 Function Test", "UTThermal Function Test",
                   "UTSvp Function Test", "UTVfe HDMI Function Test", "UTVpq Function Test"}));
  EXPECT_EQ(ChildNames(Descend(root, {4, 1})),
            (Names{"Auto Run Unit Test by Module", "Auto Run Unit Test by Module",
                   "Auto Run Unit Test by Module", "Auto Run Unit Test by Module",
                   "Auto Run Unit Test by Module", "Auto Run Unit Test by Module",
                   "All Module Auto Run"}));
  EXPECT_STREQ(Descend(root, {4, 1, 3})->getDescription(), "UTSvp Function Test");
  EXPECT_EQ(ChildNames(Descend(root, {5})),
            (Names{"Cross Module Test - Manual Test", "Cross Module Test - Auto Test"}));
  EXPECT_STREQ(Descend(root, {5, 1})->getDescription(), "For Cross Module - Auto Test");
  EXPECT_EQ(Descend(root, {5, 1})->getChildCount(), 5);
  EXPECT_EQ(ChildNames(Descend(root, {6})),
            (Names{"Rlink Module Test", "K2v_Hal_Device Module Test"}));
}

TEST_F(FrameTest, EveryModuleMenuListsItsTestsInOrder) {
  for (const ModuleEntry& entry : ModuleList()) {
    unsigned short index = 0;
    for (const auto& test : entry.instance()->Tests()) {
      EXPECT_EQ(test->getParaent()->getChild(index), test.get()) << entry.className << index;
      ++index;
    }
    EXPECT_EQ(entry.instance()->Tests()[0]->getParaent()->getChildCount(), index);
  }
}

TEST_F(FrameTest, UnitModuleBelongsToTheManualMenuOnEveryPath) {
  Case* unit = Descend(frame_->getCurrentMenu(), {4});
  Case* viaWrapper = Descend(unit, {1, 3, 0});
  Case* viaAll = Descend(unit, {1, 6, 3});
  EXPECT_EQ(viaWrapper, Descend(unit, {0, 3}));
  EXPECT_EQ(viaAll, viaWrapper);
  EXPECT_STREQ(viaWrapper->getParaent()->getName(), "Manual Unit Test");
}

TEST_F(FrameTest, WrappersRunWhenEnteredAndStayInTheirMenu) {
  simhal::Fail("K2V_RHAL_VFE_HDMI_Initialize", -1);  // no receiver, so no test prompts for its port
  simhal::Fail("K2V_RHAL_register_thermal_notifier", -1);  // … and no session waits for it
  // Unit Test, Auto Unit Test, the wrapper of one module, the run of all modules.
  for (const char* choice : {"4\n", "1\n", "3\n", "6\n"}) {
    EXPECT_EQ(scripted::Play(choice, [this] { return frame_->EnterMenu(); }).result, 1);
    if (choice[0] == '4') continue;
    EXPECT_STREQ(frame_->getCurrentMenu()->getName(), "Auto Unit Test") << choice;
  }
}

TEST_F(FrameTest, PreviousInTheRootAndQuitAnywhereEndTheProgram) {
  EXPECT_EQ(scripted::Play("3\n", [this] { return frame_->EnterMenu(); }).result, 1);
  EXPECT_EQ(scripted::Play("p\n", [this] { return frame_->EnterMenu(); }).result, 1);
  EXPECT_STREQ(frame_->getCurrentMenu()->getName(), "MainMenu");
  EXPECT_EQ(scripted::Play("P\n", [this] { return frame_->EnterMenu(); }).result, 0);
}

TEST_F(FrameTest, PrintsTheMenuExactly) {
  scripted::Play("0\n", [this] { return frame_->EnterMenu(); });
  const std::string rule(136, '*');
  const std::string expected =
      rule + "\n\033[1;33m" + std::string(63, '*') + " cvntester " + std::string(62, '*') +
      "\n\033[1;37m" + rule + "\n\033[1;33m" + std::string(57, '*') + "HAL Driver Manual Test" +
      std::string(57, '*') + "\n\033[1;37m" + rule +
      "\n\033[0;32;32m0 .Hdcp2 Function Test            (for example ****)\n\033[1;37m\n\n"
      "\033[1;33mP.PREVIOUS            \n\033[1;37m\033[1;33mQ.Quit                \n\033[1;37m"
      "-----------------------------------------------------------\n"
      "\033[1;33mPlease enter a choice : \033[1;37m";
  EXPECT_EQ(scripted::Play("", [this] { return frame_->PrintMenu(), 0; }).output, expected);
}

TEST_F(FrameTest, TestWithoutAFunctionIsNeitherCountedNorReported) {
  const auto run = scripted::Play("", [this] {
    return Descend(frame_->getCurrentMenu(), {5, 0, 0, 7})->Run();  // a separator
  });
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(testCounters.total, 0);
}

// A module that exposes the functions that add tests.
class ListModule : public Module {
 public:
  using Module::AddTests;
  using Module::Declare;
  using Module::kAutoTest;
  using Module::kPlayback;
  using Module::kVideo;
};

constexpr ST_THAL_TEST_CASE_T kThree[] = {
    {0, "a", "", nullptr, true}, {1, "b", "", nullptr, true}, {2, "c", "", nullptr, true}};

TEST(RegistryTest, AutoTestsFollowTheEndOfThePlaybackList) {
  ListModule module;
  module.Declare(EN_MURO_CM_AUTOTEST, ListModule::kPlayback, "both", "", kThree);
  module.AddTests(ListModule::kAutoTest, kThree);
  module.AddTests(ListModule::kAutoTest, std::span(kThree).first(2));
  EXPECT_EQ(module.DoInit(), 1);
  EXPECT_EQ(module.GetCrossModuleTestList_AutoTest(4)->getParaent()->getChildCount(), 2);
  EXPECT_STREQ(module.GetCrossModuleTestList_AutoTest(4)->getParaent()->getName(), "both");
  EXPECT_EQ(module.GetCrossModuleTestList_AutoTest(2)->getParaent(), nullptr);
}

TEST(RegistryTest, RejectsIdsWithoutASlot) {
  ListModule module;
  EXPECT_EQ(TestFrame::GetInstance()->RegistTestModule(&module, EN_MURO_MODULE_COUNT), 0);
  EXPECT_EQ(TestFrame::GetInstance()->RegistTestModule(&module, static_cast<EN_MURO_MODULE>(-1)),
            0);
  EXPECT_EQ(module.DoInit(), 0);
}

TEST(RegistryTest, ListKeepsAnEmptyLastEntry) {
  ListModule module;
  for (int i = 0; i < 100; ++i) module.AddTests(ListModule::kVideo, kThree);
  EXPECT_NE(module.GetSICVideoTestList(254), nullptr);
  EXPECT_EQ(module.GetSICVideoTestList(255), nullptr);
}

TEST(ModuleCaseTest, FollowsChoices) {
  ModuleCase root("root", "");
  ModuleCase menu("menu", "");
  ModuleCase children[3] = {{"0", ""}, {"1", ""}, {"2", ""}};
  root.add(&menu);
  for (ModuleCase& child : children) menu.add(&child);
  const struct {
    const char* input;
    Case* next;
  } kChoices[] = {
      {"2\n", &children[2]},   {"7\n", &menu},
      {"-1\n", &menu},         {"3\n", &menu},
      {"abc\n", &children[0]}, {"1abc\n", &children[1]},
      {"p\n", &root},          {"P\n", &root},
      {"q\n", nullptr},        {"Q\n", nullptr},
      {"", nullptr},           {"  \n\n\t1\n", &children[1]},
      {"PP\n", &children[0]},  {"99999999999999999999999999\n", &menu},
      {"65537\n", &menu},
  };
  for (const auto& choice : kChoices) {
    Case* next = &children[2];
    scripted::Play(choice.input, [&] { return next = menu.enterMenu(), 0; });
    EXPECT_EQ(next, choice.next) << choice.input;
  }
  Case* first = nullptr;
  Case* second = nullptr;
  scripted::Play("00000000000000000012\n",
                 [&] { return first = menu.enterMenu(), second = menu.enterMenu(), 0; });
  EXPECT_EQ(first, &children[1]) << "the first 19 characters are one choice";
  EXPECT_EQ(second, &children[2]) << "and the rest is the next one";
}

TEST(ModuleCaseTest, RemoveAlwaysRemovesTheLastChild) {
  ModuleCase menu("menu", "");
  ModuleCase a("a", "");
  ModuleCase b("b", "");
  menu.add(&a);
  menu.add(&b);
  menu.remove(&a);
  EXPECT_EQ(ChildNames(&menu), std::vector<std::string>{"a"});
  menu.remove(nullptr);
  menu.remove(nullptr);
  EXPECT_EQ(menu.getChildCount(), 0);
  EXPECT_EQ(menu.getChild(0), nullptr);
}

TEST(ModuleCaseTest, OwnsCopiesOfItsTexts) {
  char text[] = "before";
  ModuleCase menu(text, nullptr);
  text[0] = 'X';
  EXPECT_STREQ(menu.getName(), "before");
  EXPECT_STREQ(menu.getDescription(), "");
}

TEST(ConsoleTest, LongInputIsCutToTheLengthOfATerminalLine) {
  std::string line, answer, rest;
  scripted::Play(std::string(5000, 'x') + "\n" + std::string(5000, 'y') + " rest\n", [&] {
    line = console::ReadLine();
    answer = console::ReadAnswer();
    rest = console::ReadAnswer();
    return 0;
  });
  EXPECT_EQ(line, std::string(4095, 'x'));
  EXPECT_EQ(answer, std::string(4095, 'y'));
  EXPECT_EQ(rest, "rest");
}

TEST(ConsoleTest, ClosedInputDoesNotBusyWait) {
  constexpr unsigned long kWaits = 20;
  int number = 0;
  for (const std::function<int()>& ask :
       {std::function<int()>(_get_yes_no),
        std::function<int()>([&] { return _get_number_with_range(&number, 0, 9, 10); })}) {
    const auto run = scripted::PlayApart("", [&ask] {
      alarm(60);  // if nothing waits at all
      scripted::OnWait([waits = 0UL](unsigned long) mutable {
        if (++waits == kWaits) _exit(scripted::WaitedUs() >= kWaits * 50'000 ? 7 : 1);
      });
      return ask();
    });
    EXPECT_EQ(run.result, 7);
  }
}

}  // namespace
