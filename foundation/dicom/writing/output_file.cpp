#include "foundation/dicom/writing/output_file.h"

#include <atomic>
#include <unistd.h>
#include <utility>

namespace quorvex::dicom {
namespace {

/// Differs between the threads of a process, and between processes that write beside each other.
std::string TemporaryName(const std::string& path) {
    static std::atomic<unsigned> count = 0;
    return path + "." + std::to_string(getpid()) + "-" + std::to_string(++count) + ".part";
}

}  // namespace

OutputFile::OutputFile(std::string path)
    : path_(std::move(path)),
      temporaryPath_(TemporaryName(path_)),
      file_(std::fopen(temporaryPath_.c_str(), "wbx")) {}

OutputFile::~OutputFile() {
    if (!file_) return;
    file_.reset();
    static_cast<void>(std::remove(temporaryPath_.c_str()));
}

void OutputFile::Put(Bytes bytes) {
    if (!isGood_ || bytes.empty()) return;
    isGood_ = IsOpen() && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
}

bool OutputFile::Commit() {
    if (!isGood_ || !file_) return false;
    const bool isClosed = std::fclose(file_.release()) == 0;
    if (isClosed && std::rename(temporaryPath_.c_str(), path_.c_str()) == 0) return true;
    static_cast<void>(std::remove(temporaryPath_.c_str()));
    return false;
}

}  // namespace quorvex::dicom
