/// Pictures from PNG files.
#pragma once

#include "tools/png_writer.h"

#include <string>

namespace quorvex::tools {

/// Reads a picture as 8-bit grey or, where it has colours, red, green, blue. Palettes are expanded,
/// 16-bit samples reduced; what is transparent lies on black.
/// @return an empty text, or a sentence about what is wrong with the file
std::string ReadPng(const std::string& path, Picture& picture);

}  // namespace quorvex::tools
