/// Made pictures, and DICOM files of them, for benches that need a size of their own.
#pragma once

#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include <dcmtk/dcmdata/dctk.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvex::bench {

using Words = std::vector<std::uint16_t>;

/// Smooth shapes with noise on top, 12 bits.
inline Words Picture(int width, int height) {
    Words words(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::uint32_t noise = 1;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto x = static_cast<double>(i % static_cast<std::size_t>(width)) / width;
        const auto y = static_cast<double>(i / static_cast<std::size_t>(width)) / height;
        noise = noise * 1664525U + 1013904223U;
        words[i] = static_cast<std::uint16_t>(1500 + 1200 * std::sin(9 * x) * std::cos(7 * y) +
                                              (noise >> 25));
    }
    return words;
}

/// Writes the picture as a CT image into a temporary file of its own and gives its path.
inline std::string WritePicture(std::uint16_t width, std::uint16_t height) {
    const auto name = "quorvex_bench_" + std::to_string(width) + ".dcm";
    const auto file = std::filesystem::temp_directory_path() / name;
    const Words words = Picture(width, height);
    DcmFileFormat format;
    DcmDataset& set = *format.getDataset();
    set.putAndInsertString(DCM_SOPClassUID, UID_CTImageStorage);
    set.putAndInsertString(DCM_SOPInstanceUID, "1.2.3.4");
    set.putAndInsertUint16(DCM_SamplesPerPixel, 1);
    set.putAndInsertString(DCM_PhotometricInterpretation, "MONOCHROME2");
    set.putAndInsertUint16(DCM_Rows, height);
    set.putAndInsertUint16(DCM_Columns, width);
    set.putAndInsertUint16(DCM_BitsAllocated, 16);
    set.putAndInsertUint16(DCM_BitsStored, 12);
    set.putAndInsertUint16(DCM_HighBit, 11);
    set.putAndInsertUint16(DCM_PixelRepresentation, 0);
    set.putAndInsertString(DCM_WindowCenter, "40");
    set.putAndInsertString(DCM_WindowWidth, "400");
    set.putAndInsertString(DCM_RescaleIntercept, "-1024");
    set.putAndInsertString(DCM_RescaleSlope, "1");
    set.putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
    format.saveFile(file.c_str(), EXS_LittleEndianExplicit);
    return file.string();
}

}  // namespace quorvex::bench
