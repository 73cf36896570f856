#include "parser/source/stored_file.h"

#include "foundation/types/answer.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <utility>

namespace quorvex {
namespace {

/// The bits of larger ones cannot be counted.
constexpr auto kLargestFile = std::numeric_limits<std::uint64_t>::max() / 8;

/// What a host's source answers; nothing where it throws, or says what cannot be.
std::optional<std::size_t> SizeOf(const FileSource& source) noexcept {
    const auto size = Contain(std::optional<std::uint64_t>(), [&] {
        const HostCode host;
        return std::optional(source.Size());
    });
    return size && *size <= kLargestFile ? size : std::nullopt;
}

bool ReadFrom(FileSource& source, std::uint64_t offset, std::span<unsigned char> bytes) noexcept {
    return Contain(false, [&] {
        const HostCode host;
        return source.ReadAt(offset, bytes);
    });
}

std::string Absolute(const std::string& path) {
    std::error_code failure;
    auto whole = std::filesystem::absolute(path, failure).string();
    return failure ? path : whole;
}

}  // namespace

FileSource::~FileSource() = default;

StoredFile StoredFile::At(const std::string& path) {
    StoredFile file;
    file.path_ = path.empty() ? path : Absolute(path);
    return file;
}

StoredFile StoredFile::From(std::shared_ptr<FileSource> source) {
    StoredFile file;
    file.source_ = std::move(source);
    return file;
}

StoredFile StoredFile::In(FileImage image) {
    StoredFile file;
    file.KeepInMemory(std::move(image));
    return file;
}

void StoredFile::KeepInMemory(FileImage image) {
    image_ = std::make_shared<const FileImage>(std::move(image));
    size_ = image_->Bytes().size();
    path_.clear();
    identity_.reset();
    source_.reset();
}

FileReading::FileReading(StoredFile& file) {
    Open(file);
    if (!isOpen_) return;
    if (reader_) file.identity_ = reader_->Identity();
    file.size_ = size_;
}

FileReading::FileReading(const StoredFile& file) {
    Open(file);
    const bool isAnother = reader_ && isOpen_ && reader_->Identity() != file.identity_;
    if (isAnother || size_ != file.size_) isOpen_ = false;
}

void FileReading::TurnTo(const StoredFile& file) {
    reader_.reset();
    source_ = nullptr;
    Open(file);
}

void FileReading::Open(const StoredFile& file) {
    if (file.image_) {
        memory_ = file.InMemory();
        size_ = memory_.size();
        isOpen_ = true;
    } else if (file.source_) {
        source_ = file.source_.get();
        const auto size = SizeOf(*source_);
        isOpen_ = size.has_value();
        size_ = size.value_or(0);
    } else {
        reader_.emplace(file.path_);
        isOpen_ = reader_->IsOpen();
        size_ = reader_->Size();
    }
}

int FileReading::Error() const noexcept {
    return reader_ ? reader_->Error() : 0;
}

bool FileReading::Read(std::uint64_t offset, std::span<unsigned char> bytes) {
    isGood_ = isGood_ && isOpen_ && IsInside(offset, bytes.size());
    if (!isGood_ || bytes.empty()) return isGood_;
    if (reader_) {
        isGood_ = reader_->Read(offset, bytes);
    } else if (source_ != nullptr) {
        isGood_ = ReadFrom(*source_, offset, bytes);
    } else {
        std::ranges::copy(memory_.subspan(offset, bytes.size()), bytes.begin());
    }
    return isGood_;
}

std::span<const unsigned char> FileReading::Show(std::uint64_t offset, std::size_t length,
                                                 HeapBlock& block) {
    isGood_ = isGood_ && isOpen_ && IsInside(offset, length);
    if (!isGood_ || length == 0) return {};
    if (!reader_ && source_ == nullptr) return memory_.subspan(offset, length);
    block = HeapBlock(length);
    if (!Read(offset, block.Bytes())) return {};
    return block.Bytes();
}

bool FileReading::IsSound() {
    if (!isGood_ || !isOpen_) return false;
    if (reader_) return reader_->IsUnchanged();
    return source_ == nullptr || SizeOf(*source_) == size_;
}

}  // namespace quorvex
