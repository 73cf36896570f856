#include "foundation/engines/jpegxl/jpegxl_memory.h"

#include <cstddef>
#include <new>

namespace quorvex {

void RequireMemory(const JpegXlNeed& need, std::uint64_t pixels) {
    const std::uint64_t bytes = need.bytes + pixels * need.bytesOfPixel;
    // Not a new-expression, which a compiler may leave out.
    void* const block = ::operator new(static_cast<std::size_t>(bytes));
    ::operator delete(block);
}

}  // namespace quorvex
