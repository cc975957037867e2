// Paths on the device.
#pragma once

#include <string>
#include <string_view>

namespace alg {

/// The device folder in which the application installs the pictures of its effects.
inline constexpr char kPictureFolder[] = "/data/data/com.android.camera/effect/";

/// The place of a device path such as "/data/..." or "/system/...". On Linux the folder named by
/// the environment variable ALGORITHM_DEVICE_ROOT, if set, is prepended; on the device the path is
/// used unchanged.
std::string devicePath(std::string_view path);

}  // namespace alg
