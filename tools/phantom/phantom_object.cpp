#include "tools/phantom/phantom_object.h"

#include "tools/report.h"

#include <algorithm>

namespace quorvex::tools {
namespace {

constexpr std::uint32_t kPixelData = 0x7FE00010;
constexpr const char* kUidRoot = "2.25.32980073569858662929564197851150617";

constexpr Attribute kCommon[] = {
    {0x00080005, "ISO_IR 100"},
    {0x00080020, "20260105"},
    {0x00080021, "20260105"},
    {0x00080030, "101500"},
    {0x00080031, "101500"},
    {0x00080050, "QX-1"},
    {0x00080070, "QuorvexU"},
    {0x00080080, "Phantom Hospital"},
    {0x00080090, ""},
    {0x00081090, "Phantom"},
    {0x00100010, "Phantom^Quorvex"},
    {0x00100020, "QX0001"},
    {0x00100030, "19700101"},
    {0x00100040, "O"},
    {0x00180015, "CHEST"},
    {0x00181020, "1"},
    {0x00200010, "1"},
    {0x00200011, "1"},
    {0x00200013, "1"},
};

constexpr Attribute kImage[] = {
    {0x00080023, "20260105"},
    {0x00080033, "101500"},
    {0x00200020, ""},
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

void AddItem(CDcmObjectCommon& target, std::uint32_t tag, CDcmItem& item) {
    Require(target.SetNextValue(tag, &item), tag);
}

void SetIdentity(CDcmObject& object, const Identity& identity) {
    SetAttributes(object, kCommon);
    SetText(object, 0x00080016, identity.sopClass);
    SetText(object, 0x00080018, identity.instance);
    SetText(object, 0x0020000D, identity.study);
    SetText(object, 0x0020000E, identity.series);
    Require(object.SetTransferSyntax(kExplicitLittleEndian), 0x00020010);
}

void SetPixels(CDcmObject& object, std::span<const unsigned char> bytes, MC_VR vr) {
    SetAttributes(object, kImage);
    Source source{bytes};
    Require(object.SetValue(kPixelData, &source, Source::Pull), kPixelData);
    Require(object.SetValueRepresentation(kPixelData, vr), kPixelData);
}

}  // namespace quorvex::tools
