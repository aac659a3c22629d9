// Unit tests of the secure video path. Each takes a scratch buffer that it ignores.
#pragma once

class UTSvpTestCase {
 public:
  static int UTSvpTestCase1(char*);
  /// A placeholder for the operator's own player: always returns 1.
  static int UTSvpTestCase2(char*);
};
