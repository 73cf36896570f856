/// Pictures, and JPEG streams made of them, for the tests of the engines.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <random>
#include <vector>

namespace quorvex::testing {

using ByteVector = std::vector<unsigned char>;

/// A smooth picture with a little noise: rows of interleaved samples of 1 or 2 bytes.
inline ByteVector Picture(int columns, int rows, int samples, int bytesPerSample, int precision,
                          unsigned seed = 1) {
    std::minstd_rand random(seed);
    const unsigned greatest = (1U << precision) - 1;
    ByteVector bytes;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            for (int s = 0; s < samples; ++s) {
                const unsigned ramp =
                    static_cast<unsigned>(x * (3 + s) + y * (5 - s)) % (greatest / 2 + 1);
                const unsigned value =
                    (greatest / 4 + ramp + static_cast<unsigned>(random() % 3)) & greatest;
                bytes.push_back(static_cast<unsigned char>(value));
                if (bytesPerSample == 2) bytes.push_back(static_cast<unsigned char>(value >> 8));
            }
        }
    }
    return bytes;
}

/// The sample at `index`, of 1 or 2 bytes.
inline int SampleAt(const ByteVector& bytes, std::size_t index, int bytesPerSample) {
    return bytesPerSample == 2 ? bytes[2 * index] | (bytes[2 * index + 1] << 8) : int{bytes[index]};
}

/// 65536 for pictures of different sizes.
inline int GreatestError(const ByteVector& a, const ByteVector& b, int bytesPerSample) {
    if (a.size() != b.size()) return 65536;
    int greatest = 0;
    for (std::size_t i = 0; i < a.size() / static_cast<std::size_t>(bytesPerSample); ++i) {
        greatest = std::max(
            greatest, std::abs(SampleAt(a, i, bytesPerSample) - SampleAt(b, i, bytesPerSample)));
    }
    return greatest;
}

/// In decibels; 0 for pictures of different sizes.
inline double PeakSignalToNoise(const ByteVector& a, const ByteVector& b, int precision) {
    if (a.size() != b.size()) return 0;
    const int bytesPerSample = precision > 8 ? 2 : 1;
    const std::size_t count = a.size() / static_cast<std::size_t>(bytesPerSample);
    double squares = 0;
    for (std::size_t i = 0; i < count; ++i)
        squares += std::pow(SampleAt(a, i, bytesPerSample) - SampleAt(b, i, bytesPerSample), 2);
    const double peak = std::pow(2, precision) - 1;
    return 10 * std::log10(peak * peak * static_cast<double>(count) / std::max(squares, 1e-9));
}

inline JpegCodingBlock LosslessCoding(int columns, int rows, int samples, int precision) {
    return {.columns = static_cast<std::uint16_t>(columns),
            .rows = static_cast<std::uint16_t>(rows),
            .samples = static_cast<std::uint8_t>(samples),
            .bytesPerSample = static_cast<std::uint8_t>(precision > 8 ? 2 : 1),
            .process = JpegProcess::kLossless,
            .precision = static_cast<std::uint8_t>(precision)};
}

struct CodedOutput {
    unsigned char buffer[kJpegBufferBytes];
    ByteVector bytes;
};

inline int TakeCoded(int event, void* context, unsigned char** buffer, std::uint16_t* length) {
    auto& output = *static_cast<CodedOutput*>(context);
    if (event == kJpegWriteFirst) {
        *buffer = output.buffer;
        *length = kJpegBufferBytes;
    }
    if (event == kJpegWriteBlock) {
        output.bytes.insert(output.bytes.end(), *buffer, *buffer + *length);
    }
    return 0;
}

/// The coded stream; empty where the coder refuses. Samples may lie anywhere: those of a picture
/// with an odd number of columns begin at an odd address.
inline ByteVector Code(JpegCodingBlock coding, const ByteVector& picture) {
    const std::size_t shift = coding.columns % 2U;
    ByteVector shifted(shift + picture.size());
    std::ranges::copy(picture, shifted.data() + shift);
    CodedOutput output;
    coding.write = TakeCoded;
    coding.writeContext = &output;
    JpegCompressionHandle handle;
    const int result = comp_im_buf(handle, coding, shifted.data() + shift, coding.rows);
    return result == 0 ? output.bytes : ByteVector{};
}

struct StreamInput {
    const ByteVector& bytes;
    std::size_t place = 0;
    std::size_t block = kJpegBufferBytes;  ///< bytes handed out at a time
    unsigned char buffer[kJpegBufferBytes] = {};
};

inline int GiveStream(int event, void* context, unsigned char** buffer, std::uint16_t* length) {
    auto& input = *static_cast<StreamInput*>(context);
    if (event == kJpegReadEnd) return 0;
    *buffer = input.buffer;
    const std::size_t count = std::min(input.block, input.bytes.size() - input.place);
    std::copy_n(input.bytes.begin() + static_cast<std::ptrdiff_t>(input.place), count,
                input.buffer);
    input.place += count;
    *length = static_cast<std::uint16_t>(count);
    return 0;
}

struct DecodedPicture {
    int kind = 0;
    JpegDescription description;
    JpegPixelLayout layout;
    ByteVector pixels;  ///< the whole frame, what was not delivered is 0xEE
    int lines = 0;      ///< delivered
    int lastAnswer = -1;
    long warnings = 0;
};

struct HowToDecode {
    int bytesPerSample = 1;
    JpegColour colour = JpegColour::kByStream;
    std::size_t block = kJpegBufferBytes;
    int stripe = 16;
};

/// Pixels of an odd number of columns go to an odd address.
inline DecodedPicture DecodeAll(const ByteVector& stream, const HowToDecode& how) {
    DecodedPicture picture;
    StreamInput input{.bytes = stream, .block = how.block};
    JpegDecompressionHandle handle;
    picture.kind =
        init_decompression(handle, picture.description, stream.size(), &input, GiveStream);
    if (picture.kind < 1) return picture;
    if (pix_layout(handle, picture.layout, how.bytesPerSample, 1, how.colour, true) != 0) {
        picture.kind = -13;
        return picture;
    }
    const int height = picture.description.frame.height;
    const std::size_t shift = picture.description.frame.width % 2U;
    picture.pixels.assign(shift + picture.layout.rowBytes * static_cast<std::size_t>(height), 0xEE);
    int answer = 0;
    for (int line = 0; line < height && answer == 0; line += how.stripe) {
        unsigned char* rows = picture.pixels.data() + shift +
                              static_cast<std::size_t>(line) * picture.layout.rowBytes;
        answer = decompress(handle, rows, std::min(how.stripe, height - line));
    }
    picture.pixels.erase(picture.pixels.begin(),
                         picture.pixels.begin() + static_cast<std::ptrdiff_t>(shift));
    picture.lines = decompressed_lines(handle);
    picture.lastAnswer = answer;
    picture.warnings = decompression_warnings(handle);
    close_decompression(handle);
    return picture;
}

}  // namespace quorvex::testing
