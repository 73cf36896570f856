/// A DICOM file or object: its header, and its frames as plain pixels.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/FileSource.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

struct ParserState;

/// One DICOM file or object: its header, and its frames as plain pixels.
///
/// Holds the header in memory, and where the coded frames lie once one was asked for; no pixels.
/// Each frame is read from its file when it is fetched. Between the calls no file is open, so that
/// a host may keep any number of parsers. Different parsers may work in different threads at once;
/// one parser serves one thread at a time. A copy is deep, and owns its header. Initialize() may be
/// repeated; it replaces what was there.
///
/// A file must stay where it is, and what it is, while its frames are wanted: one that was written
/// to, replaced, moved or taken away gives no more frames, but a result code, and never one that is
/// mixed from two states. (Two changes within one tick of the system's clock, some milliseconds,
/// look like one.) Whoever must part with the file earlier asks for it whole, or hands over its
/// bytes. Files of up to 64 KiB, and damaged ones that were searched for a beginning, are held in
/// memory in any case.
class QUORVEX_API CxDcmParser {
public:
    CxDcmParser();
    CxDcmParser(const CxDcmParser& other);
    CxDcmParser& operator=(const CxDcmParser& other);
    virtual ~CxDcmParser();

    /// Chooses the rules for what is opened from now on; established ones at first.
    void SetRules(Rules rules) noexcept;

    /// Reads the header of a file, Part 10 or bare data set: with a window that starts small and
    /// grows as the header asks for more, so that what follows is not read.
    ///
    /// Samples per Pixel of the header is set to what Photometric Interpretation demands: 1 for
    /// MONOCHROME1, MONOCHROME2 and PALETTE COLOR, 3 for any other text, but the 4 of CMYK in JPEG
    /// 2000 stay. By the standard rules Photometric Interpretation itself becomes the term of the
    /// standard that differs from it in letter case, blanks and underscores only, and native
    /// YBR_FULL_422 whose Pixel Data has three samples a pixel becomes YBR_FULL.
    ///
    /// @param path           a relative one counts from where the process stands now, for the
    ///                       frames too
    /// @param readWholeFile  0: the header stops ahead of Pixel Data. Otherwise it holds all, and
    ///                       frames come from it; the file is in memory too, and not asked again
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_INVALID_DCMAPP         no `app`; nothing has changed
    ///         QVM_ERROR_FAILED_TO_READ_FILE    no readable file of more than 132 bytes, one that
    ///                                          changed while it was read, no memory
    ///         QVM_ERROR_FAILED_TO_PARSE_DICOM  nothing that parses, at no position of the file;
    ///                                          GetHeader() may hold what was understood
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CString path, int readWholeFile);

    /// The same of bytes that a host gives: from an archive, an object store, memory.
    ///
    /// @param source  used by this parser and its copies, until they are initialised again or end;
    ///                see FileSource for what it has to promise
    /// @return as above; without a `source` QVM_ERROR_FAILED_TO_READ_FILE
    QUORVEX_MESSAGE Initialize(CDcmApp* app, std::shared_ptr<FileSource> source, int readWholeFile);

    /// Takes an object that the caller has parsed and, where there is one, its file's image.
    ///
    /// @param object           stays the caller's and must outlive this use; its Samples per Pixel
    ///                         is corrected as above
    /// @param fileBytes        copied; null: frames come from the object. Content is accepted with
    ///                         the Part 10 marker or when it begins with group 0002 or 0008, little
    ///                         endian; it may be shorter than 132 bytes
    /// @param pixelDataOffset  where the Pixel Data element's tag lies in `fileBytes`
    /// @return QVM_SUCCESS, or QVM_ERROR_INVALID_DCMAPP: no `app` or no `object` (nothing has
    ///         changed), content not recognised or no memory (the old file is gone)
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CDcmObject* object, unsigned char* fileBytes,
                               unsigned long fileSize, unsigned long pixelDataOffset);

    /// The header, or null; the parser's unless it came from the caller. It may be changed.
    [[nodiscard]] CDcmObject* GetHeader() const noexcept;

    /// 0 without a header, else Number of Frames, or 1 where that is absent.
    [[nodiscard]] int GetFrameCount() const;

    /// What the samples of the frames are. Float and Double Float Pixel Data (DICOM PS3.3 C.7.6.24
    /// and C.7.6.25) count where the object has no Pixel Data beside them.
    [[nodiscard]] SampleType GetSampleType() const;

    /// Decodes one frame.
    ///
    /// Rows run from the top; rows x columns x samples per pixel, least significant byte first;
    /// three samples as R, G, B. What a cut frame does not have is 0. By Bits Allocated a sample is
    ///     8, 16            1 or 2 bytes
    ///     32               4 bytes, of JPEG and JPEG 2000 2
    ///     9 to 31, coded   2 bytes
    ///     1, JPEG 2000     packed as the next ones
    ///     other, native    packed as it is stored (1, 12, 24 or 64 bits), the first one from the
    ///                      lowest bit of the first byte on; zeros fill the block where that is
    ///                      less than 1 byte a sample, or 2 above 8 bits
    /// Float samples have 4 bytes, double ones 8, in this machine's byte order; Bits Allocated must
    /// say so, and one sample a pixel.
    ///
    /// Y, Cb, Cr of native and RLE frames are wrapped around a byte by the established rules, where
    /// their colour is beyond R, G, B, and a colour that is not known is black, as are Y, Cb, Cr
    /// above 8 bits. By the standard rules they are rounded and clamped, YBR_FULL and YBR_FULL_422
    /// of 16 Bits Allocated too, and what else is not known is refused; what the losses of
    /// JPEG 2000 have pushed beyond Bits Stored comes back to the nearest value that they hold.
    ///
    /// @param frameIndex    0 for the first frame
    /// @param data          receives a new block of `size` bytes; yours, release it with delete[];
    ///                      untouched on failure
    /// @param size          receives the frame's length in bytes; may be set on failure
    /// @param sourceLength  0, or how many stored bytes to decode, at most as many as there are
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_FAILED_TO_PARSE_DICOM     no header, or a transfer syntax we cannot read
    ///         QVM_ERROR_INVALID_FRAME_INDEX       below 0, or not below GetFrameCount()
    ///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA  no usable Rows, Columns or Pixel Data, nothing
    ///                                             stored of this frame, a file that has changed
    ///                                             or cannot be read any more, no memory
    ///         QVM_ERROR_FAILED_TO_DECOMPRESS      corrupt frame, or coded without a decoder here
    ///         QVM_ERROR_INVALID_PHOTOMETRIC       by the standard rules: no photometric
    ///                                             interpretation that can be shown
    QUORVEX_MESSAGE GetAFrame(int frameIndex, unsigned char*& data, unsigned long& size,
                              unsigned long sourceLength);

    /// Decodes one frame to one sample in each byte or word.
    ///
    /// The same as GetAFrame() where samples have 8, 16 or 32 Bits Allocated, or are floats. Those
    /// of other depths, which GetAFrame() leaves packed (1 or 12 bits), lie in 1 byte each up to 8
    /// Bits Allocated, in 2 up to 16, else in 4; the bits above Bits Allocated are 0.
    ///
    /// @return as GetAFrame(), or QVM_ERROR_INVALID_BITS_ALLOCATED above 32 other than 64
    QUORVEX_MESSAGE GetAFrameUnpacked(int frameIndex, unsigned char*& data, unsigned long& size);

    /// Decodes one frame no finer than it will be seen: of JPEG 2000 the lowest resolution that the
    /// stream has with at least `least` columns and rows, in a fraction of the time. All else, and
    /// a frame with samples beyond Bits Stored, comes as GetAFrame() gives it.
    ///
    /// @param frameSize  receives the columns and rows that came
    /// The others, and the result, as GetAFrame() has them.
    QUORVEX_MESSAGE GetAReducedFrame(int frameIndex, CSize least, unsigned char*& data,
                                     unsigned long& size, CSize& frameSize);

    /// Decodes a part of one frame, which costs no more than the part where the coding allows it:
    /// of JPEG 2000 the code-blocks that it needs are decoded, of native frames of a file its rows
    /// are read. Of all other codings the whole frame is decoded.
    ///
    /// @param region  columns and rows at that level, from 0 at the upper left; right and bottom
    ///                are the first ones that are left out
    /// @param level   below what GetFrameLevelCount() tells; 0 for the full resolution, and each
    ///                further one halves columns and rows, a started pixel counted whole
    /// @param data    receives width x height pixels without gaps, as GetAFrameUnpacked() gives
    ///                them; yours, release it with delete[]; untouched on failure
    /// @param size    receives the bytes; may be set on failure
    /// @return as GetAFrameUnpacked(), also QVM_ERROR_FAILED_TO_DECOMPRESS for samples beyond Bits
    ///         Stored at another level than 0; or QVM_ERROR_INVALID_OUTPUT_SIZE for a region that
    ///         is empty or beyond the frame, and for a level that is not there
    QUORVEX_MESSAGE GetAFrameRegion(int frameIndex, const CRect& region, int level,
                                    unsigned char*& data, unsigned long& size);

    /// How many resolutions GetAFrameRegion() gives of a frame: of JPEG 2000 those of its stream,
    /// of all else 1, which is told without a look at the frame.
    /// @return as GetAFrame(); on failure `count` stays as it is
    QUORVEX_MESSAGE GetFrameLevelCount(int frameIndex, int& count);

    /// How much of the frame that was fetched last (for a thumbnail, too) is what the file says.
    [[nodiscard]] FrameQuality GetFrameQuality() const noexcept;

    /// Copies `size` stored bytes from `offset` of the file, undecoded; partner of
    /// GetAFrameOffsetSize().
    /// @param data  receives a new block; yours, release it with delete[]; untouched on failure
    /// @return QVM_SUCCESS, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA for a range outside the file,
    ///         no file, one that has changed, or no memory
    QUORVEX_MESSAGE GetAFrame(unsigned long offset, unsigned long size, unsigned char*& data);

    /// Where a frame's stored bytes lie in the file.
    ///
    /// @param offset  receives the place of the first fragment's first byte, past its item header
    /// @param size    receives the sum of the fragments' lengths; the bytes are one range of the
    ///                file only where the frame has one fragment
    /// @return as GetAFrame(); QVM_ERROR_FAILED_TO_GET_PIXEL_DATA also without a file, for
    ///         deflated files, whose frames lie nowhere in the file, and for a frame of bits that
    ///         begins inside a byte
    QUORVEX_MESSAGE GetAFrameOffsetSize(int frameIndex, unsigned long& offset, unsigned long& size);

    /// Colours a frame of palette indices by the header's three look-up tables, plain or segmented.
    ///
    /// By the established rules entries become bytes by a factor of
    ///     255 / 65536  where a table has 16 bits
    ///     255 / 4096   where one has more than 8, and an entry of the three is above 255
    ///     255 / 256    everywhere else
    /// and are cut off. By the standard rules the highest entry that their bits can hold becomes
    /// 255 and the others are rounded; of an index Bits Stored count, with their sign. Indices
    /// outside the tables take the nearest entry by either.
    ///
    /// @param pixels       columns x rows indices: 2 bytes each for `bits` from 16 to 23, else 1
    /// @param bits         bits of a stored pixel; becomes 24
    /// @param samples      becomes 3
    /// @param photometric  becomes "RGB"
    /// @param rgb          receives columns x rows x 3 bytes; yours, release it with delete[]
    /// @param reserved     not read
    /// @return QVM_SUCCESS, or QVM_ERROR_INVALID_PHOTOMETRIC: a colour without a table, no header,
    ///         no memory; nothing has changed
    QUORVEX_MESSAGE GetRGBBufferFromPaletteImage(unsigned char* pixels, unsigned short columns,
                                                 unsigned short rows, unsigned short& bits,
                                                 unsigned short& samples, CString& photometric,
                                                 unsigned char*& rgb, unsigned long reserved);

    /// Makes a small 8-bit image of a frame: one sample for grey, three for colour.
    ///
    /// By the established rules the frame is stretched to the size, and a palette's colours are
    /// those of GetRGBBufferFromPaletteImage(). Of 16-bit grey the stored values are windowed: by
    /// their range, at most 3,000 wide, or by the header's window (center 1200 and width 2400 where
    /// it has none; 255 and 511 for 8 bits stored). MONOCHROME1 is inverted by the header's window
    /// alone.
    ///
    /// By the standard rules the image is what CXDIPP shows of the frame at first: window or VOI
    /// LUT in modality units, polarity, palettes, colours, settings of the frame's own functional
    /// groups; no overlays, no shutter. All of it is fitted into the size with its true pixel
    /// shape, area by area, and centred on black; a side that misses the size by less than a pixel
    /// fills it. JPEG 2000 is decoded no finer than that, as CXDIPP::SetPreview() has it.
    ///
    /// Plain pixels (format 1):
    ///                         established rules           standard rules
    ///     rows                from the top                from the top
    ///     bytes of a row      width x samples             the same, rounded up to a multiple of 4
    ///     samples of colour   red, green, blue            blue, green, red
    ///     biWidth             the width                   the width
    ///     biHeight            the height                  minus the height: a top-down bitmap
    ///     biBitCount          8 x samples                 8 or 24
    ///     biSizeImage         0                           the bytes of the image
    /// So by the standard rules header and pixels are a device-independent bitmap as they stand.
    ///
    /// @param frame             0 for the first frame
    /// @param size              pixels; by the established rules the width is a multiple of 4
    /// @param format            1: plain pixels; 5: JPEG baseline; 7: JPEG lossless
    /// @param useDataRange      0: the window that the image states. Otherwise the range of the
    ///                          data; by the standard rules as CXDIPP::kOverTheValues has it:
    ///                          modality values of the frame without its padding, for up to 8 Bits
    ///                          Stored and colour all that the stored bits can hold
    /// @param image             receives the pixels or the JPEG stream; yours, release it with
    ///                          delete[]
    /// @param imageSize         receives its bytes
    /// @param bitmapHeader      receives null for JPEG, otherwise a header, followed for one sample
    ///                          by 256 grey colour entries; yours, release it as unsigned char[]
    ///                          with delete[]
    /// @param bitmapHeaderSize  receives its bytes: 0, 40, or 1064 with colour entries
    /// @param quality           of JPEG baseline, as CxImageProcessor::CompressFrameData() takes it
    /// @return QVM_SUCCESS, a failure of GetAFrame(), or, with nothing handed over,
    ///         QVM_ERROR_INVALID_OUTPUT_SIZE       below 1; by the established rules a width that
    ///                                             is not a multiple of 4, by the standard ones
    ///                                             more than 4 GiB
    ///         QVM_ERROR_INVALID_TARGET_SYNTAX     a format other than 1, 5 and 7
    ///         QVM_ERROR_INVALID_PHOTOMETRIC       palette colour without its tables
    ///         QVM_ERROR_INVALID_BITS_ALLOCATED    by the established rules: a depth that is
    ///                                             neither 1 bit nor whole bytes
    ///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA  by the standard rules: more than 32 bits a
    ///                                             sample
    ///         or a failure of CxImageProcessor::CompressFrameData(): then both blocks are null and
    ///         their sizes 0
    QUORVEX_MESSAGE MakeThumbNail(int frame, CSize size, QUORVEX_XFERSYNTAX format,
                                  int useDataRange, unsigned char*& image, unsigned long& imageSize,
                                  tagBITMAPINFOHEADER*& bitmapHeader,
                                  unsigned long& bitmapHeaderSize, unsigned short quality);

    /// The place of a slice in its stack: the part of Image Position (Patient) across the slice, by
    /// the orientation (axial where there is none), else Slice Location. Numbers that cannot be
    /// read count as absent.
    /// @return 1, or 0 with `location` untouched: no object, or neither position nor location
    static int GetSliceLocation(CDcmObject* object, double& location);

    /// Frame boundaries that the latest fetch of any parser in the process has passed: a view for
    /// diagnostics, on which no fetch depends.
    [[nodiscard]] static int FrameEventCount() noexcept;

private:
    std::unique_ptr<ParserState> state_;
};

}  // namespace quorvex
