// Terminal modes that do not outlive the program or the moment for which they are set.
#pragma once

#include <termios.h>

/// Changes standard input for the life of this object: clears local modes of the terminal, where it
/// is one, and adds flags of its open file. A signal that ends or stops the program meanwhile finds
/// all set back; when the program goes on, the change is made again. One object at a time.
class TerminalMode {
 public:
  explicit TerminalMode(tcflag_t clearedModes, int addedFlags = 0);
  ~TerminalMode();
  TerminalMode(const TerminalMode&) = delete;
  TerminalMode& operator=(const TerminalMode&) = delete;

 private:
  static void CatchSignals();
  static void GiveBack();
  static void LetSignalAct(int signal);
  static void GoOn(int signal);
  void Change() const;
  void SetBack() const;

  termios saved_{};
  termios changed_{};
  bool isTerminal_;
  int savedFlags_ = 0;
  int addedFlags_;
};
