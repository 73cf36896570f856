#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/dicom/reading/data_set_reader.h"
#include "foundation/dicom/reading/element_reader.h"
#include "foundation/dicom/reading/piece_sources.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

#include <string>
#include <utility>

namespace quorvex {

namespace {

using dicom::ByteFeed;
using dicom::DataSet;
using dicom::ReadOutcome;

/// Makes what was read the object's content, whether it is all that there was or not.
DCMRESULT Keep(ReadOutcome&& outcome, ObjectState& state, unsigned long* offset) {
    if (offset != nullptr) *offset = outcome.offset;
    state.Adopt(std::move(outcome.dataSet));
    if (outcome.result == kDcmSuccess) return kDcmSuccess;
    return state.Fail(outcome.result, outcome.failure);
}

}  // namespace

CDcmObject::CDcmObject() = default;

CDcmObject::CDcmObject(const CDcmObject& other) = default;
CDcmObject& CDcmObject::operator=(const CDcmObject& other) = default;
CDcmObject::~CDcmObject() = default;

DCMRESULT CDcmObject::Open(const CString& name) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        CString copy = name;
        std::swap(ObjectState::Of(*this).name, copy);
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
    return Answer(CString(), [&] { return ObjectState::Of(*this).name; });
}

DCMRESULT CDcmObject::ReadFile(CDcmApp* app, void* user, FileReadCallback callback) {
    if (callback != nullptr)
        return ReadFileUptoTag(app, dicom::kNoStopTag, nullptr, user, callback);
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&] {
        auto& state = ObjectState::Of(*this);
        dicom::NamedFileSource source(state.name.ToUtf8());
        ByteFeed feed(source);
        return Keep(ReadPart10(feed, dicom::kNoStopTag), state, nullptr);
    });
}

DCMRESULT CDcmObject::ReadFileUptoTag(CDcmApp*, std::uint32_t stopTag, unsigned long* offset,
                                      void* user, FileReadCallback callback) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (callback == nullptr) return kDcmFailure;
        auto& state = ObjectState::Of(*this);
        dicom::FileCallbackSource source(state.name.ToUtf8(), user, callback);
        ByteFeed feed(source);
        return Keep(ReadPart10(feed, stopTag), state, offset);
    });
}

DCMRESULT CDcmObject::ReadStream2(std::uint32_t startTag, std::uint32_t stopTag,
                                  TRANSFER_SYNTAX syntax, unsigned long*, unsigned long* offset,
                                  void* user, StreamReadCallback callback) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (callback == nullptr) return kDcmFailure;
        dicom::StreamCallbackSource source(user, callback);
        ByteFeed feed(source);
        return Keep(ReadBareDataSet(feed, startTag, stopTag, syntax), ObjectState::Of(*this),
                    offset);
    });
}

DCMRESULT CDcmObject::GetTransferSyntax(TRANSFER_SYNTAX& syntax) const {
    auto& state = ObjectState::Of(*this);
    if (state.Content().syntax == kSyntaxNone) return state.Missing();
    syntax = state.Content().syntax;
    return kDcmSuccess;
}

DCMRESULT CDcmObject::SetTransferSyntax(TRANSFER_SYNTAX syntax) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const TransferSyntax* known = TransferSyntaxOf(syntax);
        if (known == nullptr) return state.Fail(kDcmFailure, "there is no such transfer syntax");
        DataSet& dataSet = state.Writable();
        dataSet.PutBytes(tag::kTransferSyntaxUID, MC_VR_UI, {known->uid.begin(), known->uid.end()});
        dataSet.syntax = syntax;
        dataSet.encoding = {known->isExplicit, known->isBigEndian};
        dataSet.pixelDataHeaderBytes = 0;
        return kDcmSuccess;
    });
}

unsigned long CDcmObject::PixelDataHeaderLength() const noexcept {
    const DataSet& dataSet = ObjectState::Of(*this).Content();
    if (dataSet.pixelDataHeaderBytes != 0) return dataSet.pixelDataHeaderBytes;
    return dataSet.encoding.isExplicit ? dicom::kLongHeader : dicom::kShortHeader;
}

}  // namespace quorvex
