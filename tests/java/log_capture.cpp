// Test-only JNI library: replaces the log's writer and passes the lines to Java, one string with a
// line "tag|priority|text" for each message.
#include <android/log.h>
#include <jni.h>

#include <mutex>
#include <string>

namespace {

std::mutex mutex;  // messages may come from pool threads
std::string lines;

void capture(const __android_logger_data* data, const char* message) {
  const std::lock_guard<std::mutex> lock(mutex);
  lines += std::string(data->tag) + "|" + std::to_string(data->priority) + "|" + message + "\n";
}

}  // namespace

extern "C" JNIEXPORT void JNICALL Java_Harness_startCapture(JNIEnv*, jclass) {
  __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
  __android_log_set_logger(capture);
}

/// The lines since the last call.
extern "C" JNIEXPORT jstring JNICALL Java_Harness_takeLog(JNIEnv* env, jclass) {
  std::string taken;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    taken.swap(lines);
  }
  return env->NewStringUTF(taken.c_str());
}
