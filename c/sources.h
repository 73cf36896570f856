/// Bytes of a C host as the parser reads them.
#pragma once

#include "quorvex/FileSource.h"
#include "quorvex/quorvex.h"

#include <memory>
#include <span>

namespace quorvex::c {

/// Bytes that stay the host's.
[[nodiscard]] std::shared_ptr<FileSource> SourceOver(std::span<const unsigned char> bytes);
/// Calls of the host; its `release` is called with the last owner, or when this throws.
[[nodiscard]] std::shared_ptr<FileSource> SourceOf(const quorvex_source& calls);

}  // namespace quorvex::c
