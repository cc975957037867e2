#include "tools/commands/commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

#include "tools/batch/apply_options.h"
#include "tools/commands/catalogue.h"
#include "tools/commands/completion.h"
#include "tools/commands/manual.h"
#include "tools/effects/effect_names.h"
#include "tools/effects/effect_options.h"
#include "tools/shell/file_kinds.h"

namespace alg::tool {
namespace {

constexpr char kFrameSize[] = "size of the input in pixels, both even";

/// Chooses `work` when the user names this command. It is done after parsing.
void setWork(CLI::App& command, Options& options, std::function<bool()> work) {
  command.callback([&options, work = std::move(work)] { options.work = work; });
}

void addFile(CLI::App& command, const char* name, FileKind kind, std::filesystem::path& path,
             const char* description) {
  command.add_option(name, path, description)->type_name(kind.typeName)->required();
}

void addSize(CLI::App& command, std::string& size, const char* description) {
  command.add_option("--size", size, description)->type_name("WxH")->required();
}

void addList(CLI::App& app, Options& options) {
  CLI::App& list = *app.add_subcommand("list", "Show the effect names and what they stand for");
  list.footer("Example:\n  camera-effects list");
  setWork(list, options, [] {
    printEffects();
    return true;
  });
}

/// CLI::Range lets NaN pass.
std::string notANumber(const std::string& text) {
  return std::isnan(std::strtof(text.c_str(), nullptr)) ? "not a number" : "";
}

void addApply(CLI::App& app, Options& options) {
  CLI::App& apply = *app.add_subcommand("apply", "Apply effects to photos");
  ApplyRequest& request = options.apply;
  addApplyOptions(apply, request);
  addReadOptions(apply, request.options);
  addWriteOptions(apply, request.options);
  addEffectOptions(apply, request.choices);
  apply.footer(
      "With --as-frame, Pretty effects crop odd sides by one pixel, and cost the 4:2:0 rounding "
      "of\n"
      "a video frame. Photos are turned upright and keep all that their files say; their\n"
      "orientation tag then says upright, and thumbnails of the old picture are left out. The\n"
      "ending of an output's name decides its format. An output has the access rights of its\n"
      "input; one that is replaced keeps its own.\n\n"
      "A photo that fails never stops the others. An output appears under its name when it is\n"
      "complete, so that a run that was ended goes on with --skip-existing. Each line of a report\n"
      "has the keys in, out, status (done, skipped, failed, planned), code (as the exit code of a\n"
      "run for this photo alone), ms and notes.\n\n"
      "Examples:\n"
      "  camera-effects apply PrettyBlue photo.jpg blue.jpg\n"
      "  camera-effects apply sepia,lomo --mix 60 photo.jpg faint.jpg\n"
      "  camera-effects apply PrettyJapan --quality 85 --jobs 2 holiday/ holiday-japan/\n"
      "  camera-effects apply sepia - - <photo.jpg >sepia.jpg\n"
      "  camera-effects apply color-paint --picture wash.png photo.jpg washed.jpg\n"
      "  find holiday -name '*.jpg' -print0 | camera-effects apply sepia --files-from - -0 "
      "--output "
      "'sepia/{dir}/{name}'\n"
      "  camera-effects apply sepia holiday/ --output '{dir}/{stem}-{effect}{ext}' --shard 1/2 "
      "--report part1.jsonl");
  setWork(apply, options, [&request] { return applyToFiles(request); });
}

void addConvert(CLI::App& app, Options& options) {
  CLI::App& convert = *app.add_subcommand("convert", "Convert raw frames and photos");
  ConvertRequest& request = options.convert;
  convert.add_option("--size", request.size, "size of a raw input in pixels, both even")
      ->type_name("WxH");
  convert.add_option("--from", request.from, "format of the input")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21", "argb", "jpg"}));
  convert.add_option("--to", request.to, "format of the output")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21", "argb", "jpg"}));
  addReadOptions(convert, request.options);
  addWriteOptions(convert, request.options);
  addFile(convert, "IN", kAnyFile, request.input, "raw file of exactly one frame, or JPEG file");
  addFile(convert, "OUT", kAnyFile, request.output, "file to write");
  convert.footer(
      "nv12 is a luma plane, then U,V pairs; nv21 has V,U pairs; argb is B, G, R, A bytes. For a\n"
      "photo, the size of its frame is printed; odd sides are cropped by one pixel.\n\n"
      "Examples:\n"
      "  camera-effects convert --size 640x480 --from nv21 --to jpg frame.nv21 frame.jpg\n"
      "  camera-effects convert --from jpg --to nv21 photo.jpg photo.nv21");
  setWork(convert, options, [&request] {
    convertFrame(request);
    return true;
  });
}

void addFrames(CLI::App& app, Options& options) {
  CLI::App& frames = *app.add_subcommand(
      "frames", "Apply effects to a stream of frames, as a camera delivers them");
  FramesRequest& request = options.frames;
  frames
      .add_option("NAME", request.effects,
                  "effect name, see \"camera-effects list\", or several with commas between them")
      ->type_name("")
      ->required();
  frames.add_option("--size", request.size, "size of raw frames in pixels, both even")
      ->type_name("WxH");
  frames.add_option("--format", request.format, "format of raw frames; nv21 when not given")
      ->check(CLI::IsMember({"nv12", "nv21"}));
  addEffectOptions(frames, request.choices);
  frames.footer(
      "Takes frames on the standard input and gives them on the standard output, each as soon as\n"
      "it is done: raw ones with --size, else a Y4M stream of 8-bit 4:2:0, which says its size. A\n"
      "last frame that is cut off is an error (exit code 3); all whole ones are written before.\n\n"
      "Examples:\n"
      "  camera-effects frames PrettySweet --size 640x480 <frame.nv21 >sweet.nv21\n"
      "  camera-effects frames sepia --size 640x480 --format nv12 <frame.nv21 >sepia.nv12");
  setWork(frames, options, [&request] {
    filterFrames(request);
    return true;
  });
}

void addRotate(CLI::App& app, Options& options) {
  CLI::App& rotate =
      *app.add_subcommand("rotate", "Rotate a raw frame counter-clockwise by quarter turns");
  RotateRequest& request = options.rotate;
  addSize(rotate, request.size, kFrameSize);
  rotate.add_option("--format", request.format, "format of the frame")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21"}));
  rotate.add_option("DEGREES", request.degrees, "counter-clockwise")
      ->required()
      ->check(CLI::IsMember({90, 180, 270}));
  addFile(rotate, "IN", kAnyFile, request.input, "raw file of exactly one frame");
  addFile(rotate, "OUT", kAnyFile, request.output, "file to write");
  rotate.footer(
      "90 turns counter-clockwise, 270 clockwise; both swap width and height.\n\n"
      "Example:\n"
      "  camera-effects rotate --size 640x480 --format nv21 90 wide.nv21 tall.nv21");
  setWork(rotate, options, [&request] {
    rotateFrame(request);
    return true;
  });
}

void addResize(CLI::App& app, Options& options) {
  CLI::App& resize = *app.add_subcommand("resize", "Resize a photo");
  ResizeRequest& request = options.resize;
  resize
      .add_option("--size", request.size,
                  "of the output: WIDTHxHEIGHT; 400, the longer side; 400x, the width; x300, the "
                  "height; 50%")
      ->type_name("SIZE")
      ->required();
  CLI::Option* const fit = resize.add_flag_callback(
      "--fit", [&request] { request.shape = ResizeRequest::Shape::kFit; },
      "keep the photo's shape, within WIDTHxHEIGHT");
  resize
      .add_flag_callback(
          "--crop", [&request] { request.shape = ResizeRequest::Shape::kCrop; },
          "keep the photo's shape, and cut off what is beyond WIDTHxHEIGHT on both sides")
      ->excludes(fit);
  resize
      .add_option("--filter", request.filter,
                  "lanczos, which covers all that a pixel stands for; or bilinear, the library's, "
                  "which looks at four pixels")
      ->capture_default_str()
      ->check(CLI::IsMember({"lanczos", "bilinear"}));
  addReadOptions(resize, request.options);
  addWriteOptions(resize, request.options);
  addFile(resize, "IN", kPhotoFile, request.input, "photo");
  addFile(resize, "OUT", kAnyFile, request.output, "file to write");
  resize.footer(
      "The photo is turned upright and, to WIDTHxHEIGHT without --fit or --crop, stretched. It\n"
      "keeps all that its file says.\n\n"
      "Examples:\n"
      "  camera-effects resize --size 640x480 photo.jpg small.jpg\n"
      "  camera-effects resize --size 50% photo.jpg half.png\n"
      "  camera-effects resize --size 200x200 --crop photo.jpg square.jpg");
  setWork(resize, options, [&request] {
    resizePhoto(request);
    return true;
  });
}

void addBlend(CLI::App& app, Options& options) {
  CLI::App& blend = *app.add_subcommand("blend", "Blend two photos of the same size");
  BlendRequest& request = options.blend;
  blend.add_option("--mode", request.mode, "mix both; or keep the lighter or the darker values")
      ->capture_default_str()
      ->check(CLI::IsMember({"mix", "lighten", "darken"}));
  blend.add_option("--weight", request.weight, "of the first photo, for mix; 128 is half")
      ->type_name("N")
      ->check(CLI::Range(0, 256));
  addReadOptions(blend, request.options);
  addWriteOptions(blend, request.options);
  addFile(blend, "A", kPhotoFile, request.first, "photo");
  addFile(blend, "B", kPhotoFile, request.second, "photo");
  addFile(blend, "OUT", kAnyFile, request.output, "file to write");
  blend.footer(
      "Both are turned upright. The result has the metadata of A.\n\n"
      "Example:\n"
      "  camera-effects blend --mode mix --weight 64 sepia.jpg photo.jpg faint-sepia.jpg");
  setWork(blend, options, [&request] {
    blendPhotos(request);
    return true;
  });
}

void addBeauty(CLI::App& app, Options& options) {
  CLI::App& beauty = *app.add_subcommand("beauty", "Beautify faces with the device's engine");
  BeautyRequest& request = options.beauty;
  const auto addLevel = [&](const char* name, int& level, const char* description) {
    beauty.add_option(name, level, description)
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(0, 100));
  };
  addLevel("--smooth", request.smooth, "skin smoothing, 0 to 100");
  addLevel("--toning", request.toning, "skin toning, 0 to 100");
  addLevel("--slimming", request.slimming, "face slimming, 0 to 100");
  beauty
      .add_option("--engine", request.engine,
                  "engine library; without it, system/lib64/libSFB.so in ALGORITHM_DEVICE_ROOT")
      ->type_name(kAnyFile.typeName);
  addReadOptions(beauty, request.options);
  addWriteOptions(beauty, request.options);
  addFile(beauty, "IN", kPhotoFile, request.input, "photo");
  addFile(beauty, "OUT", kAnyFile, request.output, "file to write");
  beauty.footer(
      "The engine is a closed library of the device; none comes with this tool. It gets the photo\n"
      "as an NV21 frame, turned upright; odd sides are cropped by one pixel. The photo keeps its\n"
      "metadata.\n\n"
      "Example:\n"
      "  camera-effects beauty --smooth 50 --engine libSFB.so portrait.jpg smooth.jpg");
  setWork(beauty, options, [&request] {
    beautifyPhoto(request);
    return true;
  });
}

void addGallery(CLI::App& app, Options& options) {
  CLI::App& gallery =
      *app.add_subcommand("gallery", "Make web pages that show photos under every effect");
  GalleryRequest& request = options.gallery;
  addFile(gallery, "IN", kPhotoFile, request.photo,
          "photo, or a folder of photos: a page for each");
  addFile(gallery, "OUTDIR", kFolder, request.folder,
          "folder to make; an earlier gallery is replaced");
  addReadOptions(gallery, request.options);
  addWriteOptions(gallery, request.options);
  gallery.footer(
      "The photo is turned upright and, if large, reduced; its longer side keeps at least 1600\n"
      "pixels. The pictures carry its colour profile, and no other metadata.\n\n"
      "Examples:\n"
      "  camera-effects gallery photo.jpg gallery  # then open gallery/index.html in a browser\n"
      "  camera-effects gallery holiday/ pages");
  setWork(gallery, options, [&request] { return makeGallery(request); });
}

void addCurves(CLI::App& app, Options& options) {
  CLI::App& curves = *app.add_subcommand("curves", "Plot the tone curves of an effect as SVG");
  CurvesRequest& request = options.curves;
  CLI::Option* list = curves.add_flag("--list", request.list,
                                      "print the names of the effects that consist of curves");
  curves.add_option("NAME", request.effect, "effect name")->type_name("")->excludes(list);
  curves.add_option("OUT", request.output, "file to write; - for the standard output")
      ->type_name(kAnyFile.typeName);
  curves.footer(
      "The curves are measured: what each value of red, green and blue becomes. Effects that mix\n"
      "the channels, or depend on neighbours, places or pictures, are refused.\n\n"
      "Examples:\n"
      "  camera-effects curves PrettyBlue curves.svg\n"
      "  camera-effects curves --list");
  curves.callback([&options, &request] {
    if (!request.list && request.output.empty()) {
      throw CLI::RequiredError("NAME and OUT, or --list,");
    }
    options.work = [&request] {
      if (request.list) {
        fmt::print("{}\n", fmt::join(curveEffects(), "\n"));
      } else {
        plotCurves(request);
      }
      return true;
    };
  });
}

void addBench(CLI::App& app, Options& options) {
  CLI::App& bench =
      *app.add_subcommand("bench", "Measure the speed of the operations on this machine");
  BenchRequest& request = options.bench;
  bench.add_option("--size", request.size, "size of the pictures to work on")
      ->type_name("WxH")
      ->capture_default_str();
  bench
      .add_option("--filter", request.filter,
                  "measure only operations whose name or routine matches")
      ->type_name("REGEX");
  bench.add_option("--seconds", request.seconds, "time to repeat each operation for")
      ->type_name("F")
      ->capture_default_str()
      ->check(CLI::Range(0.0, 60.0))
      ->check(notANumber, "");
  bench.footer(
      "Measures the effects, rotations, resizing and blends, each on one thread and on pixels in\n"
      "memory: no JPEG, no conversion of frames, no pipeline. Prints the time of one call, how "
      "many\n"
      "bytes it needs to read and write in that time, and this rate as a fraction of memcpy's,\n"
      "which is measured in turn with it. Times are medians of CPU time.\n\n"
      "Examples:\n"
      "  camera-effects bench --filter rotate --seconds 0.05\n"
      "  camera-effects bench --filter Pretty --size 1920x1080");
  setWork(bench, options, [&request] {
    benchOperations(request);
    return true;
  });
}

void addCompletion(CLI::App& app, Options& options) {
  CLI::App& completion = *app.add_subcommand(
      "completion", "Print a script that makes a shell complete these commands");
  completion.add_option("SHELL", options.shell, "the shell")
      ->type_name("")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh"}));
  completion.footer(
      "Installed packages bring it for bash. Elsewhere, put a line like the first example into\n"
      "~/.bashrc or, with zsh for bash and after compinit, into ~/.zshrc.\n\n"
      "Examples:\n"
      "  source <(camera-effects completion bash)\n"
      "  camera-effects completion zsh >camera-effects.zsh");
  setWork(completion, options, [&app, &options] {
    fmt::print("{}", completionScript(app, options.shell));
    return true;
  });
}

/// For the build, so it is not shown.
void addManual(CLI::App& app, Options& options) {
  CLI::App& manual = *app.add_subcommand("manual", "Print the manual page")->group("");
  setWork(manual, options, [&app] {
    fmt::print("{}", manualPage(app));
    return true;
  });
}

/// For the scripts that write documents, so it is not shown.
void addCatalogue(CLI::App& app, Options& options) {
  CLI::App& catalogue = *app.add_subcommand("catalogue", "Print all operations as JSON")->group("");
  setWork(catalogue, options, [] {
    printCatalogue();
    return true;
  });
}

}  // namespace

void addCommands(CLI::App& app, Options& options) {
  addList(app, options);
  addApply(app, options);
  addConvert(app, options);
  addFrames(app, options);
  addRotate(app, options);
  addResize(app, options);
  addBlend(app, options);
  addBeauty(app, options);
  addGallery(app, options);
  addCurves(app, options);
  addBench(app, options);
  addCompletion(app, options);
  addManual(app, options);
  addCatalogue(app, options);
}

}  // namespace alg::tool
