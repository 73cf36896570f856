#include "foundation/dicom/frames/pixel_walk.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/coded_pixels.h"
#include "foundation/dicom/object/native_pixels.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/dicom/object/pixel_shape.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "quorvex/DicomObject.h"

#include <optional>

namespace quorvex {

using namespace dicom;

namespace {

/// Callbacks take bytes that they could write, and never do.
unsigned char* Data(Bytes bytes) {
    return const_cast<unsigned char*>(bytes.data());
}

class BufferSink final : public FrameSink {
public:
    BufferSink(PixelWalkCallback callback, void* user) : callback_(callback), user_(user) {}

    MC_STATUS Begin() override { return Event(kPixelWalkBegins); }
    MC_STATUS OffsetTable(Bytes table) override { return Give(0, table, 0); }
    MC_STATUS Piece(std::size_t, Bytes piece, bool, bool) override {
        return Give(++item_, piece, 0);
    }
    MC_STATUS EndFrame() override { return Event(kPixelFrameEnds); }

private:
    MC_STATUS Event(int event) { return Give(item_, {}, event); }
    MC_STATUS Give(int item, Bytes piece, int event) {
        const HostCode host;
        return callback_(item, piece.size(), Data(piece), 0, event, user_);
    }

    PixelWalkCallback callback_;
    void* user_;
    int item_ = 0;
};

class ObjectSink final : public FrameSink {
public:
    ObjectSink(std::uint32_t tag, PixelItemCallback callback, void* user)
        : tag_(tag), callback_(callback), user_(user) {}

    MC_STATUS OffsetTable(Bytes table) override { return Give(0, table, false, false); }
    MC_STATUS Piece(std::size_t frame, Bytes piece, bool isFirst, bool isLast) override {
        return Give(static_cast<int>(frame) + 1, piece, isFirst, isLast);
    }

private:
    MC_STATUS Give(int item, Bytes piece, bool isFirst, bool isLast) {
        const HostCode host;
        return callback_(0, tag_, user_, item, piece.size(), Data(piece), isFirst ? 1 : 0,
                         isLast ? 1 : 0);
    }

    std::uint32_t tag_;
    PixelItemCallback callback_;
    void* user_;
};

Bytes ValueOrNothing(const DataSet& dataSet, std::uint32_t tag) {
    const Element* element = dataSet.Find(tag);
    return element == nullptr ? Bytes() : dataSet.ValueOf(*element);
}

FrameHints HintsOf(const DataSet& dataSet, const PixelShape& shape) {
    return {.extendedOffsets = ValueOrNothing(dataSet, tag::kExtendedOffsetTable),
            .frameCount = shape.frameCount,
            .syntax = dataSet.syntax};
}

DCMRESULT ResultOf(bool isWalkWhole) {
    return isWalkWhole ? kDcmSuccess : kDcmFailure;
}

/// Whether a value that was not taken apart when it was read is encapsulated. Native pixels may
/// begin with the bytes of an item tag too.
bool AreItems(const DataSet& dataSet, Bytes stored) {
    return (BeginsWithItem(stored) && IsEncapsulated(dataSet.syntax)) || IsChainOfItems(stored);
}

/// The items of such a value; none where their headers are big endian.
EncapsulatedItems ItemsOf(const DataSet& dataSet, Bytes stored) {
    return BeginsWithItem(stored) ? ItemsIn(stored, dataSet.syntax) : EncapsulatedItems();
}

DCMRESULT WalkItems(const DataSet& dataSet, const EncapsulatedItems& items, const PixelShape& shape,
                    FrameSink& sink) {
    if (items.fragments.empty()) return kDcmNotFound;
    return ResultOf(WalkEncapsulated(items, HintsOf(dataSet, shape), sink));
}

/// `scratch` receives the block that the pieces were put into, where that took one.
DCMRESULT WalkInBlock(const NativeFrames& frames, FrameSink& sink, unsigned char** scratch) {
    HeapBlock block(frames.BlockBytes());
    const DCMRESULT result = ResultOf(WalkNative(frames, block.Bytes(), sink));
    if (block.Size() != 0 && scratch != nullptr) *scratch = block.Release();
    return result;
}

/// How the Pixel Data lies that the object was read ahead of.
NativeOrder OrderInBuffer(const DataSet& dataSet, const PixelShape& shape) {
    const Element* own = dataSet.Find(tag::kPixelData);
    const MC_VR vr = own == nullptr ? dataSet.pixelDataVr : own->vr;
    return NativeOrder::Of(IsBigEndian(dataSet.syntax), vr, shape);
}

NativeFrames CutOwn(const Element& element, Bytes stored, const PixelShape& shape) {
    const auto order = NativeOrder::Of(element.isBigEndian, element.vr, shape);
    return CutNative(stored, shape, 0, order);
}

}  // namespace

NativeFrames NativePixels::In(const CDcmObject& object, std::size_t valueBytes,
                              std::size_t frameBytes) {
    const PixelShape shape = ShapeOf(object);
    return CutNative(valueBytes, shape, frameBytes,
                     OrderInBuffer(ObjectState::Of(object).Content(), shape));
}

std::optional<NativeFrames> NativePixels::Of(const CDcmObject& object, std::uint32_t tag) {
    const DataSet& dataSet = ObjectState::Of(object).Content();
    const Element* element = dataSet.Find(tag);
    if (element == nullptr || !dataSet.FragmentsOf(*element).IsEmpty()) return std::nullopt;
    const Bytes stored = dataSet.ValueOf(*element);
    if (AreItems(dataSet, stored)) return std::nullopt;
    return CutOwn(*element, stored, ShapeOf(object));
}

FrameHints dicom::HintsOf(const CDcmObject& object) {
    return quorvex::HintsOf(ObjectState::Of(object).Content(), ShapeOf(object));
}

bool dicom::AreCodedFramesGuessed(const CDcmObject& object) {
    const FrameHints hints = dicom::HintsOf(object);
    const DataSet& dataSet = ObjectState::Of(object).Content();
    const Element* element = dataSet.Find(tag::kPixelData);
    if (hints.frameCount <= 1 || element == nullptr) return false;
    const FragmentView view = dataSet.FragmentsOf(*element);
    const EncapsulatedItems items =
        view.IsEmpty() ? quorvex::ItemsOf(dataSet, dataSet.ValueOf(*element)) : ItemsIn(view);
    return FindFrames(items.fragments, items.offsetTable, hints).isGuessed;
}

DCMRESULT CDcmObject::GetValueEx(unsigned char** scratch, unsigned long remaining,
                                 unsigned char* value, int /*littleEndian*/, int reserved,
                                 unsigned long frameSize, void* user,
                                 PixelWalkCallback callback) const {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        if (value == nullptr || callback == nullptr || remaining == 0) return kDcmNotFound;
        const DataSet& dataSet = ObjectState::Of(*this).Content();
        const Bytes stored(value, remaining);
        const PixelShape shape = ShapeOf(*this);
        BufferSink sink(callback, user);
        if (AreItems(dataSet, stored))
            return WalkItems(dataSet, ItemsOf(dataSet, stored), shape, sink);
        const bool isInPlace = scratch == nullptr || reserved != 0;
        const auto order = isInPlace ? NativeOrder() : OrderInBuffer(dataSet, shape);
        return WalkInBlock(CutNative(stored, shape, frameSize, order), sink, scratch);
    });
}

DCMRESULT CDcmObject::GetValueEx(std::uint32_t tag, void* user, PixelItemCallback callback) const {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        const DataSet& dataSet = ObjectState::Of(*this).Content();
        const Element* element = dataSet.Find(tag);
        if (element == nullptr || callback == nullptr) return kDcmNotFound;
        const PixelShape shape = ShapeOf(*this);
        ObjectSink sink(tag, callback, user);
        const FragmentView view = dataSet.FragmentsOf(*element);
        if (!view.IsEmpty()) return WalkItems(dataSet, ItemsIn(view), shape, sink);
        const Bytes stored = dataSet.ValueOf(*element);
        if (AreItems(dataSet, stored))
            return WalkItems(dataSet, ItemsOf(dataSet, stored), shape, sink);
        return WalkInBlock(CutOwn(*element, stored, shape), sink, nullptr);
    });
}

}  // namespace quorvex
