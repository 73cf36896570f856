/// Why an input was of no use, and whether that is its own fault.
#pragma once

#include "quorvex/DicomObject.h"
#include "tools/report.h"

#include <optional>
#include <string>

namespace quorvex::tools {

/// What the command says of an input that failed.
struct Trouble {
    ExitStatus status = kBadInput;  ///< kEnvironment where the file, the disk or memory refused
    QUORVEX_MESSAGE code = QVM_SUCCESS;
    std::string sentence;

    /// "NAME (NUMBER): sentence".
    [[nodiscard]] std::string Text() const;
};

/// "its frames are coded as JPEG XL Lossless (1.2.840.10008.1.2.4.110), and this build has no
/// decoder for that"; nothing where the object's transfer syntax has a decoder or is not stated.
std::optional<std::string> MissingDecoder(const CDcmObject& header);

/// Why the file cannot be read, in the system's words: it cannot be opened, or reading it fails.
/// Nothing where all of it can be read.
std::optional<std::string> ReadFailureOf(const std::string& path);

/// What is behind the result of an operation on an input that failed, most telling first: memory
/// that ran out, a limit that this thread's input met, a file that cannot be read, an object
/// without an image, a coding without a decoder (then the code is
/// QVM_ERROR_INVALID_TRANSFER_SYNTAX), or the code's own sentence.
///
/// @param header  of the input; where it is null, the file is asked for it
Trouble TroubleOf(const std::string& path, QUORVEX_MESSAGE result,
                  const CDcmObject* header = nullptr);

/// Whether what failed is no DICOM file at all: one that is found in a folder was not meant then.
bool IsOtherKindOfFile(const std::string& path, const Trouble& trouble);

/// One line on standard error for the input; answers the trouble's status.
ExitStatus ReportTrouble(const std::string& path, const Trouble& trouble);

}  // namespace quorvex::tools
