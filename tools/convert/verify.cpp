#include "tools/convert/verify.h"

#include "tools/convert/stored_samples.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace quorvex::tools {
namespace {

FetchedFrame FetchInColour(CxDcmParser& parser, int index, const SampleForm& form) {
    FetchedFrame indices = FetchFrame(parser, index);
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

// Whether the bits above a stored value say no more than the value itself.
bool FitsStoredBits(const unsigned char* sample, int width, SampleBits bits) {
    const SampleBits whole = {static_cast<unsigned short>(8 * width), bits.isSigned};
    return ValueOf(sample, width, whole) == ValueOf(sample, width, bits);
}

/// Collects what differs.
class Differences {
public:
    Differences(SampleBits source, SampleBits output) : source_(source), output_(output) {}

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
    SampleBits source_;
    SampleBits output_;
    bool overflows_ = false;
    double greatest_ = 0.0;
    double squares_ = 0.0;
    std::size_t count_ = 0;
};

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
    const bool isColoured =
        IsPaletteColour(sourceForm.photometric) && !IsPaletteColour(outputForm.photometric);
    comparison.isSameShape = before.GetFrameCount() == after.GetFrameCount();
    Differences differences(isColoured ? outputForm.bits : sourceForm.bits, outputForm.bits);
    for (int i = 0; comparison.isSameShape && i < before.GetFrameCount(); ++i) {
        const auto one = isColoured ? FetchInColour(before, i, sourceForm) : FetchFrame(before, i);
        const auto other = FetchFrame(after, i);
        comparison.result = one.result != QVM_SUCCESS ? one.result : other.result;
        if (comparison.result != QVM_SUCCESS) return comparison;
        Compare(one, other, outputForm.Width(), differences, comparison);
    }
    differences.Sum(comparison);
    return comparison;
}

}  // namespace quorvex::tools
