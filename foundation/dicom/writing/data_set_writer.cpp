#include "foundation/dicom/writing/data_set_writer.h"

#include "foundation/dicom/frames/native_frames.h"
#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/writing/text_target.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kLongestShortLength = 0xFFFE;
constexpr std::string_view kUtf8Term = "ISO_IR 192";

void PadToEven(ByteBuffer& value, MC_VR vr) {
    if (value.size() % 2 != 0) value.push_back(Describe(vr).pad);
}

/// A value under the tag of an item or delimiter would be taken for one.
bool IsWritten(std::uint32_t tag, bool isMain) {
    return !IsGroupLength(tag) && !IsItemTag(tag) && !(isMain && IsMetaTag(tag));
}

class Writer {
public:
    Writer(WritingRules rules, ByteSink& sink) : rules_(std::move(rules)), sink_(sink) {}

    void WriteMain(const DataSet& main) {
        const auto target = TextTarget::OfMain(main, rules_.isForcedToUtf8);
        bool needsCharacterSet =
            rules_.isForcedToUtf8 && main.Find(tag::kSpecificCharacterSet) == nullptr;
        for (const Element& element : main.Elements()) {
            if (!IsWritten(element.tag, true)) continue;
            if (needsCharacterSet && element.tag > tag::kSpecificCharacterSet) {
                WriteUtf8Term();
                needsCharacterSet = false;
            }
            WriteElement(main, element, target, true);
        }
    }

    void WriteMeta(const DataSet& meta) {
        for (const Element& element : meta.Elements())
            WriteAsStored(element.tag, element.vr, meta.ValueOf(element));
    }

private:
    void Put16(std::uint32_t number) { PutNumber(static_cast<std::uint16_t>(number)); }
    void Put32(std::size_t number) { PutNumber(static_cast<std::uint32_t>(number)); }

    template <class Number>
    void PutNumber(Number number) {
        if (rules_.encoding.isBigEndian) number = Swapped(number);
        sink_.Put({reinterpret_cast<const unsigned char*>(&number), sizeof number});
    }

    void PutTag(std::uint32_t tag) {
        Put16(GroupOf(tag));
        Put16(ElementOf(tag));
    }

    void PutItemTag(std::uint32_t tag, std::size_t length) {
        PutTag(tag);
        Put32(length);
    }

    void PutHeader(std::uint32_t tag, MC_VR vr, std::size_t length) {
        if (length > kLongestValue && length != kUndefinedLength) {
            RefuseBy(Limit::kLongestValue);
            throw std::length_error(LimitSentence(Limit::kLongestValue));
        }
        PutTag(tag);
        if (!rules_.encoding.isExplicit) return Put32(length);
        const bool isTooLong = !Describe(vr).hasLongLength && length > kLongestShortLength;
        const auto& row = Describe(isTooLong ? MC_VR_UN : vr);
        const auto* letters = reinterpret_cast<const unsigned char*>(row.letters);
        sink_.Put({letters, 2});
        if (!row.hasLongLength) return Put16(static_cast<std::uint32_t>(length));
        Put16(0);
        Put32(length);
    }

    void WriteElement(const DataSet& dataSet, const Element& element, const TextTarget& target,
                      bool isMain) {
        if (const Items* items = ItemsOf(element))
            return WriteSequence(element.tag, *items, target);
        const FragmentView fragments = dataSet.FragmentsOf(element);
        if (!fragments.IsEmpty()) {
            const bool isJoined = isMain && rules_.joinsPixelData && element.tag == tag::kPixelData;
            const bool isOpen = isMain && element.tag == tag::kPixelData;
            return isJoined ? WriteJoined(element, fragments)
                            : WriteFragments(element, fragments, isOpen);
        }
        const Bytes value = dataSet.ValueOf(element);
        if (element.tag == tag::kSpecificCharacterSet && rules_.isForcedToUtf8)
            return WriteUtf8Term();
        if (isMain && element.tag == tag::kPixelData) return WritePixelData(element, value);
        if (Describe(element.vr).hasCharacterSet) {
            const ByteBuffer stored(value.begin(), value.end());
            return WriteBytes(element, WrittenText(element, value, target).value_or(stored));
        }
        const std::size_t unit = Describe(element.vr).unit;
        const bool isSwapped = unit > 1 && element.isBigEndian != rules_.encoding.isBigEndian;
        if (!isSwapped) return WriteAsStored(element.tag, element.vr, value);
        WriteSwapped(element.tag, element.vr, value, unit);
    }

    void WriteUtf8Term() {
        WriteAsStored(tag::kSpecificCharacterSet, MC_VR_CS,
                      {reinterpret_cast<const unsigned char*>(kUtf8Term.data()), kUtf8Term.size()});
    }

    void WriteBytes(const Element& element, ByteBuffer value) {
        PadToEven(value, element.vr);
        PutHeader(element.tag, element.vr, value.size());
        sink_.Put(value);
    }

    void WriteAsStored(std::uint32_t tag, MC_VR vr, Bytes value) {
        PutHeader(tag, vr, value.size() + value.size() % 2);
        PutPadded(value, Describe(vr).pad);
    }

    void WriteSwapped(std::uint32_t tag, MC_VR vr, Bytes value, std::size_t unit) {
        ByteBuffer swapped(value.begin(), value.end());
        PadToEven(swapped, vr);
        SwapBytes(swapped.data(), swapped.size(), unit);
        PutHeader(tag, vr, swapped.size());
        sink_.Put(swapped);
    }

    void PutPadded(Bytes value, unsigned char pad) {
        sink_.Put(value);
        if (value.size() % 2 != 0) sink_.Put({&pad, 1});
    }

    /// Native pixels of more than 8 bits are words, whatever VR they were given.
    void WritePixelData(const Element& element, Bytes value) {
        const bool isBytes = element.vr == MC_VR_OB && rules_.bitsAllocated <= 8;
        const MC_VR vr = isBytes ? MC_VR_OB : MC_VR_OW;
        if (rules_.atPixels) {
            PutHeader(element.tag, vr, rules_.nativePixelBytes + rules_.nativePixelBytes % 2);
            return rules_.atPixels();
        }
        const bool isSwapped = element.isBigEndian != rules_.encoding.isBigEndian;
        const std::size_t unit = PixelWordBytes(vr, rules_.bitsAllocated);
        if (!isSwapped || unit == 1) return WriteAsStored(element.tag, vr, value);
        WriteSwapped(element.tag, vr, value, unit);
    }

    void WriteJoined(const Element& element, const FragmentView& fragments) {
        ByteBuffer joined;
        for (std::size_t i = 1; i < fragments.Count(); ++i)
            joined.insert(joined.end(), fragments[i].begin(), fragments[i].end());
        Element native = element;
        native.isBigEndian = false;  // items are little endian
        WritePixelData(native, joined);
    }

    void WriteSequence(std::uint32_t tag, const Items& items, const TextTarget& target) {
        if (items.empty()) return PutHeader(tag, MC_VR_SQ, 0);
        PutHeader(tag, MC_VR_SQ, kUndefinedLength);
        for (const auto& item : items) {
            PutItemTag(tag::kItem, kUndefinedLength);
            WriteItem(*item, target.OfItem(*item));
            PutItemTag(tag::kItemDelimitationItem, 0);
        }
        PutItemTag(tag::kSequenceDelimitationItem, 0);
    }

    void WriteItem(const DataSet& item, const TextTarget& target) {
        for (const Element& element : item.Elements()) {
            if (IsWritten(element.tag, false)) WriteElement(item, element, target, false);
        }
    }

    void WriteFragments(const Element& element, const FragmentView& fragments, bool isOpen) {
        PutHeader(element.tag, MC_VR_OB, kUndefinedLength);
        PutFragment(PaddedOffsetTable(fragments));
        for (std::size_t i = 1; i < fragments.Count(); ++i) PutFragment(fragments[i]);
        if (isOpen && rules_.atPixels) rules_.atPixels();
        PutItemTag(tag::kSequenceDelimitationItem, 0);
    }

    void PutFragment(Bytes content) {
        PutItemTag(tag::kItem, content.size() + content.size() % 2);
        PutPadded(content, 0);
    }

    /// A fragment of odd length moves all that follow it when it is padded; a table that was right
    /// would be wrong then, and without one the frames are found by their own starts.
    static Bytes PaddedOffsetTable(const FragmentView& fragments) {
        for (std::size_t i = 1; i + 1 < fragments.Count(); ++i) {
            if (fragments[i].size() % 2 != 0) return {};
        }
        return fragments[0];
    }

    const WritingRules rules_;
    ByteSink& sink_;
};

}  // namespace

void WriteDataSet(const DataSet& main, const WritingRules& rules, ByteSink& sink) {
    Writer(rules, sink).WriteMain(main);
}

void WriteMetaInformation(const DataSet& meta, ByteSink& sink) {
    BufferSink elements;
    Writer({}, elements).WriteMeta(meta);
    ByteBuffer length;
    AppendNumber(length, static_cast<std::uint32_t>(elements.Written().size()));
    DataSet groupLength;
    groupLength.PutBytes(tag::kFileMetaInformationGroupLength, MC_VR_UL, std::move(length));
    Writer({}, sink).WriteMeta(groupLength);
    sink.Put(elements.Written());
}

}  // namespace quorvex::dicom
