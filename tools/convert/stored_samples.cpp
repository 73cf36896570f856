#include "tools/convert/stored_samples.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/stored_image.h"

#include <limits>

namespace quorvex::tools {

SampleForm FormOf(const CDcmObject& header) {
    const auto word = [&](std::uint32_t tag, unsigned short absent) {
        return Read<unsigned short>(header, tag).value_or(absent);
    };
    const unsigned short bitsAllocated = word(tag::kBitsAllocated, 0);
    return {
        .rows = word(tag::kRows, 0),
        .columns = word(tag::kColumns, 0),
        .bitsAllocated = bitsAllocated,
        .bits = {.stored = word(tag::kBitsStored, bitsAllocated),
                 .isSigned = word(tag::kPixelRepresentation, 0) != 0},
        .photometric = Read<CString>(header, tag::kPhotometricInterpretation).value_or(CString())};
}

QUORVEX_MESSAGE Open(CxDcmParser& parser, CDcmApp& app, CDcmObject& object) {
    parser.SetRules(Rules::kStandard);
    return parser.Initialize(&app, &object, nullptr, 0, 0);
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
        const auto frame = FetchFrame(parser, i);
        limits.result = frame.result;
        for (std::size_t at = 0; frame.bytes && at + width <= frame.size; at += width) {
            const long value = ValueOf(&frame.bytes[at], form.Width(), form.bits);
            limits.lowest = std::min(limits.lowest, value);
            limits.highest = std::max(limits.highest, value);
        }
    }
    return limits;
}

}  // namespace quorvex::tools
