/// A parser on a file that a test made.
#pragma once

#include "quorvex/CxDcmParser.h"
#include "tests/support/answers.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <optional>
#include <utility>

namespace quorvex::test {

/// Where the stored bytes of a frame lie; the code of a refusal.
struct Place {
    int code = -1;
    unsigned long offset = 0;
    unsigned long size = 0;
};
inline Place PlaceOf(CxDcmParser& parser, int index = 0) {
    Place place;
    place.code = parser.GetAFrameOffsetSize(index, place.offset, place.size);
    return place;
}

struct Parsed {
    explicit Parsed(const Bytes& file, int readWholeFile = 0) { Read(file, readWholeFile); }
    Parsed() = default;

    QUORVEX_MESSAGE Read(const Bytes& file, int readWholeFile = 0) {
        onDisk.emplace(file);
        return code = parser.Initialize(&app, CString(onDisk->Path()), readWholeFile);
    }
    [[nodiscard]] CDcmObject* Header() const { return parser.GetHeader(); }

    std::optional<TemporaryFile> onDisk;  ///< what is read from while the frames are fetched
    CDcmApp app;
    CxDcmParser parser;
    QUORVEX_MESSAGE code = QVM_SUCCESS;
};

inline Answered Done(Bytes bytes) {
    return {QVM_SUCCESS, std::move(bytes)};
}
inline Answered Refused(QUORVEX_MESSAGE code) {
    return {code, {}};
}

}  // namespace quorvex::test
