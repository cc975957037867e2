#include "tools/shell/interrupts.h"

#include <atomic>
#include <csignal>

namespace alg::tool {
namespace {

std::atomic<int> pendingSignal = 0;  // set by the handler, read by all threads
static_assert(std::atomic<int>::is_always_lock_free);

}  // namespace

void deferInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int signal) { pendingSignal = signal; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // no SA_RESTART: a blocked read comes back
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal, &action, nullptr);
    }
  }
}

void throwIfInterrupted() {
  if (const int signal = pendingSignal; signal != 0) {
    throw Interrupted{signal};
  }
}

}  // namespace alg::tool
