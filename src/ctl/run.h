#pragma once

namespace ctl {

// The whole program: parses the line, checks the right that the command needs, runs it. The result is the exit status:
// 0 done, 1 failed with a message on standard error, 2 wrong usage.
int run(int count, const char* const* words);

}  // namespace ctl
