#include "foundation/platform/file_reader.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex {

FileReader::FileReader(const std::string& path) noexcept
    // Without O_NONBLOCK a pipe that nobody writes to would hold the caller for ever.
    : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat facts {};
    if (descriptor_ < 0 || fstat(descriptor_, &facts) != 0) {
        Refuse(errno);
    } else if (S_ISDIR(facts.st_mode)) {
        Refuse(EISDIR);
    } else if (!S_ISREG(facts.st_mode)) {
        Refuse(EINVAL);
    } else {
        size_ = static_cast<std::size_t>(facts.st_size);
    }
}

FileReader::~FileReader() {
    if (descriptor_ >= 0) close(descriptor_);
}

void FileReader::Refuse(int error) noexcept {
    error_ = error;
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
}

bool FileReader::Read(std::span<unsigned char> bytes) const noexcept {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto rest = bytes.subspan(done);
        const ssize_t count =
            pread(descriptor_, rest.data(), rest.size(), static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace quorvex
