#include "tests/reliability/hostile_image.h"

#include "quorvex/TransferSyntaxes.h"

#include <cstdlib>
#include <cstring>
#include <zlib.h>

namespace quorvex::test {
namespace {

constexpr std::size_t kPixelBytes = 64;

unsigned WordOf(const char* number) {
    return static_cast<std::uint16_t>(std::strtol(number, nullptr, 10));
}

/// A value in a representation: text for what holds text, otherwise a number of its width.
std::string ValueIn(std::string_view vr, const char* number) {
    constexpr std::string_view kWidths = "US2SS2UL4SL4AT4FD8UV8";
    const auto at = kWidths.find(vr);
    if (at == std::string_view::npos) return number + std::string(std::strlen(number) % 2, ' ');
    const double real = std::strtod(number, nullptr);
    const auto whole = static_cast<std::uint64_t>(std::strtoll(number, nullptr, 10));
    std::string value(8, '\0');
    std::memcpy(value.data(), vr == "FD" ? static_cast<const void*>(&real) : &whole, 8);
    return value.substr(0, static_cast<std::size_t>(kWidths[at + 2] - '0'));
}

/// RLE: one segment that begins behind the header, and no byte of it.
std::string FrameIn(std::string_view syntax) {
    if (syntax != kRleUid) return std::string(kPixelBytes, 'x');
    std::string frame(kPixelBytes, '\0');
    frame[0] = 1;
    frame[4] = kPixelBytes;
    return frame;
}

}  // namespace

std::string ImageClaim::Text() const {
    return std::string(rows) + " x " + columns + " x " + samples + " x " + bits + " bits, " +
           frames + " frames, " + vr;
}

DicomBuilder HostileImage(const ImageClaim& claim, std::string_view syntax, int fragments) {
    auto file = DicomBuilder::Part10(syntax.empty() ? kExplicitUid : syntax);
    const auto side = [&](std::uint32_t tag, const char* number) {
        // A word in the byte order of the file.
        if (std::string_view(claim.vr) == "US")
            file.Us(tag, WordOf(number));
        else
            file.Add(tag, claim.vr, ValueIn(claim.vr, number));
    };
    const bool isColour = std::string_view(claim.samples) == "3";
    file.Add(tag::kSOPInstanceUID, "UI", "1.2.3.4 ");
    file.Us(tag::kSamplesPerPixel, WordOf(claim.samples));
    file.Padded(tag::kPhotometricInterpretation, "CS", isColour ? "RGB" : "MONOCHROME2");
    file.Padded(tag::kNumberOfFrames, "IS", claim.frames);
    side(tag::kRows, claim.rows);
    side(tag::kColumns, claim.columns);
    const unsigned bits = WordOf(claim.bits);
    file.Us(tag::kBitsAllocated, bits).Us(tag::kBitsStored, bits).Us(tag::kHighBit, bits - 1);
    file.Us(tag::kPixelRepresentation, 0);
    if (syntax.empty()) return file;
    const std::string frame = FrameIn(syntax);
    const TransferSyntax* row = TransferSyntaxOfUid(syntax);
    if (!row->isEncapsulated) return std::move(file.Add(tag::kPixelData, "OW", frame));
    const Bytes fragment(frame.begin(), frame.end());
    return std::move(
        file.Fragments(std::vector<Bytes>(static_cast<std::size_t>(fragments), fragment)));
}

std::vector<unsigned char> DeflatedZeros(std::size_t count) {
    auto file = DicomBuilder::Part10(kDeflatedUid);
    DicomBuilder dataSet;
    dataSet.Add(tag::kSOPInstanceUID, "UI", "1.2.3.4 ").Header(0x00091001, "OB", 0xFFFFFFF0);
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    std::vector<unsigned char> input = dataSet.Bytes();
    std::vector<unsigned char> output(std::size_t{1} << 16);
    for (std::size_t done = 0; done < count; done += input.size()) {
        stream.next_in = input.data();
        stream.avail_in = static_cast<uInt>(input.size());
        const bool isLast = done + input.size() >= count;
        do {
            stream.next_out = output.data();
            stream.avail_out = static_cast<uInt>(output.size());
            deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
            file.Raw(
                {reinterpret_cast<const char*>(output.data()), output.size() - stream.avail_out});
        } while (stream.avail_out == 0);
        input.assign(std::size_t{1} << 20, 0);
    }
    deflateEnd(&stream);
    return file.Bytes();
}

}  // namespace quorvex::test
