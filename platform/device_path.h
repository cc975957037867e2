// Paths on the device.
#pragma once

#include <string>
#include <string_view>

namespace alg {

/// Where the application installs the pictures of its effects, on the device.
inline constexpr char kPictureFolder[] = "/data/data/com.android.camera/effect/";

/// The place of a device path such as "/data/..." or "/system/...". On Linux the folder named by
/// the environment variable ALGORITHM_DEVICE_ROOT is put before it when it is set; on the device
/// the path is used as it is.
std::string devicePath(std::string_view path);

}  // namespace alg
