/// The JPEG 2000 engine: raw codestreams and streams wrapped as JP2, to pixels and back.
///
/// One parameter block serves one image, in this order: PegasusQuery() (decoding only), then
/// Pegasus() with requests 1, 2 and 4. Nothing is shared between blocks; any number of threads may
/// work at once. No operation throws.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quorvex {

enum PegasusOperation : std::uint32_t {
    kPegasusEncode = 68010,
    kPegasusDecode = 69010,
};

enum PegasusRequest : int {
    kPegasusBegin = 1,  ///< checks the block and takes what the work needs
    kPegasusWork = 2,   ///< decodes to `output`, or codes to `coded`
    kPegasusEnd = 4,    ///< gives back what the first request took
};

inline constexpr int kPegasusDone = 1;
inline constexpr int kPegasusFailed = 2;

class PegasusWork;
struct EndPegasusWork {
    void operator()(PegasusWork* work) const noexcept;
};

/// One image on its way in or out.
struct PegasusParameters {
    PegasusOperation operation = kPegasusDecode;
    std::span<const unsigned char> input;  ///< the coded stream, or the raw pixels

    // ---- decoding: filled by PegasusQuery() ----
    tagBITMAPINFOHEADER bitmap;  ///< width, height and bit count (all components of a pixel)
    int components = 0;          ///< 1, 3 or 4
    int precision = 0;           ///< 1 to 16 bits a sample
    bool streamIsSigned = false;

    /// Three components are luminance and differences of R, G, B: filled by PegasusQuery(), and
    /// asked for when coding.
    bool hasColourTransform = false;

    // ---- the pixels: rows from the top, interleaved samples, no padding ----
    int columns = 0;
    int rows = 0;
    int samples = 1;
    int bytesPerSample = 1;  ///< 1 or 2; samples of more than 8 bits need 2
    /// Decoding: negative values keep their sign in the whole sample; else they keep only the bits
    /// of the stream's precision. Unsigned streams are never given a sign. Encoding: the samples'
    /// form.
    bool isSigned = false;
    bool isBigEndian = false;  ///< 16-bit samples have their higher byte first

    /// Decoding: each halves width and height, and rows and columns are those of what is left. The
    /// query tells these too.
    int discardedLevels = 0;
    /// Decoding: a part of the picture at that resolution, which rows and columns are those of; all
    /// of it where this is empty. The query tells the part's size too.
    CRect region;
    std::span<unsigned char> output;  ///< decoding: exactly the frame's bytes
    /// Decoding: the stream broke off, and its missing parts are guessed.
    bool isIncomplete = false;

    // ---- encoding ----
    int bitDepth = 8;  ///< bits of a sample
    bool isLossless = false;
    bool isHighThroughput = false;     ///< code blocks of ISO/IEC 15444-15, in order of resolution
    std::size_t targetBytes = 0;       ///< lossy: how long the codestream may be; 0 for no limit
    std::vector<unsigned char> coded;  ///< receives the codestream

    std::unique_ptr<PegasusWork, EndPegasusWork> work;  ///< the engine's own
};

/// Counts the users of the engine. The argument is always 0.
void PegasusLibInit(int reserved) noexcept;
void PegasusLibTerm() noexcept;
/// Loads the coder of an operation. @return 0 when it is there, another number for no such coder
int PegasusLoadFromRes(std::uint32_t operation, int version, int reserved1, int reserved2) noexcept;
/// Reads a stream's header. @return non-zero for success, 0 for none or one that is not decoded
int PegasusQuery(PegasusParameters& parameters) noexcept;
/// Does one step. @return kPegasusDone or kPegasusFailed
int Pegasus(PegasusParameters& parameters, int request) noexcept;

}  // namespace quorvex
