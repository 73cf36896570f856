/// What became of every input, one JSON object a line: the memory of a long conversion.
#pragma once

#include "tools/convert/digest.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::tools {

/// What became of one input.
enum class Outcome { kDone, kNotDicom, kBad, kFailed };

/// How an output compares with its source.
enum class Verification { kNone, kOff, kEqual, kLossy, kDifferent };

/// One line of a manifest.
struct ConvertRecord {
    std::string input;
    std::string output;
    std::string target;  ///< as --to has it
    int quality = 0;
    Outcome outcome = Outcome::kFailed;
    FileDigest source;
    FileDigest result;
    std::string studyUid;
    std::string seriesUid;
    std::string instanceUid;
    std::string syntaxIn;  ///< UIDs
    std::string syntaxOut;
    int frames = 0;
    Verification verification = Verification::kNone;
    double greatestError = 0.0;  ///< lossy: in stored values
    double psnr = 0.0;           ///< lossy: dB; infinite where nothing differs
    long milliseconds = 0;
    int code = 0;         ///< a QUORVEX_MESSAGE
    std::string message;  ///< a sentence where the outcome is not kDone
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

    /// Whether a line says that this conversion is done, and input and output still have the sizes
    /// that it gives.
    /// @param wanted      input, output, target and quality count
    /// @param isVerified  whether lines of unverified conversions are not enough
    [[nodiscard]] bool IsDone(const ConvertRecord& wanted, bool isVerified) const;

    void Add(const ConvertRecord& record);

private:
    /// One conversion that is done. A million of them take 32 MB.
    struct Done {
        std::array<char, 15> key{};  ///< of the digest of what was asked for
        bool isVerified = false;
        std::uint64_t sourceBytes = 0;
        std::uint64_t resultBytes = 0;
    };
    static std::array<char, 15> KeyOf(const ConvertRecord& wanted);
    void CutTornLine();
    void ReadLines();
    void ReadLine(const std::string& text);

    std::string path_;
    int descriptor_ = -1;
    std::vector<Done> done_;  ///< by key
};

}  // namespace quorvex::tools
