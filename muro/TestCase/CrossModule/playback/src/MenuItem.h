// Functions shared by the menu entries of the cross-module test.
#pragma once

#include <string>

class CM_TestCase;

/// Printed in reply to an invalid answer.
inline constexpr char kNotRecognised[] = "Can not recognize your selection!";

/// Prints the START line of an entry and builds the catalogue.
void StartMenuItem(const char* function);

/// Prints the catalogue, one test case per line, numbered from 1.
void ListTestCases();

/// Prints the question and reads a line as a number; an answer that does not begin with a number
/// counts as 0.
int AskSelection(const char* function, const std::string& question);

/// The question for a test case by its number in the list, up to the further choices.
std::string TestCaseQuestion();

/// The test case with this number in the list; null if there is none.
CM_TestCase* TestCaseAt(int number);

/// Number of test cases in the list.
int TestCaseCount();
