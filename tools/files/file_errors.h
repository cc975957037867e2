// What the system's error numbers mean for users.
#pragma once

#include <filesystem>
#include <string_view>

namespace alg::tool {

/// Whether another run may succeed: no room, no memory, an I/O error.
bool mayPass(int error);

/// Throws TryAgain for an errno that may pass, else BadInput for reading and UserError for anything
/// else. When a signal has come, that is the reason why a blocking call came back: throws
/// Interrupted.
/// @param action  "read", "write", "create"
[[noreturn]] void failFile(std::string_view action, const std::filesystem::path& path, int error);

}  // namespace alg::tool
