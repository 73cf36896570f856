/// The standard's own JSON.
#pragma once

#include "tools/info/element_filter.h"

#include <string>
#include <vector>

namespace quorvex::tools {

/// The DICOM JSON Model (PS3.18 Annex F) of an object, as one line: without group lengths and meta
/// information, text as UTF-8, an unknown VR of a known attribute as the standard has it.
///
/// Pixels, and other values without meaning above a KiB, are a BulkDataURI: the file, and behind a
/// "#" the place of the attribute in this very JSON (RFC 6901).
///
/// @param path  of the file; empty where there is none, so that a URI is the place alone
std::string DicomJson(const std::string& path, const CDcmObject& object,
                      const std::vector<WantedTag>& wanted);

}  // namespace quorvex::tools
