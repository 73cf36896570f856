#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/reading/data_set_reader.h"
#include "foundation/dicom/reading/element_header.h"
#include "foundation/dicom/reading/element_reader.h"
#include "foundation/dicom/reading/piece_sources.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

#include <string>
#include <utility>

namespace quorvex {

using dicom::ByteFeed;
using dicom::DataSet;
using dicom::ReadOutcome;

CDcmObject::CDcmObject() = default;

CDcmObject& CDcmObject::operator=(const CDcmObject& other) {
    CString name = other.name_;  // all that can fail
    CDcmObjectCommon::operator=(other);
    std::swap(name_, name);
    return *this;
}

DCMRESULT CDcmObject::Open(const CString& name) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        CString copy = name;
        std::swap(name_, copy);
        return kDcmSuccess;
    });
}

DCMRESULT CDcmObject::Create() {
    return CDcmObjectCommon::Close();
}

DCMRESULT CDcmObject::RenameFile(const CString& name) {
    return Open(name);
}

CString CDcmObject::GetFileName() const {
    return Answer(CString(), [&] { return name_; });
}

DCMRESULT CDcmObject::Close() {
    return CDcmObjectCommon::Close();
}

DCMRESULT CDcmObject::Keep(ReadOutcome&& outcome, unsigned long* offset) {
    if (offset != nullptr) *offset = outcome.offset;
    if (outcome.result != kDcmSuccess) SetErrorMessage(outcome.failure);
    Adopt(std::move(outcome.dataSet));
    return outcome.result;
}

DCMRESULT CDcmObject::ReadFile(CDcmApp* app, void* user, FileReadCallback callback) {
    if (callback != nullptr)
        return ReadFileUptoTag(app, dicom::kNoStopTag, nullptr, user, callback);
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&] {
        dicom::NamedFileSource source(name_.ToUtf8());
        ByteFeed feed(source);
        return Keep(ReadPart10(feed, dicom::kNoStopTag), nullptr);
    });
}

DCMRESULT CDcmObject::ReadFileUptoTag(CDcmApp*, std::uint32_t stopTag, unsigned long* offset,
                                      void* user, FileReadCallback callback) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (callback == nullptr) return kDcmFailure;
        dicom::FileCallbackSource source(name_.ToUtf8(), user, callback);
        ByteFeed feed(source);
        return Keep(ReadPart10(feed, stopTag), offset);
    });
}

DCMRESULT CDcmObject::ReadStream2(std::uint32_t startTag, std::uint32_t stopTag,
                                  TRANSFER_SYNTAX syntax, unsigned long*, unsigned long* offset,
                                  void* user, StreamReadCallback callback) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (callback == nullptr) return kDcmFailure;
        dicom::StreamCallbackSource source(user, callback);
        ByteFeed feed(source);
        return Keep(ReadBareDataSet(feed, startTag, stopTag, syntax), offset);
    });
}

DCMRESULT CDcmObject::GetTransferSyntax(TRANSFER_SYNTAX& syntax) const {
    if (dataSet_->syntax == kSyntaxNone) return Missing();
    syntax = dataSet_->syntax;
    return kDcmSuccess;
}

DCMRESULT CDcmObject::SetTransferSyntax(TRANSFER_SYNTAX syntax) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        const TransferSyntax* known = TransferSyntaxOf(syntax);
        if (known == nullptr) {
            SetErrorMessage("there is no such transfer syntax");
            return kDcmFailure;
        }
        DataSet& dataSet = Writable();
        dataSet.PutBytes(tag::kTransferSyntaxUID, MC_VR_UI, {known->uid.begin(), known->uid.end()});
        dataSet.syntax = syntax;
        dataSet.encoding = {known->isExplicit, known->isBigEndian};
        dataSet.pixelDataHeaderBytes = 0;
        return kDcmSuccess;
    });
}

unsigned long CDcmObject::PixelDataHeaderLength() const noexcept {
    if (dataSet_->pixelDataHeaderBytes != 0) return dataSet_->pixelDataHeaderBytes;
    return dataSet_->encoding.isExplicit ? dicom::kLongHeader : dicom::kShortHeader;
}

}  // namespace quorvex
