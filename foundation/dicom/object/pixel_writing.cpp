#include "foundation/dicom/frames/offset_tables.h"
#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/object/around_pixels.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "quorvex/DicomObject.h"

#include <algorithm>

namespace quorvex {
namespace {

using namespace dicom;

using Buffers = std::vector<Bytes>;

bool IsTooLong(std::size_t bytes) {
    return bytes > kLongestValue && !RefuseBy(Limit::kLongestValue);
}

/// The caller's buffers; nothing when one is unusable.
std::optional<Buffers> BuffersOf(int count, const unsigned long* lengths,
                                 unsigned char* const* buffers) {
    if (count < 1 || lengths == nullptr || buffers == nullptr) return std::nullopt;
    Buffers frames;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        if (buffers[i] == nullptr || IsTooLong(lengths[i])) return std::nullopt;
        frames.emplace_back(buffers[i], lengths[i]);
    }
    return frames;
}

std::vector<std::uint64_t> LengthsOf(const Buffers& frames) {
    std::vector<std::uint64_t> lengths;
    for (const Bytes frame : frames) lengths.push_back(frame.size());
    return lengths;
}

void PutOrRemove(DataSet& dataSet, std::uint32_t tag, ByteBuffer value) {
    if (value.empty()) {
        dataSet.Remove(tag);
    } else {
        dataSet.PutBytes(tag, MC_VR_OV, std::move(value));
    }
}

ByteRange Append(ByteBuffer& buffer, Bytes bytes) {
    const std::size_t offset = buffer.size();
    buffer.insert(buffer.end(), bytes.begin(), bytes.end());
    if (bytes.size() % 2 != 0) buffer.push_back(0);
    return {offset, buffer.size() - offset};
}

std::size_t TotalOf(const Buffers& frames, std::size_t total) {
    for (const Bytes frame : frames) total += frame.size() + 1;
    return total;
}

void PutFrames(DataSet& dataSet, std::uint32_t tag, const Buffers& frames) {
    OffsetTables tables = OffsetTablesOf(LengthsOf(frames));
    ByteBuffer buffer;
    buffer.reserve(TotalOf(frames, tables.basic.size()));
    std::vector<ByteRange> ranges = {Append(buffer, tables.basic)};
    for (const Bytes frame : frames) ranges.push_back(Append(buffer, frame));
    DataSet changed = dataSet;
    if (tag == tag::kPixelData) {
        PutOrRemove(changed, tag::kExtendedOffsetTable, std::move(tables.extendedOffsets));
        PutOrRemove(changed, tag::kExtendedOffsetTableLengths, std::move(tables.extendedLengths));
    }
    changed.PutFragments(tag, MC_VR_OB, std::move(buffer), std::move(ranges));
    dataSet = std::move(changed);
}

/// The pieces that a callback supplies, joined; nothing where it refuses or gives none.
std::optional<ByteBuffer> Pulled(std::uint32_t tag, void* user, ValueWriteCallback callback) {
    ByteBuffer value;
    for (bool isFirst = true;; isFirst = false) {
        int length = 0;
        void* data = nullptr;
        int isLast = 0;
        const HostCode host;
        if (callback(0, tag, user, isFirst ? 1 : 0, &length, &data, &isLast) != kMcContinue)
            return std::nullopt;
        if (length < 0 || (length > 0 && data == nullptr)) return std::nullopt;
        const Bytes piece(static_cast<const unsigned char*>(data),
                          static_cast<std::size_t>(length));
        if (IsTooLong(value.size() + piece.size())) return std::nullopt;
        value.insert(value.end(), piece.begin(), piece.end());
        if (isLast != 0) return value;
        if (length == 0) return std::nullopt;  // or the callback could go on for ever
    }
}

/// Bytes under the tag of a sequence are no items and must not be written as items.
MC_VR VrForNew(const DataSet& dataSet, std::uint32_t tag) {
    const Element* present = dataSet.Find(tag);
    if (present != nullptr && present->vr != MC_VR_SQ) return present->vr;
    const DictionaryEntry& entry = LookUp(tag);
    const bool isBytes = entry.choice == VrChoice::kObOrOw || entry.vr == MC_VR_SQ;
    return isBytes ? MC_VR_OB : entry.vr;
}

/// The same value, owned and little endian, so that another VR may read it.
void MakeLittleEndian(DataSet& dataSet, Element& element) {
    const Bytes stored = dataSet.ValueOf(element);
    ByteBuffer value(stored.begin(), stored.end());
    SwapBytes(value.data(), value.size(), Describe(element.vr).unit);
    element.content = std::make_shared<Content>(std::move(value));
    element.isBigEndian = false;
}

}  // namespace

DCMRESULT CDcmObject::SetValueEx(std::uint32_t tag, int count, const unsigned long* lengths,
                                 unsigned char* const* buffers) {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const auto frames = BuffersOf(count, lengths, buffers);
        if (!frames)
            return state.Fail(kDcmFailure, "there is no frame to encapsulate, or one without data");
        PutFrames(state.Writable(), tag, *frames);
        return kDcmSuccess;
    });
}

DCMRESULT CDcmObjectCommon::SetValue(std::uint32_t tag, void* user, ValueWriteCallback callback) {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        auto value = callback == nullptr ? std::nullopt : Pulled(tag, user, callback);
        auto& state = ObjectState::Of(*this);
        if (!value) return state.Fail(kDcmFailure, "the callback gave no usable value");
        const MC_VR vr = VrForNew(state.Content(), tag);
        state.Writable().PutBytes(tag, vr, std::move(*value));
        return kDcmSuccess;
    });
}

DCMRESULT CDcmObjectCommon::SetValueRepresentation(std::uint32_t tag, MC_VR vr) {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const Element* element = state.Content().Find(tag);
        if (element == nullptr) return kDcmNotFound;
        const bool isSequence = ItemsOf(*element) != nullptr;
        if (isSequence != (vr == MC_VR_SQ) || Describe(vr).vr != vr) return kDcmFailure;
        DataSet& dataSet = state.Writable();
        Element& changed = *dataSet.FindMutable(tag);
        if (changed.isBigEndian && !isSequence && dataSet.FragmentsOf(changed).IsEmpty())
            MakeLittleEndian(dataSet, changed);
        changed.vr = vr;
        return kDcmSuccess;
    });
}

void dicom::PutFrameTable(CDcmObject& object, std::span<const std::uint64_t> frameLengths) {
    OffsetTables tables = OffsetTablesOf(frameLengths);
    DataSet& dataSet = ObjectState::Of(object).Writable();
    PutOrRemove(dataSet, tag::kExtendedOffsetTable, std::move(tables.extendedOffsets));
    PutOrRemove(dataSet, tag::kExtendedOffsetTableLengths, std::move(tables.extendedLengths));
    const ByteRange table{0, tables.basic.size()};
    dataSet.PutFragments(tag::kPixelData, MC_VR_OB, std::move(tables.basic), {table});
}

}  // namespace quorvex
