/// QuorvexU for C, and for every language that calls C: opaque handles over the classes of the
/// library.
///
/// What holds for every function:
///     - it answers a `quorvex_result`, 0 for success, unless it says otherwise; results that come
///       through pointers are untouched after a failure unless it says otherwise;
///     - no exception and no signal leaves it; a null handle or a null pointer that is not allowed
///       is QUORVEX_ERROR_NULL_SOURCE;
///     - text is UTF-8 and ends in a zero byte; a path may be any bytes without one. Text that is
///       handed in is copied;
///     - structures begin with their size, set by the caller (`struct_size = sizeof` it), so that
///       later releases may add fields behind the present ones: fields that a caller does not know
///       are taken as 0 and not written;
///     - frames, rows and columns count from 0; rows run from the top;
///     - different handles may be used in different threads at once, one handle by one thread at a
///       time. quorvex_context_cancel() and quorvex_context_resume() may be called by any thread at
///       any time. There is no global state, and the library starts no threads.
#ifndef QUORVEX_QUORVEX_H
#define QUORVEX_QUORVEX_H

#include "quorvex/Export.h"

// NOLINTBEGIN: C has neither `using` nor scoped constants
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Results ---------------------------------------------------------------------------------- */

/// What a function answers. The numbers never change.
typedef int32_t quorvex_result;

enum {
    QUORVEX_SUCCESS = 0,
    QUORVEX_ERROR_FAILED_TO_DECOMPRESS = 1,
    QUORVEX_ERROR_FAILED_TO_COMPRESS = 2,
    QUORVEX_ERROR_CANNOT_OPEN_STREAM = 3,
    QUORVEX_ERROR_NOT_COLOR_IMAGE = 7,
    QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA = 8,
    QUORVEX_ERROR_FAILED_TO_GET_PIXEL_DATA = 9,
    QUORVEX_ERROR_FAILED_TO_READ_FILE = 10,
    QUORVEX_ERROR_FAILED_TO_PARSE_DICOM = 11,
    QUORVEX_ERROR_INVALID_JPEG_STREAM = 12,
    QUORVEX_ERROR_INVALID_JPEG_LAYOUT = 13,
    QUORVEX_ERROR_INVALID_JPEG_PRECISION = 14,
    QUORVEX_ERROR_INVALID_PIXEL_REPRESENTATION = 15,
    QUORVEX_ERROR_INVALID_HIGH_BIT = 16,
    QUORVEX_ERROR_INVALID_BITS_STORED = 17,
    QUORVEX_ERROR_INVALID_BITS_ALLOCATED = 18,
    QUORVEX_ERROR_INVALID_COLUMNS = 19,
    QUORVEX_ERROR_INVALID_ROWS = 20,
    QUORVEX_ERROR_INVALID_PHOTOMETRIC = 21,
    QUORVEX_ERROR_INVALID_PLANAR_CONFIGURATION = 22,
    QUORVEX_ERROR_INVALID_SAMPLES_PER_PIXEL = 23,
    QUORVEX_ERROR_INVALID_TRANSFER_SYNTAX = 24,
    QUORVEX_ERROR_INVALID_DCMAPP = 25,
    QUORVEX_ERROR_INVALID_MAKER_PARAM = 26,
    QUORVEX_ERROR_NO_PIXEL_INFO = 28,
    QUORVEX_ERROR_INVALID_IMAGE_FORMAT = 29,
    QUORVEX_ERROR_INVALID_OUTPUT_SIZE = 32,
    QUORVEX_ERROR_NULL_SOURCE = 33,
    QUORVEX_ERROR_INVALID_FRAME_INDEX = 34,
    QUORVEX_ERROR_NO_SOURCE_OBJECT = 35,
    QUORVEX_ERROR_INVALID_SOURCE_SYNTAX = 36,
    QUORVEX_ERROR_INVALID_TARGET_SYNTAX = 37,
    QUORVEX_FRAME_COPIED = 38,  ///< success: nothing had to be decoded or coded
    QUORVEX_ERROR_NO_IMAGE = 39,
    QUORVEX_ERROR_CANCELLED = 40
};

/// One plain English sentence for a person, without a full stop. It lives as long as the library.
QUORVEX_API const char* quorvex_result_sentence(quorvex_result result);
/// The name of a result ("QVM_ERROR_NO_IMAGE"), "QVM_UNKNOWN" for a number without one. As above.
QUORVEX_API const char* quorvex_result_name(quorvex_result result);

/// The version of the library, such as "0.3.0". It lives as long as the library.
QUORVEX_API const char* quorvex_version(void);

/// A sentence about the limit that a call in this thread met last, empty where it met none, since
/// quorvex_forget_limit(): why a call failed that says so by its own code. As above.
QUORVEX_API const char* quorvex_limit_sentence(void);
QUORVEX_API void quorvex_forget_limit(void);

/* --- Context ---------------------------------------------------------------------------------- */

/// What the handles that are made with it have in common: rules, and being called off.
typedef struct quorvex_context quorvex_context;

enum {
    QUORVEX_RULES_STANDARD = 0,    ///< pictures and objects as the DICOM standard defines them
    QUORVEX_RULES_ESTABLISHED = 1  ///< as this library's oldest hosts know them
};

/// @param context  receives a new one, with the standard rules; yours: quorvex_context_free()
QUORVEX_API quorvex_result quorvex_context_new(quorvex_context** context);
/// Null is ignored. What was made with it goes on.
QUORVEX_API void quorvex_context_free(quorvex_context* context);
/// Chooses the rules for what is made with it from now on.
/// @return QUORVEX_ERROR_INVALID_IMAGE_FORMAT for an unknown number
QUORVEX_API quorvex_result quorvex_context_set_rules(quorvex_context* context, int32_t rules);
/// Calls off what runs with this context's handles, and what will, until quorvex_context_resume():
/// it answers QUORVEX_ERROR_CANCELLED. For any thread.
QUORVEX_API void quorvex_context_cancel(quorvex_context* context);
QUORVEX_API void quorvex_context_resume(quorvex_context* context);

/* --- Images ----------------------------------------------------------------------------------- */

/// A DICOM file or object: its header in memory, its frames read when they are asked for.
typedef struct quorvex_image quorvex_image;

/// Bytes that a host gives: from an archive, an object store, an archive file.
typedef struct quorvex_source {
    size_t struct_size;
    void* user;  ///< handed to the functions
    /// Bytes of the file. They, and their number, must stay what they are.
    uint64_t (*size)(void* user);
    /// Fills `length` bytes from `offset` on, always inside the size. Answers 1, or 0 where that
    /// cannot be done. Copies of an image may call it from several threads at once.
    int32_t (*read_at)(void* user, uint64_t offset, void* bytes, size_t length);
    /// Called once, when nothing needs the source any more, or when it could not be opened; may be
    /// null.
    void (*release)(void* user);
} quorvex_source;

/// Opens a file. It must stay where it is, and what it is, while frames are wanted; a file that
/// changes gives failures, never mixed frames.
/// @param image  receives a new one, yours: quorvex_image_free()
/// @return QUORVEX_ERROR_FAILED_TO_READ_FILE, or QUORVEX_ERROR_FAILED_TO_PARSE_DICOM
QUORVEX_API quorvex_result quorvex_open_file(quorvex_context* context, const char* path,
                                             quorvex_image** image);
/// The same of bytes in memory, which stay yours and must outlive the image, its copies and the
/// views that show it.
QUORVEX_API quorvex_result quorvex_open_memory(quorvex_context* context, const void* bytes,
                                               size_t length, quorvex_image** image);
/// The same of a host's source, whose functions are copied.
QUORVEX_API quorvex_result quorvex_open_source(quorvex_context* context,
                                               const quorvex_source* source, quorvex_image** image);
/// A second handle of the same file, for another thread.
QUORVEX_API quorvex_result quorvex_image_copy(const quorvex_image* image, quorvex_image** copy);
/// Null is ignored.
QUORVEX_API void quorvex_image_free(quorvex_image* image);

enum {
    QUORVEX_SAMPLES_INTEGER = 0,
    QUORVEX_SAMPLES_FLOAT32 = 1,  ///< IEEE 754, this machine's byte order
    QUORVEX_SAMPLES_FLOAT64 = 2
};

/// What an image is, and how one of its frames lies in memory.
typedef struct quorvex_facts {
    size_t struct_size;
    int32_t frames;
    int32_t rows;
    int32_t columns;
    int32_t samples;       ///< a pixel: 1, 3 (red, green, blue), 4
    int32_t sample_bytes;  ///< of a sample in a frame that is read: 1, 2, 4 or 8
    int32_t sample_type;   ///< QUORVEX_SAMPLES_...
    int32_t is_signed;
    int32_t bits_allocated;
    int32_t bits_stored;
    int32_t is_lossy;    ///< the pixels have lost something on their way here
    size_t frame_bytes;  ///< rows x columns x samples x sample_bytes
    double row_spacing;  ///< mm between rows, from Pixel Spacing; 0 where unknown
    double column_spacing;
} quorvex_facts;

/// @return QUORVEX_ERROR_FAILED_TO_GET_PIXEL_DATA for what is no image
QUORVEX_API quorvex_result quorvex_image_facts(quorvex_image* image, quorvex_facts* facts);

/// How many values an attribute of the header has; 0 where it is absent or empty.
/// @param tag  group in the high half: 0x00100010 is (0010,0010)
QUORVEX_API quorvex_result quorvex_attribute_count(quorvex_image* image, uint32_t tag,
                                                   int32_t* count);
/// A value as text. A number is written as it is, if need be with a fraction.
/// @param index     of several values, from 0
/// @param text      receives at most `capacity` bytes with the zero at the end; may be null where
///                  `capacity` is 0
/// @param length    receives the bytes of the whole text without the zero, also where it did not
///                  fit; may be null
/// @return QUORVEX_ERROR_NO_SOURCE_OBJECT for a value that is not there,
///         QUORVEX_ERROR_INVALID_OUTPUT_SIZE where the text did not fit and `capacity` is not 0:
///         nothing has been written but `length`
QUORVEX_API quorvex_result quorvex_attribute_text(quorvex_image* image, uint32_t tag, int32_t index,
                                                  char* text, size_t capacity, size_t* length);
/// A value as a number.
/// @return QUORVEX_ERROR_NO_SOURCE_OBJECT for a value that is not there or no number
QUORVEX_API quorvex_result quorvex_attribute_number(quorvex_image* image, uint32_t tag,
                                                    int32_t index, double* number);

/* --- Frames ----------------------------------------------------------------------------------- */

/// A host's memory for pixels as they are stored.
typedef struct quorvex_buffer {
    size_t struct_size;
    void* pixels;      ///< the upper left one
    size_t bytes;      ///< that the host has from there on
    ptrdiff_t stride;  ///< bytes from a row to the one below it; 0: rows without gaps
} quorvex_buffer;

enum {
    QUORVEX_QUALITY_NONE = 0,     ///< no frame was read, or the last read failed
    QUORVEX_QUALITY_WHOLE = 1,    ///< every sample is the stored one
    QUORVEX_QUALITY_GUESSED = 2,  ///< where the frame begins is a guess
    QUORVEX_QUALITY_PARTIAL = 3   ///< the stored bytes end early or are damaged
};

/// Decodes one frame into the host's memory: stored values, before any rescale, each in
/// `sample_bytes` of quorvex_image_facts(), by pixel.
/// @param quality  receives how much of it is what the file says; may be null
/// @return QUORVEX_ERROR_INVALID_FRAME_INDEX; QUORVEX_ERROR_INVALID_OUTPUT_SIZE for a buffer that
///         is too small, or a stride below a row;
///         QUORVEX_ERROR_FAILED_TO_GET_PIXEL_DATA, QUORVEX_ERROR_FAILED_TO_DECOMPRESS,
///         QUORVEX_ERROR_INVALID_PHOTOMETRIC where the frame cannot be read, decoded or understood
QUORVEX_API quorvex_result quorvex_read_frame(quorvex_image* image, int32_t frame,
                                              const quorvex_buffer* buffer, int32_t* quality);
/// Decodes a part of one frame, at the cost of the part where the coding allows that.
/// @param left,top,right,bottom  columns and rows at that level; right and bottom are left out
/// @param level  0 for the full resolution; each further one has half the columns and rows
/// @return as above; QUORVEX_ERROR_INVALID_OUTPUT_SIZE also for a region that is empty or beyond
///         the frame, and for a level that is not there
QUORVEX_API quorvex_result quorvex_read_region(quorvex_image* image, int32_t frame, int32_t left,
                                               int32_t top, int32_t right, int32_t bottom,
                                               int32_t level, const quorvex_buffer* buffer);
/// How many levels quorvex_read_region() gives: those of a JPEG 2000 stream, else 1.
QUORVEX_API quorvex_result quorvex_frame_levels(quorvex_image* image, int32_t frame,
                                                int32_t* levels);

/// How stored values of a frame become modality units.
typedef struct quorvex_modality {
    size_t struct_size;
    double slope;  ///< units = stored x slope + intercept, where there is no table
    double intercept;
    int32_t has_table;  ///< a Modality LUT: quorvex_read_values() applies it
} quorvex_modality;

/// Slope 1 and intercept 0 where the image says nothing.
QUORVEX_API quorvex_result quorvex_frame_modality(quorvex_image* image, int32_t frame,
                                                  quorvex_modality* modality);
/// Decodes one frame of one sample a pixel to modality units: Hounsfield units of a CT.
/// @param values  receives rows x columns numbers without gaps
/// @param count   how many `values` can take
/// @return as quorvex_read_frame(); QUORVEX_ERROR_INVALID_SAMPLES_PER_PIXEL for colour
QUORVEX_API quorvex_result quorvex_read_values(quorvex_image* image, int32_t frame, float* values,
                                               size_t count);

/* --- Views ------------------------------------------------------------------------------------ */

/// What a viewer keeps for one pane: an image, how it is seen, and its place in the pane.
typedef struct quorvex_view quorvex_view;

/// @param width,height  of the pane in device pixels, at least 1
/// @param view          receives a new one, yours: quorvex_view_free()
QUORVEX_API quorvex_result quorvex_view_new(quorvex_context* context, int32_t width, int32_t height,
                                            quorvex_view** view);
/// Null is ignored.
QUORVEX_API void quorvex_view_free(quorvex_view* view);

/// Shows a frame. Another image comes in fitted to the pane, with the window and the orientation
/// that it states, and what was set before is forgotten; another frame of the same image keeps all
/// that was set. Overlays, shutter, annotations and interpolation stay as they are switched.
///
/// The image may be freed while it is shown.
/// @return as quorvex_open_file() and quorvex_read_frame(); the former image then stays
QUORVEX_API quorvex_result quorvex_view_show(quorvex_view* view, const quorvex_image* image,
                                             int32_t frame);
/// Lays a presentation state over the image until another image or another state comes; null takes
/// it away. What was set is forgotten. A state of another image has no effect but its own.
/// @return QUORVEX_ERROR_NO_IMAGE before quorvex_view_show()
QUORVEX_API quorvex_result quorvex_view_apply_state(quorvex_view* view, const quorvex_image* state);

enum {
    QUORVEX_VOI_AS_IT_IS = 0,  ///< the function of the image, linear where it states none
    QUORVEX_VOI_LINEAR = 1,
    QUORVEX_VOI_LINEAR_EXACT = 2,
    QUORVEX_VOI_SIGMOID = 3
};

/// Sets the window, in modality units.
/// @return QUORVEX_ERROR_INVALID_IMAGE_FORMAT for a width that is not above 0 or an unknown
///         function; QUORVEX_ERROR_NO_IMAGE
QUORVEX_API quorvex_result quorvex_view_set_window(quorvex_view* view, double centre, double width,
                                                   int32_t function);
/// The window that stands; of an image that is shown by a table, the one that a first drag starts
/// from.
QUORVEX_API quorvex_result quorvex_view_get_window(quorvex_view* view, double* centre,
                                                   double* width);
/// How many tables and windows the image or its state offers, tables first.
QUORVEX_API quorvex_result quorvex_view_voi_count(quorvex_view* view, int32_t* count);
/// What is said about one, as quorvex_attribute_text() gives it; empty where nothing is said.
QUORVEX_API quorvex_result quorvex_view_voi_name(quorvex_view* view, int32_t choice, char* text,
                                                 size_t capacity, size_t* length);
/// Shows by one of them; -1 is the window over the values of the image.
/// @return QUORVEX_ERROR_INVALID_FRAME_INDEX for one that is not there
QUORVEX_API quorvex_result quorvex_view_select_voi(quorvex_view* view, int32_t choice);

/// Another size of the pane: the image is fitted anew, and zoom and pan are forgotten.
QUORVEX_API quorvex_result quorvex_view_set_size(quorvex_view* view, int32_t width, int32_t height);
/// Device pixels per column of the image; 0 fits it again.
/// @return QUORVEX_ERROR_INVALID_OUTPUT_SIZE for a number that is negative or not finite
QUORVEX_API quorvex_result quorvex_view_set_zoom(quorvex_view* view, double zoom);
QUORVEX_API quorvex_result quorvex_view_get_zoom(quorvex_view* view, double* zoom);
/// How far the image lies from its centred place, in device pixels, to the right and down.
QUORVEX_API quorvex_result quorvex_view_set_pan(quorvex_view* view, int32_t x, int32_t y);
/// Turns the image beyond its own orientation: 0, 90, 180 or 270 degrees clockwise, then mirrors it
/// left to right where `flip` is not 0.
/// @return QUORVEX_ERROR_INVALID_IMAGE_FORMAT for other degrees
QUORVEX_API quorvex_result quorvex_view_set_orientation(quorvex_view* view, int32_t degrees,
                                                        int32_t flip);
/// Turns black to white; 0 takes that back.
QUORVEX_API quorvex_result quorvex_view_set_inverted(quorvex_view* view, int32_t on);

enum { QUORVEX_ENLARGE_LINEAR = 0, QUORVEX_ENLARGE_NEAREST = 1, QUORVEX_ENLARGE_CUBIC = 2 };

/// How images are enlarged; shrinking always averages areas.
QUORVEX_API quorvex_result quorvex_view_set_interpolation(quorvex_view* view, int32_t enlarging);

enum { QUORVEX_LAYER_OVERLAYS = 1, QUORVEX_LAYER_SHUTTER = 2, QUORVEX_LAYER_ANNOTATIONS = 4 };

/// Which layers of the image and its state are seen: a sum of the three above; 0 at first.
QUORVEX_API quorvex_result quorvex_view_set_layers(quorvex_view* view, uint32_t layers);

enum {
    QUORVEX_PIXELS_GREY8 = 0,  ///< one byte: grey pictures alone
    QUORVEX_PIXELS_BGR24 = 1,  ///< blue, green, red
    QUORVEX_PIXELS_BGRA32 = 2  ///< blue, green, red, 255
};

/// A host's memory for a picture.
typedef struct quorvex_target {
    size_t struct_size;
    void* pixels;   ///< the upper left one
    int32_t width;  ///< of the pane, or more
    int32_t height;
    ptrdiff_t
        stride;      ///< bytes from a row to the one below; negative where the last one lies first
    int32_t format;  ///< QUORVEX_PIXELS_...
} quorvex_target;

/// Draws the pane into the host's memory: the picture in its place, black around it. Nothing is
/// written beside the pane.
///
/// Without annotations, by the standard rules, a window, pan or frame that changes at the same zoom
/// takes no memory.
/// @return QUORVEX_ERROR_NO_IMAGE; QUORVEX_ERROR_INVALID_OUTPUT_SIZE for a target smaller than the
///         pane, a stride below a row, or a zoom that leads to no usable picture;
///         QUORVEX_ERROR_INVALID_IMAGE_FORMAT for an unknown format, and for grey where the picture
///         is in colour, has annotations or is drawn by the established rules
QUORVEX_API quorvex_result quorvex_view_render(quorvex_view* view, const quorvex_target* target);

/// Where the picture lies in the pane, in device pixels, and whether it is in colour.
typedef struct quorvex_picture {
    size_t struct_size;
    int32_t x;
    int32_t y;
    int32_t width;  ///< 0 where nothing of it lies in the pane
    int32_t height;
    int32_t is_colour;
} quorvex_picture;

QUORVEX_API quorvex_result quorvex_view_picture(quorvex_view* view, quorvex_picture* picture);

/// Draws a frame as it states it, fitted into width x height, in one call, and of JPEG 2000 decodes
/// no more than that needs. The layers are off.
/// @param target   takes the picture from its upper left corner on; what it does not cover stays
/// @param picture  receives its size; may be null
QUORVEX_API quorvex_result quorvex_thumbnail(const quorvex_image* image, int32_t frame,
                                             const quorvex_target* target,
                                             quorvex_picture* picture);

/* --- Objects ---------------------------------------------------------------------------------- */

/// Learns how many frames are done, and how many there are. Anything but 1 ends the operation.
typedef int32_t (*quorvex_progress)(int32_t done, int32_t all, void* user);

typedef struct quorvex_conversion {
    size_t struct_size;
    const char* target;  ///< as `quorvex convert --to` names it: "j2k-lossless", "explicit", "rle"
    int32_t quality;     ///< of targets with losses; 0 for the usual one
    quorvex_progress progress;  ///< may be null
    void* user;
} quorvex_conversion;

/// Whether this build writes a target of that name: 1 or 0.
QUORVEX_API int32_t quorvex_writes_target(const char* target);

/// Brings an object into another coding and writes it as a file: pixels, or what the coding makes
/// of them, and all attributes stay. Always by the standard rules. Nothing is left under `path`
/// unless the file is whole. The object is held in memory meanwhile.
/// @return QUORVEX_FRAME_COPIED where it had that coding already, and is written as it is;
///         QUORVEX_ERROR_INVALID_TARGET_SYNTAX for a target that this build does not write;
///         QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA where the file could not be written, or
///         `progress` ended it; what the target cannot hold
QUORVEX_API quorvex_result quorvex_convert(const quorvex_image* image,
                                           const quorvex_conversion* conversion, const char* path);

enum {
    QUORVEX_MAKE_DERIVED = 0,  ///< an image of the source's class where the frames allow it
    QUORVEX_MAKE_SECONDARY_CAPTURE = 1  ///< a secondary capture
};

/// A new object. Fields that are 0 or null are those of the source.
typedef struct quorvex_new_object {
    size_t struct_size;
    int32_t kind;  ///< QUORVEX_MAKE_...
    int32_t rows;
    int32_t columns;
    int32_t samples;  ///< 1, or 3: red, green, blue by pixel
    int32_t bits_allocated;
    int32_t bits_stored;
    int32_t is_signed;
    const char* photometric;  ///< of one sample; "MONOCHROME2" with rows set and this null
    const char* target;       ///< as above; null for "explicit"
    int32_t quality;
    const char* series_description;
} quorvex_new_object;

/// Makes an object of a host's frames in the study of a source, and writes it as a file.
/// @param source  gives patient, study, and what else is not said
/// @param frames  `count` frames of rows x columns x samples x bits_allocated / 8 bytes, which stay
///                yours
/// @return as quorvex_convert(); what is not usable in `object`
QUORVEX_API quorvex_result quorvex_make(const quorvex_image* source,
                                        const quorvex_new_object* object, const void* const* frames,
                                        int32_t count, const char* path);

enum {
    QUORVEX_MARK_TEXT = 0,  ///< a text whose anchor is the first point
    QUORVEX_MARK_POINT = 1,
    QUORVEX_MARK_POLYLINE = 2,
    QUORVEX_MARK_INTERPOLATED = 3,
    QUORVEX_MARK_CIRCLE = 4,  ///< its centre and a point on it
    QUORVEX_MARK_ELLIPSE = 5  ///< both ends of the long axis, then of the short one
};

/// An annotation. Points are columns and rows of the image: 0.0, 0.0 is its upper left corner.
typedef struct quorvex_mark {
    size_t struct_size;
    int32_t kind;  ///< QUORVEX_MARK_...
    int32_t is_filled;
    const char* text;      ///< of a text
    const double* points;  ///< x and y of each
    int32_t point_count;
} quorvex_mark;

/// Writes a presentation state of how the image is seen: its window, orientation and inversion, the
/// shutter and the annotations that it or its state has, and new ones. Zoom and pan are not in it.
/// @param label  Content Label, at most 16 capital letters, digits, blanks and underscores; null
///               for "VIEW"
/// @param marks  `mark_count` new annotations, one behind the other; may be null for none
/// @return QUORVEX_ERROR_NO_IMAGE; QUORVEX_ERROR_NOT_COLOR_IMAGE where the image is in colour;
///         QUORVEX_ERROR_INVALID_IMAGE_FORMAT for a mark that is none;
///         QUORVEX_ERROR_NO_SOURCE_OBJECT for an image without the UIDs that a state names;
///         QUORVEX_ERROR_INVALID_PIXEL_REPRESENTATION for frames that no one state can be for;
///         QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA where the file could not be written
QUORVEX_API quorvex_result quorvex_write_state(quorvex_view* view, const char* label,
                                               const quorvex_mark* marks, int32_t mark_count,
                                               const char* path);

// NOLINTEND

#ifdef __cplusplus
}
#endif

#endif
