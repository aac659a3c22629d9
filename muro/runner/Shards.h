// Splits a selection into parts for several boards.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "RunSettings.h"
#include "TestList.h"

namespace runner {

/// How long tests took, in seconds, by id.
using Durations = std::map<std::string, double>;

/// Reads how long the tests of an earlier run took, from its result directory or its JUnit file.
/// Returns a one-line error, empty on success.
std::string ReadDurations(const std::string& path, Durations& durations);

/// The tests of one shard, in list order. The shards of a selection are disjoint and complete, and
/// they are the same on every machine. Tests of modules whose tests depend on each other stay
/// together. Each shard takes about as long as the others; a test without a duration counts with
/// the average of the others.
std::vector<TestEntry> TestsOf(const Shard& shard, const std::vector<TestEntry>& selection,
                               const Durations& durations);

}  // namespace runner
