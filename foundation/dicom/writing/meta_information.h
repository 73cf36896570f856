/// The file meta information of an object that is written.
#pragma once

#include "foundation/dicom/model/data_set.h"

#include <string_view>

namespace quorvex::dicom {

/// Group 0002 made from `main`: what the data set says goes before what the meta information says
/// that it was read with, of which nothing else is taken over. The group length is left out.
[[nodiscard]] DataSet MetaInformationOf(const DataSet& main, std::string_view transferSyntaxUid);

/// A UID as it stands in the data set, without its padding; empty where there is none.
[[nodiscard]] std::string_view UidOf(const DataSet& dataSet, std::uint32_t tag);

}  // namespace quorvex::dicom
