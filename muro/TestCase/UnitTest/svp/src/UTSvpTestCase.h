// Unit tests of the secure video path. Each takes a scratch buffer that it ignores.
#pragma once

class UTSvpTestCase {
 public:
  static int UTSvpTestCase1(char*);
  /// Returns 1: it is there for the operator's own player, and its outcome is fixed.
  static int UTSvpTestCase2(char*);
};
