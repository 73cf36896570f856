// A bare data set in every encoding, and the search for one behind other bytes.
#include "foundation/dicom/reading/resynchronise.h"
#include "fuzz/elements.h"
#include "fuzz/frames.h"
#include "fuzz/memory_feed.h"
#include "fuzz/options.h"

namespace {

using namespace quorvex;

void ReadBare(const std::vector<unsigned char>& bytes, fuzz::Options& options) {
    constexpr std::uint32_t kStopTags[] = {0x7FE0000F, 0xFFFCFFFC, 0xFFFFFFFF, 0x00280010};
    constexpr TRANSFER_SYNTAX kSyntaxes[] = {
        kImplicitLittleEndian, kExplicitLittleEndian,         kExplicitBigEndian,
        kImplicitBigEndian,    kDeflatedExplicitLittleEndian, kRle};
    fuzz::MemoryFeed feed(bytes);
    CDcmObject object;
    unsigned long scratch = 0;
    unsigned long offset = 0;
    const std::uint32_t stop = options.OneOf(kStopTags);
    (void)object.ReadStream2(0x00080000, stop, options.OneOf(kSyntaxes), &scratch, &offset, &feed,
                             fuzz::MemoryFeed::GiveStream);
    (void)fuzz::Fingerprint(object);
}

void FindDataSets(const std::vector<unsigned char>& bytes) {
    dicom::DataSetFinder finder(bytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) (void)finder.CanBeginAt(i);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::size_t kOptions = 16;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, kOptions);
    std::vector<unsigned char> bytes = options.Front();
    ReadBare(bytes, options);
    FindDataSets(bytes);
    bytes.insert(bytes.begin(), options.Below(200), static_cast<unsigned char>(options.Byte()));
    const fuzz::MemoryPath path(bytes);
    CDcmApp app;
    CxDcmParser parser;
    const int readWholeFile = options.Flag() ? 1 : 0;
    if (parser.Initialize(&app, path.Text(), readWholeFile) != QVM_SUCCESS) return 0;
    (void)fuzz::Fingerprint(*parser.GetHeader());
    fuzz::FetchFrames(parser, options);
    return 0;
}
