/// Where a parser's bytes come from: a host's own archive, object store or memory.
#pragma once

#include "quorvex/Export.h"

#include <cstdint>
#include <span>

namespace quorvex {

/// The bytes of one DICOM file, read piece by piece where and when they are needed.
///
/// A host derives from this class to give a file that has no path. CxDcmParser::Initialize() takes
/// it by std::shared_ptr; the parser and its copies share it until they are initialised again or
/// end. Copies of a parser may work in different threads, so that both operations may be called
/// from several threads at once; one parser makes one call at a time. The calls come inside the
/// parser's own, on the thread of its caller, and nothing is called between them.
///
/// The bytes must stay what they are as long as a parser uses them. A source whose size is another
/// than at first counts as a file that has changed: its frames are refused.
class QUORVEX_API FileSource {
public:
    virtual ~FileSource();

    /// Bytes of the file.
    [[nodiscard]] virtual std::uint64_t Size() const = 0;

    /// Fills all of `bytes` with what the file has from `offset` on.
    ///
    /// Only ranges inside Size() are asked for: a first one of up to 64 KiB, others of up to 1 MiB
    /// while the header is read, then those of the frames, each whole. What is thrown goes no
    /// further than the parser and counts as false.
    ///
    /// @return false where that cannot be done; what `bytes` then holds is not looked at. The
    ///         operation that needed them fails, and the next one asks again
    [[nodiscard]] virtual bool ReadAt(std::uint64_t offset, std::span<unsigned char> bytes) = 0;

protected:
    FileSource() = default;
    FileSource(const FileSource&) = default;
    FileSource& operator=(const FileSource&) = default;
};

}  // namespace quorvex
