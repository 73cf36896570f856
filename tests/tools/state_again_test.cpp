// A state that is read and written again shows what it showed.
#include "presentation/grey/grey_stages.h"
#include "tests/states/standard_states.h"
#include "tests/support/checkers.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace quorvex::test {
namespace {

CDcmObject FileAt(const std::string& path) {
    CDcmApp app;
    CDcmObject object;
    object.Open(CString(path));
    EXPECT_EQ(object.ReadFile(&app, nullptr, nullptr), kDcmSuccess) << path;
    return object;
}

/// Null where the state does not speak of the frame, or none can be made.
std::unique_ptr<CDcmObject> MadeAgain(CDcmObject& state, CDcmObject& image, int frame) {
    const CString uid = Read<CString>(image, tag::kSOPInstanceUID).value_or(CString());
    if (!RefersTo(state, uid, frame)) return nullptr;
    StateRecord record;
    image.GetValue(tag::kRows, record.imageRows);
    image.GetValue(tag::kColumns, record.imageColumns);
    CXGSPSObject().GSPSApplier(&state, &record, uid, frame);
    const bool hasFrames = Read<int>(image, tag::kNumberOfFrames).has_value();
    record.referencedFrameNumber = hasFrames ? frame : -1;
    return MakeState({&record}, image);
}

/// Errors of the second file that the first one has not.
std::string NewErrors(const std::string& before, const std::string& after) {
    const std::string known = ErrorsIn(before);
    std::istringstream lines(ErrorsIn(after));
    std::string errors;
    for (std::string line; std::getline(lines, line);)
        if (known.find(line) == std::string::npos) errors += line + '\n';
    return errors;
}

/// How many states were made of one; frames beyond the fourth are like others.
int CheckState(const std::string& path, const ScratchFolder& folder) {
    const std::string imagePath = std::filesystem::path(path).replace_filename("image.dcm");
    const std::string again = folder.Path("again.dcm");
    CDcmObject state = FileAt(path);
    CDcmObject image = FileAt(imagePath);
    const int frames = std::min(Read<int>(image, tag::kNumberOfFrames).value_or(1), 4);
    int made = 0;
    for (int frame = 1; frame <= frames; ++frame) {
        const auto object = MadeAgain(state, image, frame);
        if (object == nullptr) continue;
        ++made;
        EXPECT_EQ(object->WriteFile(again), kDcmSuccess);
        const Arguments render = {"render", imagePath, "--frame", std::to_string(frame - 1),
                                  "--state"};
        const auto before = PictureBy(render + Arguments{path});
        EXPECT_TRUE(PictureBy(render + Arguments{again}).pixels == before.pixels) << path << frame;
        EXPECT_EQ(NewErrors(path, again), "") << path;
    }
    return made;
}

TEST(StateAgain, ShowsWhatItShowed) {
    const ScratchFolder folder;
    const std::filesystem::path cases = QUORVEX_SOURCE_DIR "/conformance/cases";
    int made = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(cases)) {
        if (entry.path().filename() == "state.dcm") made += CheckState(entry.path(), folder);
    }
    EXPECT_GT(made, 80);
}

// By whatever attribute an image says it.
TEST(StateAgain, KeepsTheShapeOfPixels) {
    const ScratchFolder folder;
    const std::string state = folder.Path("state.dcm");
    for (const auto* name : {"default_imager", "default_nominal", "imager", "nominal"}) {
        const std::string image =
            std::string(QUORVEX_SOURCE_DIR "/conformance/cases/aspect/") + name + "/image.dcm";
        OutputOf({"state", image, "-o", state});
        EXPECT_TRUE(PictureBy({"render", image}).pixels ==
                    PictureBy({"render", image, "--state", state}).pixels)
            << name;
        EXPECT_EQ(ErrorsIn(state) + ComplaintsAboutState(state), "") << name;
    }
}

}  // namespace
}  // namespace quorvex::test
