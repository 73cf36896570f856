"""The C interface as cffi reads it: made by scripts/make_python_declarations.py."""

DECLARATIONS = """\
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
    QUORVEX_FRAME_COPIED = 38,
    QUORVEX_ERROR_NO_IMAGE = 39,
    QUORVEX_ERROR_CANCELLED = 40
};
const char* quorvex_result_sentence(quorvex_result result);
const char* quorvex_result_name(quorvex_result result);
const char* quorvex_version(void);
const char* quorvex_limit_sentence(void);
void quorvex_forget_limit(void);
typedef struct quorvex_context quorvex_context;
enum {
    QUORVEX_RULES_STANDARD = 0,
    QUORVEX_RULES_ESTABLISHED = 1
};
quorvex_result quorvex_context_new(quorvex_context** context);
void quorvex_context_free(quorvex_context* context);
quorvex_result quorvex_context_set_rules(quorvex_context* context, int32_t rules);
void quorvex_context_cancel(quorvex_context* context);
void quorvex_context_resume(quorvex_context* context);
typedef struct quorvex_image quorvex_image;
typedef struct quorvex_source {
    size_t struct_size;
    void* user;
    uint64_t (*size)(void* user);
    int32_t (*read_at)(void* user, uint64_t offset, void* bytes, size_t length);
    void (*release)(void* user);
} quorvex_source;
quorvex_result quorvex_open_file(quorvex_context* context, const char* path,
                                             quorvex_image** image);
quorvex_result quorvex_open_memory(quorvex_context* context, const void* bytes,
                                               size_t length, quorvex_image** image);
quorvex_result quorvex_open_source(quorvex_context* context,
                                               const quorvex_source* source, quorvex_image** image);
quorvex_result quorvex_image_copy(const quorvex_image* image, quorvex_image** copy);
void quorvex_image_free(quorvex_image* image);
enum {
    QUORVEX_SAMPLES_INTEGER = 0,
    QUORVEX_SAMPLES_FLOAT32 = 1,
    QUORVEX_SAMPLES_FLOAT64 = 2
};
typedef struct quorvex_facts {
    size_t struct_size;
    int32_t frames;
    int32_t rows;
    int32_t columns;
    int32_t samples;
    int32_t sample_bytes;
    int32_t sample_type;
    int32_t is_signed;
    int32_t bits_allocated;
    int32_t bits_stored;
    int32_t is_lossy;
    size_t frame_bytes;
    double row_spacing;
    double column_spacing;
} quorvex_facts;
quorvex_result quorvex_image_facts(quorvex_image* image, quorvex_facts* facts);
quorvex_result quorvex_attribute_count(quorvex_image* image, uint32_t tag,
                                                   int32_t* count);
quorvex_result quorvex_attribute_text(quorvex_image* image, uint32_t tag, int32_t index,
                                                  char* text, size_t capacity, size_t* length);
quorvex_result quorvex_attribute_number(quorvex_image* image, uint32_t tag,
                                                    int32_t index, double* number);
typedef struct quorvex_buffer {
    size_t struct_size;
    void* pixels;
    size_t bytes;
    ptrdiff_t stride;
} quorvex_buffer;
enum {
    QUORVEX_QUALITY_NONE = 0,
    QUORVEX_QUALITY_WHOLE = 1,
    QUORVEX_QUALITY_GUESSED = 2,
    QUORVEX_QUALITY_PARTIAL = 3
};
quorvex_result quorvex_read_frame(quorvex_image* image, int32_t frame,
                                              const quorvex_buffer* buffer, int32_t* quality);
quorvex_result quorvex_read_region(quorvex_image* image, int32_t frame, int32_t left,
                                               int32_t top, int32_t right, int32_t bottom,
                                               int32_t level, const quorvex_buffer* buffer);
quorvex_result quorvex_frame_levels(quorvex_image* image, int32_t frame,
                                                int32_t* levels);
typedef struct quorvex_modality {
    size_t struct_size;
    double slope;
    double intercept;
    int32_t has_table;
} quorvex_modality;
quorvex_result quorvex_frame_modality(quorvex_image* image, int32_t frame,
                                                  quorvex_modality* modality);
quorvex_result quorvex_read_values(quorvex_image* image, int32_t frame, float* values,
                                               size_t count);
typedef struct quorvex_view quorvex_view;
quorvex_result quorvex_view_new(quorvex_context* context, int32_t width, int32_t height,
                                            quorvex_view** view);
void quorvex_view_free(quorvex_view* view);
quorvex_result quorvex_view_show(quorvex_view* view, const quorvex_image* image,
                                             int32_t frame);
quorvex_result quorvex_view_apply_state(quorvex_view* view, const quorvex_image* state);
enum {
    QUORVEX_VOI_AS_IT_IS = 0,
    QUORVEX_VOI_LINEAR = 1,
    QUORVEX_VOI_LINEAR_EXACT = 2,
    QUORVEX_VOI_SIGMOID = 3
};
quorvex_result quorvex_view_set_window(quorvex_view* view, double centre, double width,
                                                   int32_t function);
quorvex_result quorvex_view_get_window(quorvex_view* view, double* centre,
                                                   double* width);
quorvex_result quorvex_view_voi_count(quorvex_view* view, int32_t* count);
quorvex_result quorvex_view_voi_name(quorvex_view* view, int32_t choice, char* text,
                                                 size_t capacity, size_t* length);
quorvex_result quorvex_view_select_voi(quorvex_view* view, int32_t choice);
quorvex_result quorvex_view_set_size(quorvex_view* view, int32_t width, int32_t height);
quorvex_result quorvex_view_set_zoom(quorvex_view* view, double zoom);
quorvex_result quorvex_view_get_zoom(quorvex_view* view, double* zoom);
quorvex_result quorvex_view_set_pan(quorvex_view* view, int32_t x, int32_t y);
quorvex_result quorvex_view_set_orientation(quorvex_view* view, int32_t degrees,
                                                        int32_t flip);
quorvex_result quorvex_view_set_inverted(quorvex_view* view, int32_t on);
enum { QUORVEX_ENLARGE_LINEAR = 0, QUORVEX_ENLARGE_NEAREST = 1, QUORVEX_ENLARGE_CUBIC = 2 };
quorvex_result quorvex_view_set_interpolation(quorvex_view* view, int32_t enlarging);
enum { QUORVEX_LAYER_OVERLAYS = 1, QUORVEX_LAYER_SHUTTER = 2, QUORVEX_LAYER_ANNOTATIONS = 4 };
quorvex_result quorvex_view_set_layers(quorvex_view* view, uint32_t layers);
enum {
    QUORVEX_PIXELS_GREY8 = 0,
    QUORVEX_PIXELS_BGR24 = 1,
    QUORVEX_PIXELS_BGRA32 = 2
};
typedef struct quorvex_target {
    size_t struct_size;
    void* pixels;
    int32_t width;
    int32_t height;
    ptrdiff_t
        stride;
    int32_t format;
} quorvex_target;
quorvex_result quorvex_view_render(quorvex_view* view, const quorvex_target* target);
typedef struct quorvex_picture {
    size_t struct_size;
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
    int32_t is_colour;
} quorvex_picture;
quorvex_result quorvex_view_picture(quorvex_view* view, quorvex_picture* picture);
quorvex_result quorvex_thumbnail(const quorvex_image* image, int32_t frame,
                                             const quorvex_target* target,
                                             quorvex_picture* picture);
typedef int32_t (*quorvex_progress)(int32_t done, int32_t all, void* user);
typedef struct quorvex_conversion {
    size_t struct_size;
    const char* target;
    int32_t quality;
    quorvex_progress progress;
    void* user;
} quorvex_conversion;
int32_t quorvex_writes_target(const char* target);
quorvex_result quorvex_convert(const quorvex_image* image,
                                           const quorvex_conversion* conversion, const char* path);
enum {
    QUORVEX_MAKE_DERIVED = 0,
    QUORVEX_MAKE_SECONDARY_CAPTURE = 1
};
typedef struct quorvex_new_object {
    size_t struct_size;
    int32_t kind;
    int32_t rows;
    int32_t columns;
    int32_t samples;
    int32_t bits_allocated;
    int32_t bits_stored;
    int32_t is_signed;
    const char* photometric;
    const char* target;
    int32_t quality;
    const char* series_description;
} quorvex_new_object;
quorvex_result quorvex_make(const quorvex_image* source,
                                        const quorvex_new_object* object, const void* const* frames,
                                        int32_t count, const char* path);
enum {
    QUORVEX_MARK_TEXT = 0,
    QUORVEX_MARK_POINT = 1,
    QUORVEX_MARK_POLYLINE = 2,
    QUORVEX_MARK_INTERPOLATED = 3,
    QUORVEX_MARK_CIRCLE = 4,
    QUORVEX_MARK_ELLIPSE = 5
};
typedef struct quorvex_mark {
    size_t struct_size;
    int32_t kind;
    int32_t is_filled;
    const char* text;
    const double* points;
    int32_t point_count;
} quorvex_mark;
quorvex_result quorvex_write_state(quorvex_view* view, const char* label,
                                               const quorvex_mark* marks, int32_t mark_count,
                                               const char* path);
"""
