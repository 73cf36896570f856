#include "tools/convert/checks/allowed_changes.h"

#include "quorvex/Tags.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

/// When an attribute may change.
enum class Demand {
    kAlways,
    kNewFrames,
    kLoss,     ///< the coding loses something, or the former one has
    kDerived,  ///< a coding with losses makes another instance
    kTwelveBits,
};

struct Row {
    std::uint32_t tag;
    Demand demand;
};
constexpr std::array kDemands = {
    Row{tag::kTransferSyntaxUID, Demand::kAlways},
    Row{tag::kSamplesPerPixel, Demand::kNewFrames},
    Row{tag::kPhotometricInterpretation, Demand::kNewFrames},
    Row{tag::kPlanarConfiguration, Demand::kNewFrames},
    Row{tag::kPixelData, Demand::kNewFrames},  // of icons, which cannot stay coded
    Row{tag::kLossyImageCompression, Demand::kLoss},
    Row{tag::kLossyImageCompressionRatio, Demand::kLoss},
    Row{tag::kLossyImageCompressionMethod, Demand::kLoss},
    Row{tag::kImageType, Demand::kDerived},
    Row{tag::kFrameType, Demand::kDerived},
    Row{tag::kSOPInstanceUID, Demand::kDerived},
    Row{tag::kDerivationDescription, Demand::kDerived},
    Row{tag::kDerivationCodeSequence, Demand::kDerived},
    Row{tag::kSourceImageSequence, Demand::kDerived},
    Row{tag::kBitsStored, Demand::kTwelveBits},
    Row{tag::kHighBit, Demand::kTwelveBits},
};

bool IsMet(Demand demand, const Recoding& recoding) {
    if (demand == Demand::kAlways) return true;
    if (!recoding.hasNewFrames) return false;
    switch (demand) {
        case Demand::kLoss:
            return recoding.target->IsLossy() || recoding.isLossySource;
        case Demand::kDerived:
            return recoding.target->IsLossy();
        case Demand::kTwelveBits:
            return recoding.target->form == kXferJpegExtended;
        default:
            return true;
    }
}

}  // namespace

bool IsDemanded(const ChangedAttribute& changed, const Recoding& recoding) {
    const auto* row = std::ranges::find(kDemands, changed.tag, &Row::tag);
    return row != kDemands.end() && IsMet(row->demand, recoding);
}

std::string NamesOfUndemanded(const std::vector<ChangedAttribute>& changed,
                              const Recoding& recoding) {
    constexpr int kMostNames = 5;
    std::string names;
    int count = 0;
    for (const auto& attribute : changed) {
        if (IsDemanded(attribute, recoding)) continue;
        if (++count > kMostNames) return names + " and others";
        names += (names.empty() ? "" : ", ") + attribute.name;
    }
    return names;
}

}  // namespace quorvex::tools
