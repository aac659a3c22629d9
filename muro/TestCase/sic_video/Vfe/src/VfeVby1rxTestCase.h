// Manual V-by-One receiver tests. Each takes a scratch buffer, which it ignores, and returns 0 for
// pass, 1 for fail.
#pragma once

class VfeVby1rxMUROTestCase {
 public:
  static int VfeVby1rxMUROTestCase1(char*);
  static int VfeVby1rxMUROTestCase2(char*);
  static int VfeVby1rxMUROTestCase3(char*);
  static int VfeVby1rxMURO_GetTimingInfo(char*);
};
