#include "tools/phantom/phantom.h"

#include "tools/output/output_place.h"
#include "tools/phantom/phantom_objects.h"

#include <filesystem>

namespace quorvex::tools {
namespace {

/// How large the samples are, and the numbers that their UIDs end with.
struct Sizes {
    CSize radiograph;
    int radiographNumber;
    CSize loop;
    int loopFrames;
    int loopNumber;
};
constexpr Sizes kSmall = {{480, 586}, 3, {256, 192}, 4, 4};
constexpr Sizes kFull = {{2048, 2500}, 5, {640, 480}, 12, 6};

void Write(const CDcmObject& object, const std::filesystem::path& path) {
    if (object.WriteFile(path.string()) != kDcmSuccess)
        throw EnvironmentFailure(path.string() + ": the sample could not be written");
}

}  // namespace

ExitStatus Phantom(const PhantomArguments& arguments) {
    const Sizes& sizes = arguments.small ? kSmall : kFull;
    const std::filesystem::path folder = arguments.folder;
    MakeFolder(folder);
    Write(*MakeSlice(), folder / "ct.dcm");
    Write(*MakeSliceState(), folder / "ct_state.dcm");
    Write(*MakeRadiograph(sizes.radiograph, sizes.radiographNumber), folder / "radiograph.dcm");
    Write(*MakeLoop(sizes.loop, sizes.loopFrames, sizes.loopNumber),
          folder / "ultrasound_loop.dcm");
    return kAllDone;
}

}  // namespace quorvex::tools
