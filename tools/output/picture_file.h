/// Pictures in files whose names say what they are.
#pragma once

#include "quorvex/ResultCodes.h"
#include "tools/png_writer.h"

#include <optional>
#include <string>

namespace quorvex::tools {

enum class PictureFormat { kPng, kJpeg, kJpegLossless };

/// What a file of that name has to be: .png, .jpg or .jpeg, .ljpg, in any letter case; PNG for a
/// name without an extension and for standard output; nothing for any other extension.
std::optional<PictureFormat> PictureFormatOf(const std::string& path);

/// Writes a picture of 8 bits a sample as a whole file. A failure of the
/// coder is its code, one of the disk an EnvironmentFailure.
QUORVEX_MESSAGE WritePicture(const Picture& picture, PictureFormat format, int jpegQuality,
                             const std::string& path);

/// "out-0001.png" for "out.png" and 1, with as many digits as `count` needs, four at least.
std::string NumberedPath(const std::string& path, int number, int count);

}  // namespace quorvex::tools
