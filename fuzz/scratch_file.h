/// A file of this process's own, in memory where the system has a place for that, gone at the end.
#pragma once

#include "fuzz/target.h"
#include "tests/support/memory_file.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace quorvex::fuzz {

class ScratchFile {
public:
    ScratchFile() : path_(Folder() / NewName()) {}
    ~ScratchFile() {
        std::error_code error;
        std::filesystem::remove(path_, error);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    [[nodiscard]] CString Path() const { return path_.string(); }
    [[nodiscard]] std::vector<unsigned char> Bytes() const { return test::BytesOfFile(path_); }

private:
    static std::filesystem::path Folder() {
        const std::filesystem::path inMemory = "/dev/shm";
        return access(inMemory.c_str(), W_OK) == 0 ? inMemory
                                                   : std::filesystem::temp_directory_path();
    }
    static std::string NewName() {
        static std::atomic<unsigned> count = 0;
        return "quorvex_fuzz_" + std::to_string(getpid()) + "_" + std::to_string(++count);
    }

    std::filesystem::path path_;
};

/// The object becomes what it was written as, and that is written as the same bytes again. False
/// where it cannot be written.
inline bool WriteAndRead(CDcmObject& object) {
    const ScratchFile file;
    const ScratchFile again;
    if (object.WriteFile(file.Path()) != kDcmSuccess) return false;
    CDcmApp app;
    object.RenameFile(file.Path());
    Require(object.ReadFile(&app, nullptr, nullptr) == kDcmSuccess);
    Require(object.WriteFile(again.Path()) == kDcmSuccess);
    Require(file.Bytes() == again.Bytes());
    return true;
}

}  // namespace quorvex::fuzz
