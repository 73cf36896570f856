/// One file on its way into another transfer syntax.
#pragma once

#include "tools/convert/frame_watch.h"
#include "tools/convert/manifest/manifest.h"
#include "tools/convert_target.h"
#include "tools/file_list.h"

#include <string>

namespace quorvex::tools {

class FrameTeam;
class WorkFolder;

/// What is wanted of every file.
struct ConvertOptions {
    ConvertTarget target;
    int quality = 0;
    bool isVerified = true;
    bool hasManifest = false;  ///< which names the digests of all files
    bool keepsUnsupported = false;
    bool leavesLossy = false;
    bool isDryRun = false;  ///< nothing takes its place
};

/// Converts one file.
///
/// The output is written into the work folder, read back, compared with its source where that is
/// wanted, and only then takes its place; until then, and after every failure, a file in that place
/// stays as it was. The source is never touched. Of an
/// image of several frames those at work are held in memory, of any other file source and output.
///
/// What has no pixels is carried: written in the target's encoding, in explicit little endian for a
/// coded target, or copied where it is in that encoding already or cannot be written in it.
///
/// @param record  has input, output, target and quality; receives the rest
/// @param input   says whether a file that is not DICOM was meant to be
/// @param watch   may be called from this thread at any time
/// @return true where no other file will fare better: the disk is full or cannot be written
bool ConvertFile(ConvertRecord& record, const InputFile& input, const ConvertOptions& options,
                 WorkFolder& workFolder, const FrameWatch& watch, FrameTeam& team);

}  // namespace quorvex::tools
