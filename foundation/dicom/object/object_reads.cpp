#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/element_values.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/types/answer.h"
#include "foundation/types/undo.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace quorvex {
namespace {

using dicom::Bytes;
using dicom::Cursor;
using dicom::DataSet;
using dicom::Element;
using dicom::Place;

/// A multiple of every unit that bytes are swapped in.
constexpr std::size_t kValuePiece = std::size_t{1} << 16;

/// Words of either sign keep their bits in words of the other.
template <class Type>
std::optional<Type> Converted(const Element& element, const dicom::Number& number) {
    const auto fitting = number.As<Type>();
    if constexpr (sizeof(Type) == sizeof(std::uint16_t)) {
        if (fitting || !HasWordsOfEitherSign(dicom::LookUp(element.tag))) return fitting;
        const auto word = number.WholeWithin(INT16_MIN, UINT16_MAX);
        return word ? std::optional(static_cast<Type>(*word)) : std::nullopt;
    }
    return fitting;
}

template <class Type>
DCMRESULT Take(const DataSet& dataSet, const Element& element, Place& place, Type& value) {
    const auto number = dicom::TakeNumber(dataSet, element, place);
    const auto converted = number ? Converted<Type>(element, *number) : std::nullopt;
    if (!converted) return kDcmNotFound;
    value = *converted;
    return kDcmSuccess;
}

DCMRESULT Take(const DataSet& dataSet, const Element& element, Cursor& cursor, CString& value) {
    auto text = dicom::TakeText(dataSet, element, cursor);
    if (!text) return kDcmNotFound;
    value = std::move(*text);
    return kDcmSuccess;
}

DCMRESULT Take(const DataSet&, const Element& element, Place& place,
               std::shared_ptr<DataSet>& value) {
    value = dicom::TakeItem(element, place);
    return value != nullptr ? kDcmSuccess : kDcmNotFound;
}

/// Moves a new cursor behind the first value.
void SkipFirst(const DataSet& dataSet, const Element& element, Cursor& cursor) {
    if (dicom::IsText(dicom::MeaningOf(element))) {
        static_cast<void>(dicom::TakeText(dataSet, element, cursor));
    } else {
        cursor.index = 1;
    }
}

/// Gives a value to a callback piece by piece, each in a copy that the callback may change.
class PieceGiver {
public:
    PieceGiver(std::uint32_t tag, void* user, ValueReadCallback callback, std::size_t total)
        : tag_(tag), user_(user), callback_(callback), left_(total) {}

    bool Give(Bytes value, std::size_t swappedUnit) {
        for (std::size_t at = 0; at < value.size(); at += kValuePiece) {
            if (!GivePiece(value.subspan(at, std::min(kValuePiece, value.size() - at)),
                           swappedUnit)) {
                return false;
            }
        }
        return true;
    }
    bool GivePiece(Bytes piece, std::size_t swappedUnit) {
        piece_.assign(piece.begin(), piece.end());
        dicom::SwapBytes(piece_.data(), piece_.size(), swappedUnit);
        left_ -= piece.size();
        const HostCode host;
        const MC_STATUS status = callback_(0, tag_, user_, static_cast<int>(piece.size()),
                                           piece_.data(), isFirst_ ? 1 : 0, left_ == 0 ? 1 : 0);
        isFirst_ = false;
        return status == kMcContinue;
    }

private:
    std::uint32_t tag_;
    void* user_;
    ValueReadCallback callback_;
    std::size_t left_;
    bool isFirst_ = true;
    dicom::ByteBuffer piece_;
};

template <class Value>
DCMRESULT ReadFirst(ObjectState& state, std::uint32_t tag, Value& value) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        state.ForgetCursor(tag);
        const Element* element = state.Content().Find(tag);
        if (element == nullptr) return state.Missing();
        std::conditional_t<std::is_same_v<Value, CString>, Cursor, Place> first;
        return Take(state.Content(), *element, first, value);
    });
}

Cursor& CursorOf(ObjectState& state, const Element& element) {
    if (Cursor* cursor = state.FindCursor(element.tag)) return *cursor;
    Cursor behindFirst;
    behindFirst.tag = element.tag;
    SkipFirst(state.Content(), element, behindFirst);
    return state.AddCursor(std::move(behindFirst));
}

template <class Value>
DCMRESULT ReadNext(ObjectState& state, std::uint32_t tag, Value& value) {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        const Element* element = state.Content().Find(tag);
        if (element == nullptr) return state.Missing();
        Cursor& cursor = CursorOf(state, *element);
        UndoUnlessKept stay(
            [&cursor, place = Place(cursor)] { static_cast<Place&>(cursor) = place; });
        const DCMRESULT result = Take(state.Content(), *element, cursor, value);
        stay.Keep();
        return result;
    });
}

/// `read` is one of the two above.
template <class Read>
DCMRESULT ReadItem(const CDcmObjectCommon& object, std::uint32_t tag, CDcmItem& item, Read read) {
    std::shared_ptr<DataSet> content;
    const DCMRESULT result = read(ObjectState::Of(object), tag, content);
    if (result == kDcmSuccess) ObjectState::Of(item).Adopt(std::move(content));
    return result;
}

}  // namespace

#define QUORVEX_READS_OF(Type)                                                       \
    DCMRESULT CDcmObjectCommon::GetValue(std::uint32_t tag, Type& value) const {     \
        return ReadFirst(ObjectState::Of(*this), tag, value);                        \
    }                                                                                \
    DCMRESULT CDcmObjectCommon::GetNextValue(std::uint32_t tag, Type& value) const { \
        return ReadNext(ObjectState::Of(*this), tag, value);                         \
    }
QUORVEX_READS_OF(unsigned short)
QUORVEX_READS_OF(short)
QUORVEX_READS_OF(int)
QUORVEX_READS_OF(unsigned int)
QUORVEX_READS_OF(long)
QUORVEX_READS_OF(float)
QUORVEX_READS_OF(double)
#undef QUORVEX_READS_OF

DCMRESULT CDcmObjectCommon::GetValue(std::uint32_t tag, CString& value, int) const {
    return ReadFirst(ObjectState::Of(*this), tag, value);
}

DCMRESULT CDcmObjectCommon::GetNextValue(std::uint32_t tag, CString& value, int) const {
    return ReadNext(ObjectState::Of(*this), tag, value);
}

DCMRESULT CDcmObjectCommon::GetValue(std::uint32_t tag, CDcmItem& item) const {
    return ReadItem(*this, tag, item, ReadFirst<std::shared_ptr<DataSet>>);
}

DCMRESULT CDcmObjectCommon::GetNextValue(std::uint32_t tag, CDcmItem& item) const {
    return ReadItem(*this, tag, item, ReadNext<std::shared_ptr<DataSet>>);
}

DCMRESULT CDcmObjectCommon::GetValueCount(std::uint32_t tag, int& count) const {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const Element* element = state.Content().Find(tag);
        if (element == nullptr) return state.Missing();
        count = static_cast<int>(dicom::ValueCount(state.Content(), *element));
        return kDcmSuccess;
    });
}

DCMRESULT CDcmObjectCommon::GetValueLength(std::uint32_t tag, int index,
                                           unsigned long& length) const {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const Element* element = state.Content().Find(tag);
        if (element == nullptr) return state.Missing();
        if (index < 1) return kDcmNotFound;
        const auto bytes =
            dicom::ValueLength(state.Content(), *element, static_cast<std::size_t>(index - 1));
        if (!bytes) return kDcmNotFound;
        length = *bytes;
        return kDcmSuccess;
    });
}

DCMRESULT CDcmObjectCommon::GetValue(std::uint32_t tag, void* user,
                                     ValueReadCallback callback) const {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        auto& state = ObjectState::Of(*this);
        const Element* element = state.Content().Find(tag);
        if (element == nullptr || callback == nullptr) return state.Missing();
        if (dicom::ItemsOf(*element) != nullptr) return kDcmFailure;
        const dicom::FragmentView fragments = state.Content().FragmentsOf(*element);
        if (!fragments.IsEmpty()) return kDcmFailure;
        // The object itself may be changed while the callback runs.
        const std::shared_ptr<const DataSet> kept = state.SharedContent();
        const Element copy = *element;
        const Bytes value = kept->ValueOf(copy);
        PieceGiver giver(tag, user, callback, value.size());
        const std::size_t swappedUnit = copy.isBigEndian ? dicom::Describe(copy.vr).unit : 1;
        const bool isTaken =
            value.empty() ? giver.GivePiece({}, 1) : giver.Give(value, swappedUnit);
        return isTaken ? kDcmSuccess : kDcmFailure;
    });
}

}  // namespace quorvex
