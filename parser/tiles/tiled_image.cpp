#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "parser/tiles/tile_layout.h"
#include "presentation/cielab.h"
#include "quorvex/Attributes.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxTiledImage.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

/// A file, open as long as this is there.
struct TileFile {
    explicit TileFile(std::unique_ptr<CxDcmParser> opened) : parser(std::move(opened)) {
        const CDcmObject& header = *parser->GetHeader();
        tile = {Read<int>(header, tag::kColumns).value_or(0),
                Read<int>(header, tag::kRows).value_or(0)};
    }
    TileFile(const TileFile& other)
        : parser(std::make_unique<CxDcmParser>(*other.parser)), tile(other.tile) {}
    TileFile(TileFile&&) noexcept = default;
    TileFile& operator=(const TileFile&) = delete;
    TileFile& operator=(TileFile&&) noexcept = default;
    ~TileFile() = default;

    std::unique_ptr<CxDcmParser> parser;
    CSize tile;
};

/// Files of one size of the picture.
struct Level {
    int samplesPerPixel = 1;
    int bytesPerSample = 1;
    TileLayout layout;  ///< with its tiles in order
    int halvings = 0;   ///< of a picture that has this resolution in its coded frames
    std::vector<TileFile> files;
    std::array<unsigned char, 3> absent{};

    [[nodiscard]] std::size_t PixelBytes() const noexcept {
        return static_cast<std::size_t>(samplesPerPixel) * static_cast<std::size_t>(bytesPerSample);
    }
};

bool IsBeside(const CDcmObject& header) {
    bool isBeside = false;
    ForEachValue<CString>(header, tag::kImageType, [&](const CString& value) {
        isBeside = isBeside || value == CString("LABEL") || value == CString("OVERVIEW");
    });
    return isBeside;
}

int BytesOfSample(const CDcmObject& header) {
    const int bits = Read<int>(header, tag::kBitsAllocated).value_or(0);
    if (bits < 1 || bits > 32) return 0;
    if (bits <= 8) return 1;
    return bits <= 16 ? 2 : 4;
}

std::array<unsigned char, 3> AbsentPixel(const CDcmObject& header, int samples) {
    constexpr unsigned char kWhite = 255;
    if (samples == 1) return {};
    const auto stated = ReadCieLab(header, tag::kRecommendedAbsentPixelCIELabValue);
    return stated ? RgbOfCieLab(*stated) : std::array{kWhite, kWhite, kWhite};
}

/// The part of a region that lies on one line of a tile, or of its tiles' rows.
struct Overlap {
    int begin = 0;
    int end = 0;
};
Overlap OverlapOf(int first, int length, int regionFirst, int regionEnd) {
    const auto end = std::min<std::int64_t>(std::int64_t{first} + length, regionEnd);
    return {std::max(first, regionFirst), static_cast<int>(end)};
}

/// One region on its way.
class RegionMaker {
public:
    RegionMaker(Level& level, const CRect& region)
        : level_(level), region_(region), pixelBytes_(level.PixelBytes()) {}

    QUORVEX_MESSAGE Make(int opticalPath, int focalPlane, unsigned char*& data,
                         unsigned long& size) {
        const auto width = std::int64_t{region_.right} - region_.left;
        const auto height = std::int64_t{region_.bottom} - region_.top;
        if (width < 1 || height < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        const auto bytes = CheckedProduct(width, height, pixelBytes_);
        if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        rowBytes_ = static_cast<std::size_t>(width) * pixelBytes_;
        block_ = HeapBlock(*bytes);
        Clear();
        const auto result = PutTiles(opticalPath, focalPlane);
        if (result != QVM_SUCCESS) return result;
        size = *bytes;
        data = block_.Release();
        return QVM_SUCCESS;
    }

private:
    void Clear() {
        const std::span<unsigned char> all = block_.Bytes();
        if (pixelBytes_ != level_.absent.size()) {
            std::ranges::fill(all, static_cast<unsigned char>(0));
            return;
        }
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = level_.absent[i % 3];
    }

    /// Tiles are in the order of their rows: those of the rows that the region may touch.
    QUORVEX_MESSAGE PutTiles(int opticalPath, int focalPlane) {
        const CSize tile = level_.layout.tile;
        const auto above = std::max<std::int64_t>(std::int64_t{region_.top} - tile.cy,
                                                  std::numeric_limits<int>::min());
        const Tile from{.opticalPath = opticalPath,
                        .focalPlane = focalPlane,
                        .y = static_cast<int>(above),
                        .x = std::numeric_limits<int>::min()};
        const auto& tiles = level_.layout.tiles;
        for (auto at = std::lower_bound(tiles.begin(), tiles.end(), from);
             at != tiles.end() && at->opticalPath == opticalPath && at->focalPlane == focalPlane &&
             at->y < region_.bottom;
             ++at) {
            const auto result = PutTile(*at);
            if (result != QVM_SUCCESS) return result;
        }
        return QVM_SUCCESS;
    }

    QUORVEX_MESSAGE PutTile(const Tile& tile) {
        const TileFile& file = level_.files[static_cast<std::size_t>(tile.file)];
        const CSize size = level_.halvings == 0 ? file.tile : level_.layout.tile;
        const Overlap x = OverlapOf(tile.x, size.cx, region_.left, region_.right);
        const Overlap y = OverlapOf(tile.y, size.cy, region_.top, region_.bottom);
        if (x.begin >= x.end || y.begin >= y.end) return QVM_SUCCESS;
        const CRect part{x.begin - tile.x, y.begin - tile.y, x.end - tile.x, y.end - tile.y};
        unsigned char* data = nullptr;
        unsigned long bytes = 0;
        const auto result =
            file.parser->GetAFrameRegion(tile.frame, part, level_.halvings, data, bytes);
        const std::unique_ptr<unsigned char[]> pixels(data);
        if (result != QVM_SUCCESS) return result;
        if (CheckedProduct(part.Width(), part.Height(), pixelBytes_) != bytes)
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        const auto lineBytes = static_cast<std::size_t>(part.Width()) * pixelBytes_;
        for (int row = 0; row < part.Height(); ++row) {
            const std::size_t target =
                static_cast<std::size_t>(y.begin - region_.top + row) * rowBytes_ +
                static_cast<std::size_t>(x.begin - region_.left) * pixelBytes_;
            std::memcpy(block_.Data() + target,
                        pixels.get() + static_cast<std::size_t>(row) * lineBytes, lineBytes);
        }
        return QVM_SUCCESS;
    }

    Level& level_;
    CRect region_;
    std::size_t pixelBytes_;
    std::size_t rowBytes_ = 0;
    HeapBlock block_;
};

}  // namespace

struct TiledState {
    std::vector<Level> levels;
    CString frameOfReference;

    [[nodiscard]] const Level* At(int level) const noexcept {
        const bool isThere = level >= 0 && static_cast<std::size_t>(level) < levels.size();
        return isThere ? &levels[static_cast<std::size_t>(level)] : nullptr;
    }

    /// @param file  a path, or a host's source
    template <class File>
    QUORVEX_MESSAGE Open(CDcmApp* app, File file) {
        auto parser = std::make_unique<CxDcmParser>();
        parser->SetRules(Rules::kStandard);
        const auto result = parser->Initialize(app, std::move(file), 0);
        return result == QVM_SUCCESS ? Add(std::move(parser)) : result;
    }

private:
    QUORVEX_MESSAGE Add(std::unique_ptr<CxDcmParser> parser) {
        const CDcmObject& header = *parser->GetHeader();
        auto layout = LayoutOf(header, parser->GetFrameCount());
        Level level;
        level.samplesPerPixel = Read<int>(header, tag::kSamplesPerPixel).value_or(1);
        level.bytesPerSample = BytesOfSample(header);
        if (!layout || layout->tiles.empty() || level.bytesPerSample == 0)
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        if (IsBeside(header) || !FitsTheOthers(header, level))
            return QVM_ERROR_INVALID_IMAGE_FORMAT;
        level.layout = *std::move(layout);
        level.absent = AbsentPixel(header, level.samplesPerPixel);
        auto reference = Read<CString>(header, tag::kFrameOfReferenceUID);
        level.files.emplace_back(std::move(parser));
        auto smaller = levels.empty() ? SmallerOnes(level) : std::vector<Level>();
        levels.reserve(levels.size() + 1 + smaller.size());
        Put(std::move(level));
        std::ranges::move(smaller, std::back_inserter(levels));
        if (reference) frameOfReference = *std::move(reference);
        return QVM_SUCCESS;
    }

    [[nodiscard]] bool FitsTheOthers(const CDcmObject& header, const Level& level) const {
        if (level.samplesPerPixel != 1 && level.samplesPerPixel != 3) return false;
        if (levels.empty()) return true;
        const auto reference = Read<CString>(header, tag::kFrameOfReferenceUID);
        return levels.front().samplesPerPixel == level.samplesPerPixel &&
               levels.front().bytesPerSample == level.bytesPerSample &&
               (!reference || frameOfReference.IsEmpty() || *reference == frameOfReference);
    }

    /// The lower resolutions of a picture that is not tiled: those of its first frame.
    [[nodiscard]] static std::vector<Level> SmallerOnes(const Level& level) {
        std::vector<Level> smaller;
        int count = 1;
        if (level.layout.isTiled ||
            level.files.front().parser->GetFrameLevelCount(0, count) != QVM_SUCCESS)
            return smaller;
        smaller.reserve(static_cast<std::size_t>(count));
        while (static_cast<int>(smaller.size()) + 1 < count) {
            Level half = smaller.empty() ? level : smaller.back();
            const CSize size = half.layout.picture;
            half.layout.picture = half.layout.tile = {(size.cx + 1) / 2, (size.cy + 1) / 2};
            ++half.halvings;
            smaller.push_back(std::move(half));
        }
        return smaller;
    }

    /// Changes nothing where there is no memory. What lower resolutions the first file has in its
    /// frames is no level any more where there are several files.
    void Put(Level level) {
        const auto same = std::ranges::find_if(levels, [&](const Level& other) {
            return other.halvings == 0 && other.layout.picture == level.layout.picture;
        });
        if (same != levels.end()) {
            Join(*same, std::move(level));
        } else {
            Insert(std::move(level));
        }
        std::erase_if(levels, [](const Level& other) { return other.halvings != 0; });
    }

    void Insert(Level level) {
        std::sort(level.layout.tiles.begin(), level.layout.tiles.end());
        const auto pixels = [](const Level& of) {
            return std::int64_t{of.layout.picture.cx} * of.layout.picture.cy;
        };
        const auto place = std::ranges::find_if(
            levels, [&](const Level& other) { return pixels(other) < pixels(level); });
        levels.insert(place, std::move(level));
    }

    static void Join(Level& level, Level more) {
        TileLayout all = level.layout;
        JoinLayouts(all, more.layout, static_cast<int>(level.files.size()));
        level.files.push_back(std::move(more.files.front()));
        level.layout = std::move(all);
    }
};

CxTiledImage::CxTiledImage() : state_(std::make_unique<TiledState>()) {}
CxTiledImage::CxTiledImage(const CxTiledImage& other)
    : state_(std::make_unique<TiledState>(*other.state_)) {}
CxTiledImage& CxTiledImage::operator=(const CxTiledImage& other) {
    if (this != &other) state_ = std::make_unique<TiledState>(*other.state_);
    return *this;
}
CxTiledImage::~CxTiledImage() = default;

QUORVEX_MESSAGE CxTiledImage::Add(CDcmApp* app, CString path) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                  [&] { return state_->Open(app, std::move(path)); });
}

QUORVEX_MESSAGE CxTiledImage::Add(CDcmApp* app, std::shared_ptr<FileSource> source) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                  [&] { return state_->Open(app, std::move(source)); });
}

int CxTiledImage::GetLevelCount() const noexcept {
    return static_cast<int>(state_->levels.size());
}

QUORVEX_MESSAGE CxTiledImage::GetLevel(int level, TiledLevel& description) const noexcept {
    const Level* const there = state_->At(level);
    if (there == nullptr) return QVM_ERROR_INVALID_FRAME_INDEX;
    const TileLayout& layout = there->layout;
    description = {.size = layout.picture,
                   .tile = layout.tile,
                   .samplesPerPixel = there->samplesPerPixel,
                   .bytesPerSample = there->bytesPerSample,
                   .opticalPaths = layout.opticalPaths,
                   .focalPlanes = layout.focalPlanes};
    return QVM_SUCCESS;
}

CDcmObject* CxTiledImage::GetHeader(int level) const noexcept {
    const Level* const there = state_->At(level);
    return there == nullptr ? nullptr : there->files.front().parser->GetHeader();
}

QUORVEX_MESSAGE CxTiledImage::GetRegion(int level, const CRect& region, int opticalPath,
                                        int focalPlane, unsigned char*& data, unsigned long& size) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&]() -> QUORVEX_MESSAGE {
        if (state_->At(level) == nullptr) return QVM_ERROR_INVALID_FRAME_INDEX;
        Level& there = state_->levels[static_cast<std::size_t>(level)];
        const bool isPlane = opticalPath >= 0 && opticalPath < there.layout.opticalPaths &&
                             focalPlane >= 0 && focalPlane < there.layout.focalPlanes;
        if (!isPlane) return QVM_ERROR_INVALID_FRAME_INDEX;
        return RegionMaker(there, region).Make(opticalPath, focalPlane, data, size);
    });
}

}  // namespace quorvex
