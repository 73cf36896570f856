/// A file of this process's own, in memory where the system has a place for that, and gone at the end.
#pragma once

#include "quorvex/Types.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

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
    [[nodiscard]] std::vector<char> Bytes() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

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

}  // namespace quorvex::fuzz
