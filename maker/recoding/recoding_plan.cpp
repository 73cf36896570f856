#include "maker/recoding/recoding_plan.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "foundation/engines/jpegls/jpegls_engine.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "foundation/types/checked_size.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr std::uint16_t kExtendedBits = 12;

/// What a coder takes, and the quality that a reader of pictures would choose.
struct FormLimits {
    QUORVEX_XFERSYNTAX form;
    std::uint16_t leastBits;  ///< of Bits Allocated
    std::uint16_t mostBits;
    std::uint16_t quality = 0;
    bool takesSigned = true;
};
constexpr FormLimits kLimits[] = {
    {kXferRle, 1, 32},
    {kXferDeflatedFrames, 1, 32},
    {kXferEncapsulated, 1, 32},
    {kXferJpegBaseline, 8, 8, 97, false},
    {kXferJpegExtended, 16, 16, 1, false},
    {kXferJpegLossless, 8, 16},
    {kXferJpeg2000, 8, 16, 5},
    {kXferJpeg2000Lossless, 8, 16},
    {kXferJpegLs, 8, 16, 2},
    {kXferJpegLsLossless, 8, 16},
    {kXferHtj2k, 8, 16, 5},
    {kXferHtj2kLossless, 8, 16},
    {kXferHtj2kRpclLossless, 8, 16},
    {kXferJpegXl, 8, 16, 5, false},
    {kXferJpegXlLossless, 8, 16, 0, false},
};

/// What the start of a first frame tells of its stream.
struct StreamTraits {
    bool isLossless = false;
    bool hasColourTransform = false;
};

StreamTraits TraitsOf(FrameCoding coding, std::span<const unsigned char> stream) {
    if (coding == FrameCoding::kJpegLs) {
        const JpegLsDecoder decoder(stream);
        const bool isRead = decoder.State() == JpegLsResult::kDone;
        return {.isLossless = isRead && decoder.Header().errorBound == 0};
    }
    if (coding == FrameCoding::kJpegXl) {
        const JpegXlHeader header = JpegXlDecoder(stream).Header();
        return {.hasColourTransform = header.isXyb || header.hasJpeg};
    }
    if (coding != FrameCoding::kJpeg2000) return {};
    const auto codestream = FindCodestream(stream);
    const auto header = codestream ? ReadJpeg2000Header(*codestream) : std::nullopt;
    if (!header) return {};
    return {.isLossless = header->isReversible, .hasColourTransform = header->hasColourTransform};
}

/// The header of a stream lies at the start of the first frame.
StreamTraits TraitsOfFirstFrame(FrameCoding coding, const CDcmObject& object) {
    struct Look {
        FrameCoding coding;
        StreamTraits traits;
    } look{coding, {}};
    const PixelItemCallback take = [](int, std::uint32_t, void* user, int item,
                                      unsigned long length, unsigned char* data, int,
                                      int) -> MC_STATUS {
        if (item == 0) return kMcContinue;  // the offset table
        auto& wanted = *static_cast<Look*>(user);
        wanted.traits = TraitsOf(wanted.coding, {data, length});
        return kMcRefuse;  // one is enough
    };
    object.GetValueEx(tag::kPixelData, &look, take);
    return look.traits;
}

class Planner {
public:
    Planner(const CDcmObject& header, RecodingPlan& plan)
        : header_(header),
          plan_(plan),
          photometric_(Read<CString>(header, tag::kPhotometricInterpretation).value_or(CString())) {
    }

    void DescribeSamples() {
        StoredForms& forms = plan_.forms;
        const auto word = [&](std::uint32_t tag, std::uint16_t absent) {
            return Read<unsigned short>(header_, tag).value_or(absent);
        };
        forms.rows = word(tag::kRows, 0);
        forms.columns = word(tag::kColumns, 0);
        forms.samplesPerPixel = word(tag::kSamplesPerPixel, 1);
        forms.bitsAllocated = word(tag::kBitsAllocated, 0);
        forms.bitsStored = word(tag::kBitsStored, forms.bitsAllocated);
        forms.isSigned = word(tag::kPixelRepresentation, 0) != 0;
    }
    /// What the frames are when they have been read.
    void DescribeSource() {
        const StreamTraits stream = TraitsOfFirstFrame(plan_.from->coding, header_);
        plan_.isLossySource = plan_.from->isLossy && !stream.isLossless;
        plan_.readAs = photometric_;
        plan_.written = photometric_;
        if (plan_.forms.samplesPerPixel != 3) return;
        const bool isDecodedToRgb =
            (plan_.from->coding == FrameCoding::kJpeg && plan_.from->isLossy) ||
            stream.hasColourTransform;
        const bool staysYbr = photometric_ == CString("YBR_FULL") && !isDecodedToRgb;
        if (staysYbr) {
            plan_.readAs = "RGB";  // no conversion
        } else {
            plan_.written = "RGB";
        }
    }
    [[nodiscard]] QUORVEX_MESSAGE CheckSamples() const {
        const StoredForms& forms = plan_.forms;
        if (forms.samplesPerPixel != 1 && forms.samplesPerPixel != 3)
            return QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
        const bool areBits = forms.bitsAllocated == 1 && forms.samplesPerPixel == 1;
        const bool areWhole =
            forms.bitsAllocated == 8 || forms.bitsAllocated == 16 || forms.bitsAllocated == 32;
        if (!areWhole && !areBits) return QVM_ERROR_INVALID_BITS_ALLOCATED;
        if (forms.bitsStored < 1 || forms.bitsStored > forms.bitsAllocated)
            return QVM_ERROR_INVALID_BITS_STORED;
        const FrameCoding coding = plan_.from->coding;
        const bool isNative = coding == FrameCoding::kNative || coding == FrameCoding::kDeflated ||
                              coding == FrameCoding::kFragment;
        const bool sharesChroma = photometric_.Find("_42") >= 0 && isNative;
        return sharesChroma && !plan_.to->isLossy ? QVM_ERROR_INVALID_PHOTOMETRIC : QVM_SUCCESS;
    }
    [[nodiscard]] QUORVEX_MESSAGE FitToForm(const RecodingWish& wish) {
        const auto* limits = std::ranges::find(kLimits, wish.form, &FormLimits::form);
        StoredForms& forms = plan_.forms;
        if (limits == std::end(kLimits)) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
        if (forms.bitsAllocated < limits->leastBits || forms.bitsAllocated > limits->mostBits)
            return QVM_ERROR_INVALID_BITS_ALLOCATED;
        if (forms.isSigned && !limits->takesSigned) return QVM_ERROR_INVALID_PIXEL_REPRESENTATION;
        if (plan_.to->isLossy && photometric_ == CString("PALETTE COLOR"))
            return QVM_ERROR_INVALID_PHOTOMETRIC;
        if (wish.form == kXferJpegExtended) {
            if (forms.samplesPerPixel != 1) return QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
            forms.bitsStored = std::min(forms.bitsStored, kExtendedBits);
        }
        forms.form = wish.form;
        forms.quality = wish.quality != 0 ? wish.quality : limits->quality;
        DescribeColours();
        return QVM_SUCCESS;
    }

private:
    /// Lossy coders take R, G, B; JPEG 2000 and JPEG XL turn them into others.
    void DescribeColours() {
        if (plan_.forms.samplesPerPixel != 3) return;
        // JPEG-LS takes any three samples, and keeps its bound for them as they are.
        if (plan_.to->isLossy && plan_.to->coding != FrameCoding::kJpegLs) {
            plan_.readAs = photometric_;
            plan_.written = "RGB";
        }
        plan_.forms.isRgb = plan_.written == CString("RGB");
        if (plan_.to->coding == FrameCoding::kJpeg2000 && plan_.forms.isRgb)
            plan_.written = plan_.to->isLossy ? "YBR_ICT" : "YBR_RCT";
        if (plan_.to->number == kJpegXl) plan_.written = "XYB";
    }

    const CDcmObject& header_;
    RecodingPlan& plan_;
    CString photometric_;
};

bool IsSameForm(const TransferSyntax& from, const TransferSyntax& to) {
    if (!from.isEncapsulated && !to.isEncapsulated) return true;
    return from.form != 0 && from.form == to.form;
}

}  // namespace

QUORVEX_MESSAGE PlanRecoding(const CDcmObject& header, TRANSFER_SYNTAX from,
                             const RecodingWish& wish, RecodingPlan& plan) {
    plan.from = TransferSyntaxOf(from);
    plan.to = TransferSyntaxOf(wish.form);
    if (plan.from == nullptr || plan.to == nullptr) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    plan.keepsFrames = IsSameForm(*plan.from, *plan.to);
    if (plan.keepsFrames) return QVM_SUCCESS;
    if (plan.from->coding == FrameCoding::kNone) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    Planner planner(header, plan);
    planner.DescribeSamples();
    const auto checked = planner.CheckSamples();
    if (checked != QVM_SUCCESS) return checked;
    planner.DescribeSource();
    const StoredForms& forms = plan.forms;
    plan.frameBytes = CheckedProduct(forms.rows, forms.columns, forms.samplesPerPixel,
                                     (forms.bitsAllocated + 7U) / 8U)
                          .value_or(0);
    return plan.to->isEncapsulated ? planner.FitToForm(wish) : QVM_SUCCESS;
}

}  // namespace quorvex
