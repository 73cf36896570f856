/// What an object is, before any detail.
#pragma once

#include "quorvex/DicomObject.h"

#include <string>
#include <vector>

namespace quorvex::tools {

/// Every field is empty where the object does not say.
struct ObjectIdentity {
    std::string sopClassUid;
    std::string sopClassName;  ///< empty for a class that is none of the standard's
    std::string modality;
    std::string patientName;
    std::string patientId;
    std::string studyDate;  ///< 2024-05-31 where it is a date
    std::string studyDescription;
    std::string seriesDescription;
    std::vector<std::string> needs;  ///< what it takes to show the object, in words
};

ObjectIdentity Identify(const CDcmObject& header);

}  // namespace quorvex::tools
