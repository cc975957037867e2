// camera-effects completion: what shells complete, read from the commands themselves.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace alg::tool {

/// A kind of file. Options and arguments that take one have its type name, by which completion
/// knows what to offer.
struct FileKind {
  const char* typeName;
  const char* endings;  ///< of file names; "any" for all files, "folders" for none
};

inline constexpr FileKind kPhotoFile{
    "PHOTO", "jpg jpeg png webp tif tiff heic avif JPG JPEG PNG WEBP TIF TIFF HEIC AVIF"};
inline constexpr FileKind kPngFile{"PNG", "png PNG"};
inline constexpr FileKind kAnyFile{"FILE", "any"};
inline constexpr FileKind kFolder{"FOLDER", "folders"};

/// The commands that --help shows.
std::vector<const CLI::App*> shownCommands(const CLI::App& app);
/// The options of a command, or its positional arguments.
std::vector<const CLI::Option*> optionsOf(const CLI::App& command, bool positional);
/// The values that the option's check lists; none when it takes others, too.
std::vector<std::string> choicesOf(const CLI::Option& option);
/// Whether it takes a value; a flag takes none.
bool takesValue(const CLI::Option& option);

/// A script for "bash" or "zsh".
std::string completionScript(const CLI::App& app, const std::string& shell);

}  // namespace alg::tool
