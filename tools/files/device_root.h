// Where the tool finds the device's files on a Linux machine.
#pragma once

namespace alg::tool {

/// Points ALGORITHM_DEVICE_ROOT at the sample pictures that come with the tool, unless the user has
/// set it. The folder is found relative to the executable, in the build tree and when installed.
void useSamplePictures();

}  // namespace alg::tool
