#include "tools/output/object_output.h"

#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/output/work_folder.h"
#include "tools/report.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <vector>

namespace quorvex::tools {
namespace {

void CopyTo(const std::string& output, const std::string& written) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    OutputFile file(output);
    std::ifstream bytes(written, std::ios::binary);
    std::vector<char> piece(kPiece);
    while (bytes.read(piece.data(), kPiece) || bytes.gcount() > 0) {
        const auto* begin = static_cast<const unsigned char*>(static_cast<void*>(piece.data()));
        file.Write({begin, static_cast<std::size_t>(bytes.gcount())});
    }
    file.Commit();
}

}  // namespace

void WriteObject(const CDcmObject& object, const std::string& path, const std::string& output) {
    errno = 0;
    if (object.WriteFile(path) == kDcmSuccess) return;
    if (errno != 0) throw SystemFailure(output);
    throw UnwritableObject("the object cannot be written: " + object.GetErrorMessage().ToUtf8());
}

void PutInPlace(const std::string& written, const std::string& output) {
    if (IsWrittenDirectly(output)) return CopyTo(output, written);
    MakeFolderOf(output);
    if (std::rename(written.c_str(), output.c_str()) != 0) throw SystemFailure(output);
}

std::string WorkPlaceOf(const std::string& output) {
    namespace fs = std::filesystem;
    if (IsWrittenDirectly(output)) return fs::temp_directory_path().string();
    return fs::path(output).parent_path().string();
}

void WriteObjectTo(const CDcmObject& object, const std::string& output) {
    WorkFolder folder(WorkPlaceOf(output));
    const WorkFile written(folder.NewPath());
    WriteObject(object, written.path, output);
    PutInPlace(written.path, output);
}

}  // namespace quorvex::tools
