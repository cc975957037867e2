#include "tools/metadata/photoshop_block.h"

#include <optional>

namespace alg::tool {
namespace {

constexpr uint16_t kIptc = 0x0404;
constexpr uint16_t kOldThumbnail = 0x0409;
constexpr uint16_t kThumbnail = 0x040C;

/// "8BIM", number (2 bytes), name (a byte of length, the name, even in all), size (4), data (even
/// in all). Numbers are big-endian.
struct Resource {
  uint16_t number;
  Bytes whole;
};

std::optional<Resource> firstOf(Bytes rest) {
  constexpr std::size_t kName = 6;
  const std::string_view text = asText(rest);
  if (rest.size() <= kName || text[0] != '8' || text[3] != 'M') {  // 8BIM; some write 8BAM
    return std::nullopt;
  }
  const std::size_t size = (kName + 1 + rest[kName] + 1) & ~std::size_t{1};
  if (rest.size() < size + 4) {
    return std::nullopt;
  }
  const std::size_t bytes = std::size_t{rest[size]} << 24U | std::size_t{rest[size + 1]} << 16U |
                            std::size_t{rest[size + 2]} << 8U | rest[size + 3];
  if (rest.size() - size - 4 < bytes) {
    return std::nullopt;
  }
  const std::size_t end = std::min(rest.size(), size + 4 + bytes + (bytes & 1U));
  return Resource{static_cast<uint16_t>(rest[4] << 8U | rest[5]), rest.first(end)};
}

}  // namespace

void dropThumbnails(std::vector<uint8_t>& resources) {
  std::vector<uint8_t> kept;
  Bytes rest = resources;
  while (const auto resource = firstOf(rest)) {
    if (resource->number != kThumbnail && resource->number != kOldThumbnail) {
      kept.insert(kept.end(), resource->whole.begin(), resource->whole.end());
    }
    rest = rest.subspan(resource->whole.size());
  }
  kept.insert(kept.end(), rest.begin(), rest.end());
  resources = std::move(kept);
}

std::vector<uint8_t> iptcResource(Bytes records) {
  if (records.empty()) {
    return {};
  }
  const auto size = static_cast<uint32_t>(records.size());
  std::vector<uint8_t> resource = {'8', 'B', 'I', 'M', kIptc >> 8U, kIptc & 0xFFU, 0, 0};
  for (const int shift : {24, 16, 8, 0}) {
    resource.push_back(static_cast<uint8_t>(size >> static_cast<unsigned>(shift)));
  }
  resource.insert(resource.end(), records.begin(), records.end());
  if (size % 2 != 0) {
    resource.push_back(0);
  }
  return resource;
}

}  // namespace alg::tool
