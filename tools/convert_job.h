/// One file on its way into another transfer syntax.
#pragma once

#include <string>

#include "file_list.h"
#include "manifest.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

namespace quorvex::tools {

class WorkFolder;

/// A form that files can be brought into.
struct ConvertTarget {
    const char* name;  ///< as --to has it
    QUORVEX_XFERSYNTAX code;
    TRANSFER_SYNTAX syntax;
    bool isLossless;
    int quality;               ///< where none is asked for; 0 where quality means nothing
    int worst, best;           ///< the range that --quality has
    const char* codedColours;  ///< Photometric Interpretation of coded RGB; null where it stays RGB
};

/// The target of that name. A WrongUsage for any other text.
const ConvertTarget& ConvertTargetOf(const std::string& name);

/// Says of an object that was coded as RGB how its colours lie in the coded frames, as readers expect
/// it: coders turn them into luminance and differences.
void NameColoursOf(CDcmObject& object, const ConvertTarget& target);

/// What is wanted of every file.
struct ConvertWish {
    const ConvertTarget* target = nullptr;
    int quality = 0;
    bool isVerified = true;
};

/// Converts one file.
///
/// The output is written into the work folder, read back, compared with its source where that is
/// wished, and only then takes its place; until then, and after every failure, a file in that place
/// stays as it was. The source is never touched. One source and one output are held in memory.
///
/// @param record  has input, output, target and quality; receives the rest
/// @param input   tells whether a file that is no DICOM was meant to be one
/// @return true where no other file will fare better: the disk is full or cannot be written
bool ConvertFile(ConvertRecord& record, const InputFile& input, const ConvertWish& wish,
                 WorkFolder& workFolder);

}  // namespace quorvex::tools
