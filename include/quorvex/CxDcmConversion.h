/// An image brought into another coding frame by frame, and written as the frames come.
#pragma once

#include "quorvex/CxDcmParser.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex {

class StreamedRecoding;

/// What a conversion is to do.
struct DcmConversionWish {
    QUORVEX_XFERSYNTAX form{};  ///< native or encapsulated, not deflated; none that keeps streams
    std::uint16_t quality = 0;  ///< as CxDcmMaker::SetQuality() has it by the standard rules
    std::uint64_t storedBytes = 0;  ///< of Pixel Data's items or native value, no headers counted
};

/// Converts an object of any size with no more than a frame or two in memory, always by the
/// standard rules: the file is, byte by byte, the one that CxDcmMaker::MakeDcmObject() and
/// CDcmObject::WriteFile() make of the same object.
///
/// The library has no threads of its own: Code() may be called from any number of a host's threads
/// at once, each with a parser of its own; all else is for one thread at a time, and Add() takes
/// the frames in their order. Nothing is at the path before End() has answered with QVM_SUCCESS;
/// what is not ended leaves nothing behind.
class QUORVEX_API CxDcmConversion {
public:
    /// Throws std::bad_alloc without memory, as no other operation does.
    CxDcmConversion();
    CxDcmConversion(const CxDcmConversion&) = delete;
    CxDcmConversion& operator=(const CxDcmConversion&) = delete;
    ~CxDcmConversion();

    /// Starts the file. What an earlier start left unfinished is removed.
    ///
    /// @param parser   has the source open by the standard rules, its header read alone or whole;
    ///                 its header's photometric interpretation may be changed. Copies for Code()
    ///                 are made behind this
    /// @param outline  the object without its frames: Pixel Data of length 0 where it is native;
    ///                 where it is encapsulated, the offset table and the first fragment
    /// @return QVM_SUCCESS, or
    ///         QVM_FRAME_COPIED                 the frames are in that form already: nothing to do
    ///         QVM_ERROR_INVALID_TARGET_SYNTAX  a form, or an object, that is not written as it
    ///                                          comes: CxDcmMaker::MakeDcmObject() may do it
    ///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA  more pixels than the file makes plausible, or
    ///                                          than native Pixel Data holds; no file, no memory
    ///         or what the form cannot hold, as CxDcmMaker::GetOutcome() names it
    QUORVEX_MESSAGE Begin(CxDcmParser& parser, const CDcmObject& outline,
                          const DcmConversionWish& wish, const CString& path);

    /// Decodes and codes one frame. For any thread, between Begin() and End().
    ///
    /// @param parser  a copy of the one that Begin() has seen, used by this thread alone
    /// @param coded   receives what Add() takes
    /// @return QVM_SUCCESS, a failure of CxDcmParser::GetAFrameUnpacked(),
    ///         QVM_ERROR_FAILED_TO_DECOMPRESS for a frame that is not whole,
    ///         QVM_ERROR_INVALID_BITS_ALLOCATED for one of another size, or a failure of the coder
    QUORVEX_MESSAGE Code(CxDcmParser& parser, int frame, std::vector<unsigned char>& coded) const;

    /// Writes the next frame.
    /// @return QVM_SUCCESS; QVM_ERROR_NO_PIXEL_INFO where nothing has begun, or there is no frame
    ///         more; QVM_ERROR_FAILED_TO_SET_PIXEL_DATA where it cannot be written (see errno)
    QUORVEX_MESSAGE Add(const std::vector<unsigned char>& coded);

    /// Writes what is known only now, and gives the file its name.
    /// @param result  receives the object as it was written, without its frames; may be null
    /// @return as Add(); QVM_ERROR_NO_PIXEL_INFO where frames are missing;
    ///         QVM_ERROR_INVALID_MAKER_PARAM as CxDcmMaker::MakeDcmObject()
    QUORVEX_MESSAGE End(CDcmObject* result);

    /// Leaves nothing behind.
    void Abandon() noexcept;

private:
    std::unique_ptr<StreamedRecoding> recoding_;
};

}  // namespace quorvex
