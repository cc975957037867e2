#include "tools/metadata/xmp_packet.h"

#include <charconv>
#include <functional>
#include <pugixml.hpp>
#include <set>
#include <sstream>
#include <utility>

// NOLINTBEGIN(readability-implicit-bool-conversion): the way of pugixml's handles

namespace alg::tool {
namespace {

constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kExif = "http://ns.adobe.com/exif/1.0/";
constexpr std::string_view kXmp = "http://ns.adobe.com/xap/1.0/";
constexpr std::string_view kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view kCamera = "http://ns.google.com/photos/1.0/camera/";
constexpr std::string_view kContainer = "http://ns.google.com/photos/1.0/container/";
constexpr std::string_view kItem = "http://ns.google.com/photos/1.0/container/item/";
constexpr std::string_view kGainMap = "http://ns.adobe.com/hdr-gain-map/1.0/";
constexpr std::string_view kAppleGainMap = "http://ns.apple.com/HDRGainMap/1.0/";
constexpr std::string_view kOppoCamera = "http://ns.oplus.com/photos/1.0/camera/";
constexpr std::string_view kVivoCamera = "http://ns.vivo.com/photos/1.0/camera/";

/// Whether `name` is `wanted` of a namespace, by the prefix that is bound where `node` stands.
bool isNamed(std::string_view name, pugi::xml_node node, std::string_view space,
             const std::function<bool(std::string_view)>& wanted) {
  const std::size_t colon = name.find(':');
  if (colon == std::string_view::npos || !wanted(name.substr(colon + 1))) {
    return false;
  }
  const std::string declaration = "xmlns:" + std::string(name.substr(0, colon));
  for (; node; node = node.parent()) {
    if (const pugi::xml_attribute bound = node.attribute(declaration.c_str())) {
      return bound.value() == space;
    }
  }
  return false;
}

/// A property as an attribute or as an element, whichever the writer chose.
struct Property {
  pugi::xml_node owner;
  pugi::xml_attribute attribute;
  pugi::xml_node element;

  explicit operator bool() const { return attribute || element; }
  std::string value() const { return attribute ? attribute.value() : element.text().get(); }
  void set(const std::string& value) {
    if (attribute) {
      attribute.set_value(value.c_str());
    } else {
      element.text().set(value.c_str());
    }
  }
  void remove() {
    if (attribute) {
      owner.remove_attribute(attribute);
    } else {
      owner.remove_child(element);
    }
  }
};

Property propertyOf(pugi::xml_node owner, std::string_view space,
                    const std::function<bool(std::string_view)>& wanted) {
  for (const pugi::xml_attribute attribute : owner.attributes()) {
    if (isNamed(attribute.name(), owner, space, wanted)) {
      return {owner, attribute, {}};
    }
  }
  for (const pugi::xml_node child : owner.children()) {
    if (isNamed(child.name(), child, space, wanted)) {
      return {owner, {}, child};
    }
  }
  return {};
}

/// Every node of the document, until `use` returns true.
bool anyNode(pugi::xml_node node, const std::function<bool(pugi::xml_node)>& use) {
  for (pugi::xml_node at = node.first_child(); at;) {
    if (use(at)) {
      return true;
    }
    // The next in the document's order, without recursion: files choose the depth.
    pugi::xml_node next = at.first_child();
    for (; !next && at && at != node; at = at.parent()) {
      next = at.next_sibling();
    }
    at = next;
  }
  return false;
}

/// The first property of that name anywhere below `node`.
Property search(pugi::xml_node node, std::string_view space,
                const std::function<bool(std::string_view)>& wanted) {
  Property found;
  anyNode(node, [&](pugi::xml_node at) {
    found = propertyOf(at, space, wanted);
    return static_cast<bool>(found);
  });
  return found;
}

std::function<bool(std::string_view)> exactly(std::string_view wanted) {
  return [wanted](std::string_view name) { return name == wanted; };
}

uint64_t asNumber(const std::string& text) {
  uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

/// The elements that describe items: each has a Mime, in itself or in an rdf:Description.
std::vector<pugi::xml_node> itemNodes(pugi::xml_node document) {
  std::vector<pugi::xml_node> nodes;
  const Property directory = search(document, kContainer, exactly("Directory"));
  anyNode(directory.element, [&](pugi::xml_node node) {
    if (propertyOf(node, kItem, exactly("Mime"))) {
      nodes.push_back(node);
    }
    return false;
  });
  return nodes;
}

/// The element of the outermost list that an item stands in; null for none.
pugi::xml_node elementOf(pugi::xml_node item) {
  pugi::xml_node found;
  for (; item; item = item.parent()) {
    if (isNamed(item.parent().name(), item.parent(), kRdf, exactly("Seq"))) {
      found = item;
    }
  }
  return found;
}

}  // namespace

XmpPacket::XmpPacket(std::unique_ptr<pugi::xml_document> document)
    : document_(std::move(document)) {}
XmpPacket::XmpPacket(XmpPacket&&) noexcept = default;
XmpPacket& XmpPacket::operator=(XmpPacket&&) noexcept = default;
XmpPacket::~XmpPacket() = default;

std::optional<XmpPacket> XmpPacket::parse(std::string_view packet) {
  constexpr unsigned kAsItStands = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_pi |
                                   pugi::parse_comments | pugi::parse_declaration |
                                   pugi::parse_ws_pcdata | pugi::parse_fragment;
  packet = packet.substr(0, packet.find_last_not_of('\0') + 1);
  auto document = std::make_unique<pugi::xml_document>();
  if (!document->load_buffer(packet.data(), packet.size(), kAsItStands) ||
      !anyNode(*document, [](pugi::xml_node node) {
        return isNamed(node.name(), node, kRdf, exactly("RDF"));
      })) {
    return std::nullopt;
  }
  return XmpPacket(std::move(document));
}

std::optional<std::string> XmpPacket::find(std::string_view space, std::string_view name) const {
  const Property property = search(*document_, space, exactly(name));
  return property ? std::optional(property.value()) : std::nullopt;
}

void XmpPacket::set(std::string_view space, std::string_view name, std::string_view value) {
  Property property = search(*document_, space, exactly(name));
  if (property && property.value() != value) {
    property.set(std::string(value));
    changed_ = true;
  }
}

void XmpPacket::remove(std::string_view space, std::string_view begin) {
  const auto wanted = [begin](std::string_view name) { return name.starts_with(begin); };
  for (Property found = search(*document_, space, wanted); found;
       found = search(*document_, space, wanted)) {
    found.remove();
    changed_ = true;
  }
}

int XmpPacket::orientation() const {
  const auto value = asNumber(find(kTiff, "Orientation").value_or("0"));
  return value <= 8 ? static_cast<int>(value) : 0;
}

void XmpPacket::describe(uint32_t width, uint32_t height) {
  set(kTiff, "Orientation", "1");
  for (const auto& [space, name, value] :
       {std::tuple(kTiff, "ImageWidth", width), std::tuple(kTiff, "ImageLength", height),
        std::tuple(kExif, "PixelXDimension", width),
        std::tuple(kExif, "PixelYDimension", height)}) {
    set(space, name, std::to_string(value));
  }
}

void XmpPacket::dropThumbnails() { remove(kXmp, "Thumbnails"); }

void XmpPacket::describeFollowers(uint64_t gainMapBytes, bool others) {
  std::size_t left = 0;
  std::set<pugi::xml_node> unwanted;  // of a broken packet, several items may share an element
  for (pugi::xml_node node : itemNodes(*document_)) {
    const std::string semantic = propertyOf(node, kItem, exactly("Semantic")).value();
    const bool map = semantic == "GainMap";
    Property length = propertyOf(node, kItem, exactly("Length"));
    if (map ? gainMapBytes == 0 : semantic != "Primary" && !others) {
      unwanted.insert(elementOf(node));
    } else if (map && length && asNumber(length.value()) != gainMapBytes) {
      length.set(std::to_string(gainMapBytes));
      changed_ = true;
      ++left;
    } else {
      left += semantic == "Primary" ? 0U : 1U;
    }
  }
  for (pugi::xml_node element : unwanted) {
    changed_ |= element.parent().remove_child(element);
  }
  if (left == 0) {
    remove(kContainer, "Directory");
  }
  if (gainMapBytes == 0) {
    remove(kGainMap, "");
    remove(kAppleGainMap, "");
  }
  if (!others) {
    for (const auto& [space, begin] :
         {std::pair(kCamera, "MicroVideo"), std::pair(kCamera, "MotionPhoto"),
          std::pair(kOppoCamera, "MotionPhoto"), std::pair(kOppoCamera, "OLivePhoto"),
          std::pair(kOppoCamera, "VideoLength"), std::pair(kVivoCamera, "VMotionPhoto")}) {
      remove(space, begin);
    }
  }
}

std::string XmpPacket::text() const {
  std::ostringstream stream;
  document_->save(stream, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return stream.str();
}

}  // namespace alg::tool

// NOLINTEND(readability-implicit-bool-conversion)
