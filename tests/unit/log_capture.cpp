#include "log_capture.h"

#include <android/log.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

std::atomic<int> loggedLines;

static std::mutex mutex;
static std::string lines;

extern "C" [[gnu::visibility("default")]] int __android_log_print(int priority, const char* tag,
                                                                  const char* format, ...) {
  char text[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  addLine(std::to_string(priority) + " " + tag + ": " + text);
  return ++loggedLines;
}

void addLine(const std::string& line) {
  const std::lock_guard lock(mutex);
  lines += line + "\n";
}

std::string takeLog() {
  const std::lock_guard lock(mutex);
  loggedLines = 0;
  return std::exchange(lines, {});
}
