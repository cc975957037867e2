#include "tools/files/file_errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "tools/shell/failure.h"
#include "tools/shell/interrupts.h"

namespace alg::tool {

bool mayPass(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:  // of a limit that the shell has set
    case ENOMEM:
    case ENOBUFS:
    case EIO:
    case EREMOTEIO:
    case ESTALE:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ENETDOWN:
    case ENETUNREACH:
    case ECONNRESET:
    case ENOTCONN:
    case EMFILE:
    case ENFILE:
    case EAGAIN:
    case EBUSY:
    case ENOLCK:
      return true;
    default:
      return false;
  }
}

namespace {

/// What the user can do; empty where the reason says it all.
std::string_view advice(std::string_view action, int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "; make room and try again";
    case ENOENT:
      return action == "read" ? "" : "; make its folder first";
    case ENOMEM:
    case EMFILE:
      return "; try again with a lower --jobs";
    default:
      return "";
  }
}

}  // namespace

void failFile(std::string_view action, const std::filesystem::path& path, int error) {
  throwIfInterrupted();
  const std::string sentence = fmt::format("cannot {} {}: {}{}", action, path.string(),
                                           std::strerror(error), advice(action, error));
  if (mayPass(error)) {
    throw TryAgain(sentence);
  }
  throw UserError(sentence, action == "read" ? ExitCode::kBadInput : ExitCode::kFailed);
}

}  // namespace alg::tool
