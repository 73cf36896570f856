/// Pictures, and JPEG streams made of them, for the tests of the engines.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

/// The coded stream; empty where the coder refuses.
inline ByteVector Code(JpegCodingBlock coding, const ByteVector& picture) {
    CodedOutput output;
    coding.write = TakeCoded;
    coding.writeContext = &output;
    JpegCompressionHandle handle;
    const int result = comp_im_buf(handle, coding, picture.data(), coding.rows);
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
    picture.pixels.assign(picture.layout.rowBytes * static_cast<std::size_t>(height), 0xEE);
    int answer = 0;
    for (int line = 0; line < height && answer == 0; line += how.stripe) {
        unsigned char* rows =
            picture.pixels.data() + static_cast<std::size_t>(line) * picture.layout.rowBytes;
        answer = decompress(handle, rows, std::min(how.stripe, height - line));
    }
    picture.lines = decompressed_lines(handle);
    picture.lastAnswer = answer;
    picture.warnings = decompression_warnings(handle);
    close_decompression(handle);
    return picture;
}

}  // namespace quorvex::testing
