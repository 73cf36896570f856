/// Lossless streams of every shape, from a writer as plain as can be: the decoders' tests want more
/// than our own coder writes.
#pragma once

#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/lossless/lossless_scan.h"
#include "tests/engines/jpeg_test_streams.h"

#include <bit>

namespace quorvex::testing {

struct LosslessShape {
    int columns = 1;
    int rows = 1;
    int samples = 1;
    int precision = 8;
    int pointTransform = 0;
    int rowsInInterval = 0;
    bool tablesFirst = false;                      ///< ahead of the frame header
    bool oneTable = false;                         ///< the first serves all components
    unsigned fillsPerMarker = 0;                   ///< bytes of 0xFF ahead of a restart marker
    std::array<LosslessTableSegment, 3> tables{};  ///< of the components
};

/// A prefix code for every category, in any order and of any shape, with codes left over.
inline LosslessTableSegment RandomTable(std::minstd_rand& random) {
    LosslessTableSegment table;
    for (unsigned i = 0; i < kLosslessCategories; ++i) {
        table.categories[i] = static_cast<std::uint8_t>(i);
    }
    // Small differences, as pictures have them, get the short codes half of the time.
    if (random() % 2 == 0) std::shuffle(table.categories.begin(), table.categories.end(), random);
    unsigned placed = 0;
    while (placed < kLosslessCategories) {
        unsigned free = 1;
        placed = 0;
        for (unsigned length = 1; length <= 16; ++length) {
            free *= 2;
            const unsigned most = std::min(free - 1, kLosslessCategories - placed);
            const unsigned count = static_cast<unsigned>(random()) % (std::min(most, 3U) + 1);
            table.counts[length] = static_cast<std::uint8_t>(count);
            placed += count;
            free -= count;
        }
    }
    return table;
}

class LosslessWriter {
public:
    explicit LosslessWriter(const LosslessShape& shape) : shape_(shape) {
        Put({0xFF, 0xD8});
        if (shape_.tablesFirst) PutTables();
        PutFrame();
        if (!shape_.tablesFirst) PutTables();
        if (shape_.rowsInInterval > 0) {
            const int interval = shape_.rowsInInterval * shape_.columns;
            Put({0xFF, 0xDD, 0, 4, High(interval), Low(interval)});
        }
        PutScan();
    }

    [[nodiscard]] const ByteVector& Head() const { return stream_; }

    /// The stream of `values`, interleaved.
    [[nodiscard]] ByteVector Write(const std::vector<std::uint16_t>& values) {
        const auto row = static_cast<std::size_t>(shape_.columns * shape_.samples);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto y = static_cast<int>(i / row);
            if (i % row == 0 && y > 0 && shape_.rowsInInterval > 0 &&
                y % shape_.rowsInInterval == 0) {
                PutRestart(y / shape_.rowsInInterval - 1);
            }
            PutDifference(i % static_cast<std::size_t>(shape_.samples),
                          (values[i] >> shape_.pointTransform) - Prediction(values, i, row));
        }
        Flush();
        Put({0xFF, 0xD9});
        return stream_;
    }

private:
    static unsigned char High(int value) { return static_cast<unsigned char>(value >> 8); }
    static unsigned char Low(int value) { return static_cast<unsigned char>(value); }
    void Put(std::initializer_list<unsigned char> bytes) {
        stream_.insert(stream_.end(), bytes.begin(), bytes.end());
    }

    void PutTables() {
        for (int i = 0; i < (shape_.oneTable ? 1 : shape_.samples); ++i) {
            const auto& table = shape_.tables[static_cast<std::size_t>(i)];
            int codes = 0;
            for (const int count : table.counts) codes += count;
            Put({0xFF, 0xC4, 0, Low(19 + codes), Low(i)});
            stream_.insert(stream_.end(), table.counts.begin() + 1, table.counts.end());
            stream_.insert(stream_.end(), table.categories.begin(),
                           table.categories.begin() + codes);
        }
    }
    void PutFrame() {
        Put({0xFF, 0xC3, 0, Low(8 + 3 * shape_.samples), Low(shape_.precision)});
        Put({High(shape_.rows), Low(shape_.rows), High(shape_.columns), Low(shape_.columns)});
        Put({Low(shape_.samples)});
        for (int i = 0; i < shape_.samples; ++i) Put({Low(i + 1), 0x11, 0});
    }
    void PutScan() {
        Put({0xFF, 0xDA, 0, Low(6 + 2 * shape_.samples), Low(shape_.samples)});
        for (int i = 0; i < shape_.samples; ++i) {
            Put({Low(i + 1), Low(shape_.oneTable ? 0 : i << 4)});
        }
        Put({1, 0, Low(shape_.pointTransform)});
    }

    [[nodiscard]] int Prediction(const std::vector<std::uint16_t>& values, std::size_t i,
                                 std::size_t row) const {
        const auto samples = static_cast<std::size_t>(shape_.samples);
        const auto y = static_cast<int>(i / row);
        const bool isFirst =
            y == 0 || (shape_.rowsInInterval > 0 && y % shape_.rowsInInterval == 0);
        if (i % row >= samples) return values[i - samples] >> shape_.pointTransform;
        if (isFirst) return 1 << (shape_.precision - shape_.pointTransform - 1);
        return values[i - row] >> shape_.pointTransform;
    }

    void PutDifference(std::size_t component, int difference) {
        const auto bits = static_cast<std::int16_t>(difference);
        const unsigned category =
            static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(bits))));
        PutCode(shape_.tables[shape_.oneTable ? 0 : component], category);
        if (category == 0 || category == 16) return;
        PutBits(static_cast<unsigned>(bits < 0 ? bits - 1 : bits) & ((1U << category) - 1),
                category);
    }
    void PutCode(const LosslessTableSegment& table, unsigned category) {
        unsigned code = 0;
        std::size_t place = 0;
        for (unsigned length = 1; length <= 16; ++length, code <<= 1) {
            for (int i = 0; i < table.counts[length]; ++i, ++code) {
                if (table.categories[place++] == category) return PutBits(code, length);
            }
        }
    }
    void PutBits(unsigned value, unsigned count) {
        while (count-- > 0) {
            byte_ = (byte_ << 1) | ((value >> count) & 1);
            if (++held_ == 8) PutByte();
        }
    }
    void PutByte() {
        stream_.push_back(static_cast<unsigned char>(byte_));
        if ((byte_ & 0xFF) == 0xFF) stream_.push_back(0);
        held_ = 0;
        byte_ = 0;
    }
    void Flush() {
        while (held_ != 0) PutBits(1, 1);
    }
    void PutRestart(int number) {
        Flush();
        stream_.insert(stream_.end(), shape_.fillsPerMarker, 0xFF);
        Put({0xFF, static_cast<unsigned char>(0xD0 + number % 8)});
    }

    LosslessShape shape_;
    ByteVector stream_;
    unsigned byte_ = 0;
    unsigned held_ = 0;
};

/// What a decoder makes of a stream.
struct LosslessOutcome {
    bool isOpen = false;
    int lines = 0;
    bool brokeOff = false;
    long warnings = 0;
    bool isOurs = false;
    ByteVector pixels;  ///< of the lines alone

    /// But for whose work it is.
    [[nodiscard]] bool IsLike(const LosslessOutcome& other) const {
        return isOpen == other.isOpen && lines == other.lines && brokeOff == other.brokeOff &&
               warnings == other.warnings && pixels == other.pixels;
    }
};

struct LosslessDecoding {
    MakeJpegDecoder make = MakeLosslessDecoder;
    int bytesPerSample = 1;
    int stripe = 1;
    std::size_t block = kJpegBufferBytes;
    unsigned char* pixels = nullptr;  ///< a room of the caller's own for the whole picture
};

/// Nothing where the stream's header is not one of a lossless picture that we decode.
inline std::optional<JpegHeader> LosslessHeader(const ByteVector& stream) {
    JpegHeaderScanner scanner;
    if (scanner.Scan(stream) != JpegHeaderScanner::State::kDone) return std::nullopt;
    const JpegHeader& header = scanner.Header();
    const bool isOne = header.IsDecodable() && header.Process() == JpegProcess::kLossless;
    return isOne ? std::optional(header) : std::nullopt;
}

inline LosslessOutcome Decode(const ByteVector& stream, const JpegHeader& header,
                              const LosslessDecoding& how) {
    StreamInput source{.bytes = stream, .block = how.block};
    JpegInput input(&source, GiveStream);
    JpegHeaderScanner scanner;
    while (scanner.Scan(input.Head()) == JpegHeaderScanner::State::kNeedsMore && input.GrowHead()) {
    }
    const auto decoder = how.make(input);
    LosslessOutcome outcome;
    const std::size_t rowBytes = std::size_t{header.width} * header.componentCount *
                                 static_cast<std::size_t>(how.bytesPerSample);
    outcome.isOpen = decoder->Start({.header = header,
                                     .stored = header.ColourForm(),
                                     .bytesPerSample = how.bytesPerSample,
                                     .samples = header.componentCount});
    if (!outcome.isOpen) return outcome;
    ByteVector own(how.pixels == nullptr ? rowBytes * header.height : 0);
    unsigned char* pixels = how.pixels == nullptr ? own.data() : how.pixels;
    while (outcome.lines < header.height) {
        const int wanted = std::min(how.stripe, header.height - outcome.lines);
        const int read =
            decoder->Read(pixels + rowBytes * static_cast<std::size_t>(outcome.lines), wanted);
        outcome.lines += read;
        if (read < wanted) break;
    }
    outcome.brokeOff = decoder->BrokeOff();
    outcome.warnings = decoder->Warnings();
    outcome.isOurs = decoder->IsOurs();
    outcome.pixels.assign(pixels, pixels + rowBytes * static_cast<std::size_t>(outcome.lines));
    return outcome;
}

inline LosslessOutcome DecodeByLibrary(const ByteVector& stream, const JpegHeader& header,
                                       LosslessDecoding how) {
    how.make = header.precision > 8 ? Make16BitLosslessDecoder : Make8BitLosslessDecoder;
    return Decode(stream, header, how);
}

using MakeLosslessStream = std::unique_ptr<JpegLineCoder> (*)(const JpegCodingBlock& coding);

/// The stream of one coder; empty where it refuses.
inline ByteVector Encode(MakeLosslessStream make, JpegCodingBlock coding,
                         const unsigned char* rows) {
    CodedOutput output;
    coding.write = TakeCoded;
    coding.writeContext = &output;
    const auto coder = make(coding);
    const bool isCoded =
        coder->Start() && coder->Write(rows, coding.rows) && coder->Finish(rows, coding.rows);
    return isCoded ? output.bytes : ByteVector{};
}
inline ByteVector EncodeByLibrary(const JpegCodingBlock& coding, const unsigned char* rows) {
    return Encode(coding.bytesPerSample > 1 ? Make16BitLosslessCoder : Make8BitLosslessCoder,
                  coding, rows);
}

}  // namespace quorvex::testing
