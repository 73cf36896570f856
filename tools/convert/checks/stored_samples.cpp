#include "tools/convert/checks/stored_samples.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

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

}  // namespace quorvex::tools
