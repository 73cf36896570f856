// Failing memory under the object library and the maker.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmMaker.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/maker/maker_objects.h"
#include "tests/support/memory_file.h"
#include "tests/tools/run_command.h"

namespace quorvex {
namespace {

using namespace test;

/// An object, with values put beside it for reads to go to.
struct Held {
    explicit Held(const Kind& kind) : object(kind.object) {
        object.Open(kind.path);
        file.bytes = kind.bytes;
        file.piece.reserve(MemoryFile::kPiece);
    }
    [[nodiscard]] std::string Look() const { return test::Look(object) + values; }

    CDcmObject object;
    MemoryFile file;
    CString text;
    std::string values;
};

template <class Work>
Subject On(const Kind& kind, Work work) {
    auto s = std::make_shared<Held>(kind);
    return {[=] { return work(*s) == kDcmSuccess; }, [=] { return s->Look(); }};
}

Subject ReadingName(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    return {[=] { return s->object.GetValue(0x00100010, s->text) == kDcmSuccess; },
            [=] { return s->text.ToUtf8(); }};
}
/// Values one by one: one that could not be given comes with the next call.
Subject ReadingNext(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    double first = 0;
    s->object.GetValue(0x00200032, first);
    return {[=] {
                s->text = CString();
                s->object.GetValue(0x00200037, s->text);
                return s->object.GetNextValue(0x00200032, s->text) == kDcmSuccess;
            },
            [=] { return s->text.ToUtf8(); }};
}
Subject ReadingItem(const Kind& kind) {
    if (kind.name != "tables") return {};
    auto s = std::make_shared<Held>(kind);
    auto item = std::make_shared<CDcmItem>();
    return {[=] { return s->object.GetValue(0x00283010, *item) == kDcmSuccess; },
            [=] { return test::Look(*item); }};
}
MC_STATUS CountPieces(int, std::uint32_t, void* user, int length, void*, int, int) {
    *static_cast<int*>(user) += length;
    return kMcContinue;
}
Subject ReadingPixels(const Kind& kind) {
    if (kind.name != "native CT" && kind.name != "big endian") return {};
    auto s = std::make_shared<Held>(kind);
    auto count = std::make_shared<int>(0);
    return {[=] {
                *count = 0;
                return s->object.GetValue(0x7FE00010, count.get(), CountPieces) == kDcmSuccess;
            },
            [=] { return *count == 0 ? "" : std::to_string(*count); }};
}
MC_STATUS CountItems(int, std::uint32_t, void* user, int, unsigned long length, unsigned char*, int,
                     int) {
    *static_cast<int*>(user) += static_cast<int>(length);
    return kMcContinue;
}
Subject WalkingPixels(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Held>(kind);
    auto count = std::make_shared<int>(0);
    return {[=] {
                *count = 0;
                return s->object.GetValueEx(0x7FE00010, count.get(), CountItems) == kDcmSuccess;
            },
            [=] { return std::to_string(*count); }};
}
Subject WalkingElements(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    auto count = std::make_shared<int>(0);
    return {[=] {
                *count = 0;
                const ElementVisitor visit = [](const DcmElementView&, void* user) -> MC_STATUS {
                    ++*static_cast<int*>(user);
                    return kMcContinue;
                };
                return s->object.WalkElements(count.get(), visit) == kDcmSuccess;
            },
            [=] { return std::to_string(*count); }};
}

Subject SettingText(const Kind& kind) {
    auto name = std::make_shared<CString>(
        "Gr\xC3\xB6\xC3\x9F"
        "e, a longer description");
    return On(kind, [=](Held& s) { return s.object.SetValue(0x0008103E, *name); });
}
Subject SettingNumber(const Kind& kind) {
    return On(kind, [](Held& s) { return s.object.SetValue(0x00280107, 4095); });
}
Subject SettingCharacterSet(const Kind& kind) {
    return On(kind, [](Held& s) { return s.object.SetValue(0x00080005, "ISO_IR 100"); });
}
Subject SettingItem(const Kind& kind) {
    auto item = std::make_shared<CDcmItem>();
    item->SetValue(0x00081150, "1.2.3");
    return On(kind, [=](Held& s) { return s.object.SetValue(0x00081140, item.get()); });
}
/// Adding a value may bring those that are there into another form first; what they say stays.
Subject AddingValue(const Kind& kind) {
    if (kind.name == "big endian") return {};
    auto value = std::make_shared<CString>("ORIGINAL OR DERIVED");
    auto isDone = std::make_shared<bool>(false);
    return On(kind, [=](Held& s) {
        if (*isDone) return kDcmSuccess;
        const DCMRESULT answer = s.object.SetNextValue(0x00200037, *value);
        *isDone = answer == kDcmSuccess;
        return answer;
    });
}
Subject SettingFrames(const Kind& kind) {
    if (kind.name != "JPEG baseline") return {};
    auto frame = std::make_shared<std::vector<unsigned char>>(500, 7);
    return On(kind, [=](Held& s) {
        const unsigned long lengths[] = {frame->size(), frame->size()};
        unsigned char* const frames[] = {frame->data(), frame->data()};
        return s.object.SetValueEx(0x7FE00010, 2, lengths, frames);
    });
}
Subject SettingSyntax(const Kind& kind) {
    return On(kind, [](Held& s) { return s.object.SetTransferSyntax(kImplicitLittleEndian); });
}
Subject SettingRepresentation(const Kind& kind) {
    if (kind.name != "big endian" && kind.name != "native CT") return {};
    return On(kind, [](Held& s) { return s.object.SetValueRepresentation(0x00280102, MC_VR_SS); });
}
Subject Removing(const Kind& kind) {
    return On(kind, [](Held& s) { return s.object.RemoveValue(0x00100010); });
}
Subject Closing(const Kind& kind) {
    return On(kind, [](Held& s) { return s.object.Close(); });
}
Subject Assigning(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    auto other = std::make_shared<Held>(AllKinds().front());
    return {[=] { return other->object = s->object, true; },
            [=] { return other->Look() + other->object.GetFileName().ToUtf8(); }};
}

Subject ReadingFile(const Kind& kind) {
    if (kind.name == "bare data set") return {};
    auto s = std::make_shared<Held>(kind);
    s->object.Close();
    return {[=] { return s->object.ReadFile(nullptr, nullptr, nullptr) == kDcmSuccess; },
            [=] { return s->Look(); }};
}
Subject ReadingCallback(const Kind& kind) {
    if (kind.name == "bare data set") return {};
    auto s = std::make_shared<Held>(kind);
    s->object.Close();
    return {[=] { return ReadUpTo(s->object, s->file, kUpToPixelData) == kDcmSuccess; },
            [=] { return s->Look(); }};
}
Subject ReadingStream(const Kind& kind) {
    if (kind.name != "bare data set") return {};
    auto s = std::make_shared<Held>(kind);
    s->object.Close();
    return {[=] { return ReadBare(s->object, s->file, kToTheEnd) == kDcmSuccess; },
            [=] { return s->Look(); }};
}
Subject WritingFile(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    auto folder = std::make_shared<ScratchFolder>();
    auto path = std::make_shared<CString>(folder->Path("written.dcm"));
    return {[=] { return s->object.WriteFile(*path) == kDcmSuccess; },
            [=] {
                const auto names = folder->Names();
                return std::to_string(names.size()) +
                       (names.empty() ? "" : ReadAll(path->ToUtf8()));
            }};
}

// --- Making --------------------------------------------------------------------------------------

constexpr std::uint32_t kNewEachTime[] = {0x00020003, 0x00080012, 0x00080013, 0x00080018,
                                          0x00080021, 0x00080031, 0x0020000E};

std::string LookAtMade(CDcmObject object) {
    for (const auto tag : kNewEachTime) object.RemoveValue(tag);
    return test::Look(object) + object.GetFileName().ToUtf8();
}

Subject MakingSkeleton(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    auto target = std::make_shared<Held>(AllKinds().front());
    auto maker = std::make_shared<CxDcmMaker>();
    return {[=] { return maker->MakeDcmSkeleton(&s->object, &target->object) == 1; },
            [=] { return LookAtMade(target->object); }};
}
Subject UpdatingSettings(const Kind& kind) {
    auto s = std::make_shared<Held>(kind);
    auto maker = std::make_shared<CxDcmMaker>();
    auto info = std::make_shared<CXGSPSInfo>();
    info->objectKind = 1;
    info->seriesNumber = "a series number";
    info->patientName = "a name that needs memory";
    return {[=] { return maker->UpdateUserSettingInfo(info.get(), &s->object) == 1; },
            [=] { return s->Look(); }};
}

_USER_SETTING_INFO Settings(std::int32_t type) {
    _USER_SETTING_INFO settings;
    settings.compressionType = type;
    settings.patientName = "a name that needs memory";
    settings.fileName = "a file name that needs memory";
    return settings;
}

template <int type>
Subject Converting(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Held>(kind);
    auto settings = std::make_shared<_USER_SETTING_INFO>(Settings(type));
    auto maker = std::make_shared<CxDcmMaker>();
    auto app = std::make_shared<CDcmApp>();
    unsigned short bits = 0;
    s->object.GetValue(0x00280100, bits);
    if ((type == 5) != (bits == 8)) return {};
    return {
        [=] {
            return maker->MakeDcmObject(app.get(), &s->object, settings.get()) == QVM_SUCCESS &&
                   (maker->GetOutcome() == QVM_SUCCESS || maker->GetOutcome() == QVM_FRAME_COPIED);
        },
        [=] { return LookAtMade(s->object); }};
}

/// The whole cycle; where it fails it begins again, as a host would.
Subject Making(const Kind& kind) {
    if (kind.name != "native CT" && kind.name != "colour") return {};
    auto s = std::make_shared<Held>(kind);
    auto settings = std::make_shared<_USER_SETTING_INFO>(Settings(9));
    auto maker = std::make_shared<CxDcmMaker>();
    auto made = std::make_shared<std::unique_ptr<CDcmObject>>();
    auto frames = std::make_shared<std::vector<std::unique_ptr<unsigned char[]>>>();
    for (int i = 0; i < 6; ++i) frames->emplace_back(NewCopy(StoredFrames(kind.object).front()));
    return {[=] {
                if (maker->DcmMakerInit(&s->object, settings.get(), nullptr) != QVM_SUCCESS)
                    return false;
                for (int i = 0; i < 2; ++i) {
                    if (maker->AddFrame(frames->back().get()) != QVM_SUCCESS) return false;
                    static_cast<void>(frames->back().release());
                    frames->pop_back();
                }
                CDcmObject* result = nullptr;
                const auto answer = maker->MakeDcmObject(result);
                made->reset(result);
                return answer == QVM_SUCCESS;
            },
            [=] { return *made ? LookAtMade(**made) : std::string(); }};
}

constexpr Operation kOperations[] = {
    {"CDcmObject::GetValue, text", ReadingName},
    {"CDcmObject::GetNextValue", ReadingNext, Leaves::kUsable},
    {"CDcmObject::GetValue, item", ReadingItem},
    {"CDcmObject::GetValue, callback", ReadingPixels, Leaves::kUsable},
    {"CDcmObject::GetValueEx", WalkingPixels, Leaves::kUsable},
    {"CDcmObject::WalkElements", WalkingElements, Leaves::kUsable},
    {"CDcmObject::SetValue, text", SettingText},
    {"CDcmObject::SetValue, number", SettingNumber},
    {"CDcmObject::SetValue, character set", SettingCharacterSet},
    {"CDcmObject::SetValue, item", SettingItem},
    {"CDcmObject::SetNextValue", AddingValue},
    {"CDcmObject::SetValueEx", SettingFrames},
    {"CDcmObject::SetTransferSyntax", SettingSyntax},
    {"CDcmObject::SetValueRepresentation", SettingRepresentation},
    {"CDcmObject::RemoveValue", Removing},
    {"CDcmObject::Close", Closing},
    {"CDcmObject, copy", Assigning, Leaves::kAsBefore, Tells::kException},
    {"CDcmObject::ReadFile", ReadingFile},
    {"CDcmObject::ReadFileUptoTag", ReadingCallback},
    {"CDcmObject::ReadStream2", ReadingStream},
    {"CDcmObject::WriteFile", WritingFile},
    {"CxDcmMaker::MakeDcmSkeleton", MakingSkeleton},
    {"CxDcmMaker::UpdateUserSettingInfo", UpdatingSettings},
    {"CxDcmMaker::MakeDcmObject, to uncompressed", Converting<1>, Leaves::kUsable},
    {"CxDcmMaker::MakeDcmObject, to baseline", Converting<5>, Leaves::kUsable},
    {"CxDcmMaker::MakeDcmObject, to lossless", Converting<7>, Leaves::kUsable},
    {"CxDcmMaker::MakeDcmObject, to JPEG 2000", Converting<9>, Leaves::kUsable},
    {"CxDcmMaker, cycle", Making},
};

class ObjectMemory : public testing::TestWithParam<Operation> {};
TEST_P(ObjectMemory, MayFail) {
    FailEveryAllocation(GetParam());
}
INSTANTIATE_TEST_SUITE_P(All, ObjectMemory, testing::ValuesIn(kOperations));

}  // namespace
}  // namespace quorvex
