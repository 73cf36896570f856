/// A part of a picture that is stored in tiles, as an image of its own.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"
#include "tools/report.h"

#include <string>
#include <vector>

namespace quorvex::tools {

struct RegionChoice {
    CRect area;  ///< columns and rows of the level
    int level = 0;
    int opticalPath = 0;
    int focalPlane = 0;
};

/// Fills `object` with a native image of the region, under the header of its level.
/// @param files  whose levels make the picture
/// @return kAllDone, or what has been complained about
ExitStatus OpenRegion(CDcmApp& app, const std::vector<std::string>& files,
                      const RegionChoice& choice, CDcmObject& object);

}  // namespace quorvex::tools
