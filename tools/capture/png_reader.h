/// Pictures from PNG files, sample by sample.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quorvex::tools {

/// Samples as a file has them, rows from the top without gaps: one is grey, three are red, green,
/// blue; those of 16 bits take two bytes, the least significant first.
struct Page {
    int width = 0;
    int height = 0;
    int channels = 1;
    int bits = 8;  ///< 8 or 16
    std::vector<unsigned char> samples;
};

/// Reads a picture. Palettes are expanded, to grey where all of their colours are; samples of 1, 2
/// and 4 bits become bytes. No gamma and no colour profile is applied.
/// @return an empty text, or a sentence about what is wrong with the file; transparency is
std::string ReadPng(const std::string& path, Page& page);

}  // namespace quorvex::tools
