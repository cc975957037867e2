// Ctrl-C, and the other signals that ask a process to end.
#pragma once

namespace alg::tool {

/// Thrown by throwIfInterrupted(); not an error, so not derived from one.
struct Interrupted {
  int signal;
};

/// From now on SIGINT, SIGTERM and SIGHUP are only noted, so that temporary files can be removed on
/// the way out. A second signal of the same kind ends the process at once.
void deferInterrupts();
/// Throws Interrupted when a signal has come. Call it between steps of long work.
void throwIfInterrupted();

}  // namespace alg::tool
