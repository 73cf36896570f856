/// Sample objects under construction: attributes from tables, pixels from memory.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace quorvex::tools {

/// One attribute of a table: text (values separated by backslashes), or one 16-bit number.
struct Attribute {
    std::uint32_t tag;
    std::variant<const char*, unsigned short> value;
};

/// What identifies one sample object. The sizes have identities of their own, since different
/// pixels must never carry one UID.
struct Identity {
    const char* sopClass;
    std::string study;
    std::string series;
    std::string instance;
};

/// The UIDs of the sample of that number, which is alone in its series.
Identity IdentityOf(const char* sopClass, int study, int number);

/// Sets attributes; every refusal of the object library is an EnvironmentFailure.
void SetAttributes(CDcmObjectCommon& target, std::span<const Attribute> attributes);
void SetText(CDcmObjectCommon& target, std::uint32_t tag, const std::string& text);
void SetNumbers(CDcmObjectCommon& target, std::uint32_t tag, std::span<const double> numbers);
void SetWholeNumbers(CDcmObjectCommon& target, std::uint32_t tag, std::span<const int> numbers);
void AddItem(CDcmObjectCommon& target, std::uint32_t tag, CDcmItem item);
/// An item of these attributes.
CDcmItem ItemOf(std::span<const Attribute> attributes);

/// Patient, study, series and equipment, the same for every sample.
void SetIdentity(CDcmObject& object, const Identity& identity);

/// Native pixels, copied, and what every image says about itself.
void SetPixels(CDcmObject& object, std::span<const unsigned char> bytes, MC_VR vr);

}  // namespace quorvex::tools
