// What the menu entries of the cross-module test have in common.
#pragma once

class CM_TestCase;

/// Prints the START line of an entry and builds the catalogue.
void StartMenuItem(const char* function);

/// Prints the catalogue, one test case a line, numbered from 1.
void ListTestCases();

/// Asks for a test case by its number in the list.
int AskTestCase(const char* function);

/// The test case of a number in the list; null when there is none.
const CM_TestCase* TestCaseAt(int number);
