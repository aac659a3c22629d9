// Terminal modes that are restored at the end of their scope or of the program.
#pragma once

#include <termios.h>

/// Changes standard input for the lifetime of this object: clears local modes of the terminal, if
/// it is one, and adds flags of its open file. Before a signal ends or stops the program,
/// everything is restored; when the program continues, the change is made again. One object at a
/// time.
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
