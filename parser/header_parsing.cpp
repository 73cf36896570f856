#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/reading/resynchronise.h"
#include "foundation/platform/diagnostics.h"
#include "parser/parsed_file.h"
#include "parser/source/file_window.h"

#include <algorithm>
#include <string>

namespace quorvex {
namespace {

constexpr std::uint32_t kFirstTag = tag::InGroup(0x0008, 0);
constexpr std::uint32_t kJustBelowPixelData = tag::kPixelData - 1;

DCMRESULT ReadStream(CDcmObject& object, std::uint32_t stopTag, FileWindow& window,
                     std::size_t base, unsigned long& offset) {
    unsigned long scratch = 0;
    PieceReader pieces(window, base);
    return object.ReadStream2(kFirstTag, stopTag, kImplicitLittleEndian, &scratch, &offset, &pieces,
                              PieceReader::ReadFromStream);
}

std::unique_ptr<CDcmObject> MakeObject(const CString& path) {
    auto object = std::make_unique<CDcmObject>();
    (void)object->Open(path.IsEmpty() ? CString("temp.dcm") : path);
    return object;
}

/// Whether a data set can begin at the file's first byte. Looks at no more than it takes to tell.
bool CanBegin(FileWindow& window) {
    dicom::FileBeginning beginning{.needed = dicom::kPart10Start};
    while (beginning.needed != 0) {
        const auto start = window.LookFar(beginning.needed);
        if (start.empty()) return false;
        beginning = dicom::DataSetFinder::BeginningOf(start, window.FileSize());
    }
    return beginning.canBegin;
}

/// Looks for a position from which the rest reads as a data set, from `offset` on, where the first
/// try stopped. Almost any bytes can be read as elements, so only where a data set can begin is one
/// tried. False without such a position; otherwise `offset` is where its reading stopped.
bool Resynchronise(CDcmObject& object, std::span<const unsigned char> file, FileWindow& window,
                   std::uint32_t stopTag, unsigned long& offset) {
    const unsigned long start = offset;
    dicom::DataSetFinder finder(file);
    for (unsigned long i = std::max(start, 1UL); i < file.size(); ++i) {
        if (!finder.CanBeginAt(i)) continue;
        unsigned long local = 0;
        if (ReadStream(object, stopTag, window, i, local) != kDcmSuccess) continue;
        offset = local + i;
        break;
    }
    return offset != start;
}

}  // namespace

int ParsedFile::ParseDicomHeaderOfPart10File(std::unique_ptr<CDcmObject>& object,
                                             FileReading& reading, FileWindow& window,
                                             const CString& path, int readWholeFile) {
    PieceReader pieces(window, 0);
    object = MakeObject(path);
    const DCMRESULT result =
        readWholeFile != 0  // from the bytes that were read: what the file holds now may be another
            ? object->ReadFile(app, &pieces, PieceReader::ReadFromFile)
            : object->ReadFileUptoTag(app, kJustBelowPixelData, &pixelDataOffset, &pieces,
                                      PieceReader::ReadFromFile);
    if (result == kDcmSuccess) {
        WriteDebugLine("ParseDicomHeaderOfPart10File success(" + path.ToUtf8() + ")");
        return 1;
    }
    object.reset();
    WriteDebugLine("ParseDicomHeaderOfPart10File error\n");
    return ParseDicomHeaderOfNonPart10File(object, reading, window, path, readWholeFile);
}

/// A damaged file is brought into memory and searched for the place where it begins.
int ParsedFile::ParseDicomHeaderOfNonPart10File(std::unique_ptr<CDcmObject>& object,
                                                FileReading& reading, FileWindow& window,
                                                const CString& path, int readWholeFile) {
    object = MakeObject(path);
    (void)object->Create();
    const std::uint32_t stopTag =
        readWholeFile != 0 ? tag::kDataSetTrailingPadding : kJustBelowPixelData;
    if (!CanBegin(window)) {
        pixelDataOffset = 0;
    } else if (ReadStream(*object, stopTag, window, 0, pixelDataOffset) == kDcmSuccess) {
        WriteDebugLine("ParseDicomHeaderOfNonPart10File success\n");
        return 1;
    }
    if (!TakeWholeFile(reading)) return 0;
    if (!Resynchronise(*object, file.InMemory(), window, stopTag, pixelDataOffset)) {
        WriteDebugLine("ParseDicomHeaderOfNonPart10File pixel offset error\n");
        return 0;
    }
    WriteDebugLine("ParseDicomHeaderOfNonPart10File success2\n");
    return 1;
}

}  // namespace quorvex
