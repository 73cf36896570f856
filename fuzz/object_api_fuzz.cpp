// A program of operations on a few objects and items: set, add, remove, copy, move, walk, write,
// read. A change to one of them must never be seen in another.
#include "fuzz/elements.h"
#include "fuzz/scratch_file.h"
#include "tests/support/digest.h"

#include <array>
#include <utility>

namespace {

using namespace quorvex;

constexpr std::uint32_t kTags[] = {
    0x00080005, 0x00080018, 0x00100010, 0x00200032, 0x00280010, 0x00280030, 0x00280100, 0x00280103,
    0x00280106, 0x00281101, 0x00281201, 0x00283002, 0x00283006, 0x00081115, 0x00081140, 0x00700001,
    0x00700022, 0x00700006, 0x00090010, 0x00091001, 0x60003000, 0x7FE00010, 0xFFFCFFFC, 0x00020010,
    0x00041220, 0x00720052, 0x00280008, 0x00000000, 0xFFFEE000, 0xFFFFFFFF};

class Program {
public:
    explicit Program(fuzz::Options& options) noexcept : options_(options) {}

    void Run() {
        constexpr int kMostSteps = 200;
        for (int i = 0; i < kMostSteps && !options_.IsEmpty(); ++i) {
            const std::size_t changed = options_.Below(kObjects + kItems);
            const auto before = DigestsBut(changed);
            Step(changed);
            fuzz::Require(before == DigestsBut(changed));
        }
    }

private:
    static constexpr std::size_t kObjects = 3;
    static constexpr std::size_t kItems = 3;
    using Digests = std::array<std::uint64_t, kObjects + kItems>;

    CDcmObjectCommon& At(std::size_t index) {
        if (index < kObjects) return objects_[index];
        return items_[index - kObjects];
    }
    CDcmItem& AnyItem() { return items_[options_.Below(kItems)]; }
    std::uint32_t AnyTag() { return options_.OneOf(kTags); }

    Digests DigestsBut(std::size_t changed) {
        Digests sums{};
        for (std::size_t i = 0; i < sums.size(); ++i) {
            if (i != changed) sums[i] = test::DigestOf(At(i));
        }
        return sums;
    }

    void Step(std::size_t index) {
        CDcmObjectCommon& object = At(index);
        const unsigned kind = options_.Below(9);
        if (kind < 2) return Set(object);
        if (kind == 2) return Add(object);
        if (kind == 3) return static_cast<void>(object.RemoveValue(AnyTag()));
        if (kind == 4) return Read(object);
        if (kind == 5) return PutItem(object);
        if (kind == 6) return TakeItem(index);
        if (kind == 7) return Assign(index);
        if (index < kObjects) WholeObject(objects_[index]);
    }

    std::string AnyText() {
        std::string text;
        for (unsigned i = options_.Below(12); i > 0; --i) {
            text.push_back(static_cast<char>(options_.Byte()));
        }
        return text;
    }
    std::vector<unsigned char> AnyBytes() {
        std::vector<unsigned char> bytes(options_.Below(40));
        for (auto& byte : bytes) byte = static_cast<unsigned char>(options_.Byte());
        return bytes;
    }

    void Set(CDcmObjectCommon& object) {
        const std::uint32_t tag = AnyTag();
        switch (options_.Below(6)) {
            case 0:
                object.SetValue(tag, CString(AnyText()));
                break;
            case 1:
                object.SetValue(tag, static_cast<unsigned short>(options_.Word()));
                break;
            case 2:
                object.SetValue(tag, static_cast<int>(options_.Word()) - 30000);
                break;
            case 3:
                object.SetValue(tag, options_.Word() * 1e10 / 7);
                break;
            case 4:
                fuzz::PutBytes(object, tag, AnyBytes(), AnyVr());
                break;
            default:
                object.SetValueRepresentation(tag, AnyVr());
                break;
        }
    }
    MC_VR AnyVr() { return static_cast<MC_VR>(options_.Below(40)); }

    void Add(CDcmObjectCommon& object) {
        const std::uint32_t tag = AnyTag();
        switch (options_.Below(3)) {
            case 0:
                object.SetNextValue(tag, CString(AnyText()));
                break;
            case 1:
                object.SetNextValue(tag, static_cast<int>(options_.Word()));
                break;
            default:
                object.SetNextValue(tag, options_.Byte() / 3.0);
                break;
        }
    }

    void Read(const CDcmObjectCommon& object) {
        const std::uint32_t tag = AnyTag();
        CString text;
        unsigned short word = 0;
        double real = 0.0;
        CDcmItem item;
        int count = 0;
        unsigned long length = 0;
        object.GetValue(tag, text);
        object.GetValue(tag, word);
        object.GetNextValue(tag, real);
        object.GetNextValue(tag, item);
        object.GetValueCount(tag, count);
        object.GetValueLength(tag, static_cast<int>(options_.Byte()), length);
    }

    void PutItem(CDcmObjectCommon& object) {
        const std::uint32_t tag = AnyTag();
        if (options_.Flag()) {
            object.SetValue(tag, &AnyItem());
        } else {
            object.SetNextValue(tag, &AnyItem());
        }
    }

    /// An item that was read lives on its own.
    void TakeItem(std::size_t index) {
        if (index < kObjects) return;
        const CDcmObjectCommon& source = At(options_.Below(kObjects + kItems));
        const std::uint32_t tag = AnyTag();
        CDcmItem& item = items_[index - kObjects];
        if (source.GetValue(tag, item) == kDcmSuccess && options_.Flag()) {
            source.GetNextValue(tag, item);
        }
    }

    void Assign(std::size_t index) {
        const unsigned other = options_.Below(kObjects);
        if (index >= kObjects) {
            items_[index - kObjects] = items_[other];
        } else if (options_.Flag()) {
            objects_[index] = objects_[other];
        } else {
            objects_[index] = CDcmObject(objects_[other]);
        }
    }

    void WholeObject(CDcmObject& object) {
        constexpr TRANSFER_SYNTAX kSyntaxes[] = {
            kExplicitLittleEndian,         kImplicitLittleEndian, kExplicitBigEndian, kRle,
            kDeflatedExplicitLittleEndian, kImplicitBigEndian};
        switch (options_.Below(6)) {
            case 0:
                object.Close();
                break;
            case 1:
                object.Create();
                break;
            case 2:
                object.SetTransferSyntax(options_.OneOf(kSyntaxes));
                break;
            case 3:
                PutFragments(object);
                break;
            default:
                WriteAndRead(object);
                break;
        }
    }

    void PutFragments(CDcmObject& object) {
        std::vector<unsigned char> bytes = AnyBytes();
        const unsigned long lengths[] = {bytes.size() / 2, bytes.size() - bytes.size() / 2};
        unsigned char* const buffers[] = {bytes.data(), bytes.data() + lengths[0]};
        object.SetValueEx(tag::kPixelData, 2, lengths, buffers);
    }

    /// A file without a data set is none, so there is something in it.
    static void WriteAndRead(CDcmObject& object) {
        object.SetValue(tag::kSOPInstanceUID, fuzz::kImageUid);
        (void)fuzz::WriteAndRead(object);
    }

    fuzz::Options& options_;
    std::array<CDcmObject, kObjects> objects_;
    std::array<CDcmItem, kItems> items_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 12, size},
                     [](fuzz::Options& options) { Program(options).Run(); });
}
