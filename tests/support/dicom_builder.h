/// Writes DICOM bytes by hand, good ones and bad ones, independently of our own writer.
#pragma once

#include "quorvex/Tags.h"
#include "tests/support/memory_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::test {

using Bytes = std::vector<unsigned char>;

inline constexpr std::string_view kImplicitUid = "1.2.840.10008.1.2";
inline constexpr std::string_view kExplicitUid = "1.2.840.10008.1.2.1";
inline constexpr std::string_view kBigEndianUid = "1.2.840.10008.1.2.2";
inline constexpr std::string_view kDeflatedUid = "1.2.840.10008.1.2.1.99";
inline constexpr std::string_view kRleUid = "1.2.840.10008.1.2.5";
inline constexpr std::string_view kVideoUid = "1.2.840.10008.1.2.4.102";  ///< has no decoder

inline constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

inline void Append(Bytes& bytes, const Bytes& tail) {
    bytes.insert(bytes.end(), tail.begin(), tail.end());
}

inline Bytes Beginning(const Bytes& bytes, std::size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

/// What the header of an image says.
struct ImageFacts {
    unsigned rows = 2;
    unsigned columns = 2;
    unsigned bits = 16;                       ///< allocated
    const char* photometric = "MONOCHROME2";  ///< null leaves it out
    unsigned samples = 1;
    const char* frames = nullptr;  ///< null leaves it out
    unsigned representation = 0;
    unsigned stored = 0;  ///< 0 for all that are allocated
};

class DicomBuilder {
public:
    explicit DicomBuilder(bool isExplicit = true, bool isBigEndian = false)
        : isExplicit_(isExplicit), isBigEndian_(isBigEndian) {}

    /// A bare data set as the transfer syntax encodes it.
    static DicomBuilder In(std::string_view uid) {
        return DicomBuilder(uid != kImplicitUid, uid == kBigEndianUid);
    }

    /// Preamble, marker and a transfer syntax; always explicit VR little endian. What follows is
    /// encoded as the syntax says.
    static DicomBuilder Part10(std::string_view uid) {
        return Part10(uid, uid != kImplicitUid, uid == kBigEndianUid);
    }
    /// The same, with a data set of another encoding than the label may say.
    static DicomBuilder Part10(std::string_view uid, bool isExplicit, bool isBigEndian = false) {
        DicomBuilder builder;
        builder.Raw(std::string(128, '\0')).Raw("DICM").Padded(tag::kTransferSyntaxUID, "UI", uid);
        builder.isExplicit_ = isExplicit;
        builder.isBigEndian_ = isBigEndian;
        return builder;
    }

    DicomBuilder& Raw(std::string_view bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    DicomBuilder& Raw(const std::vector<unsigned char>& bytes) { return Raw(View(bytes)); }
    DicomBuilder& Append(const DicomBuilder& other) { return Raw(other.bytes_); }
    DicomBuilder& Number(std::uint64_t number, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            const int shift = 8 * (isBigEndian_ ? bytes - 1 - i : i);
            bytes_.push_back(static_cast<unsigned char>(number >> shift));
        }
        return *this;
    }
    DicomBuilder& Header(std::uint32_t tag, std::string_view vr, std::uint32_t length) {
        Number(tag >> 16U, 2).Number(tag & 0xFFFFU, 2);
        if (!isExplicit_ || tag >> 16U == tag::kItem >> 16U) return Number(length, 4);
        Raw(vr);
        constexpr std::string_view kLong = "OB OD OF OL OV OW SQ SV UC UN UR UT UV";
        return kLong.find(vr) == std::string_view::npos ? Number(length, 2)
                                                        : Number(0, 2).Number(length, 4);
    }

    /// An element with exactly these bytes.
    DicomBuilder& Add(std::uint32_t tag, std::string_view vr, std::string_view value) {
        return Header(tag, vr, static_cast<std::uint32_t>(value.size())).Raw(value);
    }
    DicomBuilder& Add(std::uint32_t tag, std::string_view vr,
                      const std::vector<unsigned char>& value) {
        return Add(tag, vr, View(value));
    }
    /// An element whose value is made even: by a zero byte in UI, by a blank in all others.
    DicomBuilder& Padded(std::uint32_t tag, std::string_view vr, std::string_view value) {
        const std::string pad(value.size() % 2, vr == "UI" ? '\0' : ' ');
        return Add(tag, vr, std::string(value) + pad);
    }
    DicomBuilder& Padded(std::uint32_t tag, std::string_view vr,
                         const std::vector<unsigned char>& value) {
        return Padded(tag, vr, View(value));
    }
    DicomBuilder& Us(std::uint32_t tag, unsigned value, std::string_view vr = "US") {
        return Words(tag, vr, {value});
    }
    DicomBuilder& Words(std::uint32_t tag, std::string_view vr,
                        const std::vector<unsigned>& words) {
        Header(tag, vr, static_cast<std::uint32_t>(2 * words.size()));
        for (const unsigned word : words) Number(word, 2);
        return *this;
    }

    DicomBuilder& Sequence(std::uint32_t tag, std::uint32_t length = kUndefinedLength) {
        return Header(tag, "SQ", length);
    }
    DicomBuilder& Item(std::uint32_t length = kUndefinedLength) {
        return Header(tag::kItem, "", length);
    }
    DicomBuilder& EndItem() { return Header(tag::kItemDelimitationItem, "", 0); }
    DicomBuilder& EndSequence() { return Header(tag::kSequenceDelimitationItem, "", 0); }

    /// Items of these contents and the delimiter behind them.
    DicomBuilder& Items(const std::vector<std::vector<unsigned char>>& contents) {
        for (const auto& content : contents)
            Item(static_cast<std::uint32_t>(content.size())).Raw(content);
        return EndSequence();
    }
    /// Encapsulated Pixel Data with an empty offset table.
    DicomBuilder& Fragments(std::vector<std::vector<unsigned char>> fragments) {
        fragments.insert(fragments.begin(), {{}});
        return Header(tag::kPixelData, "OB", kUndefinedLength).Items(fragments);
    }

    DicomBuilder& SopUids() {
        return Padded(tag::kSOPClassUID, "UI", "1.2.840.10008.5.1.4.1.1.7")
            .Padded(tag::kSOPInstanceUID, "UI", "2.25.1");
    }
    /// Everything of group 0028 that an image needs.
    DicomBuilder& Image(const ImageFacts& facts) {
        const unsigned stored = facts.stored == 0 ? facts.bits : facts.stored;
        Us(tag::kSamplesPerPixel, facts.samples);
        if (facts.photometric != nullptr)
            Padded(tag::kPhotometricInterpretation, "CS", facts.photometric);
        if (facts.frames != nullptr) Padded(tag::kNumberOfFrames, "IS", facts.frames);
        Us(tag::kRows, facts.rows).Us(tag::kColumns, facts.columns);
        Us(tag::kBitsAllocated, facts.bits).Us(tag::kBitsStored, stored);
        return Us(tag::kHighBit, stored - 1).Us(tag::kPixelRepresentation, facts.representation);
    }

    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] const std::vector<unsigned char>& Bytes() const { return bytes_; }
    [[nodiscard]] std::string Text() const { return std::string(View(bytes_)); }
    [[nodiscard]] MemoryFile File() const { return {.bytes = bytes_}; }

private:
    static std::string_view View(const std::vector<unsigned char>& bytes) {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

    bool isExplicit_;
    bool isBigEndian_;
    std::vector<unsigned char> bytes_;
};

/// A Part 10 file up to the end of group 0028.
inline DicomBuilder ImageFile(std::string_view uid, const ImageFacts& facts) {
    return std::move(DicomBuilder::Part10(uid).SopUids().Image(facts));
}

inline Bytes NativeFile(std::string_view uid, const ImageFacts& facts, const Bytes& pixels) {
    const char* const vr = facts.bits > 8 ? "OW" : "OB";
    return ImageFile(uid, facts).Padded(tag::kPixelData, vr, pixels).Bytes();
}

inline Bytes EncapsulatedFile(std::string_view uid, const ImageFacts& facts,
                              const std::vector<Bytes>& fragments) {
    return ImageFile(uid, facts).Fragments(fragments).Bytes();
}

}  // namespace quorvex::test
