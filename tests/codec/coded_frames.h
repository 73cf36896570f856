/// Frames of every coding that is read, and the way through CxImageProcessor and back.
#pragma once

#include "foundation/engines/deflate/deflate_engine.h"
#include "foundation/engines/jpegls/jpegls_engine.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"
#include "tests/codec/rle_frames.h"
#include "tests/engines/jpeg_test_streams.h"
#include "tests/reliability/guarded_bytes.h"

#include <cstdint>
#include <memory>
#include <random>

namespace quorvex::test {

/// A coding, and what it can hold.
struct Coding {
    const char* name;
    std::uint32_t syntax;
    const char* uid;
    std::uint32_t target;  ///< a QUORVEX_XFERSYNTAX
    unsigned leastBits;
    unsigned mostBits;
    bool isLossless;
};

inline constexpr Coding kCodings[] = {
    {"native", kExplicitLittleEndian, "1.2.840.10008.1.2.1", kXferUncompressed, 8, 16, true},
    {"RLE", kRle, "1.2.840.10008.1.2.5", kXferRle, 8, 16, true},
    {"JPEG baseline", kJpegBaseline, "1.2.840.10008.1.2.4.50", kXferJpegBaseline, 8, 8, false},
    {"JPEG extended", kJpegExtended, "1.2.840.10008.1.2.4.51", kXferJpegExtended, 12, 12, false},
    {"JPEG lossless", kJpegLosslessFirstOrder, "1.2.840.10008.1.2.4.70", kXferJpegLossless, 8, 16,
     true},
    {"JPEG 2000", kJpeg2000, "1.2.840.10008.1.2.4.91", kXferJpeg2000, 8, 16, false},
    {"JPEG 2000 lossless", kJpeg2000Lossless, "1.2.840.10008.1.2.4.90", kXferJpeg2000Lossless, 8,
     16, true},
    {"HTJ2K", kHtj2k, "1.2.840.10008.1.2.4.203", kXferHtj2k, 8, 16, false},
    {"HTJ2K lossless", kHtj2kRpclLossless, "1.2.840.10008.1.2.4.202", kXferHtj2kRpclLossless, 8, 16,
     true},
    {"JPEG-LS lossless", kJpegLsLossless, "1.2.840.10008.1.2.4.80", kXferJpegLsLossless, 8, 16,
     true},
    {"deflated frames", kDeflatedImageFrames, "1.2.840.10008.1.2.8.1", kXferDeflatedFrames, 8, 16,
     true},
    {"JPEG XL lossless", kJpegXlLossless, "1.2.840.10008.1.2.4.110", kXferJpegXlLossless, 8, 16,
     true},
};

struct FrameForm {
    unsigned columns = 24;
    unsigned rows = 20;
    unsigned samples = 1;
    unsigned bits = 8;  ///< of a sample, all of them used

    [[nodiscard]] unsigned SampleBytes() const { return bits > 8 ? 2 : 1; }
    [[nodiscard]] std::size_t Bytes() const {
        return std::size_t{columns} * rows * samples * SampleBytes();
    }
    [[nodiscard]] unsigned Allocated() const { return SampleBytes() * 8; }
    [[nodiscard]] const char* Photometric() const { return samples == 3 ? "RGB" : "MONOCHROME2"; }
};

inline Bytes PictureOf(const FrameForm& form, unsigned seed = 1) {
    return testing::Picture(static_cast<int>(form.columns), static_cast<int>(form.rows),
                            static_cast<int>(form.samples), static_cast<int>(form.SampleBytes()),
                            static_cast<int>(form.bits), seed);
}

inline Bytes CodeRle(const FrameForm& form, const Bytes& pixels) {
    std::mt19937 random(form.columns);
    const std::size_t step = form.samples * form.SampleBytes();
    std::vector<Bytes> segments;
    for (unsigned sample = 0; sample < form.samples; ++sample) {
        for (unsigned byte = form.SampleBytes(); byte-- > 0;) {
            Bytes plane;
            for (std::size_t at = sample * form.SampleBytes() + byte; at < pixels.size();
                 at += step)
                plane.push_back(pixels[at]);
            segments.push_back(EncodeSegment(plane, random));
        }
    }
    return JoinSegments(segments);
}

/// 12-bit colour has no place in a DICOM coder of ours, but other people's streams have it.
inline Bytes CodeExtended(const FrameForm& form, const Bytes& pixels) {
    return testing::Code({.columns = static_cast<std::uint16_t>(form.columns),
                          .rows = static_cast<std::uint16_t>(form.rows),
                          .samples = static_cast<std::uint8_t>(form.samples),
                          .bytesPerSample = 2,
                          .process = JpegProcess::kExtended,
                          .precision = 12,
                          .quality = 95},
                         pixels);
}

inline Bytes CodeJpegLsFrame(const FrameForm& form, const Bytes& pixels) {
    return CodeJpegLs({.columns = form.columns,
                       .rows = form.rows,
                       .components = form.samples,
                       .precision = form.bits,
                       .samples = pixels})
        .value_or(Bytes());
}

/// Empty in a build without the library.
inline Bytes CodeJpegXlFrame(const FrameForm& form, const Bytes& pixels) {
    return CodeJpegXl({.columns = form.columns,
                       .rows = form.rows,
                       .components = form.samples,
                       .precision = form.bits,
                       .sampleBytes = form.SampleBytes(),
                       .samples = pixels})
        .value_or(Bytes());
}

inline _IMAGE_PROCESS_PARAM ParamOf(std::uint32_t syntax, const FrameForm& header) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = syntax;
    param.samplesPerPixel = static_cast<std::uint16_t>(header.samples);
    param.photometric = header.Photometric();
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(header.rows);
    param.columns = static_cast<std::uint16_t>(header.columns);
    param.bitsAllocated = static_cast<std::uint16_t>(header.Allocated());
    param.pixelRepresentation = 0;
    return param;
}

inline _IMAGE_PROCESS_PARAM DecodingParam(const Coding& coding, const FrameForm& header) {
    _IMAGE_PROCESS_PARAM param = ParamOf(coding.syntax, header);
    param.planarConfiguration = coding.target == kXferRle ? 1 : 0;
    return param;
}

struct CodedFrame {
    QUORVEX_MESSAGE code = QVM_ERROR_NO_IMAGE;
    Bytes stream;  ///< empty where the code is no success
};

/// Codes with the source between guard pages; `source` is as the coder leaves it.
inline CodedFrame Compress(_IMAGE_PROCESS_PARAM param, Bytes& source) {
    const GuardedBytes guarded(source);
    unsigned char* coded = nullptr;
    unsigned long size = 99;
    const auto code =
        CxImageProcessor().CompressFrameData(&param, guarded.Data(), guarded.Size(), coded, size);
    const std::unique_ptr<unsigned char[]> owner(coded);
    EXPECT_EQ(coded != nullptr, code == QVM_SUCCESS);
    EXPECT_EQ(coded != nullptr, size != 0);
    source.assign(guarded.Bytes().begin(), guarded.Bytes().end());
    return {code, Bytes(coded, coded + size)};
}

/// The coded frame; empty where the coding does not hold such pixels.
inline Bytes CodeFrame(const Coding& coding, const FrameForm& form, Bytes pixels) {
    if (form.bits < coding.leastBits || form.bits > coding.mostBits) return {};
    if (coding.target == kXferUncompressed) return pixels;
    if (coding.target == kXferRle) return CodeRle(form, pixels);
    if (coding.target == kXferJpegExtended) return CodeExtended(form, pixels);
    if (coding.target == kXferDeflatedFrames) return DeflateFrame(pixels);
    if (coding.target == kXferJpegLsLossless) return CodeJpegLsFrame(form, pixels);
    if (coding.target == kXferJpegXlLossless) return CodeJpegXlFrame(form, pixels);
    _IMAGE_PROCESS_PARAM param = ParamOf(kExplicitLittleEndian, form);
    param.bitsAllocated = static_cast<std::uint16_t>(form.bits);
    param.quality = coding.target == kXferJpegBaseline ? 95 : 1;
    param.targetSyntax = coding.target;
    return Compress(param, pixels).stream;
}

inline Bytes CodeFrame(const Coding& coding, const FrameForm& form) {
    return CodeFrame(coding, form, PictureOf(form));
}

struct DecodedFrame {
    QUORVEX_MESSAGE code = QVM_ERROR_NO_IMAGE;
    Bytes frame;             ///< empty where the code is no success
    unsigned long size = 0;  ///< as the processor tells it
};

/// Decodes with the stream and the caller's block between guard pages.
inline DecodedFrame DecodeGuarded(_IMAGE_PROCESS_PARAM param, const Bytes& stream,
                                  std::size_t frameBytes) {
    const GuardedBytes source(stream);
    const GuardedBytes block(frameBytes);
    unsigned char* result = block.Data();
    unsigned long size = frameBytes;
    const auto code = CxImageProcessor().DecompressFrameData(&param, source.Data(), source.Size(),
                                                             result, size, 0);
    const bool isDone = code == QVM_SUCCESS || code == QVM_FRAME_COPIED;
    return {code, isDone ? Bytes(result, result + frameBytes) : Bytes(), size};
}

/// Decodes to a block that the processor makes.
inline DecodedFrame Decompress(_IMAGE_PROCESS_PARAM param, Bytes& source, int allocMode = 1) {
    CxImageProcessor processor;
    processor.SetAllocMode(allocMode);
    unsigned char* result = nullptr;
    unsigned long size = 0;
    const auto code =
        processor.DecompressFrameData(&param, source.data(), source.size(), result, size, 0);
    DecodedFrame decoded{code, {}, size};
    if (result != nullptr) decoded.frame.assign(result, result + size);
    if (allocMode == 1) {
        delete[] result;
    } else {
        ReleasePages(result);
    }
    return decoded;
}

}  // namespace quorvex::test
