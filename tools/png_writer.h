/// Pictures as PNG files.
#pragma once

#include <cstddef>
#include <vector>

namespace quorvex::tools {

class OutputFile;

/// Rows from the top without gaps; one channel is grey, three are red, green, blue. A sample of two
/// bytes has its least significant one first.
struct Picture {
    int width = 0;
    int height = 0;
    int channels = 1;
    int sampleBytes = 1;
    std::vector<unsigned char> pixels;

    [[nodiscard]] std::size_t RowBytes() const noexcept {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) *
               static_cast<std::size_t>(sampleBytes);
    }
};

/// Writes the picture, fast rather than small. An EnvironmentFailure where the file or the memory
/// refuses; the file is not committed.
void WritePng(const Picture& picture, OutputFile& file);

}  // namespace quorvex::tools
