/// The libraries behind the JPEG engine: each makes decoders and coders of its own kind.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"
#include "foundation/engines/jpeg/jpeg_input.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorvex {

/// How a library is to decode a stream.
struct JpegDecodingOrder {
    JpegHeader header;
    JpegColourForm stored = JpegColourForm::kGrey;  ///< what the components are
    bool toRgb = false;                             ///< YCbCr, or inks, to R, G, B
    bool inksAreInverted = false;                   ///< 0 is full ink
    bool interpolateChroma = true;
    int bytesPerSample = 1;
    int samples = 1;  ///< delivered per pixel
};

/// Decodes the lines of one stream in their order.
class JpegLineDecoder {
public:
    JpegLineDecoder() = default;
    JpegLineDecoder(const JpegLineDecoder&) = delete;
    JpegLineDecoder& operator=(const JpegLineDecoder&) = delete;
    virtual ~JpegLineDecoder() = default;

    /// Reads the header; of a stream of several scans, the whole. False when it cannot be decoded.
    [[nodiscard]] virtual bool Start(const JpegDecodingOrder& order) = 0;
    /// Decodes up to `lines` lines and gives their number; fewer than asked for where the picture
    /// ends or the stream breaks off.
    [[nodiscard]] virtual int Read(unsigned char* rows, int lines) noexcept = 0;
    /// The stream ended ahead of the picture, though every line may have been delivered.
    [[nodiscard]] virtual bool BrokeOff() const noexcept = 0;
    [[nodiscard]] virtual long Warnings() const noexcept = 0;
    /// No library has taken part so far.
    [[nodiscard]] virtual bool IsOurs() const noexcept { return false; }
};

/// Codes lines in their order.
class JpegLineCoder {
public:
    JpegLineCoder() = default;
    JpegLineCoder(const JpegLineCoder&) = delete;
    JpegLineCoder& operator=(const JpegLineCoder&) = delete;
    virtual ~JpegLineCoder() = default;

    [[nodiscard]] virtual bool Start() = 0;
    [[nodiscard]] virtual bool Write(const unsigned char* rows, int lines) noexcept = 0;
    /// Of a lossless picture, goes through the same lines once more.
    [[nodiscard]] virtual bool Finish(const unsigned char* rows, int lines) noexcept = 0;
};

using MakeJpegDecoder = std::unique_ptr<JpegLineDecoder> (*)(JpegInput& input);
using MakeJpegCoder = std::unique_ptr<JpegLineCoder> (*)(const JpegCodingBlock& coding);

// 8-bit lossy streams.
std::unique_ptr<JpegLineDecoder> MakeTurboDecoder(JpegInput& input);
std::unique_ptr<JpegLineCoder> MakeTurboCoder(const JpegCodingBlock& coding);
// 12-bit lossy streams.
std::unique_ptr<JpegLineDecoder> Make12BitDecoder(JpegInput& input);
std::unique_ptr<JpegLineCoder> Make12BitCoder(const JpegCodingBlock& coding);
// Lossless streams: our own coder, which passes to the libraries what it does not support.
std::unique_ptr<JpegLineDecoder> MakeLosslessDecoder(JpegInput& input);
std::unique_ptr<JpegLineCoder> MakeLosslessCoder(const JpegCodingBlock& coding);
// Lossless streams of up to 8 bits, and of up to 16, of every kind.
std::unique_ptr<JpegLineDecoder> Make8BitLosslessDecoder(JpegInput& input);
std::unique_ptr<JpegLineCoder> Make8BitLosslessCoder(const JpegCodingBlock& coding);
std::unique_ptr<JpegLineDecoder> Make16BitLosslessDecoder(JpegInput& input);
std::unique_ptr<JpegLineCoder> Make16BitLosslessCoder(const JpegCodingBlock& coding);

}  // namespace quorvex
