#include "c/calls.h"
#include "c/sample_layout.h"
#include "quorvex/CxDcmMaker.h"

#include <vector>

namespace quorvex::c {
namespace {

constexpr auto kNotWritten = QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
constexpr const char* kUsualTarget = "explicit";

/// Null for a target that this build does not write.
const TransferSyntax* TargetNamed(const char* name) noexcept {
    if (name == nullptr || *name == '\0') return nullptr;
    const TransferSyntax* const syntax = TransferSyntaxToConvertTo(name);
    return syntax != nullptr && syntax->isWritten ? syntax : nullptr;
}

QUORVEX_MESSAGE Write(const CDcmObject& object, const char* path) {
    return object.WriteFile(CString(path)) == kDcmSuccess ? QVM_SUCCESS : kNotWritten;
}

/// All of an object. What is no plain Part 10 file is left to the parser.
QUORVEX_MESSAGE ReadWhole(const quorvex_image& image, CDcmObject& object) {
    if (!image.origin.source) {
        CDcmApp app;
        object.Open(CString(image.origin.path));
        if (object.ReadFile(&app, nullptr, nullptr) == kDcmSuccess) return QVM_SUCCESS;
    }
    CxDcmParser parser;
    const QUORVEX_MESSAGE result = image.origin.Open(parser, true);
    if (result == QVM_SUCCESS) object = *parser.GetHeader();
    return result;
}

QUORVEX_MESSAGE Convert(const quorvex_image& image, const quorvex_conversion& conversion,
                        const char* path) {
    const TransferSyntax* const target = TargetNamed(conversion.target);
    if (target == nullptr) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    CDcmObject object;
    QUORVEX_MESSAGE result = ReadWhole(image, object);
    if (result != QVM_SUCCESS) return result;
    CDcmApp app;
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    maker.SetQuality(static_cast<std::uint16_t>(conversion.quality));
    maker.SetProgress(conversion.progress, conversion.user);
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(target->form);
    result = maker.MakeDcmObject(&app, &object, &settings);
    if (result != QVM_SUCCESS) return result;
    const QUORVEX_MESSAGE outcome = maker.GetOutcome();
    if (outcome != QVM_SUCCESS && outcome != QVM_FRAME_COPIED) return outcome;
    result = Write(object, path);
    return result == QVM_SUCCESS ? outcome : result;
}

/// What a host says of its frames over what the source says.
class NewFrames {
public:
    NewFrames(const quorvex_new_object& wanted, const std::optional<quorvex_facts>& source)
        : isDescribed_(wanted.rows != 0) {
        const quorvex_facts like = source.value_or(quorvex_facts{});
        const auto word = [](std::int32_t chosen, std::int32_t absent) {
            return static_cast<std::uint16_t>(chosen != 0 ? chosen : absent);
        };
        info_.rows = word(wanted.rows, like.rows);
        info_.columns = word(wanted.columns, like.columns);
        info_.samplesPerPixel = word(wanted.samples, isDescribed_ ? 1 : like.samples);
        info_.bitsAllocated = word(wanted.bits_allocated, like.bits_allocated);
        info_.bitsStored =
            word(wanted.bits_stored,
                 wanted.bits_allocated != 0 ? wanted.bits_allocated : like.bits_stored);
        info_.pixelRepresentation = isDescribed_ ? (wanted.is_signed != 0 ? 1 : 0)
                                                 : static_cast<std::uint16_t>(like.is_signed);
        info_.photometricInterpretation =
            CString(wanted.photometric != nullptr ? wanted.photometric : "MONOCHROME2");
    }
    [[nodiscard]] std::size_t FrameBytes() const noexcept {
        return std::size_t{info_.rows} * info_.columns * info_.samplesPerPixel *
               ((info_.bitsAllocated + 7U) / 8U);
    }
    /// Null for frames like those of the source.
    [[nodiscard]] _FRAME_INFO* Described() noexcept { return isDescribed_ ? &info_ : nullptr; }
    [[nodiscard]] _FRAME_INFO* Info() noexcept { return &info_; }

private:
    bool isDescribed_;
    _FRAME_INFO info_;
};

QUORVEX_MESSAGE MakeDerived(CxDcmMaker& maker, CDcmObject& source, _USER_SETTING_INFO& settings,
                            NewFrames& form, std::span<const void* const> frames,
                            CDcmObject*& made) {
    QUORVEX_MESSAGE result = maker.DcmMakerInit(&source, &settings, form.Described());
    for (const void* const frame : frames) {
        if (result != QVM_SUCCESS) return result;
        auto copy = std::make_unique<unsigned char[]>(form.FrameBytes());
        std::memcpy(copy.get(), frame, form.FrameBytes());
        result = maker.AddFrame(copy.get());
        if (result == QVM_SUCCESS) copy.release();  // NOLINT(bugprone-unused-return-value)
    }
    return result == QVM_SUCCESS ? maker.MakeDcmObject(made) : result;
}

QUORVEX_MESSAGE Make(const quorvex_image& source, const quorvex_new_object& wanted,
                     std::span<const void* const> frames, const char* path) {
    const TransferSyntax* const target =
        TargetNamed(wanted.target != nullptr ? wanted.target : kUsualTarget);
    if (target == nullptr) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(target->form);
    if (wanted.series_description != nullptr)
        settings.seriesDescription = CString(wanted.series_description);
    NewFrames form(wanted, FactsOf(source.parser));
    if (form.FrameBytes() == 0) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    CDcmObject header = *source.parser.GetHeader();
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    maker.SetQuality(static_cast<std::uint16_t>(wanted.quality));
    CDcmObject* made = nullptr;
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    if (wanted.kind == QUORVEX_MAKE_SECONDARY_CAPTURE) {
        std::vector<const unsigned char*> bytes;
        for (const void* const frame : frames)
            bytes.push_back(static_cast<const unsigned char*>(frame));
        result = maker.MakeSecondaryCapture(&header, &settings, form.Info(), bytes.data(),
                                            static_cast<int>(bytes.size()), made);
    } else {
        result = MakeDerived(maker, header, settings, form, frames, made);
    }
    const std::unique_ptr<CDcmObject> object(made);
    return result == QVM_SUCCESS ? Write(*object, path) : result;
}

}  // namespace
}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

int32_t quorvex_writes_target(const char* target) {
    return TargetNamed(target) != nullptr ? 1 : 0;
}

quorvex_result quorvex_convert(const quorvex_image* image, const quorvex_conversion* conversion,
                               const char* path) {
    const auto taken = Taken(conversion);
    if (!AreThere(image, path) || !taken) return QVM_ERROR_NULL_SOURCE;
    if (taken->quality < 0 || taken->quality > 65535) return QVM_ERROR_INVALID_MAKER_PARAM;
    return Call(*image->settings, kNotWritten, [&] { return Convert(*image, *taken, path); });
}

quorvex_result quorvex_make(const quorvex_image* source, const quorvex_new_object* object,
                            const void* const* frames, int32_t count, const char* path) {
    const auto taken = Taken(object);
    if (!AreThere(source, path, frames) || !taken) return QVM_ERROR_NULL_SOURCE;
    if (count < 1) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const std::span<const void* const> all(frames, static_cast<std::size_t>(count));
    if (std::ranges::find(all, nullptr) != all.end()) return QVM_ERROR_NULL_SOURCE;
    return Call(*source->settings, kNotWritten, [&] { return Make(*source, *taken, all, path); });
}
