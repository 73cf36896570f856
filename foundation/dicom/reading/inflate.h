/// Deflated data sets.
#pragma once

#include "foundation/dicom/model/element.h"

#include <optional>

namespace quorvex::dicom {

/// Inflates a raw deflate stream (with a zlib header it is taken too). A stream that breaks off or
/// turns bad gives what came before. Nothing when it is none, or grows beyond the limit.
[[nodiscard]] std::optional<ByteBuffer> Inflate(Bytes deflated);

}  // namespace quorvex::dicom
