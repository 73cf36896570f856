// Pictures in tiles: every pixel of every region, whatever says where the tiles lie. A pixel's
// value tells its place, so that the expectation needs no tiles.
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxTiledImage.h"
#include "tests/support/answers.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/host_source.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace quorvex {
namespace {

using namespace test;

constexpr int kTile = 4;

/// What a pixel of a picture is; planes and paths differ.
unsigned char ValueAt(int x, int y, int path = 0, int plane = 0) {
    return static_cast<unsigned char>(1 + 7 * x + 31 * y + 101 * plane + 57 * path);
}

struct Place {
    int x = 0;  ///< from 0
    int y = 0;
    int path = 0;
    int plane = 0;
};

Bytes TileAt(const Place& place) {
    Bytes tile;
    for (int y = 0; y < kTile; ++y)
        for (int x = 0; x < kTile; ++x)
            tile.push_back(ValueAt(place.x + x, place.y + y, place.path, place.plane));
    return tile;
}

struct Slide {
    int columns = 10;
    int rows = 7;
    const char* organisation = "TILED_FULL";
    std::vector<Place> tiles{};  ///< sparse; full where there are none
    int paths = 1;
    int planes = 1;
    const char* imageType = "DERIVED\\PRIMARY\\VOLUME\\NONE";
    const char* frameOfReference = "2.25.9";
    int firstFrame = 0;  ///< of a concatenation
    int frames = 0;      ///< 0: all
    const char* firstPath = "1";

    [[nodiscard]] std::vector<Place> Places() const {
        if (!tiles.empty()) return tiles;
        std::vector<Place> all;
        for (int path = 0; path < paths; ++path)
            for (int plane = 0; plane < planes; ++plane)
                for (int y = 0; y < rows; y += kTile)
                    for (int x = 0; x < columns; x += kTile) all.push_back({x, y, path, plane});
        const auto first = all.begin() + firstFrame;
        return {first, frames == 0 ? all.end() : first + frames};
    }

    [[nodiscard]] Bytes Content() const {
        const auto places = Places();
        auto file = DicomBuilder::Part10(kExplicitUid);
        file.Padded(tag::kImageType, "CS", imageType).SopUids();
        file.Padded(tag::kFrameOfReferenceUID, "UI", frameOfReference);
        if (firstFrame != 0)
            file.Header(tag::kConcatenationFrameOffsetNumber, "UL", 4)
                .Number(static_cast<unsigned>(firstFrame), 4);
        file.Padded(tag::kDimensionOrganizationType, "CS", organisation);
        const auto count = std::to_string(places.size());
        file.Image({.rows = kTile, .columns = kTile, .bits = 8, .frames = count.c_str()});
        file.Header(tag::kTotalPixelMatrixColumns, "UL", 4)
            .Number(static_cast<unsigned>(columns), 4);
        file.Header(tag::kTotalPixelMatrixRows, "UL", 4).Number(static_cast<unsigned>(rows), 4);
        file.Sequence(tag::kOpticalPathSequence);
        for (int path = 0; path < paths; ++path)
            file.Item().Padded(tag::kOpticalPathIdentifier, "SH", PathName(path)).EndItem();
        file.EndSequence();
        file.Header(tag::kTotalPixelMatrixFocalPlanes, "UL", 4)
            .Number(static_cast<unsigned>(planes), 4);
        if (!tiles.empty()) AddGroups(file);
        Bytes pixels;
        for (const Place& place : places) Append(pixels, TileAt(place));
        return file.Padded(tag::kPixelData, "OB", pixels).Bytes();
    }

private:
    [[nodiscard]] std::string PathName(int path) const {
        return std::to_string(std::stoi(firstPath) + path);
    }
    void AddGroups(DicomBuilder& file) const {
        file.Sequence(tag::kPerFrameFunctionalGroupsSequence);
        for (const Place& place : tiles) {
            file.Item();
            file.Sequence(tag::kOpticalPathIdentificationSequence).Item();
            file.Padded(tag::kOpticalPathIdentifier, "SH", PathName(place.path));
            file.EndItem().EndSequence();
            file.Sequence(tag::kPlanePositionSlideSequence).Item();
            // The highest plane comes first, as a microscope may take them.
            file.Padded(tag::kZOffsetInSlideCoordinateSystem, "DS", std::to_string(place.plane));
            file.Header(tag::kColumnPositionInTotalImagePixelMatrix, "SL", 4)
                .Number(static_cast<std::uint32_t>(place.x + 1), 4);
            file.Header(tag::kRowPositionInTotalImagePixelMatrix, "SL", 4)
                .Number(static_cast<std::uint32_t>(place.y + 1), 4);
            file.EndItem().EndSequence().EndItem();
        }
        file.EndSequence();
    }
};

struct Opened {
    explicit Opened(std::initializer_list<Slide> slides) {
        for (const Slide& slide : slides) EXPECT_EQ(Add(slide.Content()), QVM_SUCCESS);
    }
    QUORVEX_MESSAGE Add(const Bytes& content) {
        files.push_back(std::make_unique<TemporaryFile>(content));
        return image.Add(&app, CString(files.back()->Path()));
    }
    std::pair<QUORVEX_MESSAGE, Bytes> Region(int level, const CRect& region, int path = 0,
                                             int plane = 0) {
        unsigned char* data = nullptr;
        unsigned long size = 0;
        const auto result = image.GetRegion(level, region, path, plane, data, size);
        const std::unique_ptr<unsigned char[]> owner(data);
        return {result, result == QVM_SUCCESS ? Bytes(data, data + size) : Bytes()};
    }

    CDcmApp app;
    CxTiledImage image;
    std::vector<std::unique_ptr<TemporaryFile>> files;
};

/// Pixels of a picture whose every tile is there; padding of its last tiles shows beyond it.
Bytes Expected(const CRect& region, const std::vector<Place>& places, int path = 0, int plane = 0) {
    Bytes pixels;
    for (int y = region.top; y < region.bottom; ++y) {
        for (int x = region.left; x < region.right; ++x) {
            const bool isThere = std::ranges::any_of(places, [&](const Place& place) {
                return place.path == path && place.plane == plane && x >= place.x &&
                       x < place.x + kTile && y >= place.y && y < place.y + kTile;
            });
            pixels.push_back(isThere ? ValueAt(x, y, path, plane) : 0);
        }
    }
    return pixels;
}

constexpr CRect kRegions[] = {{0, 0, 10, 7}, {0, 0, 1, 1},   {9, 6, 10, 7},  {3, 2, 9, 6},
                              {4, 4, 8, 7},  {-3, -2, 2, 1}, {8, 5, 14, 11}, {40, 40, 42, 41}};

TEST(TiledImage, RegionsOfFullPicturesAreWhatTheirTilesAre) {
    const Slide slide{.paths = 2, .planes = 3};
    Opened opened{slide};
    TiledLevel level;
    ASSERT_EQ(opened.image.GetLevel(0, level), QVM_SUCCESS);
    EXPECT_EQ(level.size, (CSize{10, 7}));
    EXPECT_EQ(level.tile, (CSize{kTile, kTile}));
    EXPECT_EQ(level.opticalPaths, 2);
    EXPECT_EQ(level.focalPlanes, 3);
    for (const CRect& region : kRegions)
        for (int path = 0; path < 2; ++path)
            for (int plane = 0; plane < 3; ++plane)
                EXPECT_EQ(opened.Region(0, region, path, plane),
                          std::pair(QVM_SUCCESS, Expected(region, slide.Places(), path, plane)))
                    << region.left << ' ' << region.top << ' ' << path << plane;
}

TEST(TiledImage, SparseTilesLieWhereTheySay) {
    // Not in order, not on a grid, over each other's edge and beyond the picture.
    const std::vector<Place> places = {{6, 4, 0, 1}, {0, 0, 0, 1}, {-2, 3, 0, 0},
                                       {5, 1, 0, 0}, {9, 6, 1, 0}, {90, 90, 0, 0}};
    Opened opened{Slide{.organisation = "TILED_SPARSE", .tiles = places, .paths = 2}};
    for (const CRect& region : kRegions)
        for (int path = 0; path < 2; ++path)
            for (int plane = 0; plane < 2; ++plane) {
                auto there = places;
                there.pop_back();
                EXPECT_EQ(opened.Region(0, region, path, plane),
                          std::pair(QVM_SUCCESS, Expected(region, there, path, plane)))
                    << region.left << ' ' << region.top << ' ' << path << plane;
            }
}

TEST(TiledImage, FilesMakeOnePicture) {
    const Slide whole{.paths = 1};
    const int all = static_cast<int>(whole.Places().size());
    const Slide small{.columns = 5, .rows = 3};
    const std::vector<Place> otherPath = {{4, 0}};
    Opened opened{small, Slide{.frames = 2}, Slide{.firstFrame = 2, .frames = all - 2},
                  Slide{.organisation = "TILED_SPARSE", .tiles = otherPath, .firstPath = "2"}};
    ASSERT_EQ(opened.image.GetLevelCount(), 2);
    const CRect region{2, 1, 9, 7};
    EXPECT_EQ(opened.Region(0, region).second, Expected(region, whole.Places()));
    EXPECT_EQ(opened.Region(0, region, 1).second, Expected(region, otherPath))
        << "an optical path of its own";
    EXPECT_EQ(opened.Region(1, region).second, Expected(region, small.Places()));
    CxTiledImage copy = opened.image;
    opened.image = CxTiledImage();
    EXPECT_EQ(opened.Region(0, region).first, QVM_ERROR_INVALID_FRAME_INDEX);
    std::swap(copy, opened.image);
    EXPECT_EQ(opened.Region(1, region).second, Expected(region, small.Places()));
}

TEST(TiledImage, OfASourceOnlyTilesThatARegionTouchesAreAskedFor) {
    const Slide slide{.columns = 400, .rows = 400};
    const auto source = std::make_shared<HostSource>(slide.Content());
    Opened opened{};
    ASSERT_EQ(opened.image.Add(&opened.app, source), QVM_SUCCESS);
    EXPECT_LT(source->taken, source->bytes.size());
    const CRect region{6, 9, 9, 12};  // of two tiles
    source->taken = 0;
    EXPECT_EQ(opened.Region(0, region).second, Expected(region, slide.Places()));
    EXPECT_EQ(source->taken, 2U * 3 * kTile) << "their rows";
    source->reads = 0;
    source->failAt = 2;
    EXPECT_EQ(opened.Region(0, region).first, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    source->failAt = 0;
    EXPECT_EQ(opened.Region(0, region).second, Expected(region, slide.Places()));
    EXPECT_EQ(opened.image.Add(&opened.app, std::shared_ptr<FileSource>()),
              QVM_ERROR_FAILED_TO_READ_FILE);
}

TEST(TiledImage, WhatIsNoPartOfThePictureIsRefused) {
    Opened opened{Slide{}};
    const Slide none[] = {{.imageType = "DERIVED\\PRIMARY\\LABEL\\NONE"},
                          {.imageType = "DERIVED\\PRIMARY\\OVERVIEW\\NONE"},
                          {.frameOfReference = "2.25.10"}};
    for (const Slide& slide : none)
        EXPECT_EQ(opened.Add(slide.Content()), QVM_ERROR_INVALID_IMAGE_FORMAT);
    EXPECT_EQ(opened.Add(Slide{.columns = 0x7FFFFFFF, .rows = -1}.Content()),
              QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    EXPECT_EQ(opened.Add(Bytes(400, 1)), QVM_ERROR_FAILED_TO_PARSE_DICOM);
    const auto claimed = ImageFile(kExplicitUid, {.frames = "2147483647"});
    EXPECT_EQ(opened.Add(claimed.Bytes()), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)
        << "before a place is made for each of them";
    EXPECT_EQ(opened.image.GetLevelCount(), 1);
    for (const CRect& region : {CRect{0, 0, 0, 4}, CRect{5, 0, 4, 4},
                                CRect{-0x7FFFFFFF, -0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}})
        EXPECT_EQ(opened.Region(0, region).first, QVM_ERROR_INVALID_OUTPUT_SIZE);
    EXPECT_EQ(opened.Region(0, {0, 0, 1, 1}, 1).first, QVM_ERROR_INVALID_FRAME_INDEX);
    EXPECT_EQ(opened.Region(0, {0, 0, 1, 1}, 0, -1).first, QVM_ERROR_INVALID_FRAME_INDEX);
    EXPECT_EQ(opened.Region(0, {0, 0, 1, 1}, 0, 0).second, Bytes{ValueAt(0, 0)});
}

TEST(TiledImage, FramesOfPlainImagesArePlanes) {
    auto plain = ImageFile(kExplicitUid, {.rows = 2, .columns = 3, .frames = "2"});
    Bytes pixels;
    for (unsigned char i = 0; i < 24; ++i) pixels.push_back(i);
    Opened opened{};
    ASSERT_EQ(opened.Add(plain.Padded(tag::kPixelData, "OW", pixels).Bytes()), QVM_SUCCESS);
    EXPECT_EQ(opened.Region(0, {1, 1, 3, 2}, 0, 1).second, (Bytes{20, 21, 22, 23}));
    EXPECT_EQ(opened.Region(0, {1, 1, 3, 2}, 0, 2).first, QVM_ERROR_INVALID_FRAME_INDEX);
}

TEST(TiledImage, ResolutionsOfAPlainFrameAreLevelsOfItsOwn) {
    Opened opened{};
    const auto add = [&](const char* name) {
        return opened.image.Add(&opened.app, CString(std::string(QUORVEX_SOURCE_DIR) + name));
    };
    const ScratchFolder folder;
    CxDcmParser whole;
    ASSERT_EQ(whole.Initialize(&opened.app, CString(QUORVEX_SOURCE_DIR "/samples/ct.dcm"), 1),
              QVM_SUCCESS);
    CDcmObject& object = *whole.GetHeader();
    ASSERT_EQ(ConvertTo(kXferJpeg2000Lossless, object).Code(), QVM_SUCCESS);
    const std::string path = folder.Path("ct.dcm");
    ASSERT_EQ(object.WriteFile(CString(path)), kDcmSuccess);
    ASSERT_EQ(opened.image.Add(&opened.app, CString(path)), QVM_SUCCESS);
    ASSERT_GT(opened.image.GetLevelCount(), 3);
    TiledLevel level;
    ASSERT_EQ(opened.image.GetLevel(2, level), QVM_SUCCESS);
    EXPECT_EQ(level.size, (CSize{128, 128}));
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&opened.app, CString(path), 0), QVM_SUCCESS);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const CRect region{30, 40, 62, 47};
    ASSERT_EQ(parser.GetAFrameRegion(0, region, 2, data, size), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> owner(data);
    EXPECT_EQ(opened.Region(2, region).second, Bytes(data, data + size));
    ASSERT_EQ(add("/samples/ct.dcm"), QVM_SUCCESS);
    EXPECT_EQ(opened.image.GetLevelCount(), 1) << "files are the levels of several files";
}

}  // namespace
}  // namespace quorvex
