/// Objects on their way to where they are wanted.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace quorvex::tools {

/// An object that no file can hold, whatever the disk does.
struct UnwritableObject : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Writes an object to `path`, which is a file of the work folder.
/// @param output  the name that a failure carries: an EnvironmentFailure of the disk, or an
///                UnwritableObject
void WriteObject(const CDcmObject& object, const std::string& path, const std::string& output);

/// Brings a finished file to its place: by a rename, or by copying where that is a device or
/// standard output. An EnvironmentFailure where that fails; a file in that place is then untouched.
void PutInPlace(const std::string& written, const std::string& output);

/// Both in one, with a work folder of its own.
void WriteObjectTo(const CDcmObject& object, const std::string& output);

/// Where a work folder for an output belongs: beside it or, for a device, among temporary files. A
/// WrongUsage where the output is a folder.
std::string WorkPlaceOf(const std::string& output);

/// A file of a work folder that goes with the object unless it was moved away.
struct WorkFile {
    explicit WorkFile(std::string newPath) : path(std::move(newPath)) {}
    ~WorkFile() { static_cast<void>(std::remove(path.c_str())); }
    WorkFile(const WorkFile&) = delete;
    WorkFile& operator=(const WorkFile&) = delete;
    std::string path;
};

}  // namespace quorvex::tools
