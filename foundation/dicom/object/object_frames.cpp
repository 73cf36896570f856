#include "foundation/dicom/frames/pixel_shape.h"
#include "foundation/dicom/frames/pixel_walk.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "quorvex/DicomObject.h"

#include <optional>

namespace quorvex {
namespace {

using namespace dicom;

/// Callbacks take bytes that they could write, and never do.
unsigned char* Data(Bytes bytes) {
    return const_cast<unsigned char*>(bytes.data());
}

class BufferSink final : public FrameSink {
public:
    BufferSink(PixelWalkCallback callback, void* user) : callback_(callback), user_(user) {}

    MC_STATUS Begin() override { return Event(2); }
    MC_STATUS OffsetTable(Bytes table) override { return Give(0, table, 0); }
    MC_STATUS Piece(std::size_t, Bytes piece, bool, bool) override {
        return Give(++item_, piece, 0);
    }
    MC_STATUS EndFrame() override { return Event(1); }

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

/// The items of a value that was not taken apart when it was read, none where their headers are big
/// endian. Nothing for native pixels, which may begin with the bytes of an item tag.
std::optional<EncapsulatedItems> ItemsOf(const DataSet& dataSet, Bytes stored) {
    const bool beginsWithItem = BeginsWithItem(stored);
    const bool areItems =
        (beginsWithItem && IsEncapsulated(dataSet.syntax)) || IsChainOfItems(stored);
    if (!areItems) return std::nullopt;
    return beginsWithItem ? ItemsIn(stored, dataSet.syntax) : EncapsulatedItems();
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
    const bool isBigEndian = IsBigEndian(dataSet.syntax);
    const Element* own = dataSet.Find(tag::kPixelData);
    const MC_VR vr = own == nullptr ? dataSet.pixelDataVr : own->vr;
    return NativeOrder::Of(isBigEndian, vr, isBigEndian, shape);
}

}  // namespace

DCMRESULT CDcmObject::GetValueEx(unsigned char** scratch, unsigned long remaining,
                                 unsigned char* value, int /*littleEndian*/, int reserved,
                                 unsigned long frameSize, void* user,
                                 PixelWalkCallback callback) const {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        if (value == nullptr || callback == nullptr || remaining == 0) return kDcmNotFound;
        const Bytes stored(value, remaining);
        const PixelShape shape = ShapeOf(*this);
        BufferSink sink(callback, user);
        if (const auto items = ItemsOf(*dataSet_, stored))
            return WalkItems(*dataSet_, *items, shape, sink);
        const bool isInPlace = scratch == nullptr || reserved != 0;
        const auto order = isInPlace ? NativeOrder() : OrderInBuffer(*dataSet_, shape);
        return WalkInBlock(CutNative(stored, shape, frameSize, order), sink, scratch);
    });
}

DCMRESULT CDcmObject::GetValueEx(std::uint32_t tag, void* user, PixelItemCallback callback) const {
    return Answer(kDcmOutOfMemory, [&]() -> DCMRESULT {
        const Element* element = dataSet_->Find(tag);
        if (element == nullptr || callback == nullptr) return kDcmNotFound;
        const PixelShape shape = ShapeOf(*this);
        ObjectSink sink(tag, callback, user);
        const FragmentView view = dataSet_->FragmentsOf(*element);
        if (!view.IsEmpty()) return WalkItems(*dataSet_, ItemsIn(view), shape, sink);
        const Bytes stored = dataSet_->ValueOf(*element);
        if (const auto items = ItemsOf(*dataSet_, stored))
            return WalkItems(*dataSet_, *items, shape, sink);
        const bool swapsFollow = IsBigEndian(dataSet_->syntax);
        const auto order = NativeOrder::Of(element->isBigEndian, element->vr, swapsFollow, shape);
        const auto frames = CutNative(stored, shape, 0, order);
        return WalkInBlock(frames, sink, nullptr);
    });
}

}  // namespace quorvex
