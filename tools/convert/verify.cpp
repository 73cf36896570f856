#include "tools/convert/verify.h"

#include "quorvex/Tags.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <span>

namespace quorvex::tools {
namespace {

/// What of an object's header says how its frames are to be read.
struct SampleForm {
    unsigned short rows = 0;
    unsigned short columns = 0;
    unsigned short samples = 1;
    unsigned short bitsAllocated = 0;
    unsigned short bitsStored = 0;
    unsigned short isSigned = 0;
    CString photometric;

    [[nodiscard]] bool IsPalette() const { return photometric.Find("PALETTE") >= 0; }
    [[nodiscard]] int Width() const {
        if (bitsAllocated <= 8) return 1;
        return bitsAllocated <= 16 ? 2 : 4;
    }
    [[nodiscard]] double Peak() const { return std::ldexp(1.0, std::max<int>(bitsStored, 1)) - 1; }
};

SampleForm FormOf(const CDcmObject& header) {
    SampleForm form;
    header.GetValue(tag::kRows, form.rows);
    header.GetValue(tag::kColumns, form.columns);
    header.GetValue(tag::kSamplesPerPixel, form.samples);
    header.GetValue(tag::kBitsAllocated, form.bitsAllocated);
    form.bitsStored = form.bitsAllocated;
    header.GetValue(tag::kBitsStored, form.bitsStored);
    header.GetValue(tag::kPixelRepresentation, form.isSigned);
    header.GetValue(tag::kPhotometricInterpretation, form.photometric);
    return form;
}

struct FetchedFrame {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;

    [[nodiscard]] std::span<const unsigned char> Bytes() const { return {bytes.get(), size}; }
};

FetchedFrame Fetch(CxDcmParser& parser, int index) {
    FetchedFrame frame;
    unsigned char* bytes = nullptr;
    frame.result = parser.GetAFrame(index, bytes, frame.size, 0);
    frame.bytes.reset(bytes);
    return frame;
}

FetchedFrame FetchInColour(CxDcmParser& parser, int index, const SampleForm& form) {
    FetchedFrame indices = Fetch(parser, index);
    if (indices.result != QVM_SUCCESS) return indices;
    unsigned short bits = form.bitsAllocated;
    unsigned short samples = 1;
    CString photometric = form.photometric;
    unsigned char* bytes = nullptr;
    FetchedFrame colours;
    colours.result = parser.GetRGBBufferFromPaletteImage(
        indices.bytes.get(), form.columns, form.rows, bits, samples, photometric, bytes, 0);
    colours.bytes.reset(bytes);
    colours.size = 3UL * form.columns * form.rows;
    return colours;
}

// A stored value without the bits above it.
long ValueOf(const unsigned char* sample, int width, const SampleForm& form) {
    std::uint32_t word = 0;
    std::memcpy(&word, sample, static_cast<std::size_t>(width));
    const unsigned bits = std::clamp<unsigned>(form.bitsStored, 1, 32);
    const unsigned unused = 32 - bits;
    const std::uint32_t atTop = word << unused;
    return form.isSigned != 0 ? long{static_cast<std::int32_t>(atTop) >> unused}
                              : static_cast<long>(atTop >> unused);
}

// Whether the bits above a stored value say no more than the value itself.
bool FitsStoredBits(const unsigned char* sample, int width, const SampleForm& form) {
    SampleForm whole = form;
    whole.bitsStored = static_cast<unsigned short>(8 * width);
    return ValueOf(sample, width, whole) == ValueOf(sample, width, form);
}

/// Collects what differs.
class Differences {
public:
    Differences(const SampleForm& source, const SampleForm& output)
        : source_(source), output_(output) {}

    void Add(std::span<const unsigned char> one, std::span<const unsigned char> other, int width) {
        for (std::size_t i = 0; i + static_cast<std::size_t>(width) <= one.size();
             i += static_cast<std::size_t>(width)) {
            overflows_ = overflows_ || (!FitsStoredBits(&other[i], width, output_) &&
                                        FitsStoredBits(&one[i], width, source_));
            const auto error = static_cast<double>(ValueOf(&one[i], width, source_) -
                                                   ValueOf(&other[i], width, output_));
            greatest_ = std::max(greatest_, std::abs(error));
            squares_ += error * error;
            ++count_;
        }
    }
    void Count(std::size_t equalSamples) { count_ += equalSamples; }

    void Sum(FrameComparison& comparison) const {
        comparison.overflows = overflows_;
        comparison.greatestError = greatest_;
        comparison.psnr = squares_ > 0.0 ? 10.0 * std::log10(source_.Peak() * source_.Peak() *
                                                             static_cast<double>(count_) / squares_)
                                         : std::numeric_limits<double>::infinity();
    }

private:
    SampleForm source_;
    SampleForm output_;
    bool overflows_ = false;
    double greatest_ = 0.0;
    double squares_ = 0.0;
    std::size_t count_ = 0;
};

QUORVEX_MESSAGE Open(CxDcmParser& parser, CDcmApp& app, CDcmObject& object) {
    return parser.Initialize(&app, &object, nullptr, 0, 0);
}

void Compare(const FetchedFrame& one, const FetchedFrame& other, int width,
             Differences& differences, FrameComparison& comparison) {
    if (one.size != other.size) {
        comparison.isSameShape = false;
    } else if (std::ranges::equal(one.Bytes(), other.Bytes())) {
        differences.Count(one.size / static_cast<std::size_t>(width));
    } else {
        comparison.isEqual = false;
        differences.Add(one.Bytes(), other.Bytes(), width);
    }
}

}  // namespace

FrameComparison CompareFrames(CDcmObject& source, CDcmObject& output) {
    CDcmApp app;
    CxDcmParser before;
    CxDcmParser after;
    FrameComparison comparison;
    comparison.result = Open(before, app, source);
    if (comparison.result == QVM_SUCCESS) comparison.result = Open(after, app, output);
    if (comparison.result != QVM_SUCCESS) return comparison;
    const SampleForm sourceForm = FormOf(source);
    const SampleForm outputForm = FormOf(output);
    const bool isColoured = sourceForm.IsPalette() && !outputForm.IsPalette();
    comparison.isSameShape = before.GetFrameCount() == after.GetFrameCount();
    Differences differences(isColoured ? outputForm : sourceForm, outputForm);
    for (int i = 0; comparison.isSameShape && i < before.GetFrameCount(); ++i) {
        const auto one = isColoured ? FetchInColour(before, i, sourceForm) : Fetch(before, i);
        const auto other = Fetch(after, i);
        comparison.result = one.result != QVM_SUCCESS ? one.result : other.result;
        if (comparison.result != QVM_SUCCESS) return comparison;
        Compare(one, other, outputForm.Width(), differences, comparison);
    }
    differences.Sum(comparison);
    return comparison;
}

ValueLimits LimitsOf(CDcmObject& object) {
    CDcmApp app;
    CxDcmParser parser;
    ValueLimits limits{.lowest = std::numeric_limits<long>::max(),
                       .highest = std::numeric_limits<long>::min()};
    limits.result = Open(parser, app, object);
    const SampleForm form = FormOf(object);
    const auto width = static_cast<std::size_t>(form.Width());
    for (int i = 0; limits.result == QVM_SUCCESS && i < parser.GetFrameCount(); ++i) {
        const auto frame = Fetch(parser, i);
        limits.result = frame.result;
        for (std::size_t at = 0; frame.bytes && at + width <= frame.size; at += width) {
            const long value = ValueOf(&frame.bytes[at], form.Width(), form);
            limits.lowest = std::min(limits.lowest, value);
            limits.highest = std::max(limits.highest, value);
        }
    }
    return limits;
}

}  // namespace quorvex::tools
