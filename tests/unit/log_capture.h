// Stands in for the platform's log: each line is kept as "priority tag: text\n".
#pragma once

#include <atomic>
#include <string>

/// The lines since the last call.
std::string takeLog();
/// Writes a line of the test's own between them.
void addLine(const std::string& line);
/// How many lines there have been since then.
extern std::atomic<int> loggedLines;
