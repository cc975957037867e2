#include "tools/frames/frame_stream.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "tools/effects/effect_chain.h"
#include "tools/files/file_errors.h"
#include "tools/files/new_file.h"
#include "tools/frames/y4m.h"
#include "tools/shell/console.h"
#include "tools/shell/interrupts.h"

namespace alg::tool {
namespace {

/// Reads until the bytes are there or the input ends; returns how many came.
std::size_t readSome(std::span<uint8_t> bytes) {
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t count = read(STDIN_FILENO, &bytes[size], bytes.size() - size);
    if (count == 0) {
      break;
    }
    if (count > 0) {
      size += static_cast<std::size_t>(count);
    } else if (errno == EINTR) {
      throwIfInterrupted();
    } else {
      failFile("read", "the standard input", errno);
    }
  }
  return size;
}

void writeOut(std::span<const uint8_t> bytes) {
  if (!writeAll(STDOUT_FILENO, bytes)) {
    failFile("write", "the standard output", errno);
  }
}

void writeOut(std::string_view text) {
  writeOut({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

/// The rest of a line, without its newline. Empty at the end of the input, too.
/// @param start  what was read of it, without newline
std::string readLine(std::string start) {
  for (uint8_t c = 0; readSome({&c, 1}) == 1 && c != '\n';) {
    start += static_cast<char>(c);
    if (start.size() > kLongestY4mLine) {
      throw BadInput("the standard input is no Y4M stream: it has a line without an end");
    }
  }
  return start;
}

/// NV12 to NV21 and back.
void exchangePairs(std::span<uint8_t> chroma) {
  uint8_t* const bytes = chroma.data();
  const std::size_t pairs = chroma.size() / 2;
  for (std::size_t i = 0; i < pairs; ++i) {
    const uint8_t first = bytes[2 * i];
    bytes[2 * i] = bytes[2 * i + 1];
    bytes[2 * i + 1] = first;
  }
}

class FrameStream {
 public:
  FrameStream(Size size, std::string_view format);

  /// Returns false at the end of the input. Throws BadInput for a frame that is cut off.
  bool readFrame();
  void run(EffectChain& effects);
  void writeFrame();
  int64_t count() const { return count_; }

 private:
  enum class Layout { kNv21, kNv12, kPlanes };

  bool readFrameLine();
  [[noreturn]] void failCutOff(std::size_t came) const;
  std::span<uint8_t> chroma() { return std::span(bytes_).subspan(size_.pixels()); }

  Size size_;
  Layout layout_;
  std::vector<uint8_t> bytes_;   ///< of the frame, as NV21 while effects run
  std::vector<uint8_t> planes_;  ///< the chroma of a Y4M frame
  std::string line_;             ///< before it
  Photo pixels_;
  int64_t count_ = 0;
};

FrameStream::FrameStream(Size size, std::string_view format)
    : size_(size),
      layout_(format == "y4m"    ? Layout::kPlanes
              : format == "nv12" ? Layout::kNv12
                                 : Layout::kNv21),
      bytes_(size.pixels() * 3 / 2),
      planes_(layout_ == Layout::kPlanes ? size.pixels() / 2 : 0) {}

void FrameStream::failCutOff(std::size_t came) const {
  throw BadInput(fmt::format(
      "the last frame is cut off: {} of its {} bytes came; {} whole frames before it are written",
      came, bytes_.size(), count_));
}

/// Returns false at the end of the stream.
bool FrameStream::readFrameLine() {
  char start[kY4mFrame.size() + 1];
  const std::size_t came = readSome({reinterpret_cast<uint8_t*>(start), sizeof start});
  if (came == 0) {
    return false;
  }
  line_ = std::string(start, came);
  if (!line_.starts_with(kY4mFrame) && kY4mFrame.substr(0, came) != line_) {
    throw BadInput(fmt::format("no frame begins where frame {} should", count_ + 1));
  }
  if (came < sizeof start) {
    failCutOff(0);
  }
  line_ = line_.back() == '\n' ? line_ : readLine(line_) + '\n';
  return true;
}

bool FrameStream::readFrame() {
  const bool planar = layout_ == Layout::kPlanes;
  if (planar && !readFrameLine()) {
    return false;
  }
  const std::span<uint8_t> direct = planar ? std::span(bytes_).first(size_.pixels()) : bytes_;
  std::size_t came = readSome(direct);
  if (came == direct.size() && planar) {
    came += readSome(planes_);
  }
  if (came == 0 && !planar) {
    return false;
  }
  if (came < bytes_.size()) {
    failCutOff(came);
  }
  return true;
}

void FrameStream::run(EffectChain& effects) {
  if (effects.needsPixels() && !pixels_.pixels) {
    pixels_ = blankPhoto(size_.width, size_.height);
  }
  if (layout_ == Layout::kPlanes) {
    pairsOfPlanes(planes_.data(), chroma().data(), planes_.size() / 2);
  } else if (layout_ == Layout::kNv12) {
    exchangePairs(chroma());
  }
  const Frame frame{bytes_.data(), chroma().data(), size_.width,
                    size_.height,  size_.width,     size_.width};
  effects.applyTo(frame, pixels_);
  if (layout_ == Layout::kPlanes) {
    planesOfPairs(chroma().data(), planes_.data(), planes_.size() / 2);
  } else if (layout_ == Layout::kNv12) {
    exchangePairs(chroma());
  }
}

void FrameStream::writeFrame() {
  if (layout_ == Layout::kPlanes) {
    writeOut(line_);
    writeOut(std::span(bytes_).first(size_.pixels()));
    writeOut(planes_);
  } else {
    writeOut(bytes_);
  }
  ++count_;
}

/// A stream of the kind that was asked for; the line before a Y4M stream is passed on.
FrameStream openStream(const FramesRequest& request) {
  if (request.size.empty()) {
    std::string start(kY4mStart.size(), '\0');
    start.resize(readSome({reinterpret_cast<uint8_t*>(start.data()), start.size()}));
    if (start.empty()) {
      throw BadInput("nothing came on the standard input");
    }
    const std::string line = start == kY4mStart ? readLine(start) : start;
    const Size size = parseY4mHeader(line);
    writeOut(line + '\n');
    return {size, "y4m"};
  }
  return {parseFrameSize(request.size), request.format};
}

}  // namespace

void filterFrames(const FramesRequest& request) {
  if (request.size.empty() && !request.format.empty()) {
    throw WrongUse("--format goes with --size; a Y4M stream says both itself");
  }
  if (isatty(STDOUT_FILENO) == 1) {
    throw WrongUse("frames on a terminal are no use; redirect the standard output");
  }
  for (const int pipe : {STDIN_FILENO, STDOUT_FILENO}) {  // fewer calls a frame; for pipes alone
    constexpr int kPipeBytes = 1 << 20;
    fcntl(pipe, F_SETPIPE_SZ, kPipeBytes);
  }
  EffectChain effects(request.effects, request.choices);
  FrameStream stream = openStream(request);
  const auto start = std::chrono::steady_clock::now();
  while (stream.readFrame()) {
    stream.run(effects);
    throwIfInterrupted();
    stream.writeFrame();
  }
  if (stream.count() == 0 && !request.size.empty()) {
    throw BadInput("no frame came on the standard input");
  }
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  if (isatty(STDERR_FILENO) == 1) {
    complain(fmt::format("{} frames, {:.1f} frames a second", stream.count(),
                         static_cast<double>(stream.count()) / passed.count()));
  }
}

}  // namespace alg::tool
