#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/reading/resynchronise.h"
#include "foundation/platform/diagnostics.h"
#include "parser/parsed_file.h"

#include <algorithm>
#include <string>

namespace quorvex {
namespace {

constexpr std::uint32_t kFirstTag = tag::InGroup(0x0008, 0);
constexpr std::uint32_t kJustBelowPixelData = tag::kPixelData - 1;
constexpr unsigned long kPieceBytes = 16384;

/// What a read callback works on. Pieces are handed out where they lie.
struct StreamReadContext {
    unsigned char* base = nullptr;
    unsigned char* cursor = nullptr;
    unsigned long delivered = 0;
    unsigned long total = 0;
};

/// The first-call flag starts over, so that a context whose base has moved delivers from there.
MC_STATUS Deliver(void* user, bool isFirst, int* length, void** data, int* last) {
    auto* context = static_cast<StreamReadContext*>(user);
    if (context == nullptr || context->base == nullptr) return kMcRefuse;
    if (isFirst) {
        context->delivered = 0;
        context->cursor = context->base;
    }
    const unsigned long remaining = context->total - context->delivered;
    const unsigned long count = std::min(remaining, kPieceBytes);
    *last = remaining <= kPieceBytes ? 1 : 0;
    *length = static_cast<int>(count);
    *data = context->cursor;
    context->cursor += count;
    context->delivered += count;
    return kMcContinue;
}

MC_STATUS ReadFromFile(const char* /*fileName*/, void* user, int* length, void** data, int first,
                       int* last) {
    return Deliver(user, first != 0, length, data, last);
}

MC_STATUS ReadFromStream(int /*messageId*/, void* user, int first, int* length, void** data,
                         int* last) {
    return Deliver(user, first != 0, length, data, last);
}

DCMRESULT ReadStream(CDcmObject& object, std::uint32_t stopTag, StreamReadContext& context,
                     unsigned long& offset) {
    unsigned long scratch = 0;
    return object.ReadStream2(kFirstTag, stopTag, kImplicitLittleEndian, &scratch, &offset,
                              &context, ReadFromStream);
}

std::unique_ptr<CDcmObject> MakeObject(const CString& path) {
    auto object = std::make_unique<CDcmObject>();
    (void)object->Open(path.IsEmpty() ? CString("temp.dcm") : path);
    return object;
}

/// Looks for a position from which the rest reads as a data set, from `offset` on, where the first
/// try stopped. Almost any bytes can be read as elements, so only where a data set can begin is one
/// tried. False without such a position; otherwise `offset` is where its reading stopped.
bool Resynchronise(CDcmObject& object, std::span<unsigned char> file, dicom::DataSetFinder& finder,
                   std::uint32_t stopTag, unsigned long& offset) {
    const unsigned long start = offset;
    for (unsigned long i = std::max(start, 1UL); i < file.size(); ++i) {
        if (!finder.CanBeginAt(i)) continue;
        StreamReadContext context{.base = file.data() + i, .total = file.size() - i};
        unsigned long local = 0;
        if (ReadStream(object, stopTag, context, local) != kDcmSuccess) continue;
        offset = local + i;
        break;
    }
    return offset != start;
}

}  // namespace

int ParsedFile::ParseDicomHeaderOfPart10File(std::unique_ptr<CDcmObject>& object,
                                             unsigned long& offset, const CString& path,
                                             int readWholeFile) {
    StreamReadContext context{.base = fileBuffer.get(), .total = fileSize};
    object = MakeObject(path);
    const DCMRESULT result =
        readWholeFile != 0
            ? object->ReadFile(app, &context, ReadFromFile)  // what it holds now may be another
            : object->ReadFileUptoTag(app, kJustBelowPixelData, &offset, &context, ReadFromFile);
    if (result == kDcmSuccess) {
        WriteDebugLine("ParseDicomHeaderOfPart10File success(" + path.ToUtf8() + ")");
        return 1;
    }
    object.reset();
    WriteDebugLine("ParseDicomHeaderOfPart10File error\n");
    return ParseDicomHeaderOfNonPart10File(object, offset, path, readWholeFile);
}

int ParsedFile::ParseDicomHeaderOfNonPart10File(std::unique_ptr<CDcmObject>& object,
                                                unsigned long& offset, const CString& path,
                                                int readWholeFile) {
    StreamReadContext context{.base = fileBuffer.get(), .total = fileSize};
    object = MakeObject(path);
    (void)object->Create();
    const std::uint32_t stopTag =
        readWholeFile != 0 ? tag::kDataSetTrailingPadding : kJustBelowPixelData;
    dicom::DataSetFinder finder(FileBytes());
    if (!finder.CanBeginAt(0)) {
        offset = 0;
    } else if (ReadStream(*object, stopTag, context, offset) == kDcmSuccess) {
        WriteDebugLine("ParseDicomHeaderOfNonPart10File success\n");
        return 1;
    }
    if (!Resynchronise(*object, FileBytes(), finder, stopTag, offset)) {
        WriteDebugLine("ParseDicomHeaderOfNonPart10File pixel offset error\n");
        return 0;
    }
    WriteDebugLine("ParseDicomHeaderOfNonPart10File success2\n");
    return 1;
}

}  // namespace quorvex
