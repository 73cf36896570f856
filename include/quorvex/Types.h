/// The small types that the public operations of QuorvexU take and give.
#pragma once

#include "quorvex/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// What holds where this library's established behaviour and the DICOM standard differ.
///
/// Established: whole-number windows, one window formula, mirroring ahead of turns, widths that are
/// multiples of 4, palettes as indices. Standard: what the DICOM standard defines for the object.
/// Classes start with the established rules; an object that another one makes inherits its maker's.
enum class Rules { kEstablished, kStandard };

/// How a window maps values (DICOM PS3.3 C.11.2.1).
enum class VoiFunction {
    kLinear,       ///< from centre - 0.5 on both sides by half of width - 1
    kLinearExact,  ///< from centre on both sides by half the width
    kSigmoid,      ///< 1 / (1 + exp(-4 (value - centre) / width))
};

/// How an image is enlarged. Shrinking averages the area of each new pixel, whatever is chosen
/// here.
enum class Interpolation {
    kLinear,   ///< between pixel centres
    kNearest,  ///< the pixel that the place lies in
    kCubic,    ///< Catmull-Rom, over four by four pixels
};

/// How much of a frame is what the file says.
enum class FrameQuality {
    kNone,     ///< no frame has been fetched, or the latest fetch failed
    kWhole,    ///< every sample is the stored one
    kGuessed,  ///< where the frame begins is a guess: no table of offsets says it
    kPartial,  ///< the stored bytes end early, are damaged, or are of a smaller picture; what they
               ///< do not give is 0 or made up by the decoder
};

/// What the samples of a frame are.
enum class SampleType {
    kInteger,  ///< of Pixel Data: as wide and as signed as the header says
    kFloat32,  ///< of Float Pixel Data: IEEE 754 numbers of 4 bytes
    kFloat64,  ///< of Double Float Pixel Data: IEEE 754 numbers of 8 bytes
};

/// Text of 16-bit characters (UTF-16) with value semantics.
///
/// Byte text that comes in or goes out is UTF-8. Names of files may be any bytes, and every text
/// keeps them: a byte that is no part of UTF-8 is held as a surrogate that stands alone, U+DC80 to
/// U+DCFF, and `ToUtf8` gives the byte back. The values of a DICOM object never hold such bytes.
class QUORVEX_API CString {
public:
    CString() = default;
    CString(const char* utf8);          // NOLINT(google-explicit-constructor): text converts freely
    CString(std::string_view utf8);     // NOLINT(google-explicit-constructor)
    CString(const std::string& utf8);   // NOLINT(google-explicit-constructor)
    CString(const char16_t* text);      // NOLINT(google-explicit-constructor)
    CString(std::u16string_view text);  // NOLINT(google-explicit-constructor)

    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(text_.size()); }
    [[nodiscard]] bool IsEmpty() const noexcept { return text_.empty(); }
    [[nodiscard]] std::u16string_view View() const noexcept { return text_; }
    /// The bytes that the text was made of, which are UTF-8 if those were.
    [[nodiscard]] std::string ToUtf8() const;
    /// UTF-8 whatever the text was made of, for messages and documents: what is no text becomes
    /// U+FFFD.
    [[nodiscard]] std::string ToValidUtf8() const;

    /// Position of the first occurrence at or after `start`, or -1.
    [[nodiscard]] int Find(const CString& part, int start = 0) const noexcept;
    [[nodiscard]] CString Left(int count) const;
    [[nodiscard]] CString Right(int count) const;
    /// `count` characters from `first` on; -1 means all that follow.
    [[nodiscard]] CString Mid(int first, int count = -1) const;

    /// Below, equal to or above 0 as this text sorts before, with or after `other`.
    [[nodiscard]] int Compare(const CString& other) const noexcept;
    /// The same, with A to Z taken as a to z.
    [[nodiscard]] int CompareNoCase(const CString& other) const noexcept;

    /// The character at `index`; 0 outside the text.
    [[nodiscard]] char16_t operator[](int index) const noexcept;

    CString& operator+=(const CString& tail);
    friend CString operator+(CString head, const CString& tail) { return head += tail; }
    friend bool operator==(const CString& a, const CString& b) noexcept {
        return a.text_ == b.text_;
    }
    friend auto operator<=>(const CString& a, const CString& b) noexcept {
        return a.text_ <=> b.text_;
    }

private:
    std::u16string text_;
};

/// Width and height.
struct CSize {
    std::int32_t cx = 0;
    std::int32_t cy = 0;
    friend bool operator==(const CSize&, const CSize&) = default;
};

/// A place: x to the right, y down unless an operation says otherwise.
struct CPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const CPoint&, const CPoint&) = default;
};

/// A rectangle; right and bottom are exclusive.
struct CRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    [[nodiscard]] std::int32_t Width() const noexcept { return right - left; }
    [[nodiscard]] std::int32_t Height() const noexcept { return bottom - top; }
    friend bool operator==(const CRect&, const CRect&) = default;
};

/// A growable array of untyped pointers. It owns none of what they point to.
class CPtrArray {
public:
    [[nodiscard]] int GetSize() const noexcept { return static_cast<int>(items_.size()); }
    /// Null outside the array.
    [[nodiscard]] void* GetAt(int index) const noexcept {
        return index < 0 || index >= GetSize() ? nullptr : items_[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] void* operator[](int index) const noexcept { return GetAt(index); }
    /// Adds at the end and gives the new element's index.
    int Add(void* item) {
        items_.push_back(item);
        return GetSize() - 1;
    }
    void RemoveAll() noexcept { items_.clear(); }

private:
    std::vector<void*> items_;
};

/// The host's pixel memory that `CXDIPP::Draw` paints on. Rows run from the top; a pixel is blue,
/// green, red, and one byte that is left alone when `bytesPerPixel` is 4.
struct DrawingSurface {
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t rowBytes = 0;
    int bytesPerPixel = 4;  ///< 3 or 4
};

/// A device context: names the surface that is drawn on and owns nothing.
class CDC {
public:
    CDC() = default;
    explicit CDC(DrawingSurface* surface) noexcept : surface_(surface) {}
    [[nodiscard]] DrawingSurface* GetSafeHdc() const noexcept { return surface_; }

private:
    DrawingSurface* surface_ = nullptr;
};

/// The standard 40-byte bitmap header. A positive height means rows from the bottom up.
struct tagBITMAPINFOHEADER {
    std::uint32_t biSize = 40;
    std::int32_t biWidth = 0;
    std::int32_t biHeight = 0;
    std::uint16_t biPlanes = 1;
    std::uint16_t biBitCount = 0;
    std::uint32_t biCompression = 0;
    std::uint32_t biSizeImage = 0;
    std::int32_t biXPelsPerMeter = 0;
    std::int32_t biYPelsPerMeter = 0;
    std::uint32_t biClrUsed = 0;
    std::uint32_t biClrImportant = 0;
};
static_assert(sizeof(tagBITMAPINFOHEADER) == 40);

/// Gives back a block that an operation took from the page allocator; null is ignored.
QUORVEX_API void ReleasePages(void* block) noexcept;

/// Receives one line of diagnostics (UTF-8, with its own line end where it has one).
/// May be called from any thread that uses the library.
using DebugSink = void (*)(const char* line, void* user);

/// Sends diagnostics to `sink`; null sends them to the system log at debug level again.
QUORVEX_API void SetDebugOutput(DebugSink sink, void* user) noexcept;

}  // namespace quorvex
