/// A file that lies in memory only, for operations that take a path.
#pragma once

#include "quorvex/Types.h"

#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace quorvex::fuzz {

class MemoryPath {
public:
    explicit MemoryPath(const std::vector<unsigned char>& bytes)
        : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t count = write(descriptor_, bytes.data() + done, bytes.size() - done);
            if (count <= 0) break;
            done += static_cast<std::size_t>(count);
        }
    }
    ~MemoryPath() { close(descriptor_); }
    MemoryPath(const MemoryPath&) = delete;
    MemoryPath& operator=(const MemoryPath&) = delete;
    [[nodiscard]] CString Text() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

}  // namespace quorvex::fuzz
