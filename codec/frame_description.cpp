#include "codec/frame_description.h"

#include "foundation/types/checked_size.h"

#include <utility>

namespace quorvex {

int FrameDescription::InitializeMembers(const _IMAGE_PROCESS_PARAM* param) noexcept {
    samplesPerPixel = param->samplesPerPixel;
    photometric = param->photometric.View();
    planarConfiguration = param->planarConfiguration;
    rows = param->rows;
    columns = param->columns;
    bitsAllocated = param->bitsAllocated;
    pixelRepresentation = param->pixelRepresentation;
    transferSyntax = static_cast<TRANSFER_SYNTAX>(param->transferSyntax);
    targetSyntax = static_cast<QUORVEX_XFERSYNTAX>(param->targetSyntax);
    quality = param->quality;
    return 1;
}

std::optional<std::size_t> FrameDescription::FrameBytes(std::size_t bytesPerSample) const noexcept {
    return CheckedProduct(bytesPerSample, rows, columns, samplesPerPixel);
}

std::size_t FrameDescription::SampleBytesFor(std::size_t available) const noexcept {
    if (bitsAllocated != 32) return BytesPerSample();
    const auto narrowFrame = FrameBytes(BytesPerSample());
    return narrowFrame && available > *narrowFrame ? 4 : BytesPerSample();
}

ColourFrame FrameDescription::DescribeColour(std::size_t bytesPerSample) const noexcept {
    return {ColourFormOf(photometric, planarConfiguration, bytesPerSample, hasExactColour),
            columns,
            rows,
            bytesPerSample,
            hasExactColour,
            bitsStored};
}

void SwapByte(unsigned char* data, unsigned long length) noexcept {
    for (unsigned long i = 0; i + 1 < length; i += 2) std::swap(data[i], data[i + 1]);
}

}  // namespace quorvex
