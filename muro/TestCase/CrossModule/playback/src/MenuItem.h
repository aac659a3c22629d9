// What the menu entries of the cross-module test have in common.
#pragma once

#include <string>

class CM_TestCase;

/// What an answer that means nothing is told.
inline constexpr char kNotRecognised[] = "Can not recognize your selection!";

/// Prints the START line of an entry and builds the catalogue.
void StartMenuItem(const char* function);

/// Prints the catalogue, one test case a line, numbered from 1.
void ListTestCases();

/// Prints the question and reads a line as a number; anything that does not begin with one is 0.
int AskSelection(const char* function, const std::string& question);

/// The question for a test case by its number in the list, up to what else may be chosen.
std::string TestCaseQuestion();

/// The test case of a number in the list; null when there is none.
CM_TestCase* TestCaseAt(int number);

/// How many test cases the list has.
int TestCaseCount();
