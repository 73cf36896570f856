/// Bytes in memory, given to the object library in pieces as a parser gives them.
#pragma once

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace quorvex::test {

inline std::vector<unsigned char> BytesOfFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Gives a block in pieces of 16 KiB, each in a block of exactly its size that the next call
/// releases: a sanitizer sees a read past it, or a late one. Counts the pieces.
struct MemoryFile {
    static constexpr std::size_t kPiece = 16'384;

    std::vector<unsigned char> bytes;
    std::size_t at = 0;
    int pieces = 0;
    int refusedPiece = 0;  ///< the piece that is refused, counted from 1
    std::vector<unsigned char> piece{};

    MC_STATUS Give(int* length, void** data, int first, int* last) {
        if (first != 0) at = 0;
        if (++pieces == refusedPiece) return kMcRefuse;
        const std::size_t count = std::min(kPiece, bytes.size() - at);
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        piece = std::vector<unsigned char>(begin, begin + static_cast<std::ptrdiff_t>(count));
        at += count;
        *length = static_cast<int>(count);
        *data = piece.data();
        *last = at == bytes.size() ? 1 : 0;
        return kMcContinue;
    }
    static MC_STATUS GiveFile(const char*, void* user, int* length, void** data, int first,
                              int* last) {
        return static_cast<MemoryFile*>(user)->Give(length, data, first, last);
    }
    /// The same for the value of one attribute.
    static MC_STATUS GiveValue(int, std::uint32_t, void* user, int first, int* length, void** data,
                               int* last) {
        return static_cast<MemoryFile*>(user)->Give(length, data, first, last);
    }
    static MC_STATUS GiveStream(int, void* user, int first, int* length, void** data, int* last) {
        return static_cast<MemoryFile*>(user)->Give(length, data, first, last);
    }
};

inline constexpr std::uint32_t kFromTheStart = 0x00080000;  ///< of a bare data set
inline constexpr std::uint32_t kUpToPixelData = 0x7FE0000F;
inline constexpr std::uint32_t kToTheEnd = 0xFFFFFFFF;

inline DCMRESULT ReadUpTo(CDcmObject& object, MemoryFile& file, std::uint32_t stopTag,
                          unsigned long* offset = nullptr) {
    return object.ReadFileUptoTag(nullptr, stopTag, offset, &file, MemoryFile::GiveFile);
}

inline DCMRESULT ReadBare(CDcmObject& object, MemoryFile& file, std::uint32_t stopTag,
                          unsigned long* offset = nullptr) {
    return object.ReadStream2(kFromTheStart, stopTag, kImplicitLittleEndian, nullptr, offset, &file,
                              MemoryFile::GiveStream);
}

}  // namespace quorvex::test
