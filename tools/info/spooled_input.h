/// Standard input as a file.
#pragma once

#include <string>

namespace quorvex::tools {

/// Reads standard input to its end into a file without a name, which goes with the object, however
/// the command ends. An EnvironmentFailure where that fails.
class SpooledInput {
public:
    SpooledInput();
    ~SpooledInput();
    SpooledInput(const SpooledInput&) = delete;
    SpooledInput& operator=(const SpooledInput&) = delete;

    /// A path by which this process can open it.
    [[nodiscard]] const std::string& Path() const noexcept { return path_; }

private:
    int descriptor_;
    std::string path_;
};

}  // namespace quorvex::tools
