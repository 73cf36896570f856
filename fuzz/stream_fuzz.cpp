// A bare data set in every encoding, and the search for one behind other bytes.
#include "foundation/dicom/reading/resynchronise.h"
#include "fuzz/memory_path.h"
#include "fuzz/reading.h"
#include "tests/support/digest.h"

namespace {

using namespace quorvex;

void ReadBare(const test::Bytes& bytes, fuzz::Options& options) {
    constexpr std::uint32_t kStopTags[] = {test::kUpToPixelData, 0xFFFCFFFC, test::kToTheEnd,
                                           tag::kRows};
    constexpr TRANSFER_SYNTAX kSyntaxes[] = {
        kImplicitLittleEndian, kExplicitLittleEndian,         kExplicitBigEndian,
        kImplicitBigEndian,    kDeflatedExplicitLittleEndian, kRle};
    test::MemoryFile file{.bytes = bytes};
    CDcmObject object;
    unsigned long scratch = 0;
    unsigned long offset = 0;
    const std::uint32_t stop = options.OneOf(kStopTags);
    (void)object.ReadStream2(0x00080000, stop, options.OneOf(kSyntaxes), &scratch, &offset, &file,
                             test::MemoryFile::GiveStream);
    (void)test::DigestOf(object);
}

void FindDataSets(const test::Bytes& bytes) {
    dicom::DataSetFinder finder(bytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) (void)finder.CanBeginAt(i);
}

void ReadStream(fuzz::Options& options) {
    test::Bytes bytes = options.Front();
    ReadBare(bytes, options);
    FindDataSets(bytes);
    bytes.insert(bytes.begin(), options.Below(200), static_cast<unsigned char>(options.Byte()));
    const fuzz::MemoryPath path(bytes);
    CDcmApp app;
    CxDcmParser parser;
    if (parser.Initialize(&app, path.Text(), options.Flag() ? 1 : 0) != QVM_SUCCESS) return;
    (void)test::DigestOf(*parser.GetHeader());
    fuzz::FetchFrames(parser, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.options = 16}, ReadStream);
}
