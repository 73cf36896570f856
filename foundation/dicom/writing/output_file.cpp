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
      file_(std::fopen(temporaryPath_.c_str(), "w+bx")) {}

OutputFile::~OutputFile() {
    if (!file_) return;
    file_.reset();
    static_cast<void>(std::remove(temporaryPath_.c_str()));
}

void OutputFile::Put(Bytes bytes) {
    if (!isGood_ || bytes.empty()) return;
    isGood_ = IsOpen() && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
}

void OutputFile::PutAt(std::uint64_t offset, Bytes bytes) {
    if (!isGood_) return;
    isGood_ = IsOpen() && fseeko(file_.get(), static_cast<off_t>(offset), SEEK_SET) == 0;
    Put(bytes);
    isGood_ = isGood_ && fseeko(file_.get(), 0, SEEK_END) == 0;
}

void OutputFile::PutRestOf(OutputFile& other, std::uint64_t offset) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const bool isThere = other.isGood_ && other.IsOpen() &&
                         fseeko(other.file_.get(), static_cast<off_t>(offset), SEEK_SET) == 0;
    isGood_ = isGood_ && isThere;
    ByteBuffer piece(isGood_ ? kPiece : 0);
    while (isGood_) {
        const std::size_t count = std::fread(piece.data(), 1, piece.size(), other.file_.get());
        Put(Bytes(piece).first(count));
        if (count == piece.size()) continue;
        isGood_ = isGood_ && std::ferror(other.file_.get()) == 0;
        break;
    }
}

bool OutputFile::Commit() {
    if (!isGood_ || !file_) return false;
    const bool isClosed = std::fclose(file_.release()) == 0;
    if (isClosed && std::rename(temporaryPath_.c_str(), path_.c_str()) == 0) return true;
    static_cast<void>(std::remove(temporaryPath_.c_str()));
    return false;
}

}  // namespace quorvex::dicom
