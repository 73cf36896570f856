/// All that a host may hold of the library, and all that it sees of each part.
#pragma once

#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/CxPaletteLUT.h"
#include "quorvex/CxTiledImage.h"
#include "tests/faults/fault_kinds.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/scratch_folder.h"

#include <array>
#include <memory>
#include <optional>
#include <utility>

namespace quorvex::test {

inline constexpr CSize kKindSize = {36, 20};
inline constexpr CSize kView = {80, 60};

/// What an operation hands over, given back in time.
struct GivenBlock {
    GivenBlock() = default;
    GivenBlock(const GivenBlock&) = delete;
    GivenBlock& operator=(const GivenBlock&) = delete;
    ~GivenBlock() { Drop(); }

    void Drop() { delete[] std::exchange(data, nullptr); }
    [[nodiscard]] std::string Look() const {
        if (data == nullptr) return "no block";
        return {data, data + size};
    }

    unsigned char* data = nullptr;
    unsigned long size = 0;
};

/// A text for operations that take it by value: copies of it are made ahead, as a host would.
class GivenText {
public:
    explicit GivenText(const CString& text) : copies_(6, text) {}
    [[nodiscard]] CString Give() {
        CString copy = std::move(copies_.back());
        copies_.pop_back();
        return copy;
    }

private:
    std::vector<CString> copies_;
};

/// Of one kind; every part is empty until an operation or its preparation fills it.
struct Host {
    explicit Host(const Kind& of) : kind(of), object(of.object), path(of.path) {
        object.Open(of.path);
        reader.imageUID = of.name == kStates ? kImage : "";
        for (auto& record : records) {
            record.imageColumns = kKindSize.cx;
            record.imageRows = kKindSize.cy;
        }
    }
    ~Host() { ReleasePages(pages); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const Kind& kind;
    CDcmApp app;
    CDcmObject object;  ///< that of the kind
    GivenText path;
    std::unique_ptr<CDcmObject> made;
    std::unique_ptr<Host> from;  ///< what is copied from
    CDcmItem item;
    CString text;
    int count = 0;
    std::optional<ScratchFolder> folder;

    CxTiledImage tiled;
    CxDcmParser parser;
    GivenBlock block;
    GivenBlock bitmap;
    unsigned long place = 0;
    unsigned long length = 0;
    double location = -1;
    CxPaletteLUT lut{0};

    _IMAGE_PROCESS_PARAM param;
    std::vector<unsigned char> source;
    std::shared_ptr<FileSource> hostSource;
    CxImageProcessor processor;
    unsigned char* pages = nullptr;

    CXDIPP dipp;
    CLData volume;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20 * 4, 5);  ///< of 32 bits
    std::vector<unsigned char> surface = std::vector<unsigned char>(80 * 60 * 4);
    DrawingSurface target{surface.data(), 80, 60, 80 * 4, 4};

    CXWindowing windowing;
    CXImageCreator creator;
    CXGSPSObject reader;
    std::array<Record, 4> records;  ///< a fresh one for each try
    std::size_t latest = 0;         ///< 0: none is read
    Record& Next() { return records[++latest - 1]; }

    CxDcmMaker maker;
    _USER_SETTING_INFO settings;
    std::vector<std::unique_ptr<unsigned char[]>> frames;
};

inline bool IsDone(bool isDone) {
    return isDone;
}
inline bool IsDone(QUORVEX_MESSAGE code) {
    return code == QVM_SUCCESS;
}
inline bool IsDone(int result) {
    return result == kDcmSuccess;
}

/// Shows an object in the view.
inline void Show(Host& s, CDcmObject& object) {
    static_cast<void>(s.dipp.Initialize(&s.app, &object, kView, 0));
}
/// Shows the host's own under the presentation state.
inline void ShowUnderState(Host& s) {
    Show(s, s.object);
    CDcmObject state = KindOf(kStates).object;
    static_cast<void>(s.dipp.ApllyGSPSObject(&s.app, &state));
}

inline std::string TextOf(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}
template <class... Number>
std::string TextOfNumbers(Number... number) {
    return ((std::to_string(number) + ' ') + ...);
}

inline std::string SeenBlock(Host& s) {
    return s.block.Look();
}
inline std::string SeenSurface(Host& s) {
    return TextOf(s.surface);
}

}  // namespace quorvex::test
