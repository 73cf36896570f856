/// The DICOM object library: data sets, their items, and every read and write of an attribute.
///
/// A tag is one number, group in the high half: (0028,0010) is `tag::kRows` of `Tags.h`. Every
/// operation answers `kDcmSuccess` (1) or a failure; an absent attribute is a failure too, and a
/// normal one. `Attributes.h` has shorter forms of the usual reads.
#pragma once

#include "quorvex/Export.h"
#include "quorvex/TransferSyntaxes.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>

namespace quorvex {

class ObjectState;

/// Result of an operation of the object library: 1 is success, anything else is failure.
using DCMRESULT = int;
inline constexpr DCMRESULT kDcmSuccess = 1;
inline constexpr DCMRESULT kDcmNotFound = 0;  ///< no such attribute, value or item
inline constexpr DCMRESULT kDcmFailure = 2;   ///< unusable content, refused by a callback
inline constexpr DCMRESULT kDcmOutOfMemory = 3;

/// What a callback answers: 1 goes on, anything else (by custom 4011) refuses.
using MC_STATUS = int;
inline constexpr MC_STATUS kMcContinue = 1;
inline constexpr MC_STATUS kMcRefuse = 4011;

/// Value representations.
enum MC_VR : std::int32_t {
    MC_VR_AE = 1,
    MC_VR_AS,
    MC_VR_AT,
    MC_VR_CS,
    MC_VR_DA,
    MC_VR_DS,
    MC_VR_DT,
    MC_VR_IS,
    MC_VR_LO,
    MC_VR_LT,
    MC_VR_PN,
    MC_VR_SH,
    MC_VR_ST,
    MC_VR_TM,
    MC_VR_UC,
    MC_VR_UI,
    MC_VR_UR,
    MC_VR_UT,
    MC_VR_SQ,
    MC_VR_UN,
    MC_VR_OB = 21,
    MC_VR_OF,
    MC_VR_OD,
    MC_VR_OW = 24,
    MC_VR_OL,
    MC_VR_OV,
    MC_VR_FL,
    MC_VR_FD,
    MC_VR_SL,
    MC_VR_SS,
    MC_VR_SV,
    MC_VR_UL,
    MC_VR_US,
    MC_VR_UV,
};

/// The library context. It holds nothing today and is passed through.
class QUORVEX_API CDcmApp {};

/// Supplies a file's bytes in pieces: file name, user data, length out, data out, first-call flag,
/// last-piece flag out. The data stay valid until the next call.
using FileReadCallback = MC_STATUS (*)(const char* fileName, void* user, int* length, void** data,
                                       int first, int* last);
/// The same for a stream: message id, user data, first-call flag, length out, data out, last out.
using StreamReadCallback = MC_STATUS (*)(int messageId, void* user, int first, int* length,
                                         void** data, int* last);
/// Receives one piece of a value: message id, tag, user data, length, data, first flag, last flag.
using ValueReadCallback = MC_STATUS (*)(int messageId, std::uint32_t tag, void* user, int length,
                                        void* data, int first, int last);
/// Supplies one piece of a value: message id, tag, user data, first-call flag, length out, data
/// out, last-piece flag out. Each piece is copied before the next call.
using ValueWriteCallback = MC_STATUS (*)(int messageId, std::uint32_t tag, void* user, int first,
                                         int* length, void** data, int* last);

/// The events of a walk over Pixel Data.
inline constexpr int kPixelFrameEnds = 1;  ///< the pieces that follow belong to the next frame
inline constexpr int kPixelWalkBegins = 2;

/// Receives one piece or event of a walk over Pixel Data that lies in a foreign buffer.
///
///     item, skip and event all 0   the content of the offset table item
///     skip and event both 0        a data piece, `item` counted from 1
///     event not 0                  one of the two events above; no data
using PixelWalkCallback = MC_STATUS (*)(int item, unsigned long length, unsigned char* data,
                                        int skip, int event, void* user);
/// Receives one piece of a walk over an object's own Pixel Data: message id, tag, user data, item
/// (0 the offset table, n + 1 every piece of frame n), length, data, two flags.
using PixelItemCallback = MC_STATUS (*)(int messageId, std::uint32_t tag, void* user, int item,
                                        unsigned long length, unsigned char* data, int first,
                                        int last);

/// One element as a walk over an object shows it.
struct DcmElementView {
    std::uint32_t tag = 0;
    MC_VR vr = MC_VR_UN;
    MC_VR dictionaryVr = MC_VR_UN;        ///< what the standard says; UN for a tag it does not know
    const char* keyword = "";             ///< "PatientName"; empty where the dictionary has none
    int depth = 0;                        ///< 0 in the main data set, 1 in an item of it
    int itemIndex = -1;                   ///< which item of its sequence holds it; -1 at depth 0
    unsigned long length = 0;             ///< bytes of the value as stored here
    unsigned long valueCount = 0;         ///< values, or items of a sequence
    const unsigned char* data = nullptr;  ///< the stored bytes, in the file's byte order
    bool isCut = false;                   ///< the file ended before the value did
};
/// Anything but 1 ends the walk.
using ElementVisitor = MC_STATUS (*)(const DcmElementView& element, void* user);

class CDcmItem;

/// What objects of the library have in common.
class QUORVEX_API CDcmCommon {
public:
    virtual ~CDcmCommon();
    /// A sentence about the last failure on this object; empty when there was none.
    [[nodiscard]] CString GetErrorMessage() const;

protected:
    CDcmCommon();
    CDcmCommon(const CDcmCommon& other);
    CDcmCommon& operator=(const CDcmCommon& other);

private:
    friend class ObjectState;
    std::unique_ptr<ObjectState> state_;
};

/// A data set: every operation on attributes, for objects and items alike.
///
/// Reads convert to the type asked for, whatever the value representation: a number from any
/// numeric form or from text that begins with one, cut towards zero for whole numbers. A number
/// that the type cannot hold is refused as an absent value is, never wrapped; only a 16-bit word of
/// an attribute that may be US or SS keeps its bits in a word of the other sign. `GetValue`
/// gives the first value (or item) and `GetNextValue` each following one, for each attribute on its
/// own, until it answers other than 1. Text values come one at a time, decoded by Specific
/// Character Set and without their padding; `index` is ignored (-1 by custom). A text attribute
/// that is there but empty has one empty value; any other empty attribute has none.
///
/// Copies are deep in effect: a change to one is never seen in another. One object serves one
/// thread at a time, for reads too.
class QUORVEX_API CDcmObjectCommon : public CDcmCommon {
public:
    CDcmObjectCommon();
    CDcmObjectCommon(const CDcmObjectCommon& other);
    CDcmObjectCommon& operator=(const CDcmObjectCommon& other);
    ~CDcmObjectCommon() override;

    DCMRESULT GetValue(std::uint32_t tag, unsigned short& value) const;
    DCMRESULT GetValue(std::uint32_t tag, short& value) const;
    DCMRESULT GetValue(std::uint32_t tag, int& value) const;
    DCMRESULT GetValue(std::uint32_t tag, unsigned int& value) const;
    DCMRESULT GetValue(std::uint32_t tag, long& value) const;
    DCMRESULT GetValue(std::uint32_t tag, float& value) const;
    DCMRESULT GetValue(std::uint32_t tag, double& value) const;
    DCMRESULT GetValue(std::uint32_t tag, CString& value, int index = -1) const;
    /// The first item of a sequence.
    DCMRESULT GetValue(std::uint32_t tag, CDcmItem& item) const;

    DCMRESULT GetNextValue(std::uint32_t tag, unsigned short& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, short& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, int& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, unsigned int& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, long& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, float& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, double& value) const;
    DCMRESULT GetNextValue(std::uint32_t tag, CString& value, int index = -1) const;
    DCMRESULT GetNextValue(std::uint32_t tag, CDcmItem& item) const;

    /// Replaces the attribute by this one value (or item). A number that its VR cannot hold is
    /// refused, and the attribute stays as it was.
    DCMRESULT SetValue(std::uint32_t tag, const CString& value, int index = -1);
    DCMRESULT SetValue(std::uint32_t tag, const char* value);
    DCMRESULT SetValue(std::uint32_t tag, unsigned short value);
    DCMRESULT SetValue(std::uint32_t tag, int value);
    DCMRESULT SetValue(std::uint32_t tag, long value);
    DCMRESULT SetValue(std::uint32_t tag, double value);
    DCMRESULT SetValue(std::uint32_t tag, CDcmItem* item);

    /// Adds a value (or item) behind those that are there.
    DCMRESULT SetNextValue(std::uint32_t tag, const CString& value, int index = -1);
    DCMRESULT SetNextValue(std::uint32_t tag, const char* value);
    DCMRESULT SetNextValue(std::uint32_t tag, unsigned short value);
    DCMRESULT SetNextValue(std::uint32_t tag, int value);
    DCMRESULT SetNextValue(std::uint32_t tag, long value);
    DCMRESULT SetNextValue(std::uint32_t tag, double value);
    DCMRESULT SetNextValue(std::uint32_t tag, CDcmItem* item);

    /// Number of values; 1 for OB, OW and UN, bytes / 2 for LUT Data, items for a sequence.
    DCMRESULT GetValueCount(std::uint32_t tag, int& count) const;
    /// Bytes of one value, `index` counted from 1; the whole value for OB, OW and UN.
    DCMRESULT GetValueLength(std::uint32_t tag, int index, unsigned long& length) const;

    /// Hands the whole value to `callback`, in pieces, in this machine's byte order.
    DCMRESULT GetValue(std::uint32_t tag, void* user, ValueReadCallback callback) const;
    /// Pulls the whole value from `callback` until it says that a piece is the last.
    DCMRESULT SetValue(std::uint32_t tag, void* user, ValueWriteCallback callback);

    DCMRESULT SetValueRepresentation(std::uint32_t tag, MC_VR vr);
    /// Takes the attribute out; success too where it is absent.
    DCMRESULT RemoveValue(std::uint32_t tag);

    /// Visits every element in tag order, those of items behind their sequence.
    DCMRESULT WalkElements(void* user, ElementVisitor visitor) const;

    /// Drops the content.
    virtual DCMRESULT Close();
};

/// An item of a sequence.
class QUORVEX_API CDcmItem : public CDcmObjectCommon {
public:
    /// An empty item. The number is ignored (1 by custom).
    explicit CDcmItem(int local = 1);
    /// Empties the item. The name is ignored.
    DCMRESULT Create(const CString& name);
};

/// A DICOM object: a data set with its file meta information.
class QUORVEX_API CDcmObject : public CDcmObjectCommon {
public:
    CDcmObject();
    CDcmObject(const CDcmObject& other);
    CDcmObject& operator=(const CDcmObject& other);
    ~CDcmObject() override;

    /// Names the object; nothing is read. `ReadFile` later reads the file of that name.
    DCMRESULT Open(const CString& name);
    /// Empties the data set and keeps the name.
    DCMRESULT Create();
    DCMRESULT RenameFile(const CString& name);
    [[nodiscard]] CString GetFileName() const;

    /// Reads the file named by `Open` whole, Pixel Data included. `user` and `callback` may be
    /// null; with a callback the bytes come from it.
    DCMRESULT ReadFile(CDcmApp* app, void* user, FileReadCallback callback);
    /// Reads a Part 10 file from `callback`, up to the first element of the main data set whose tag
    /// is above `stopTag`. Without the marker "DICM" at offset 128 it is a failure.
    ///
    /// `offset` receives where that element begins (or the data end), in bytes of the file; in
    /// inflated bytes for a deflated data set, which is read whole: such an object holds its Pixel
    /// Data itself.
    DCMRESULT ReadFileUptoTag(CDcmApp* app, std::uint32_t stopTag, unsigned long* offset,
                              void* user, FileReadCallback callback);
    /// Reads a bare data set whose first element is of the group of `startTag`, or meta information
    /// (group 0002) and any data set behind it.
    ///
    /// `syntax` says how the data are encoded unless their own bytes or group 0002 say otherwise.
    /// `offset` receives where the reading stopped; on failure, where the data set should have
    /// begun, and the object holds what could be read. `scratch` is ignored and may be null.
    DCMRESULT ReadStream2(std::uint32_t startTag, std::uint32_t stopTag, TRANSFER_SYNTAX syntax,
                          unsigned long* scratch, unsigned long* offset, void* user,
                          StreamReadCallback callback);

    /// Fails for an object without a syntax and for one whose UID is unknown.
    DCMRESULT GetTransferSyntax(TRANSFER_SYNTAX& syntax) const;
    /// Sets the number and Transfer Syntax UID; no value is changed. Fails for a number that
    /// `TransferSyntaxOf` does not know.
    DCMRESULT SetTransferSyntax(TRANSFER_SYNTAX syntax);
    /// Bytes from the start of a Pixel Data element to its value: 8 or 12, by the encoding.
    [[nodiscard]] unsigned long PixelDataHeaderLength() const noexcept;

    /// Walks Pixel Data that lies at `value` in a foreign buffer of `remaining` bytes and is
    /// encoded as this object says.
    ///
    /// Encapsulated data, known by their first item tag, are given fragment by fragment, with one
    /// event for each end of frame: by the extended or basic offset table where one is there and
    /// makes sense, else one fragment for each frame when the counts agree, else by the codec's
    /// start-of-image markers. Native data is given in pieces of `frameSize` bytes, the last one
    /// possibly shorter, its samples in this machine's byte order: decode such a piece as
    /// `kExplicitLittleEndian`, whatever the object's syntax is. That may take a block, put into
    /// `scratch`, which the caller releases with delete[]. Without a `scratch`, or with `reserved`
    /// other than 0, pieces are given as they are stored, so that each one lies in the buffer.
    DCMRESULT GetValueEx(unsigned char** scratch, unsigned long remaining, unsigned char* value,
                         int littleEndian, int reserved, unsigned long frameSize, void* user,
                         PixelWalkCallback callback) const;
    /// Walks the Pixel Data that the object itself holds; native samples in this machine's order.
    DCMRESULT GetValueEx(std::uint32_t tag, void* user, PixelItemCallback callback) const;
    /// Encapsulates one item for each buffer, with a basic offset table, or with the extended
    /// tables where an offset needs more than 32 bits. The bytes are copied.
    DCMRESULT SetValueEx(std::uint32_t tag, int count, const unsigned long* lengths,
                         unsigned char* const* buffers);

    /// Writes a Part 10 file: preamble, meta information made from the data set, data set. Nothing
    /// is left under `path` unless the file is whole.
    DCMRESULT WriteFile(const CString& path) const;
};

}  // namespace quorvex
