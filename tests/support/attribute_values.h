/// Attributes of test objects as text, to make and to compare.
#pragma once

#include "quorvex/Attributes.h"
#include "tests/support/named_tags.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {

inline constexpr const char* kAbsent = "(absent)";

/// A name of quorvex/Tags.h without its k, or eight hexadecimal digits.
inline std::uint32_t TagOf(const std::string& name) {
    static const std::vector<NamedTag> tags = NamedTags();
    const auto named = std::ranges::find(tags, name, &NamedTag::name);
    return named != tags.end() ? named->tag
                               : static_cast<std::uint32_t>(std::stoul(name, nullptr, 16));
}

/// Hands each attribute of a list to `take`: "Rows=4; PixelSpacing=0.5\0.25; ...", where one
/// without "=" is absent.
template <class Take>
void ForEachAttribute(const std::string& list, Take take) {
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find("; ", at), list.size());
        const std::string one = list.substr(at, end - at);
        const std::size_t equals = one.find('=');
        take(TagOf(one.substr(0, equals)),
             equals == std::string::npos ? kAbsent : one.substr(equals + 1));
        at = end + 2;
    }
}

/// The object with a list of attributes besides.
template <class Object>
Object With(Object object, const std::string& list) {
    ForEachAttribute(list, [&](std::uint32_t tag, const std::string& values) {
        EXPECT_EQ(object.SetValue(tag, CString(values)), kDcmSuccess) << values;
    });
    return object;
}
template <class Object = CDcmObject>
Object With(const std::string& list) {
    return With(Object(), list);
}

/// All values of an attribute, with backslashes between them.
inline std::string TextOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    std::string all;
    bool isThere = false;
    ForEachValue<CString>(object, tag, [&](const CString& value) {
        all += (isThere ? "\\" : "") + value.ToUtf8();
        isThere = true;
    });
    return isThere ? all : kAbsent;
}

inline void ExpectAttributes(const CDcmObjectCommon& object, const std::string& list,
                             const std::string& what = "") {
    ForEachAttribute(list, [&](std::uint32_t tag, const std::string& values) {
        EXPECT_EQ(TextOf(object, tag), values) << what << " " << std::hex << tag;
    });
}

}  // namespace quorvex::test
