// The menu tree: menus with children (ModuleCase) and tests (TestCase).
#pragma once

#include <cstdint>
#include <vector>

/// What a run has to know about a test before it runs the test unattended.
enum TestTraits : uint8_t {
  kNoTraits = 0,
  kAsks = 1,        // may read the console before the verdict, or needs somebody to pull a cable
  kDisruptive = 2,  // changes the board permanently: reboots it, replaces golden data
};

constexpr TestTraits operator|(TestTraits a, TestTraits b) {
  return static_cast<TestTraits>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// One declared test. Tables of these records live for the whole run and are never copied.
struct ST_THAL_TEST_CASE_T {
  int32_t id;              // shown in the menus' reports, never used as an index
  char name[128];          // menu label
  char description[256];   // second menu column
  int (*function)(char*);  // 0 pass, 1 fail, anything else neither; may be null
  bool autoJudge;          // a 0 counts as pass immediately; otherwise the operator is asked
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
  /// The i-th child, null if there is none.
  virtual Case* getChild(unsigned short) { return nullptr; }
  /// The menu that contains this node, null for the root.
  virtual Case* getParaent() { return parent_; }
  virtual void setParaent(Case* parent) { parent_ = parent; }
  virtual unsigned short getChildCount() { return 0; }
  /// Acts on the selection of this node and returns the node to show next, null to quit.
  virtual Case* enterMenu() = 0;
  virtual void printMenu() = 0;

 protected:
  const char* name_;
  const char* description_;

 private:
  Case* parent_ = nullptr;
};

/// A menu. Owns copies of its name and description but not its children.
class ModuleCase : public Case {
 public:
  /// A null pointer counts as an empty text.
  ModuleCase(const char* name, const char* desc);
  ~ModuleCase() override;

  int Run() override;
  /// Appends a child and becomes its parent. A child may be in several menus.
  void add(Case* child) override;
  /// Removes the last child, whatever the argument is.
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
  /// Runs the test function and asks the operator for a verdict if one is required. Does not count
  /// or report anything. Returns the result; 1 without a function.
  int Execute();
  /// Counts a run that ended with `result` and writes its line into the report. Returns false when
  /// the report could not be written.
  bool Finish(int result);
  /// Runs the test and returns the menu that contains it.
  Case* enterMenu() override;
  void printMenu() override;
  /// Writes the test's line into the report. Returns false on failure.
  bool EndTest();

  int32_t getId() const { return id_; }
  bool isAutoJudged() const { return autoJudge_; }
  bool hasFunction() const { return function_ != nullptr; }
  /// True if the test may need its operator before the verdict.
  bool asks() const { return (traits_ & kAsks) != 0; }
  /// True if the test changes the board permanently.
  bool isDisruptive() const { return (traits_ & kDisruptive) != 0; }
  /// The running test, null in menus.
  static const TestCase* Running();
  /// Sets the function that is called when a test begins, before it prints anything; null for none.
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
