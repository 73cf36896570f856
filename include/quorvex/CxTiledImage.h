/// A picture that is stored in tiles, as whole-slide objects are: any part of it, at any level.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/FileSource.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

struct TiledState;

/// One level of a tiled picture.
struct TiledLevel {
    CSize size;               ///< columns and rows of the whole picture
    CSize tile;               ///< columns and rows of its largest tile
    int samplesPerPixel = 1;  ///< 1, or 3: red, green, blue by pixel
    int bytesPerSample = 1;   ///< 1, 2 or 4
    int opticalPaths = 1;
    int focalPlanes = 1;  ///< of an object that is not tiled: its frames
};

/// A whole-slide picture out of the files that have it (DICOM PS3.3 C.8.12.4): a file may be a
/// level of its own, or a part of one. Nothing but the tiles that a region touches is read.
///
/// Tiles lie where TILED_FULL puts them by their number, else where the frames say it themselves
/// (TILED_SPARSE). A file without a total pixel matrix is a picture of one tile, each of its frames
/// a plane; where it is the only file, and its frames are JPEG 2000, their lower resolutions are
/// levels too.
///
/// Headers are held in memory, and no pixels. Different objects may work in different threads at
/// once; one serves one thread at a time. A copy is deep: it works beside the first one.
class QUORVEX_API CxTiledImage {
public:
    CxTiledImage();
    CxTiledImage(const CxTiledImage& other);
    CxTiledImage& operator=(const CxTiledImage& other);
    ~CxTiledImage();

    /// Adds a file. Files of one size of the picture are one level together: the parts of a
    /// concatenation, or optical paths in files of their own. Levels are put in order whenever a
    /// file is added, the largest one first.
    ///
    /// @return QVM_SUCCESS, or, with nothing added,
    ///         what CxDcmParser::Initialize() answers
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT      no picture of the slide itself (Image Type has
    ///                                             LABEL or OVERVIEW), another Frame of Reference
    ///                                             than the files ahead of it, other samples than
    ///                                             they have
    ///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA  no size, no tiles, no memory
    QUORVEX_MESSAGE Add(CDcmApp* app, CString path);
    /// The same of a file that a host gives: from an archive, an object store, memory.
    /// @param source  used by this object and its copies as long as they have the file; a region
    ///                asks it for the tiles that it touches, one at a time
    QUORVEX_MESSAGE Add(CDcmApp* app, std::shared_ptr<FileSource> source);

    [[nodiscard]] int GetLevelCount() const noexcept;
    /// @param level  0 for the largest
    /// @return QVM_SUCCESS, or QVM_ERROR_INVALID_FRAME_INDEX for a level that is not there
    QUORVEX_MESSAGE GetLevel(int level, TiledLevel& description) const noexcept;
    /// The header of the first file of a level, as CxDcmParser has it; null for a level that is not
    /// there. It is this object's, until a file is added.
    [[nodiscard]] CDcmObject* GetHeader(int level) const noexcept;

    /// Makes a part of the picture out of the tiles that it touches, each decoded as
    /// CxDcmParser::GetAFrame() does by the standard rules.
    ///
    /// Where there is no tile, outside of the picture too, pixels have the Recommended Absent Pixel
    /// CIELab Value of the level, or without one: white in colour, 0 in grey.
    ///
    /// @param level        0 for the largest
    /// @param region       columns and rows of that level, from 0 at the upper left; right and
    ///                     bottom are the first ones that are left out
    /// @param opticalPath  0 for the first one of the Optical Path Sequence
    /// @param focalPlane   0 for the lowest
    /// @param data         receives width x height pixels without gaps, rows from the top; yours,
    ///                     release it with delete[]; untouched on failure
    /// @param size         receives the bytes
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_INVALID_FRAME_INDEX  no such level, optical path or plane
    ///         QVM_ERROR_INVALID_OUTPUT_SIZE  a region without extent, or above 4 GiB
    ///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA  no memory, a tile of another size than
    ///                                             its header says
    ///         and what GetAFrame() answers of a tile
    QUORVEX_MESSAGE GetRegion(int level, const CRect& region, int opticalPath, int focalPlane,
                              unsigned char*& data, unsigned long& size);

private:
    std::unique_ptr<TiledState> state_;
};

}  // namespace quorvex
