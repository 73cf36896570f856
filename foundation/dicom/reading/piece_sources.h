/// The callbacks and files that bytes are read from, as sources of pieces.
#pragma once

#include "foundation/dicom/reading/byte_feed.h"

#include <cstdio>
#include <memory>
#include <string>

namespace quorvex::dicom {

class FileCallbackSource final : public PieceSource {
public:
    FileCallbackSource(std::string fileName, void* user, FileReadCallback callback)
        : fileName_(std::move(fileName)), user_(user), callback_(callback) {}
    Piece Next(bool isFirst) override;

private:
    std::string fileName_;
    void* user_;
    FileReadCallback callback_;
};

class StreamCallbackSource final : public PieceSource {
public:
    StreamCallbackSource(void* user, StreamReadCallback callback)
        : user_(user), callback_(callback) {}
    Piece Next(bool isFirst) override;

private:
    void* user_;
    StreamReadCallback callback_;
};

/// A file by its name; one that cannot be opened or read refuses.
class NamedFileSource final : public PieceSource {
public:
    explicit NamedFileSource(const std::string& path);
    Piece Next(bool isFirst) override;

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    ByteBuffer piece_;
    std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace quorvex::dicom
