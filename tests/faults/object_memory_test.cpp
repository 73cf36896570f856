// Failing memory under the object library.
#include "quorvex/Tags.h"
#include "tests/faults/failing_reads.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/support/memory_file.h"
#include "tests/support/scratch_folder.h"

namespace quorvex {
namespace {

using namespace test;

MC_STATUS AddLength(int, std::uint32_t, void* user, int length, void*, int, int) {
    *static_cast<int*>(user) += length;
    return kMcContinue;
}
MC_STATUS AddItemLength(int, std::uint32_t, void* user, int, unsigned long length, unsigned char*,
                        int, int) {
    *static_cast<int*>(user) += static_cast<int>(length);
    return kMcContinue;
}
MC_STATUS CountElement(const DcmElementView&, void* user) {
    ++*static_cast<int*>(user);
    return kMcContinue;
}

/// An object, what is put into it, and what is read from it.
struct Values {
    explicit Values(const Kind& kind) : object(kind.object), bytes(kind.bytes) {
        object.Open(kind.path);
        given.SetValue(tag::kReferencedSOPClassUID, "1.2.3");
    }
    [[nodiscard]] std::string Look() const { return test::Look(object); }
    [[nodiscard]] std::string LookAtRead() const {
        return text.ToUtf8() + test::Look(item) + std::to_string(count);
    }

    CDcmObject object;
    std::vector<unsigned char> bytes;
    CDcmItem given;
    CString description =
        "Gr\xC3\xB6\xC3\x9F"
        "e, a longer description";
    CString text;
    CDcmItem item;
    int count = 0;
};

std::string LookAtRead(const Values& s) {
    return s.LookAtRead();
}

struct SecondPosition : Values {
    explicit SecondPosition(const Kind& kind) : Values(kind) {
        double first = 0;
        object.GetValue(tag::kImagePositionPatient, first);
    }
};

struct Closed : Values {
    explicit Closed(const Kind& kind) : Values(kind) { object.Close(); }
};

struct Copied {
    explicit Copied(const Kind& kind) : from(kind), target(AllKinds().front()) {}
    [[nodiscard]] std::string Look() const {
        return target.Look() + target.object.GetFileName().ToUtf8();
    }
    Values from;
    Values target;
};

struct Written : Values {
    using Values::Values;
    [[nodiscard]] std::string Look() const {
        const auto names = folder.Names();
        return std::to_string(names.size()) + (names.empty() ? "" : ReadAll(path.ToUtf8()));
    }
    ScratchFolder folder;
    CString path = folder.Path("written.dcm");
};

/// A call that answers kDcmSuccess.
template <class State = Values, class Call, class... Look>
Operation Do(const char* name, const How& how, Call call, Look... look) {
    return On<State>(
        name, how, [=](State& s) { return call(s) == kDcmSuccess; }, look...);
}

std::vector<Operation> Reads() {
    return {
        Do(
            "CDcmObject::GetValue, text", {},
            [](Values& s) { return s.object.GetValue(tag::kPatientName, s.text); }, LookAtRead),
        // Values one by one: one that could not be given comes with the next call.
        Do<SecondPosition>(
            "CDcmObject::GetNextValue", kUsable,
            [](Values& s) {
                s.text = CString();
                s.object.GetValue(tag::kImageOrientationPatient, s.text);
                return s.object.GetNextValue(tag::kImagePositionPatient, s.text);
            },
            LookAtRead),
        Do(
            "CDcmObject::GetValue, item", {.on = "tables"},
            [](Values& s) { return s.object.GetValue(tag::kVOILUTSequence, s.item); }, LookAtRead),
        Do(
            "CDcmObject::GetValue, callback",
            {.on = "native CT|big endian", .leaves = Leaves::kUsable},
            [](Values& s) {
                s.count = 0;
                return s.object.GetValue(tag::kPixelData, &s.count, AddLength);
            },
            LookAtRead),
        Do(
            "CDcmObject::GetValueEx", kOnImagesUsable,
            [](Values& s) {
                s.count = 0;
                return s.object.GetValueEx(tag::kPixelData, &s.count, AddItemLength);
            },
            LookAtRead),
        Do(
            "CDcmObject::WalkElements", kUsable,
            [](Values& s) {
                s.count = 0;
                return s.object.WalkElements(&s.count, CountElement);
            },
            LookAtRead),
    };
}

/// Adding a value may bring those that are there into another form first; what they say stays.
DCMRESULT AddOnce(Values& s) {
    if (s.count != 0) return kDcmSuccess;
    const DCMRESULT answer = s.object.SetNextValue(tag::kImageOrientationPatient, s.description);
    s.count = answer == kDcmSuccess ? 1 : 0;
    return answer;
}

DCMRESULT SetTwoFrames(Values& s) {
    const unsigned long lengths[] = {500, 500};
    unsigned char* const frames[] = {s.bytes.data(), s.bytes.data()};
    return s.object.SetValueEx(tag::kPixelData, 2, lengths, frames);
}

std::vector<Operation> Changes() {
    return {
        Do("CDcmObject::SetValue, text", {},
           [](Values& s) { return s.object.SetValue(tag::kSeriesDescription, s.description); }),
        Do("CDcmObject::SetValue, number", {},
           [](Values& s) { return s.object.SetValue(tag::kLargestImagePixelValue, 4095); }),
        Do("CDcmObject::SetValue, character set", {},
           [](Values& s) { return s.object.SetValue(tag::kSpecificCharacterSet, "ISO_IR 100"); }),
        Do("CDcmObject::SetValue, item", {},
           [](Values& s) { return s.object.SetValue(tag::kReferencedImageSequence, &s.given); }),
        Do("CDcmObject::SetNextValue", {.notOn = "big endian"}, AddOnce),
        Do("CDcmObject::SetValueEx", {.on = "JPEG baseline"}, SetTwoFrames),
        Do("CDcmObject::SetTransferSyntax", {},
           [](Values& s) { return s.object.SetTransferSyntax(kImplicitLittleEndian); }),
        Do("CDcmObject::SetValueRepresentation", {.on = "native CT|big endian"},
           [](Values& s) { return s.object.SetValueRepresentation(tag::kHighBit, MC_VR_SS); }),
        Do("CDcmObject::RemoveValue", {},
           [](Values& s) { return s.object.RemoveValue(tag::kPatientName); }),
        Do("CDcmObject::Close", {}, [](Values& s) { return s.object.Close(); }),
        Do<Copied>("CDcmObject, copy", kThrows,
                   [](Copied& s) {
                       s.target.object = s.from.object;
                       return kDcmSuccess;
                   }),
    };
}

std::vector<Operation> Files() {
    constexpr How kPart10{.notOn = "bare data set"};
    return {
        Do<Closed>("CDcmObject::ReadFile", kPart10,
                   [](Values& s) { return s.object.ReadFile(nullptr, nullptr, nullptr); }),
        Do<Closed>("CDcmObject::ReadFileUptoTag", kPart10,
                   [](Values& s) {
                       PieceGiver giver{s.bytes, MemoryFile::kPiece};
                       return s.object.ReadFileUptoTag(nullptr, kUpToPixelData, nullptr, &giver,
                                                       PieceGiver::File);
                   }),
        Do<Closed>("CDcmObject::ReadStream2", {.on = "bare data set"},
                   [](Values& s) {
                       PieceGiver giver{s.bytes, MemoryFile::kPiece};
                       return s.object.ReadStream2(0x00080000, kToTheEnd, kImplicitLittleEndian,
                                                   nullptr, nullptr, &giver, PieceGiver::Stream);
                   }),
        Do<Written>("CDcmObject::WriteFile", {},
                    [](Written& s) { return s.object.WriteFile(s.path); }),
    };
}

INSTANTIATE_TEST_SUITE_P(ObjectMemoryReads, FailingAllocation, testing::ValuesIn(Reads()));
INSTANTIATE_TEST_SUITE_P(ObjectMemoryChanges, FailingAllocation, testing::ValuesIn(Changes()));
INSTANTIATE_TEST_SUITE_P(ObjectMemoryFiles, FailingAllocation, testing::ValuesIn(Files()));

}  // namespace
}  // namespace quorvex
