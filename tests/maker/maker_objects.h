/// Source objects and frames for maker tests, and the frames of what was made.
#pragma once

#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/answers.h"
#include "tests/support/attribute_values.h"
#include "tests/support/memory_file.h"
#include "tests/support/temporary_file.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::test {

using Frame = std::vector<unsigned char>;

inline TRANSFER_SYNTAX SyntaxOf(const CDcmObject& object) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    object.GetTransferSyntax(syntax);
    return syntax;
}

/// A smooth frame with a little noise: coders find work in it, and lossy ones little to lose.
inline Frame WavyFrame(std::size_t samples, std::size_t bytesPerSample, unsigned most) {
    Frame frame;
    for (std::size_t i = 0; i < samples; ++i) {
        const auto value = static_cast<unsigned>((i * 7 + i / 31 * 3 + i % 5) % (most + 1));
        frame.push_back(static_cast<unsigned char>(value));
        if (bytesPerSample == 2) frame.push_back(static_cast<unsigned char>(value >> 8U));
    }
    return frame;
}

/// As a host hands a frame over.
inline unsigned char* NewCopy(const Frame& frame) {
    auto copy = std::make_unique<unsigned char[]>(frame.size());
    std::copy(frame.begin(), frame.end(), copy.get());
    return copy.release();
}

/// All frames as a parser decodes them; stops at the first failure.
inline std::vector<Frame> FramesOf(CxDcmParser& parser) {
    std::vector<Frame> frames;
    for (int i = 0; i < parser.GetFrameCount(); ++i) {
        Answered frame = FrameOf(parser, i);
        if (frame.code != QVM_SUCCESS) break;
        frames.push_back(std::move(frame.bytes));
    }
    return frames;
}

inline std::vector<Frame> FramesOf(const CDcmObject& object) {
    CDcmApp app;
    CDcmObject copy = object;
    CxDcmParser parser;
    if (parser.Initialize(&app, &copy, nullptr, 0, 0) != QVM_SUCCESS) return {};
    return FramesOf(parser);
}

/// The file that the object is written as; empty where it cannot be.
inline Frame Written(const CDcmObject& object) {
    const TemporaryFile file;
    return object.WriteFile(file.Path()) == kDcmSuccess ? BytesOfFile(file.Path()) : Frame();
}

/// All frames of the object, written to a file and read back.
inline std::vector<Frame> FramesOfFile(const CDcmObject& object) {
    const TemporaryFile file(Written(object));
    CDcmApp app;
    CxDcmParser parser;
    if (parser.Initialize(&app, file.Path(), 0) != QVM_SUCCESS) return {};
    return FramesOf(parser);
}

/// Converts by the standard rules; the outcome of the pixels.
inline QUORVEX_MESSAGE Recode(CDcmObject& object, QUORVEX_XFERSYNTAX form,
                              std::uint16_t quality = 0) {
    CDcmApp app;
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    maker.SetQuality(quality);
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(form);
    EXPECT_EQ(maker.MakeDcmObject(&app, &object, &settings), QVM_SUCCESS);
    return maker.GetOutcome();
}

}  // namespace quorvex::test
