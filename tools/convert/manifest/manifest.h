/// What became of every input, one JSON object a line: the memory of a long conversion.
#pragma once

#include "tools/convert/manifest/digest.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::tools {

/// What became of one input.
enum class Outcome {
    kDone,
    kNotDicom,
    kBad,
    kFailed,
    kCarried,      ///< an object without pixels: written in the target's encoding, or copied
    kKept,         ///< copied as it is, for the reason in `kept`
    kUnsupported,  ///< good, but without a decoder here, or nothing that the target can hold
};
inline constexpr std::size_t kOutcomeCount = 7;

/// Why a file was copied as it is.
enum class Kept { kNo, kUnsupported, kLossy };

/// How an output compares with its source.
enum class Verification { kNone, kOff, kEqual, kLossy, kDifferent };

/// One line of a manifest.
struct ConvertRecord {
    std::string input;
    std::string output;
    std::string target;  ///< as --to has it
    int quality = 0;
    bool leavesLossy = false;  ///< was asked for
    Outcome outcome = Outcome::kFailed;
    Kept kept = Kept::kNo;
    FileDigest source;
    FileDigest result;
    std::string studyUid;
    std::string seriesUid;
    std::string instanceUid;  ///< of the source
    std::string resultUid;    ///< SOP Instance UID of the output
    std::string syntaxIn;     ///< UIDs
    std::string syntaxOut;
    int frames = 0;
    Verification verification = Verification::kNone;
    std::vector<std::string> compared;  ///< "attributes", "stored pixels", "decoded pixels", "file"
    std::vector<std::string> changed;   ///< the keywords of the attributes that differ
    double greatestError = 0.0;         ///< lossy: in stored values
    double psnr = 0.0;                  ///< lossy: dB; infinite where nothing differs
    long milliseconds = 0;
    int code = 0;         ///< a QUORVEX_MESSAGE
    std::string message;  ///< a sentence where it is not done or carried
};

/// One line, the line feed included. Names that are not UTF-8 stand twice: readable, and their
/// bytes in hexadecimal.
std::string AsJsonLine(const ConvertRecord& record);

/// Reads what earlier runs have done and adds what this one does.
///
/// A line is added whole or not at all, also where several processes share the file. What a killed
/// process left of its last line is cut off when the file is opened; lines that cannot be read are
/// skipped, so that files put together from several stay usable. Every failure of the disk is an
/// EnvironmentFailure.
class Manifest {
public:
    explicit Manifest(const std::string& path);
    ~Manifest();
    Manifest(const Manifest&) = delete;
    Manifest& operator=(const Manifest&) = delete;

    /// What is enough to count a line.
    struct Wish {
        bool isVerified = false;        ///< lines of unverified conversions are not
        bool keepsUnsupported = false;  ///< a copy of an unsupported file is
    };
    /// Whether a line says that this conversion is done, the output still has the size that it
    /// gives, and the input is the same: size and time, or else size and digest.
    /// @param wanted  input, output, target, quality and `leavesLossy` count
    [[nodiscard]] bool IsDone(const ConvertRecord& wanted, Wish wish) const;

    void Add(const ConvertRecord& record);

private:
    /// One conversion that is done. A million of them take 64 MB.
    struct Done {
        std::array<char, 15> key{};  ///< of the digest of what was asked for
        bool isVerified : 1 = false;
        bool isUnsupported : 1 = false;   ///< a copy
        std::array<char, 16> content{};   ///< the first digits of the source's digest
        std::int64_t sourceModified = 0;  ///< 0 in lines of earlier releases
        std::uint64_t sourceBytes = 0;
        std::uint64_t resultBytes = 0;
    };
    static std::array<char, 15> KeyOf(const ConvertRecord& wanted);
    static bool IsSameSource(const std::string& path, const Done& done);
    void RefuseWhatIsNone() const;
    void CutTornLine();
    void ReadLines();
    void ReadLine(const std::string& text);

    std::string path_;
    int descriptor_ = -1;
    std::vector<Done> done_;  ///< by key
};

}  // namespace quorvex::tools
