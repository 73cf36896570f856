/// Bytes as a file on disk.
#pragma once

#include "tests/support/scratch_folder.h"

#include <string>
#include <vector>

namespace quorvex::test {

/// A file that is there for as long as this lives.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::vector<unsigned char>& bytes)
        : path_(folder_.Write("file", bytes)) {}

    [[nodiscard]] const std::string& Path() const { return path_; }

private:
    ScratchFolder folder_;
    std::string path_;
};

}  // namespace quorvex::test
