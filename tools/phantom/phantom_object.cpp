#include "tools/phantom/phantom_object.h"

#include "quorvex/Tags.h"
#include "tools/report.h"

#include <algorithm>

namespace quorvex::tools {
namespace {

constexpr const char* kUidRoot = "2.25.32980073569858662929564197851150617";

constexpr Attribute kCommon[] = {
    {tag::kSpecificCharacterSet, "ISO_IR 100"},
    {tag::kStudyDate, "20260105"},
    {tag::kSeriesDate, "20260105"},
    {tag::kStudyTime, "101500"},
    {tag::kSeriesTime, "101500"},
    {tag::kAccessionNumber, "QX-1"},
    {tag::kManufacturer, "QuorvexU"},
    {tag::kInstitutionName, "Phantom Hospital"},
    {tag::kReferringPhysicianName, ""},
    {tag::kManufacturerModelName, "Phantom"},
    {tag::kPatientName, "Phantom^Quorvex"},
    {tag::kPatientID, "QX0001"},
    {tag::kPatientBirthDate, "19700101"},
    {tag::kPatientSex, "O"},
    {tag::kBodyPartExamined, "CHEST"},
    {tag::kSoftwareVersions, "1"},
    {tag::kStudyID, "1"},
    {tag::kSeriesNumber, "1"},
    {tag::kInstanceNumber, "1"},
};

constexpr Attribute kImage[] = {
    {tag::kContentDate, "20260105"},
    {tag::kContentTime, "101500"},
    {tag::kPatientOrientation, ""},
};

void Require(DCMRESULT result, std::uint32_t tag) {
    if (result != kDcmSuccess)
        throw EnvironmentFailure("the sample's attribute " + std::to_string(tag) + " was refused");
}

// Hands a block over in pieces.
struct Source {
    static constexpr std::size_t kPiece = std::size_t{1} << 20;
    std::span<const unsigned char> left;

    static MC_STATUS Pull(int, std::uint32_t, void* user, int, int* length, void** data,
                          int* last) {
        auto& left = static_cast<Source*>(user)->left;
        const auto piece = left.first(std::min(left.size(), kPiece));
        left = left.subspan(piece.size());
        *length = static_cast<int>(piece.size());
        *data = const_cast<unsigned char*>(
            piece.data());  // the interface has no const; it is only read
        *last = left.empty() ? 1 : 0;
        return kMcContinue;
    }
};

template <class Number>
void SetEach(CDcmObjectCommon& target, std::uint32_t tag, std::span<const Number> numbers) {
    bool isFirst = true;
    for (const auto number : numbers) {
        Require(isFirst ? target.SetValue(tag, number) : target.SetNextValue(tag, number), tag);
        isFirst = false;
    }
}

}  // namespace

Identity IdentityOf(const char* sopClass, int study, int number) {
    const std::string root = kUidRoot;  // of a random number, as ISO/IEC 9834-8 has it
    return {sopClass, root + std::to_string(study), root + std::to_string(100 + number),
            root + std::to_string(200 + number)};
}

void SetAttributes(CDcmObjectCommon& target, std::span<const Attribute> attributes) {
    for (const auto& [tag, value] : attributes)
        std::visit(
            [&target, tag = tag](auto content) { Require(target.SetValue(tag, content), tag); },
            value);
}

void SetText(CDcmObjectCommon& target, std::uint32_t tag, const std::string& text) {
    Require(target.SetValue(tag, text.c_str()), tag);
}

void SetNumbers(CDcmObjectCommon& target, std::uint32_t tag, std::span<const double> numbers) {
    SetEach(target, tag, numbers);
}

void SetWholeNumbers(CDcmObjectCommon& target, std::uint32_t tag, std::span<const int> numbers) {
    SetEach(target, tag, numbers);
}

void AddItem(CDcmObjectCommon& target, std::uint32_t tag, CDcmItem item) {
    Require(target.SetNextValue(tag, &item), tag);
}

CDcmItem ItemOf(std::span<const Attribute> attributes) {
    CDcmItem item(1);
    SetAttributes(item, attributes);
    return item;
}

void SetIdentity(CDcmObject& object, const Identity& identity) {
    SetAttributes(object, kCommon);
    SetText(object, tag::kSOPClassUID, identity.sopClass);
    SetText(object, tag::kSOPInstanceUID, identity.instance);
    SetText(object, tag::kStudyInstanceUID, identity.study);
    SetText(object, tag::kSeriesInstanceUID, identity.series);
    Require(object.SetTransferSyntax(kExplicitLittleEndian), tag::kTransferSyntaxUID);
}

void SetPixels(CDcmObject& object, std::span<const unsigned char> bytes, MC_VR vr) {
    SetAttributes(object, kImage);
    Source source{bytes};
    Require(object.SetValue(tag::kPixelData, &source, Source::Pull), tag::kPixelData);
    Require(object.SetValueRepresentation(tag::kPixelData, vr), tag::kPixelData);
}

}  // namespace quorvex::tools
