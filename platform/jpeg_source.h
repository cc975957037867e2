// A JpegInput as the codec reads it.
#pragma once

#include "platform/jpeg_codec.h"
#include "platform/jpeg_io.h"

namespace alg {

/// Like the codec's own source of bytes in memory: behind the end of the file come end markers.
class JpegSource {
 public:
  explicit JpegSource(JpegInput& input);

  /// For the codec, which calls it until the next start. Headers that are longer than
  /// `mostHeaderBytes` fail with kTooComplex.
  jpeg_source_mgr& start(std::size_t mostBytes, std::size_t mostHeaderBytes);
  /// Called behind the header.
  void endHeader(JpegErrors& errors);
  /// Whether the codec has run past the end of the file.
  bool ranOut() const { return ranOut_; }
  /// Whether nothing but an end marker is left, or not even that.
  bool nothingLeft();
  /// Goes through the input from its start: the offset of its last marker; 0 if it has none.
  bool findLastMarker(std::size_t& offset);
  bool rewind() { return input_.rewind(); }

 private:
  static JpegSource& of(j_decompress_ptr jpeg) { return *reinterpret_cast<JpegSource*>(jpeg->src); }
  bool takeNext();
  void fill(j_decompress_ptr jpeg);
  void skip(j_decompress_ptr jpeg, std::size_t bytes);

  jpeg_source_mgr base_{};  // first: the codec's pointer to it is one to this
  JpegInput& input_;
  std::size_t given_ = 0;  ///< bytes of the pieces so far
  std::size_t mostBytes_ = 0;
  std::size_t mostHeaderBytes_ = 0;
  bool ranOut_ = false;
};

}  // namespace alg
