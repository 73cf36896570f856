#include "maker/attribute_writing.h"

#include "foundation/dicom/model/attributes.h"

namespace quorvex {
namespace {

bool CopyNext(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag) {
    CString value;
    return source.GetNextValue(tag, value) == kDcmSuccess &&
           target.SetNextValue(tag, value) == kDcmSuccess;
}

}  // namespace

bool CopyFirst(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag) {
    const auto value = Read<CString>(source, tag);
    return value && target.SetValue(tag, *value) == kDcmSuccess;
}

void CopyAll(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag) {
    bool isCopied = CopyFirst(source, target, tag);
    while (isCopied) isCopied = CopyNext(source, target, tag);
}

void CopyUpTo(int count, const CDcmObjectCommon& source, CDcmObjectCommon& target,
              std::uint32_t tag) {
    CopyFirst(source, target, tag);
    for (int i = 1; i < count; ++i) CopyNext(source, target, tag);
}

bool CopyFirstItem(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag) {
    auto item = Read<CDcmItem>(source, tag);
    if (item) target.SetValue(tag, &*item);
    return item.has_value();
}

}  // namespace quorvex
