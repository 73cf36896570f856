/// The transfer syntaxes that are known, and how each writes a data set down.
#pragma once

#include "quorvex/DicomObject.h"

#include <string_view>

namespace quorvex::dicom {

struct TransferSyntax {
    std::string_view uid;  ///< empty where the syntax has no UID of the standard
    TRANSFER_SYNTAX number;
    bool isExplicit;
    bool isBigEndian;
    bool isDeflated;
    bool isEncapsulated;
};

/// Null for a UID or number that is not in the table. Several UIDs share `kOtherEncapsulated`, of
/// which the number finds none.
[[nodiscard]] const TransferSyntax* SyntaxOfUid(std::string_view uid) noexcept;
[[nodiscard]] const TransferSyntax* SyntaxOfNumber(TRANSFER_SYNTAX number) noexcept;

}  // namespace quorvex::dicom
