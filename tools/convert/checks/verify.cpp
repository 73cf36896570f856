#include "tools/convert/checks/verify.h"

#include "quorvex/Tags.h"
#include "tools/convert/checks/stored_samples.h"
#include "tools/convert/streaming/parser_pool.h"
#include "tools/convert_target.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace quorvex::tools {
namespace {

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
    void Add(const Differences& other) {
        overflows_ = overflows_ || other.overflows_;
        greatest_ = std::max(greatest_, other.greatest_);
        squares_ += other.squares_;
        count_ += other.count_;
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

// Samples of one kind on both sides are compared as they are: colours would hide small differences.
void KeepStoredColours(CxDcmParser& before, CxDcmParser& after) {
    const auto isFullYbr = [](CxDcmParser& parser) {
        return FormOf(*parser.GetHeader()).photometric == CString("YBR_FULL");
    };
    if (!isFullYbr(before) || !isFullYbr(after)) return;
    for (CxDcmParser* parser : {&before, &after})
        parser->GetHeader()->SetValue(tag::kPhotometricInterpretation, "RGB");
}

/// Pixel Data of the main data set as it is stored.
struct StoredPixels {
    std::span<const unsigned char> bytes;
    bool isThere = false;
};

MC_STATUS FindPixels(const DcmElementView& element, void* user) {
    if (element.depth > 0 || element.tag != tag::kPixelData) return kMcContinue;
    *static_cast<StoredPixels*>(user) = {{element.data, element.length}, true};
    return kMcRefuse;
}

bool IsNativeLittleEndian(const CDcmObject& object) {
    const TransferSyntax* syntax = SyntaxOf(object);
    return syntax != nullptr && !syntax->isEncapsulated && !syntax->isBigEndian;
}

}  // namespace

std::optional<bool> HaveSameNativePixels(const CDcmObject& source, const CDcmObject& output) {
    if (!IsNativeLittleEndian(source) || !IsNativeLittleEndian(output)) return std::nullopt;
    StoredPixels one;
    StoredPixels other;
    source.WalkElements(&one, FindPixels);
    output.WalkElements(&other, FindPixels);
    if (one.isThere != other.isThere) return false;
    const std::size_t pad = one.bytes.size() % 2;  // a value of odd length is made even
    return other.bytes.size() == one.bytes.size() + pad &&
           std::ranges::equal(one.bytes, other.bytes.first(one.bytes.size()));
}

FrameComparison CompareFrames(CDcmObject& source, CDcmObject& output, const FrameWatch& watch) {
    CDcmApp app;
    CxDcmParser before;
    CxDcmParser after;
    FrameComparison comparison;
    comparison.result = Open(before, app, source);
    if (comparison.result == QVM_SUCCESS) comparison.result = Open(after, app, output);
    if (comparison.result != QVM_SUCCESS) return comparison;
    const FrameRun oneByOne = [](int count, const auto& make, const auto& take) {
        for (int i = 0; i < count; ++i) {
            make(i);
            take(i);
        }
    };
    return CompareFrames(before, after, watch, oneByOne, 1);
}

FrameComparison CompareFrames(CxDcmParser& before, CxDcmParser& after, const FrameWatch& watch,
                              const FrameRun& run, int window) {
    const SampleForm sourceForm = FormOf(*before.GetHeader());
    const SampleForm outputForm = FormOf(*after.GetHeader());
    KeepStoredColours(before, after);
    FrameComparison comparison;
    const int count = before.GetFrameCount();
    comparison.isSameShape = count == after.GetFrameCount();
    if (!comparison.isSameShape) return comparison;
    struct Compared {
        Differences differences;
        FrameComparison comparison = {};
    };
    ParserPool sources(before, window == 1);
    ParserPool outputs(after, window == 1);
    const Differences none(sourceForm.bits, outputForm.bits);
    std::vector<Compared> frames(static_cast<std::size_t>(window), Compared{none});
    const auto placeOf = [&](int i) -> Compared& {
        return frames[static_cast<std::size_t>(i % window)];
    };
    const auto compare = [&](int i) {
        Compared& frame = placeOf(i) = Compared{none};
        const auto one = sources.With([&](CxDcmParser& parser) { return FetchFrame(parser, i); });
        const auto other = outputs.With([&](CxDcmParser& parser) { return FetchFrame(parser, i); });
        frame.comparison.result = one.result != QVM_SUCCESS ? one.result : other.result;
        if (frame.comparison.result == QVM_SUCCESS)
            Compare(one, other, outputForm.Width(), frame.differences, frame.comparison);
    };
    Differences differences = none;
    run(count, compare, [&](int i) {
        const Compared& frame = placeOf(i);
        if (comparison.result == QVM_SUCCESS) comparison.result = frame.comparison.result;
        comparison.isSameShape = comparison.isSameShape && frame.comparison.isSameShape;
        comparison.isEqual = comparison.isEqual && frame.comparison.isEqual;
        differences.Add(frame.differences);
        watch("checking", i + 1, count);
    });
    differences.Sum(comparison);
    return comparison;
}

}  // namespace quorvex::tools
