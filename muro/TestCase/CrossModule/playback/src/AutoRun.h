// Runs and verifies test cases one after another, for a number of rounds.
#pragma once

#include <string>
#include <vector>

#include "../../verify/src/ModuleVerification.h"

class CM_TestCase;

/// What is verified after a run.
enum class Checks {
  kAll,       // every stage, and the synchronisation if the content has marks for it
  kSyncOnly,  // only the synchronisation
};

enum class Verdict { kPass, kFail, kNotRun };

/// Verifies all stages of the current test case and stores the report, like the menu entry of that
/// name. Returns whether it passed.
bool VerifyAll(Dumps dumps = Dumps::kOfARun);

/// Analyses the synchronisation of the current test case, like the menu entry of that name. Returns
/// whether it passed.
bool VerifyAvSyncAlone();

/// Starts an automatic test: sets the time stamp used in the names of its reports. Returns 0.
int Auto_Test_Start();

/// Plays a test case and verifies its dumps; `progress` as in `Run_Playback_Test_Case`.
Verdict RunAndVerify(CM_TestCase* testCase, Checks checks, const std::string& progress = "");

/// The test cases of a list of numbers, as the catalogue's list shows them to the operator;
/// separators are blanks and commas. Invalid entries are reported in a message of `function`.
std::vector<CM_TestCase*> SelectTestCases(const std::string& list, const char* function);

/// All test cases of the catalogue.
std::vector<CM_TestCase*> AllTestCases();

/// Runs the test cases in turn, `rounds` times, and prints a line for each round and a summary with
/// one line per case at the end. Returns 0 if all passed in all rounds, else 1.
int RunRounds(const std::vector<CM_TestCase*>& cases, int rounds, Checks checks);
