// camera-effects: the library from the command line. Here is only the wiring of the options.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "tools/apply.h"
#include "tools/console.h"
#include "tools/device_root.h"
#include "tools/effect_names.h"
#include "tools/files.h"
#include "tools/gallery.h"
#include "tools/raw_frames.h"

namespace alg::tool {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;
constexpr int kDefaultQuality = 92;

struct GalleryRequest {
  std::filesystem::path photo;
  std::filesystem::path folder;
  int quality = kDefaultQuality;
};

/// What the options are parsed into, and the work that the chosen command asks for.
struct Options {
  ApplyRequest apply{{}, {}, kDefaultQuality};
  ConvertRequest convert{{}, {}, {}, {}, {}, kDefaultQuality};
  RotateRequest rotate{};
  GalleryRequest gallery;
  std::function<bool()> work;
};

/// Has `work` done, once the whole command line is parsed, when the user names this command.
void setWork(CLI::App& command, Options& options, std::function<bool()> work) {
  command.callback([&options, work = std::move(work)] { options.work = work; });
}

void addQuality(CLI::App& command, int& quality) {
  command.add_option("--quality", quality, "JPEG quality, 0 to 100")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(0, 100));
}

void addSize(CLI::App& command, std::string& size) {
  command.add_option("--size", size, "size of the input in pixels, both even")
      ->type_name("WxH")
      ->required();
}

void addList(CLI::App& app, Options& options) {
  CLI::App& list = *app.add_subcommand("list", "Show the effect names and what they stand for");
  list.footer("Example:\n  camera-effects list");
  setWork(list, options, [] {
    printEffects();
    return true;
  });
}

void addApply(CLI::App& app, Options& options) {
  CLI::App& apply = *app.add_subcommand("apply", "Apply an effect to photos");
  ApplyRequest& request = options.apply;
  apply.add_option("NAME", request.effect, "effect name, see \"camera-effects list\"")
      ->type_name("")
      ->required();
  apply
      .add_option("FILES", request.paths,
                  "input and output file; or several inputs, or a folder of JPEGs, and last the "
                  "output folder")
      ->type_name("")
      ->required()
      ->expected(2, CLI::detail::expected_max_vector_size);
  addQuality(apply, request.quality);
  apply.footer(
      "A side with an odd number of pixels loses one. Metadata of the input, such as an\n"
      "orientation tag, is not carried over.\n\n"
      "Examples:\n"
      "  camera-effects apply PrettyBlue photo.jpg blue.jpg\n"
      "  camera-effects apply PrettyJapan --quality 85 holiday/ holiday-japan/");
  setWork(apply, options, [&request] { return applyToFiles(request); });
}

void addConvert(CLI::App& app, Options& options) {
  CLI::App& convert = *app.add_subcommand("convert", "Convert a raw frame to another format");
  ConvertRequest& request = options.convert;
  addSize(convert, request.size);
  convert.add_option("--from", request.from, "format of the input")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21", "argb"}));
  convert.add_option("--to", request.to, "format of the output")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21", "argb", "jpg"}));
  addQuality(convert, request.quality);
  convert.add_option("IN", request.input, "raw file of exactly one frame")
      ->type_name("")
      ->required();
  convert.add_option("OUT", request.output, "file to write")->type_name("")->required();
  convert.footer(
      "nv12 is a luma plane, then U,V pairs; nv21 has V,U pairs; argb is B, G, R, A bytes.\n\n"
      "Example:\n"
      "  camera-effects convert --size 640x480 --from nv21 --to jpg frame.nv21 frame.jpg");
  setWork(convert, options, [&request] {
    convertFrame(request);
    return true;
  });
}

void addRotate(CLI::App& app, Options& options) {
  CLI::App& rotate =
      *app.add_subcommand("rotate", "Rotate a raw frame counter-clockwise by quarter turns");
  RotateRequest& request = options.rotate;
  addSize(rotate, request.size);
  rotate.add_option("--format", request.format, "format of the frame")
      ->required()
      ->check(CLI::IsMember({"nv12", "nv21"}));
  rotate.add_option("DEGREES", request.degrees, "counter-clockwise")
      ->required()
      ->check(CLI::IsMember({90, 180, 270}));
  rotate.add_option("IN", request.input, "raw file of exactly one frame")
      ->type_name("")
      ->required();
  rotate.add_option("OUT", request.output, "file to write")->type_name("")->required();
  rotate.footer(
      "90 turns counter-clockwise, 270 clockwise; both exchange width and height.\n\n"
      "Example:\n"
      "  camera-effects rotate --size 640x480 --format nv21 90 wide.nv21 tall.nv21");
  setWork(rotate, options, [&request] {
    rotateFrame(request);
    return true;
  });
}

void addGallery(CLI::App& app, Options& options) {
  CLI::App& gallery =
      *app.add_subcommand("gallery", "Make a web page that shows a photo under every effect");
  GalleryRequest& request = options.gallery;
  gallery.add_option("IN", request.photo, "JPEG file")->type_name("")->required();
  gallery.add_option("OUTDIR", request.folder, "folder to make; an earlier gallery is replaced")
      ->type_name("")
      ->required();
  addQuality(gallery, request.quality);
  gallery.footer(
      "Large photos are reduced, to 1600 pixels or more on the longer side.\n\n"
      "Example:\n"
      "  camera-effects gallery photo.jpg gallery && xdg-open gallery/index.html");
  setWork(gallery, options, [&request] {
    makeGallery(request.photo, request.folder, request.quality);
    return true;
  });
}

/// The exit code of a command line that asks for no work: help, version or wrong use.
int explain(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    return app.exit(error);
  }
  const auto chosen = app.get_subcommands();
  const auto unknown = app.remaining();
  if (chosen.empty() && !unknown.empty()) {
    complain("unknown command or option \"" + unknown.front() + "\"; see camera-effects --help");
    return kWrongUse;
  }
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  complain(std::string(error.what()) + "; see camera-effects" + command + " --help");
  return kWrongUse;
}

int work(const std::function<bool()>& command) {
  try {
    const bool succeeded = command();
    if (std::fflush(stdout) != 0) {
      throw UserError("cannot write to the standard output");
    }
    return succeeded ? EXIT_SUCCESS : kFailed;
  } catch (const Interrupted& interrupted) {
    std::signal(interrupted.signal, SIG_DFL);
    std::raise(interrupted.signal);  // so that the caller sees what ended us
  } catch (const std::bad_alloc&) {
    complain("not enough memory");
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return kFailed;
}

}  // namespace

int run(int argc, char** argv) {
  CLI::App app("Photo effects, format conversion and rotation with libAlgorithm.",
               "camera-effects");
  app.set_version_flag("--version", "camera-effects " ALGORITHM_VERSION);
  app.require_subcommand(1);
  app.footer("\"camera-effects COMMAND --help\" shows the options of a command and an example.");
  Options options;
  addList(app, options);
  addApply(app, options);
  addConvert(app, options);
  addRotate(app, options);
  addGallery(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return explain(app, error);
  }
  deferInterrupts();
  useSamplePictures();
  return work(options.work);
}

}  // namespace alg::tool

int main(int argc, char** argv) {
  try {
    return alg::tool::run(argc, argv);
  } catch (...) {  // not even the message about the reason could be printed
    return EXIT_FAILURE;
  }
}
