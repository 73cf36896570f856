/// Writes DICOM bytes by hand, good ones and bad ones, independently of our own writer.
#pragma once

#include "tests/support/memory_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

class DicomBuilder {
public:
    explicit DicomBuilder(bool isExplicit = true, bool isBigEndian = false)
        : isExplicit_(isExplicit), isBigEndian_(isBigEndian) {}

    /// Preamble, marker and a transfer syntax; always explicit VR little endian.
    static DicomBuilder Part10(std::string_view uid, bool isExplicit = true,
                               bool isBigEndian = false) {
        DicomBuilder builder;
        builder.Raw(std::string(128, '\0')).Raw("DICM");
        builder.Add(0x00020010, "UI", std::string(uid) + std::string(uid.size() % 2, '\0'));
        builder.isExplicit_ = isExplicit;
        builder.isBigEndian_ = isBigEndian;
        return builder;
    }

    DicomBuilder& Raw(std::string_view bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    DicomBuilder& Number(std::uint64_t number, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            const int shift = 8 * (isBigEndian_ ? bytes - 1 - i : i);
            bytes_.push_back(static_cast<unsigned char>(number >> shift));
        }
        return *this;
    }
    DicomBuilder& Header(std::uint32_t tag, std::string_view vr, std::uint32_t length) {
        Number(tag >> 16U, 2).Number(tag & 0xFFFFU, 2);
        if (!isExplicit_ || tag >> 16U == 0xFFFE) return Number(length, 4);
        Raw(vr);
        constexpr std::string_view kLong = "OB OD OF OL OV OW SQ SV UC UN UR UT UV";
        return kLong.find(vr) == std::string_view::npos ? Number(length, 2)
                                                        : Number(0, 2).Number(length, 4);
    }
    DicomBuilder& Add(std::uint32_t tag, std::string_view vr, std::string_view value) {
        return Header(tag, vr, static_cast<std::uint32_t>(value.size())).Raw(value);
    }
    DicomBuilder& Us(std::uint32_t tag, std::uint16_t value, std::string_view vr = "US") {
        return Header(tag, vr, 2).Number(value, 2);
    }
    DicomBuilder& Sequence(std::uint32_t tag, std::uint32_t length = 0xFFFFFFFF) {
        return Header(tag, "SQ", length);
    }
    DicomBuilder& Item(std::uint32_t length = 0xFFFFFFFF) { return Header(0xFFFEE000, "", length); }
    DicomBuilder& EndItem() { return Header(0xFFFEE00D, "", 0); }
    DicomBuilder& EndSequence() { return Header(0xFFFEE0DD, "", 0); }

    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] const std::vector<unsigned char>& Bytes() const { return bytes_; }
    [[nodiscard]] MemoryFile File() const { return {.bytes = bytes_}; }

private:
    bool isExplicit_;
    bool isBigEndian_;
    std::vector<unsigned char> bytes_;
};

inline constexpr std::string_view kImplicitUid = "1.2.840.10008.1.2";
inline constexpr std::string_view kExplicitUid = "1.2.840.10008.1.2.1";
inline constexpr std::string_view kBigEndianUid = "1.2.840.10008.1.2.2";
inline constexpr std::string_view kDeflatedUid = "1.2.840.10008.1.2.1.99";

}  // namespace quorvex::test
