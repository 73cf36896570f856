/// How the object of one file is brought into the target: coded anew, written anew or copied.
#pragma once

#include "tools/convert/convert_job.h"

namespace quorvex::tools {

class Conversion {
public:
    /// @param written  a path of the work folder; what it refers to outlives it
    Conversion(ConvertRecord& record, const InputFile& input, const ConvertOptions& options,
               std::string written, const FrameWatch& watch)
        : record_(record),
          input_(input),
          options_(options),
          written_(std::move(written)),
          watch_(watch) {}

    /// Writes the output and compares it with its source. Throws a Refusal, an EnvironmentFailure
    /// or std::bad_alloc; the record then has what was found out so far.
    void Run();

private:
    void ConvertObject(CDcmObject& source);
    void ConvertImage(CDcmObject& source);
    void Carry(CDcmObject& source);
    void Recode(CDcmObject& source);
    void Reencode(CDcmObject& source, const TransferSyntax& wanted);
    void Copy();
    void Keep(Kept kept, const std::string& reason);
    void Write(const CDcmObject& output);
    void Verify(CDcmObject& source, bool hasNewFrames);
    void VerifyAttributes(const CDcmObject& source, const CDcmObject& output, bool hasNewFrames);
    void VerifyPixels(CDcmObject& source, CDcmObject& output, bool hasNewFrames);
    [[nodiscard]] FileDigest Describe(const std::string& path) const;

    ConvertRecord& record_;
    const InputFile& input_;
    const ConvertOptions& options_;
    std::string written_;
    const FrameWatch& watch_;
};

}  // namespace quorvex::tools
