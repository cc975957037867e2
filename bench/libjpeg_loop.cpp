// Decodes a JPEG file and encodes it again, row by row: what no program that changes photos can go
// below on one thread.
//
// usage: libjpeg_loop QUALITY IN.jpg OUT.jpg
#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include <cstdlib>
#include <vector>

int main(int argc, char** argv) {
  std::FILE* const in = argc == 4 ? std::fopen(argv[2], "rb") : nullptr;
  std::FILE* const out = in != nullptr ? std::fopen(argv[3], "wb") : nullptr;
  if (out == nullptr) {
    return EXIT_FAILURE;
  }
  jpeg_error_mgr errors{};
  jpeg_decompress_struct from{};
  jpeg_compress_struct to{};
  from.err = to.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&from);
  jpeg_create_compress(&to);
  jpeg_stdio_src(&from, in);
  jpeg_stdio_dest(&to, out);
  jpeg_read_header(&from, TRUE);
  from.out_color_space = JCS_EXT_RGB;
  jpeg_start_decompress(&from);
  to.image_width = from.output_width;
  to.image_height = from.output_height;
  to.input_components = 3;
  to.in_color_space = JCS_EXT_RGB;
  jpeg_set_defaults(&to);
  jpeg_set_quality(&to, std::atoi(argv[1]), TRUE);
  jpeg_start_compress(&to, TRUE);
  // From an odd address: to multiples of 32 bytes the codec stores past the caches, which costs the
  // encoder a third more.
  std::vector<JSAMPLE> row(32 + std::size_t{3} * from.output_width);
  for (JSAMPROW rows[] = {row.data() + 1}; from.output_scanline < from.output_height;) {
    jpeg_read_scanlines(&from, rows, 1);
    jpeg_write_scanlines(&to, rows, 1);
  }
  jpeg_finish_decompress(&from);
  jpeg_finish_compress(&to);
  jpeg_destroy_decompress(&from);
  jpeg_destroy_compress(&to);
  std::fclose(in);
  return std::fclose(out) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
