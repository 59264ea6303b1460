#pragma once

#include <string>

namespace ingest {

// Counts the system calls of this process that change files, made by the program and by its libraries alike: this test
// program puts its own functions in the place of the C library's.

// From now on: dies as if by `kill -9` before the call of that number, counted from 1; 0 never dies.
void dieBeforeChange(int number);
// Calls counted since dieBeforeChange.
int changesMade();
// From now on the disk has no room for what is written at a place of a file (SQLite's databases, kept files) whose path
// holds `part`; empty: it has room for all.
void fillDiskFor(std::string part);

}  // namespace ingest
