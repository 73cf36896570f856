#include "foundation/platform/file_reader.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex {
namespace {

FileIdentity IdentityOf(const struct stat& facts) noexcept {
    return {.device = facts.st_dev,
            .number = facts.st_ino,
            .size = static_cast<std::uint64_t>(facts.st_size),
            .writtenSeconds = facts.st_mtim.tv_sec,
            .writtenNanoseconds = facts.st_mtim.tv_nsec,
            .changedSeconds = facts.st_ctim.tv_sec,
            .changedNanoseconds = facts.st_ctim.tv_nsec};
}

}  // namespace

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
        identity_ = IdentityOf(facts);
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

bool FileReader::IsUnchanged() const noexcept {
    struct stat facts {};
    return fstat(descriptor_, &facts) == 0 && IdentityOf(facts) == identity_;
}

bool FileReader::Read(std::uint64_t offset, std::span<unsigned char> bytes) const noexcept {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto rest = bytes.subspan(done);
        const ssize_t count =
            pread(descriptor_, rest.data(), rest.size(), static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace quorvex
