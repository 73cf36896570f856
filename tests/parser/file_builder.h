/// DICOM files for parser tests, byte by byte.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace quorvex::test {

using Bytes = std::vector<unsigned char>;

inline constexpr const char* kUidImplicit = "1.2.840.10008.1.2";
inline constexpr const char* kUidExplicit = "1.2.840.10008.1.2.1";
inline constexpr const char* kUidBigEndian = "1.2.840.10008.1.2.2";
inline constexpr const char* kUidRle = "1.2.840.10008.1.2.5";
inline constexpr const char* kUidJpegLs = "1.2.840.10008.1.2.4.80";

inline void Append(Bytes& bytes, const Bytes& tail) {
    bytes.insert(bytes.end(), tail.begin(), tail.end());
}

/// Writes elements in one encoding.
class DataSetWriter {
public:
    explicit DataSetWriter(std::string_view uid)
        : isExplicit_(uid != kUidImplicit), isBigEndian_(uid == kUidBigEndian) {}

    DataSetWriter& Element(std::uint32_t tag, const char* vr, Bytes value,
                           std::uint32_t length = 0xFFFFFFFF) {
        if (value.size() % 2 != 0) value.push_back(vr[0] == 'U' && vr[1] == 'I' ? 0 : ' ');
        if (length == 0xFFFFFFFF) length = static_cast<std::uint32_t>(value.size());
        Header(tag, vr, length);
        Append(bytes, value);
        return *this;
    }
    DataSetWriter& Text(std::uint32_t tag, const char* vr, std::string_view text) {
        return Element(tag, vr, {text.begin(), text.end()});
    }
    DataSetWriter& Word(std::uint32_t tag, unsigned value) {
        Bytes word;
        Half(word, value);
        return Element(tag, "US", word);
    }
    DataSetWriter& Words(std::uint32_t tag, const char* vr, const std::vector<unsigned>& values) {
        Bytes words;
        for (const unsigned value : values) Half(words, value);
        return Element(tag, vr, words);
    }
    /// The header of an element of undefined length.
    DataSetWriter& Open(std::uint32_t tag, const char* vr) {
        Header(tag, vr, 0xFFFFFFFF);
        return *this;
    }
    DataSetWriter& Item(const Bytes& value) {
        Tag(0xFFFEE000);
        Long(static_cast<std::uint32_t>(value.size()));
        Append(bytes, value);
        return *this;
    }
    DataSetWriter& EndItems() {
        Tag(0xFFFEE0DD);
        Long(0);
        return *this;
    }

    Bytes bytes;

private:
    void Half(Bytes& out, unsigned value) const {
        const auto low = static_cast<unsigned char>(value);
        const auto high = static_cast<unsigned char>(value >> 8);
        out.push_back(isBigEndian_ ? high : low);
        out.push_back(isBigEndian_ ? low : high);
    }
    void Long(std::uint32_t value) {
        Half(bytes, isBigEndian_ ? value >> 16 : value & 0xFFFF);
        Half(bytes, isBigEndian_ ? value & 0xFFFF : value >> 16);
    }
    void Tag(std::uint32_t tag) {
        Half(bytes, tag >> 16);
        Half(bytes, tag & 0xFFFF);
    }
    void Header(std::uint32_t tag, const char* vr, std::uint32_t length) {
        Tag(tag);
        if (!isExplicit_) return Long(length);
        const std::string_view name = vr;
        bytes.insert(bytes.end(), name.begin(), name.end());
        if (name == "OB" || name == "OW" || name == "UN" || name == "SQ") {
            bytes.insert(bytes.end(), {0, 0});
            return Long(length);
        }
        Half(bytes, length);
    }

    bool isExplicit_;
    bool isBigEndian_;
};

inline Bytes Preamble(std::string_view uid) {
    Bytes file(128);
    Append(file, {'D', 'I', 'C', 'M'});
    DataSetWriter meta(kUidExplicit);
    meta.Text(0x00020010, "UI", uid);
    Append(file, meta.bytes);
    return file;
}

struct ImageFacts {
    unsigned rows = 2;
    unsigned columns = 2;
    unsigned bits = 16;
    const char* photometric = "MONOCHROME2";
    unsigned samples = 1;
    const char* frames = nullptr;
    unsigned representation = 0;
};

/// Everything ahead of Pixel Data.
inline DataSetWriter ImageHeader(std::string_view uid, const ImageFacts& facts) {
    DataSetWriter writer(uid);
    writer.Text(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.7");
    writer.Text(0x00080018, "UI", "2.25.1");
    writer.Word(0x00280002, facts.samples);
    if (facts.photometric != nullptr) writer.Text(0x00280004, "CS", facts.photometric);
    if (facts.frames != nullptr) writer.Text(0x00280008, "IS", facts.frames);
    writer.Word(0x00280010, facts.rows).Word(0x00280011, facts.columns);
    writer.Word(0x00280100, facts.bits).Word(0x00280101, facts.bits);
    writer.Word(0x00280102, facts.bits - 1).Word(0x00280103, facts.representation);
    return writer;
}

inline Bytes NativeFile(std::string_view uid, const ImageFacts& facts, const Bytes& pixels) {
    Bytes file = Preamble(uid);
    DataSetWriter writer = ImageHeader(uid, facts);
    writer.Element(0x7FE00010, facts.bits > 8 ? "OW" : "OB", pixels);
    Append(file, writer.bytes);
    return file;
}

inline Bytes EncapsulatedFile(std::string_view uid, const ImageFacts& facts,
                              const std::vector<Bytes>& fragments) {
    Bytes file = Preamble(uid);
    DataSetWriter writer = ImageHeader(uid, facts);
    writer.Open(0x7FE00010, "OB").Item({});
    for (const Bytes& fragment : fragments) writer.Item(fragment);
    writer.EndItems();
    Append(file, writer.bytes);
    return file;
}

/// A file on disk for as long as this lives.
class TemporaryFile {
public:
    explicit TemporaryFile(const Bytes& bytes) {
        static int count = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("quorvex_parser_" + std::to_string(getpid()) + "_" + std::to_string(count++));
        std::ofstream(path_, std::ios::binary)
            .write(static_cast<const char*>(static_cast<const void*>(bytes.data())),
                   static_cast<std::streamsize>(bytes.size()));
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] std::string Path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

}  // namespace quorvex::test
