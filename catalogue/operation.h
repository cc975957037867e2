// Image operations as data. Each operation is described by one row next to its routine;
// operations.h lists them all. Pipeline, tool, documents, benchmarks, tests and fuzzers read the
// rows and have no list of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace alg {

struct SoftLightEffect;

/// The group in which people find an operation. All but the last two are effects: they change how a
/// photo looks and keep its size.
enum class Family : uint8_t { kPretty, kTone, kLight, kDrawing, kPicture, kGeometry, kBlend };

enum class Pixels : uint8_t {
  kPackedRgb,  ///< 3 bytes, R, G, B; the result has them crossed: B, G, R
  kPackedBgr,  ///< 3 bytes, B, G, R; the result has them crossed: R, G, B
  kWords,      ///< 4 bytes, B, G, R, A; the result has the same order
  kInts,       ///< 3 ints, B, G, R; the result has them crossed
  kFrame,      ///< a semi-planar YUV 4:2:0 frame with packed rows
};

/// Bytes of `pixels` pixels of a kind.
constexpr std::size_t bytesOf(Pixels kind, std::size_t pixels) {
  switch (kind) {
    case Pixels::kWords:
      return 4 * pixels;
    case Pixels::kInts:
      return 3 * sizeof(int) * pixels;
    case Pixels::kFrame:
      return 3 * pixels / 2;
    default:
      return 3 * pixels;
  }
}

/// What an output pixel depends on, besides the parameters.
enum class Reach : uint8_t {
  kPixel,       ///< the source pixel at the same position
  kPlace,       ///< that pixel, and its position in the image
  kNeighbours,  ///< the pixels within `radius` rows and columns, and the position; what is nearer
                ///< to an edge than that may be filled from elsewhere
  kAnything,
};

/// The size of the result.
enum class ResultSize : uint8_t {
  kSame,       ///< the source's
  kTurned,     ///< rows become columns
  kByDegrees,  ///< that, unless the first parameter is 180
  kChosen,     ///< the caller chooses
};

/// How source and destination may overlap.
enum class Overlap : uint8_t {
  kApart,    ///< not at all
  kInPlace,  ///< not at all, or they are the same buffer
  kAny,      ///< in any way: the result is as if pixels were taken one at a time, in memory order
             ///< unless the formula names another
};

/// Whether any band of rows can be computed on its own.
enum class Bands : uint8_t {
  kAny,   ///< from the same rows of the source (and of what the destination holds), whole pictures,
          ///< and their position in the image: Call::firstRow and imageHeight
  kNear,  ///< from these together with the operation's `halo` rows above and below, as far as the
          ///< image has them: of a call with all of those, the band's own come out as in the image
  kWholeImage
};

/// A number that a caller may choose. For kInteger, least, most and preset are whole numbers.
struct Parameter {
  enum class Type : uint8_t { kInteger, kNumber };

  const char* name;
  Type type = Type::kNumber;
  double least = 0;
  double most = 0;
  double preset = 0;
  double step = 0;             ///< values are least, least + step ...; 0: any value in the range
  const char* unit = nullptr;  ///< null: a bare number
  const char* help;
};

/// A picture that an operation takes in addition to its source.
struct PictureRole {
  enum class Size : uint8_t {
    kAny,             ///< stretched over the image by nearest neighbour
    kCoversTheFirst,  ///< at least as wide and as tall as the operation's first picture
    kSameAsImage,     ///< the image's width and height
  };

  const char* name;
  const char* file = nullptr;           ///< the device's, in its folder of effect pictures; or null
  const char* landscapeFile = nullptr;  ///< another for images wider than tall; or null
  Size size = Size::kAny;
  bool read = true;  ///< false: the routine accepts the picture but never reads it
  const char* help;

  /// The device's file for an image of that shape, or null.
  constexpr const char* fileFor(bool landscape) const {
    return landscape && landscapeFile != nullptr ? landscapeFile : file;
  }
};

/// The pixels of a picture: 4 bytes each, rows packed.
struct PictureView {
  const uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
};

inline constexpr std::size_t kMostParameters = 4;
inline constexpr std::size_t kMostPictures = 2;

/// One run of an operation. The caller keeps to what the operation's row allows; nothing is
/// checked.
struct Call {
  uint8_t* src = nullptr;  ///< width x height pixels of the operation's kind, rows packed
  uint8_t* dst = nullptr;  ///< as many pixels, or resultWidth x resultHeight
  int width = 0;           ///< pixels per row
  int height = 0;          ///< rows of this call
  int resultWidth = 0;     ///< read only if the operation changes the size (setResultSize)
  int resultHeight = 0;
  int firstRow = 0;                     ///< of this call in the image; 0 for Bands::kWholeImage
  int imageHeight = 0;                  ///< rows of the whole image; 0: this call's height
  double values[kMostParameters] = {};  ///< in the order of the parameters
  PictureView pictures[kMostPictures];  ///< in the order of the pictures

  float number(std::size_t index) const { return static_cast<float>(values[index]); }
  int integer(std::size_t index) const { return static_cast<int>(values[index]); }
  int rowsOfImage() const { return imageHeight != 0 ? imageHeight : height; }
};

/// A routine whose only arguments are two images of the same size.
using PlainRoutine = void(unsigned char* src, unsigned char* dst, int width, int height);

template <PlainRoutine* kRoutine>
void runPlain(const Call& call) {
  kRoutine(call.src, call.dst, call.width, call.height);
}

/// An operation as the effect pipeline knows it, under the name that the application uses. Names,
/// identifiers and strip counts are contract.
struct PipelineName {
  /// What else happens when the picture is missing or can't be decoded; the frame passes through in
  /// any case.
  enum class OnMissing : uint8_t {
    kSilent,
    kLog,             ///< logs a line
    kKeepLastPicture  ///< reports the picture that was decoded last, if there is one
  };

  const char* name = nullptr;  ///< null: the pipeline does not know the operation
  int identifier = -1;
  int strips = 4;
  bool runs = false;          ///< false: frames pass through under this name
  bool loadsPicture = false;  ///< the operation's first picture is looked up
  OnMissing onMissing = OnMissing::kSilent;
  bool flagsLandscape = false;  ///< effectFlag is -1 on a landscape frame
};

struct Operation {
  const char* name;     ///< for people, and on the command line
  const char* routine;  ///< the exported one
  Family family;
  const char* shows;    ///< one sentence
  const char* formula;  ///< one or more sentences; v is a channel's value, 0 to 255
  Pixels pixels;
  Reach reach = Reach::kPixel;
  int radius = 0;  ///< for kNeighbours
  ResultSize resultSize = ResultSize::kSame;
  Overlap overlap = Overlap::kAny;
  Bands bands = Bands::kAny;
  int halo = 0;  ///< for Bands::kNear: rows above and below that a band is made from
  bool readsDestination = false;  ///< the result depends on what dst held before the call
  std::span<const Parameter> parameters = {};  ///< kMostParameters at most
  std::span<const PictureRole> pictures = {};  ///< kMostPictures at most
  PipelineName pipeline = {};
  /// For a row that reads the destination: the level to fill it with first where what it keeps of
  /// the source would look out of place; -1: nothing of the kind.
  int backdrop = -1;
  /// Why values that are in their ranges don't go with the image; null where they do.
  const char* (*misfit)(const Call& call) = nullptr;
  void (*run)(const Call& call);
  /// For soft-light effects, whose work memory outlives the bands of an image: their curves;
  /// otherwise null.
  const SoftLightEffect& (*softLight)() = nullptr;
};

constexpr bool isEffect(const Operation& operation) { return operation.family < Family::kGeometry; }

/// A call with every parameter at its preset; the caller fills in images and pictures.
constexpr Call presetCall(const Operation& operation) {
  Call call;
  for (std::size_t i = 0; i < operation.parameters.size(); ++i) {
    call.values[i] = operation.parameters[i].preset;
  }
  return call;
}

/// Sets the size of the call's result as it follows from width, height and values; a chosen one
/// stays.
constexpr void setResultSize(const Operation& operation, Call& call) {
  constexpr double kHalfTurn = 180;
  const ResultSize size = operation.resultSize;
  if (size == ResultSize::kChosen) return;
  const bool turned = size == ResultSize::kTurned ||
                      (size == ResultSize::kByDegrees && call.values[0] != kHalfTurn);
  call.resultWidth = turned ? call.height : call.width;
  call.resultHeight = turned ? call.width : call.height;
}

}  // namespace alg
