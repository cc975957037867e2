// Runs a fuzz target, without a fuzzer, on files and on all files of folders.
// usage: <target>_replay PATH...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

/// The files, those of a folder in the order of their names; none when something is missing.
std::vector<fs::path> filesOf(const std::vector<fs::path>& paths) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths) {
    std::vector<fs::path> here;
    std::error_code noFolder;
    for (const auto& entry : fs::directory_iterator(path, noFolder)) here.push_back(entry.path());
    if (noFolder && fs::is_regular_file(path)) here.push_back(path);
    if (here.empty()) {
      std::fprintf(stderr, "replay: nothing at %s\n", path.c_str());
      return {};
    }
    std::ranges::sort(here);
    files.insert(files.end(), here.begin(), here.end());
  }
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  const auto files = filesOf({argv + 1, argv + argc});
  for (const fs::path& file : files) {
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);  // the last line before a crash names its file
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
    const std::vector<uint8_t> bytes(content.begin(), content.end());  // no spare room behind
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  return files.empty() ? 1 : 0;
}
