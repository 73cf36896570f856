/// What an object says about its image, in one place.
#pragma once

#include "quorvex/Attributes.h"
#include "quorvex/CxDcmParser.h"
#include "tools/info/identity/object_identity.h"
#include "tools/info/named_facts.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

/// Every field is empty where the object does not say.
struct ImageSummary {
    ObjectIdentity identity;
    std::string syntax;  ///< name of the transfer syntax, or its UID where it has no name here
    bool bigEndian = false;
    int frames = 0;  ///< 0 without an image
    std::optional<int> columns, rows, samples, bitsAllocated, bitsStored;
    bool isSigned = false;
    SampleType sampleType = SampleType::kInteger;
    std::string photometric;
    std::vector<ValuePair<double>> windows;    ///< centre, width
    std::optional<ValuePair<double>> rescale;  ///< slope, intercept
    /// A look-up table: entries, first mapped value, bits an entry.
    struct Table {
        int entries;
        int first;
        int bits;
    };
    std::vector<Table> voiTables;
    std::vector<Table> palette;  ///< red, green, blue; empty where one is missing
    bool isPaletteSegmented = false;
    /// One overlay plane, placed by rows and columns counted from 1.
    struct Overlay {
        unsigned group;
        int columns, rows;
        int originColumn, originRow;
        std::optional<int> bit;  ///< of the pixel data, where the plane lies there
        std::string description;
    };
    std::vector<Overlay> overlays;
    PresentationFacts presentation;
    std::optional<double> sliceLocation;  ///< mm across the slices
    std::string_view preamble;            ///< as PreambleKind answers
};

ImageSummary Summarise(CxDcmParser& parser, const std::string& path);

}  // namespace quorvex::tools
