/// Objects of any number of frames, as the bytes in front of them and those that one begins with.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "tests/support/dicom_builder.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex::bench {

struct LargeForm {
    const char* what;
    const char* table;
    std::string_view uid;
    std::uint64_t frameBytes;  ///< with the item header
    int basicBytes = 0;        ///< of an entry of the basic table
    bool isExtended = false;
};

inline constexpr std::string_view kJpegUid = "1.2.840.10008.1.2.4.50";
/// Basic offsets have 32 bits, so that their frames are shorter.
inline constexpr std::array<LargeForm, 7> kLargeForms = {{
    {"native", "", test::kExplicitUid, 200'000},
    {"RLE", "none", test::kRleUid, 200'000},
    {"RLE", "basic", test::kRleUid, 40'000, 4},
    {"RLE", "extended", test::kRleUid, 200'000, 0, true},
    {"JPEG", "none", kJpegUid, 200'000},
    {"JPEG", "basic", kJpegUid, 40'000, 4},
    {"JPEG", "extended", kJpegUid, 200'000, 0, true},
}};

struct LargeObject {
    test::Bytes header;      ///< all ahead of the first frame
    test::Bytes frameStart;  ///< zeros follow, up to `frameBytes`
    std::uint64_t frameCount;
    std::uint64_t frameBytes;
};

inline constexpr unsigned kLargeRows = 500;
inline constexpr unsigned kLargeColumns = 400;

inline constexpr unsigned kRun = 50;  ///< pixels of one shade

inline test::Bytes Shades() {
    test::Bytes pixels(std::size_t{kLargeRows} * kLargeColumns);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t shade = i % kLargeColumns / kRun * 20 + i / kLargeColumns / 10;
        pixels[i] = static_cast<unsigned char>(shade);
    }
    return pixels;
}

inline test::Bytes CodedShades(QUORVEX_XFERSYNTAX target) {
    test::Bytes pixels = Shades();
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.rows = kLargeRows;
    param.columns = kLargeColumns;
    param.samplesPerPixel = 1;
    param.bitsAllocated = 8;
    param.photometric = "MONOCHROME2";
    param.quality = 90;
    param.targetSyntax = target;
    unsigned char* coded = nullptr;
    unsigned long size = 0;
    CxImageProcessor processor;
    processor.CompressFrameData(&param, pixels.data(), pixels.size(), coded, size);
    const std::unique_ptr<unsigned char[]> owner(coded);
    return {coded, coded + size};
}

inline test::Bytes RleShades() {
    test::DicomBuilder frame;
    frame.Number(1, 4).Number(64, 4).Raw(test::Bytes(56));
    const test::Bytes pixels = Shades();
    for (std::size_t i = 0; i < pixels.size(); i += kRun)
        frame.Number(257 - kRun, 1).Number(pixels[i], 1);
    return frame.Bytes();
}

inline test::Bytes TableOf(const LargeForm& form, std::uint64_t frames, int entryBytes) {
    test::DicomBuilder table;
    for (std::uint64_t i = 0; i < frames; ++i) table.Number(i * form.frameBytes, entryBytes);
    return table.Bytes();
}

inline LargeObject Make(const LargeForm& form, int frames) {
    const auto count = static_cast<std::uint64_t>(frames);
    const std::string number = std::to_string(frames);
    auto header = test::ImageFile(
        form.uid,
        {.rows = kLargeRows, .columns = kLargeColumns, .bits = 8, .frames = number.c_str()});
    const bool isNative = form.uid == test::kExplicitUid;
    if (form.isExtended) header.Add(tag::kExtendedOffsetTable, "OV", TableOf(form, count, 8));
    header.Header(tag::kPixelData, isNative ? "OW" : "OB", test::kUndefinedLength);
    if (isNative) return {header.Bytes(), test::Bytes(8, 7), count, form.frameBytes};
    const auto table = form.basicBytes == 0 ? test::Bytes() : TableOf(form, count, form.basicBytes);
    header.Item(static_cast<std::uint32_t>(table.size())).Raw(table);
    test::DicomBuilder item;
    item.Item(static_cast<std::uint32_t>(form.frameBytes - 8));
    item.Raw(form.uid == test::kRleUid ? RleShades() : CodedShades(kXferJpegBaseline));
    return {header.Bytes(), item.Bytes(), count, form.frameBytes};
}

}  // namespace quorvex::bench
