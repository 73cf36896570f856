/// One file on disk for a test.
#pragma once

#include "tests/support/scratch_folder.h"

#include <string>
#include <vector>

namespace quorvex::test {

/// A file in a folder of its own, removed with the object.
class TemporaryFile {
public:
    /// A path alone, for a test to write to.
    TemporaryFile() : path_(folder_.Path("file")) {}
    explicit TemporaryFile(const std::vector<unsigned char>& bytes)
        : path_(folder_.Write("file", bytes)) {}

    [[nodiscard]] const std::string& Path() const { return path_; }

private:
    ScratchFolder folder_;
    std::string path_;
};

}  // namespace quorvex::test
