/// What a JPEG stream says about itself ahead of its first scan.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

/// The coding processes that are decoded here, numbered as the markers SOF0 to SOF3 are; SOF9 and
/// SOF10 are the second and third one with arithmetic codes.
enum class JpegProcess : std::uint8_t { kBaseline, kExtended, kProgressive, kLossless };

/// How the components of a stream are to be understood.
enum class JpegColourForm : std::uint8_t { kGrey, kRgb, kYcc, kInks, kYccInks };

struct JpegComponent {
    std::uint8_t id = 0;
    std::uint8_t horizontal = 1;  ///< sampling factors, 1 to 4
    std::uint8_t vertical = 1;
};

/// The facts of the frame header and of the markers ahead of it.
struct JpegHeader {
    std::uint8_t sofMarker = 0;  ///< 0xC0 to 0xCF
    std::uint8_t precision = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t componentCount = 0;  ///< as the stream says; `components` holds the first four
    std::array<JpegComponent, 4> components{};
    bool hasJfif = false;
    std::optional<std::uint8_t> adobeTransform;
    std::uint16_t restartInterval = 0;
    std::uint8_t scanComponents = 0;
    bool isHierarchical = false;  ///< frames that build on each other; the first is a small picture

    /// A process, precision, size and component count that we decode.
    [[nodiscard]] bool IsDecodable() const noexcept;
    [[nodiscard]] JpegProcess Process() const noexcept;
    [[nodiscard]] bool IsArithmetic() const noexcept;
    [[nodiscard]] bool IsSubsampled() const noexcept;
    /// More than one scan makes the whole picture, which a decoder must then hold as coefficients.
    [[nodiscard]] bool NeedsWholePicture() const noexcept;
    /// What a whole picture costs at least: a bit for each 8 x 8 block, or lossless sample; one for
    /// 64 blocks with arithmetic codes.
    [[nodiscard]] std::uint64_t LeastBytes() const noexcept;
    /// What markers, component ids and sampling say. Lossless samples are taken as they are.
    [[nodiscard]] JpegColourForm ColourForm() const noexcept;
    /// False where the colour form is only a convention.
    [[nodiscard]] bool ColourIsMarked() const noexcept;
    /// The stream says that its three components are R, G, B.
    [[nodiscard]] bool MarksRgb() const noexcept;
};

/// Reads a header from the growing beginning of a stream. Each byte is looked at once, however
/// often the beginning grows.
class JpegHeaderScanner {
public:
    enum class State : std::uint8_t { kNeedsMore, kDone, kNoJpeg, kBroken };

    /// `head` is the stream from its start, each time at least as long as before.
    [[nodiscard]] State Scan(std::span<const unsigned char> head) noexcept;
    [[nodiscard]] const JpegHeader& Header() const noexcept { return header_; }

private:
    [[nodiscard]] State ScanSegment(std::span<const unsigned char> head) noexcept;
    void ReadFrame(std::uint8_t marker, std::span<const unsigned char> content) noexcept;
    void ReadSegment(std::uint8_t marker, std::span<const unsigned char> content) noexcept;

    JpegHeader header_;
    std::size_t place_ = 0;
};

}  // namespace quorvex
