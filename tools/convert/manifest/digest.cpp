#include "tools/convert/manifest/digest.h"

#include "tools/json.h"
#include "tools/report.h"

#include <array>
#include <cstdio>
#include <memory>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <vector>

namespace quorvex::tools {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 20;

/// One SHA-256 in the making.
class Sha256 {
public:
    Sha256() : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
        Require(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
    }
    void Add(const void* data, std::size_t size) {
        Require(EVP_DigestUpdate(context_.get(), data, size) == 1);
    }
    std::string Finish() {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned size = 0;
        Require(EVP_DigestFinal_ex(context_.get(), digest.data(), &size) == 1);
        return {digest.begin(), digest.begin() + size};
    }

private:
    static void Require(bool isDone) {
        if (!isDone) throw EnvironmentFailure("the SHA-256 could not be computed");
    }
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

}  // namespace

FileDigest LengthOfFile(const std::string& path) {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) throw SystemFailure(path);
    return {.sha256 = {},
            .bytes = static_cast<std::uint64_t>(facts.st_size),
            .modified = facts.st_mtim.tv_sec * kNanoseconds + facts.st_mtim.tv_nsec};
}

FileDigest DigestOfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) throw SystemFailure(path);
    Sha256 sha;
    FileDigest digest = LengthOfFile(path);
    digest.bytes = 0;
    std::vector<unsigned char> piece(kPiece);
    while (const auto size = std::fread(piece.data(), 1, piece.size(), file.get())) {
        sha.Add(piece.data(), size);
        digest.bytes += size;
    }
    if (std::ferror(file.get()) != 0) throw SystemFailure(path);
    digest.sha256 = Hexadecimal(sha.Finish());
    return digest;
}

std::string DigestOfText(std::string_view text) {
    Sha256 sha;
    sha.Add(text.data(), text.size());
    return sha.Finish();
}

}  // namespace quorvex::tools
