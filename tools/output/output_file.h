/// A file that is whole or not there.
#pragma once

#include "tools/output/unfinished.h"

#include <span>
#include <string>

namespace quorvex::tools {

/// The path that stands for standard output.
inline constexpr const char* kStandardOutput = "-";

/// Whether an output is no plain file, so that bytes are sent there one after the other: standard
/// output, a device or a pipe. A WrongUsage for a folder.
bool IsWrittenDirectly(const std::string& path);

/// Collects an output under a temporary name beside its place and takes that place in one step, so
/// that no half-written file is ever found under the name asked for.
///
/// Standard output, devices and pipes are written directly. Every failure is an
/// EnvironmentFailure, and a folder in the place of the file is a WrongUsage.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    /// Removes what was written unless it was committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(std::span<const unsigned char> bytes);
    /// The output is whole: it takes its place.
    void Commit();

private:
    void OpenTemporary();

    std::string path_;
    std::string temporaryPath_;  ///< empty when written directly
    int descriptor_ = -1;
    Unfinished unfinished_;
};

}  // namespace quorvex::tools
