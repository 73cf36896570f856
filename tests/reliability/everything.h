/// Everything that a host asks of a file with pixels, by every route, as one value to compare.
#pragma once

#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "tests/maker/maker_objects.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace quorvex::test {

struct Answered {
    int code = -1;
    Bytes bytes;

    bool operator==(const Answered&) const = default;
};

inline Answered FrameOf(CxDcmParser& parser, int frame = 0) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    Answered answered{parser.GetAFrame(frame, data, size, 0), {}};
    const std::unique_ptr<unsigned char[]> owner(data);
    if (answered.code != QVM_SUCCESS) {
        EXPECT_EQ(data, nullptr) << "a failure hands nothing over";
    } else {
        answered.bytes.assign(data, data + size);
    }
    return answered;
}

inline Answered ThumbnailOf(CxDcmParser& parser, QUORVEX_XFERSYNTAX format) {
    unsigned char* image = nullptr;
    tagBITMAPINFOHEADER* bitmap = nullptr;
    unsigned long size = 0;
    unsigned long bitmapSize = 0;
    Answered answered{parser.MakeThumbNail(0, {16, 12}, format, format == kXferUncompressed ? 1 : 0,
                                           image, size, bitmap, bitmapSize, 90),
                      {}};
    const std::unique_ptr<unsigned char[]> imageOwner(image);
    const std::unique_ptr<unsigned char[]> bitmapOwner(
        static_cast<unsigned char*>(static_cast<void*>(bitmap)));
    if (answered.code == QVM_SUCCESS) answered.bytes.assign(image, image + size);
    return answered;
}

inline Answered RenderedOf(const CString& path) {
    CDcmApp app;
    CXDIPP image;
    Answered answered{image.Initialize(&app, path, {37, 29}, 0), {}};
    if (answered.code != QVM_SUCCESS) return answered;
    answered.code = image.Render();
    CSize size;
    int pixelSize = 0;
    if (image.GetResultImageInfo(size, pixelSize) != QVM_SUCCESS) return answered;
    answered.bytes.resize(static_cast<std::size_t>(size.cx * size.cy * pixelSize));
    unsigned char* destination = answered.bytes.data();
    image.GetResultImage(destination, static_cast<int>(answered.bytes.size()));
    return answered;
}

inline Answered ConvertedOf(CDcmObject object, QUORVEX_XFERSYNTAX target) {
    CDcmApp app;
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(target);
    CxDcmMaker maker;
    Answered answered{maker.MakeDcmObject(&app, &object, &settings), {}};
    if (answered.code == QVM_SUCCESS) answered.code = maker.GetOutcome();
    for (const Frame& frame : FramesOf(object))
        answered.bytes.insert(answered.bytes.end(), frame.begin(), frame.end());
    return answered;
}

/// The frame from the file and from the object come first, then what is made of them.
inline std::vector<Answered> AskEverything(const Bytes& file) {
    const TemporaryFile onDisk(file);
    CDcmApp app;
    CxDcmParser fromFile;
    CxDcmParser fromObject;
    std::vector<Answered> answers;
    const auto opened = fromFile.Initialize(&app, onDisk.Path(), 0);
    EXPECT_EQ(fromObject.Initialize(&app, onDisk.Path(), 1), opened);
    if (opened != QVM_SUCCESS) return {{opened, {}}};
    answers.push_back(FrameOf(fromFile));
    answers.push_back(FrameOf(fromObject));
    for (const auto format : {kXferUncompressed, kXferJpegBaseline, kXferJpegLossless})
        answers.push_back(ThumbnailOf(fromFile, format));
    answers.push_back(RenderedOf(onDisk.Path()));
    for (const auto target : {kXferUncompressedExplicit, kXferJpeg2000Lossless})
        answers.push_back(ConvertedOf(*fromObject.GetHeader(), target));
    return answers;
}

}  // namespace quorvex::test
