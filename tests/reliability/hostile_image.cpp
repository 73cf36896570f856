#include "tests/reliability/hostile_image.h"

#include "tests/reliability/every_way.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <zlib.h>

namespace quorvex::test {
namespace {

constexpr std::size_t kPixelBytes = 64;

/// One segment that begins behind the header, and no byte of it.
std::string RleFrame() {
    std::string frame(kPixelBytes, '\0');
    frame[0] = 1;
    frame[4] = kPixelBytes;
    return frame;
}

std::size_t WidthOf(const std::string& vr) {
    if (vr == "US" || vr == "SS") return 2;
    if (vr == "UL" || vr == "SL" || vr == "AT") return 4;
    return vr == "FD" || vr == "UV" ? 8 : 0;
}

void AddPixels(DicomBuilder& file, bool isEncapsulated, const std::string& content, int fragments) {
    if (!isEncapsulated) {
        file.Add(0x7FE00010, "OW", content);
        return;
    }
    const Bytes fragment(content.begin(), content.end());
    file.Fragments(std::vector<Bytes>(static_cast<std::size_t>(fragments), fragment));
}

}  // namespace

std::string ImageClaim::Text() const {
    return std::string(rows) + " x " + columns + " x " + samples + " x " + bits + " bits, " +
           frames + " frames, " + vr;
}

std::string ValueIn(const std::string& vr, const std::string& number) {
    const std::size_t width = WidthOf(vr);
    if (width == 0) return number + std::string(number.size() % 2, ' ');
    const double real = std::strtod(number.c_str(), nullptr);
    const auto whole = static_cast<std::uint64_t>(std::strtoll(number.c_str(), nullptr, 10));
    std::string value(8, '\0');
    std::memcpy(value.data(), vr == "FD" ? static_cast<const void*>(&real) : &whole, 8);
    return value.substr(0, width);
}

DicomBuilder HostileImage(const ImageClaim& claim, const char* syntax, int fragments) {
    const std::string uid = syntax == nullptr ? kExplicitLittle : syntax;
    auto file = DicomBuilder::Part10(uid);
    const auto word = [&](std::uint32_t tag, const std::string& number) {
        file.Us(tag, static_cast<std::uint16_t>(std::strtol(number.c_str(), nullptr, 10)));
    };
    file.Add(0x00080018, "UI", "1.2.3.4 ");
    word(0x00280002, claim.samples);
    file.Add(0x00280004, "CS", std::atoi(claim.samples) == 3 ? "RGB " : "MONOCHROME2 ");
    file.Add(0x00280008, "IS", ValueIn("IS", claim.frames));
    const bool isWord = std::strcmp(claim.vr, "US") == 0;
    for (const auto& [tag, side] :
         {std::pair{0x00280010U, claim.rows}, {0x00280011U, claim.columns}}) {
        isWord ? word(tag, side)
               : static_cast<void>(file.Add(tag, claim.vr, ValueIn(claim.vr, side)));
    }
    word(0x00280100, claim.bits);
    word(0x00280101, claim.bits);
    word(0x00280102, std::to_string(std::atoi(claim.bits) - 1));
    word(0x00280103, "0");
    if (syntax == nullptr) return file;
    const bool isRle = uid == kRle;
    const bool isEncapsulated = isRle || uid.starts_with("1.2.840.10008.1.2.4");
    AddPixels(file, isEncapsulated, isRle ? RleFrame() : std::string(kPixelBytes, 'x'), fragments);
    return file;
}

std::vector<unsigned char> DeflatedZeros(std::size_t count) {
    auto file = DicomBuilder::Part10(kDeflatedUid);
    DicomBuilder dataSet;
    dataSet.Add(0x00080018, "UI", "1.2.3.4 ").Header(0x00091001, "OB", 0xFFFFFFF0);
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

TemporaryImage::TemporaryImage(const DicomBuilder& file) {
    static int count = 0;
    path_ = ScratchPath("image_" + std::to_string(count++));
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.Bytes().data()),
               static_cast<std::streamsize>(file.Size()));
}

TemporaryImage::~TemporaryImage() {
    std::error_code failure;
    std::filesystem::remove(path_, failure);
}

}  // namespace quorvex::test
