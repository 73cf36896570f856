/// A recoding whose frames are written as they come.
#pragma once

#include "foundation/dicom/object/around_pixels.h"
#include "foundation/dicom/writing/output_file.h"
#include "maker/recoding/recoding_steps.h"
#include "quorvex/CxDcmConversion.h"

#include <memory>
#include <string>
#include <vector>

namespace quorvex {

/// The file has the bytes ahead of the frames first, with an offset table that is not true yet;
/// what is known only behind the last frame takes their place in the end. Where that is longer or
/// shorter, the frames are copied behind it, into another file.
class StreamedRecoding {
public:
    QUORVEX_MESSAGE Begin(CxDcmParser& parser, const CDcmObject& outline,
                          const DcmConversionWish& wish, const std::string& path);
    QUORVEX_MESSAGE Code(CxDcmParser& parser, int frame, std::vector<unsigned char>& coded) const;
    QUORVEX_MESSAGE Add(const std::vector<unsigned char>& coded);
    QUORVEX_MESSAGE End(CDcmObject* result);
    void Abandon() noexcept { file_.reset(); }

private:
    QUORVEX_MESSAGE Plan(const CDcmObject& outline, const DcmConversionWish& wish);
    QUORVEX_MESSAGE MakeHeader(TRANSFER_SYNTAX from, const DcmConversionWish& wish);
    [[nodiscard]] QUORVEX_MESSAGE DescribeAll();
    [[nodiscard]] bool Finish();
    [[nodiscard]] std::size_t PlainBytes() const noexcept { return plan_.frameBytes * frames_; }

    RecodingPlan plan_;
    std::size_t frames_ = 0;
    CDcmObject object_;  ///< as it will be written, without frames
    dicom::AroundPixels around_;
    std::string path_;
    std::unique_ptr<dicom::OutputFile> file_;
    std::vector<std::uint64_t> lengths_;  ///< of the frames that were added
    std::size_t codedBytes_ = 0;
};

}  // namespace quorvex
