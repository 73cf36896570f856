#include "tools/frame/frame_shape.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

namespace quorvex::tools {
namespace {

std::size_t WordOf(const CDcmObject& header, std::uint32_t tag) {
    return Read<unsigned short>(header, tag).value_or(0);
}

std::size_t BytesForBits(std::size_t bits) {
    constexpr std::size_t kByte = 8;
    for (const std::size_t bytes : {1U, 2U, 4U})
        if (bits <= kByte * bytes) return bytes;
    return kByte;
}

std::string Counted(std::size_t count, const char* one) {
    return std::to_string(count) + ' ' + one + (count == 1 ? "" : "s");
}

}  // namespace

std::optional<FrameShape> ReadFrameShape(CxDcmParser& parser) {
    const auto* header = parser.GetHeader();
    if (header == nullptr) return std::nullopt;
    FrameShape shape;
    shape.frames = parser.GetFrameCount();
    shape.rows = WordOf(*header, tag::kRows);
    shape.columns = WordOf(*header, tag::kColumns);
    shape.samples = WordOf(*header, tag::kSamplesPerPixel);
    if (shape.samples == 0) shape.samples = 1;
    const auto bits = WordOf(*header, tag::kBitsAllocated);
    shape.sampleBytes = BytesForBits(bits);
    shape.isFloat = parser.GetSampleType() != SampleType::kInteger;
    shape.isSigned = WordOf(*header, tag::kPixelRepresentation) == 1;
    if (shape.rows == 0 || shape.columns == 0 || bits == 0) return std::nullopt;
    return shape;
}

std::string FrameShape::Text(int frameCount) const {
    return Counted(static_cast<std::size_t>(frameCount), "frame") + " of " + Counted(rows, "row") +
           " x " + Counted(columns, "column") + " x " + Counted(samples, "sample") + ", " +
           TypeName();
}

std::string FrameShape::TypeName() const {
    const char* const kind = isFloat ? "float" : isSigned ? "int" : "uint";
    return kind + std::to_string(8 * sampleBytes);
}

std::string FrameShape::NumpyHeader(int frameCount) const {
    constexpr std::size_t kAlignment = 64;
    constexpr std::size_t kAhead = 10;  // magic, version, length
    std::string shape;
    if (frameCount != 1) shape += std::to_string(frameCount) + ", ";
    shape += std::to_string(rows) + ", " + std::to_string(columns);
    if (samples != 1) shape += ", " + std::to_string(samples);
    std::string text = "{'descr': '" + std::string(sampleBytes == 1 ? "|" : "<") +
                       TypeName().front() + std::to_string(sampleBytes) +
                       "', 'fortran_order': False, 'shape': (" + shape + "), }";
    const auto total = (kAhead + text.size() + 1 + kAlignment - 1) / kAlignment * kAlignment;
    text.resize(total - kAhead - 1, ' ');
    text += '\n';
    std::string header("\x93NUMPY\x01\x00", 8);
    header += static_cast<char>(text.size() & 0xFF);
    header += static_cast<char>(text.size() >> 8);
    return header + text;
}

}  // namespace quorvex::tools
