/// Made pictures, and DICOM files of them, for benches that need a size of their own.
#pragma once

#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <dcmtk/dcmdata/dctk.h>
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

/// A temporary file with what all pictures say, and what `putPixels` adds to it; gives its path.
template <class PutPixels>
std::string WriteImage(std::uint16_t width, std::uint16_t height, const char* sopClass,
                       PutPixels&& putPixels) {
    const auto name = "quorvex_bench_" + std::to_string(width) + ".dcm";
    const auto file = std::filesystem::temp_directory_path() / name;
    DcmFileFormat format;
    DcmDataset& set = *format.getDataset();
    set.putAndInsertString(DCM_SOPClassUID, sopClass);
    set.putAndInsertString(DCM_SOPInstanceUID, "1.2.3.4");
    set.putAndInsertUint16(DCM_Rows, height);
    set.putAndInsertUint16(DCM_Columns, width);
    set.putAndInsertUint16(DCM_PixelRepresentation, 0);
    putPixels(set);
    format.saveFile(file.c_str(), EXS_LittleEndianExplicit);
    return file.string();
}

inline void PutBits(DcmDataset& set, std::uint16_t allocated, std::uint16_t stored) {
    set.putAndInsertUint16(DCM_BitsAllocated, allocated);
    set.putAndInsertUint16(DCM_BitsStored, stored);
    set.putAndInsertUint16(DCM_HighBit, static_cast<std::uint16_t>(stored - 1));
}

/// Writes the picture as a CT image.
inline std::string WritePicture(std::uint16_t width, std::uint16_t height) {
    return WriteImage(width, height, UID_CTImageStorage, [&](DcmDataset& set) {
        const Words words = Picture(width, height);
        set.putAndInsertUint16(DCM_SamplesPerPixel, 1);
        set.putAndInsertString(DCM_PhotometricInterpretation, "MONOCHROME2");
        PutBits(set, 16, 12);
        set.putAndInsertString(DCM_WindowCenter, "40");
        set.putAndInsertString(DCM_WindowWidth, "400");
        set.putAndInsertString(DCM_RescaleIntercept, "-1024");
        set.putAndInsertString(DCM_RescaleSlope, "1");
        set.putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
    });
}

/// Writes a picture in 8-bit colours, interleaved.
inline std::string WriteColourPicture(std::uint16_t width, std::uint16_t height) {
    return WriteImage(width, height, UID_SecondaryCaptureImageStorage, [&](DcmDataset& set) {
        std::vector<std::uint8_t> colours;
        for (const std::uint16_t word : Picture(width, height)) {
            for (const int shift : {4, 3, 2}) {
                colours.push_back(static_cast<std::uint8_t>(word >> shift));
            }
        }
        set.putAndInsertUint16(DCM_SamplesPerPixel, 3);
        set.putAndInsertString(DCM_PhotometricInterpretation, "RGB");
        set.putAndInsertUint16(DCM_PlanarConfiguration, 0);
        PutBits(set, 8, 8);
        set.putAndInsertUint8Array(DCM_PixelData, colours.data(), colours.size());
    });
}

}  // namespace quorvex::bench
