#include "tools/output/output_file.h"

#include "tools/report.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::tools {
namespace {

// A link stays a link: what it points to is replaced.
std::string FollowLink(const std::string& path) {
    std::error_code failure;
    if (!std::filesystem::is_symlink(path, failure)) return path;
    const auto target = std::filesystem::weakly_canonical(path, failure);
    return failure ? path : target.string();
}

mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return static_cast<mode_t>(0666) & ~mask;
}

}  // namespace

bool IsWrittenDirectly(const std::string& path) {
    if (path == kStandardOutput) return true;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    if (S_ISDIR(status.st_mode)) throw WrongUsage(path + " is a folder, not a file");
    return !S_ISREG(status.st_mode);
}

OutputFile::OutputFile(const std::string& path) : path_(FollowLink(path)) {
    if (path == kStandardOutput) {
        descriptor_ = dup(STDOUT_FILENO);
    } else if (IsWrittenDirectly(path_)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        OpenTemporary();
    }
    if (descriptor_ < 0) throw SystemFailure(path);
}

void OutputFile::OpenTemporary() {
    const StopsWait wait;
    temporaryPath_ = path_ + ".XXXXXX";
    descriptor_ = mkostemp(temporaryPath_.data(), O_CLOEXEC);
    if (descriptor_ < 0) return;
    unfinished_.Remember(temporaryPath_);
    fchmod(descriptor_, NewFileMode());
}

OutputFile::~OutputFile() {
    if (descriptor_ < 0) return;
    close(descriptor_);
    if (!temporaryPath_.empty()) unlink(temporaryPath_.c_str());
}

void OutputFile::Write(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const auto written = write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw SystemFailure(path_);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

void OutputFile::Commit() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    const bool isClosed = close(descriptor) == 0;
    const bool isPlaced =
        isClosed && (temporaryPath_.empty() || rename(temporaryPath_.c_str(), path_.c_str()) == 0);
    if (!isPlaced) {
        const int error = errno;
        if (!temporaryPath_.empty()) unlink(temporaryPath_.c_str());
        errno = error;
        throw SystemFailure(path_);
    }
    unfinished_.Forget();
}

}  // namespace quorvex::tools
