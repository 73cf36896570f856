/// The file meta information of an object that is written.
#pragma once

#include "foundation/dicom/model/data_set.h"

#include <string_view>

namespace quorvex::dicom {

/// Group 0002 made from `main`, without the group length. The UIDs of the data set are used; those
/// of the meta information that it was read with only where it has none of its own.
[[nodiscard]] DataSet MetaInformationOf(const DataSet& main, std::string_view transferSyntaxUid);

/// A UID as it stands in the data set, without its padding; empty where there is none.
[[nodiscard]] std::string_view UidOf(const DataSet& dataSet, std::uint32_t tag);

}  // namespace quorvex::dicom
