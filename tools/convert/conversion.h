/// How the object of one file is brought into the target: coded anew, written anew or copied.
#pragma once

#include "tools/convert/checks/verify.h"
#include "tools/convert/convert_job.h"
#include "tools/convert/streaming/frame_team.h"
#include "tools/convert/streaming/outline.h"

namespace quorvex::tools {

class Conversion {
public:
    /// @param written  a path of the work folder; what it refers to outlives it
    Conversion(ConvertRecord& record, const InputFile& input, const ConvertOptions& options,
               std::string written, const FrameWatch& watch, FrameTeam& team)
        : record_(record),
          input_(input),
          options_(options),
          written_(std::move(written)),
          watch_(watch),
          team_(team) {}

    /// Writes the output and compares it with its source. Throws a Refusal, an EnvironmentFailure
    /// or std::bad_alloc; the record then has what was found out so far.
    void Run();

private:
    /// Nothing is held but the frames at work. False, with nothing done, for a file that is to be
    /// read whole.
    [[nodiscard]] bool Stream();
    [[nodiscard]] bool RecodeStreamed(Outline& outline);
    void VerifyStreamed(const Outline& outline, CxDcmParser& before);
    void CheckPixels(const FrameComparison& comparison, bool hasNewFrames);
    void DescribeSource(const CDcmObject& source);
    void RequireUnchanged(const FileDigest& before);
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
    FrameTeam& team_;
};

}  // namespace quorvex::tools
