// The menu tree: menus with children (ModuleCase) and tests (TestCase).
#pragma once

#include <cstdint>
#include <vector>

/// What is to be known of a test before it runs unattended.
enum TestTraits : uint8_t {
  kNoTraits = 0,
  kAsks = 1,        // it may read the console before the verdict, or needs somebody to pull a cable
  kDisruptive = 2,  // it changes the board for good: reboots it, replaces golden data
};

constexpr TestTraits operator|(TestTraits a, TestTraits b) {
  return static_cast<TestTraits>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// One declared test. Tables of these records live for the whole run and are never copied.
struct ST_THAL_TEST_CASE_T {
  int32_t id;              // shown in menus' reports, never used as an index
  char name[128];          // menu label
  char description[256];   // second menu column
  int (*function)(char*);  // 0 pass, 1 fail, anything else neither; may be empty
  bool autoJudge;          // a 0 counts as pass at once; otherwise the operator is asked
  TestTraits traits = kNoTraits;
};

/// A node of the menu tree. Nodes are never freed while the program runs and do not own each other.
class Case {
 public:
  /// `name` and `desc` must outlive the node.
  Case(const char* name, const char* desc) : name_(name), description_(desc) {}
  virtual ~Case() = default;
  Case(const Case&) = delete;
  Case& operator=(const Case&) = delete;

  /// Runs the test, or all tests below the menu. Returns the test's result, 0 for a menu.
  virtual int Run() = 0;
  virtual const char* getDescription() { return description_; }
  virtual const char* getName() { return name_; }
  virtual void add(Case*) {}
  virtual void remove(Case*) {}
  /// The i-th child, empty when there is none.
  virtual Case* getChild(unsigned short) { return nullptr; }
  /// The menu that holds this node, empty for the root.
  virtual Case* getParaent() { return parent_; }
  virtual void setParaent(Case* parent) { parent_ = parent; }
  virtual unsigned short getChildCount() { return 0; }
  /// Does what choosing this node means and returns the node to show next, empty to quit.
  virtual Case* enterMenu() = 0;
  virtual void printMenu() = 0;

 protected:
  const char* name_;
  const char* description_;

 private:
  Case* parent_ = nullptr;
};

/// A menu. Owns copies of its name and description; its children belong to nobody.
class ModuleCase : public Case {
 public:
  /// An empty pointer stands for an empty text.
  ModuleCase(const char* name, const char* desc);
  ~ModuleCase() override;

  int Run() override;
  /// Appends a child and becomes its parent. A child may sit in several menus.
  void add(Case* child) override;
  /// Drops the last child, whatever the argument is.
  void remove(Case*) override;
  Case* getChild(unsigned short index) override;
  unsigned short getChildCount() override;
  /// Reads one choice: a child's number, "P" for the parent, "Q" or end of input to quit. Any other
  /// choice shows the same menu again.
  Case* enterMenu() override;
  void printMenu() override;

 private:
  std::vector<Case*> children_;
};

/// A test, bound to its record.
class TestCase : public Case {
 public:
  /// `record` must outlive the node.
  explicit TestCase(const ST_THAL_TEST_CASE_T* record);

  /// Runs the test function, judges, counts and reports. Without a function nothing is counted.
  int Run() override;
  /// Runs the test function and has the operator judge where that is due. Counts and reports
  /// nothing. Returns the result; 1 without a function.
  int Execute();
  /// Counts a run that ended with `result` and writes its line into the report. Returns false when
  /// the report could not be written.
  bool Finish(int result);
  /// Runs the test and returns the menu that holds it.
  Case* enterMenu() override;
  void printMenu() override;
  /// Writes the test's line into the report. Returns false when that failed.
  bool EndTest();

  int32_t getId() const { return id_; }
  bool isAutoJudged() const { return autoJudge_; }
  bool hasFunction() const { return function_ != nullptr; }
  /// True when it may need its operator before the verdict.
  bool asks() const { return (traits_ & kAsks) != 0; }
  /// True when it changes the board for good.
  bool isDisruptive() const { return (traits_ & kDisruptive) != 0; }
  /// The test that runs now, empty in menus.
  static const TestCase* Running();
  /// Sets who hears that a test begins, before it prints anything; a null pointer sets nobody.
  static void SetBeginObserver(void (*observer)(const TestCase& test));
  /// The last line that the operator reads before giving the verdict.
  static constexpr char kVerdictQuestion[] = "Please check the result PASS or FAIL by 'Y' or 'N' ";

 private:
  void Judge();
  static void FailRunningTest();

  bool autoJudge_;
  TestTraits traits_;
  int32_t id_;
  int (*function_)(char*);
  int result_ = 1;
};
