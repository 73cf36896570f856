#include "c/calls.h"
#include "c/sample_layout.h"
#include "c/sources.h"
#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

#include <utility>

namespace quorvex::c {

QUORVEX_MESSAGE Origin::Open(CxDcmParser& parser, bool isWhole) const {
    CDcmApp app;
    return source ? parser.Initialize(&app, source, isWhole ? 1 : 0)
                  : parser.Initialize(&app, CString(path), isWhole ? 1 : 0);
}

QUORVEX_MESSAGE Origin::Show(CXDIPP& image, CSize view, int frame) const {
    CDcmApp app;
    return source ? image.Initialize(&app, source, view, frame)
                  : image.Initialize(&app, CString(path), view, frame);
}

namespace {

/// A new handle of what `originOf` names.
template <class OriginOf>
quorvex_result Open(quorvex_context& context, quorvex_image*& image, OriginOf originOf) noexcept {
    return Call(*context.settings, QVM_ERROR_FAILED_TO_READ_FILE, [&] {
        auto opened = std::make_unique<quorvex_image>();
        opened->settings = context.settings;
        opened->rules = context.settings->rules;
        opened->origin = originOf();
        opened->parser.SetRules(opened->rules);
        const QUORVEX_MESSAGE result = opened->origin.Open(opened->parser, false);
        if (result == QVM_SUCCESS) image = opened.release();
        return result;
    });
}

/// The value with this index; nothing where there is none.
template <class Value>
std::optional<Value> ValueAt(const CDcmObject& header, std::uint32_t tag, std::int32_t index) {
    Value value{};
    auto result = index < 0 ? kDcmNotFound : header.GetValue(tag, value);
    for (; result == kDcmSuccess && index > 0; --index) result = header.GetNextValue(tag, value);
    if (result != kDcmSuccess) return std::nullopt;
    return value;
}

}  // namespace
}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

quorvex_result quorvex_open_file(quorvex_context* context, const char* path,
                                 quorvex_image** image) {
    if (!AreThere(context, path, image)) return QVM_ERROR_NULL_SOURCE;
    return Open(*context, *image, [&] { return Origin{.path = path, .source = nullptr}; });
}

quorvex_result quorvex_open_memory(quorvex_context* context, const void* bytes, size_t length,
                                   quorvex_image** image) {
    if (!AreThere(context, bytes, image)) return QVM_ERROR_NULL_SOURCE;
    return Open(*context, *image, [&] {
        const auto* const first = static_cast<const unsigned char*>(bytes);
        return Origin{.path = {}, .source = SourceOver({first, length})};
    });
}

quorvex_result quorvex_open_source(quorvex_context* context, const quorvex_source* source,
                                   quorvex_image** image) {
    const auto calls = Taken(source);
    if (!AreThere(context, image) || !calls || calls->size == nullptr || calls->read_at == nullptr)
        return QVM_ERROR_NULL_SOURCE;
    return Open(*context, *image, [&] { return Origin{.path = {}, .source = SourceOf(*calls)}; });
}

quorvex_result quorvex_image_copy(const quorvex_image* image, quorvex_image** copy) {
    if (!AreThere(image, copy)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, QVM_ERROR_FAILED_TO_READ_FILE, [&] {
        *copy = std::make_unique<quorvex_image>(*image).release();
        return QVM_SUCCESS;
    });
}

void quorvex_image_free(quorvex_image* image) {
    delete image;
}

quorvex_result quorvex_image_facts(quorvex_image* image, quorvex_facts* facts) {
    if (!AreThere(image, facts)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        const auto found = FactsOf(image->parser);
        return found ? Give(*found, facts) : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    });
}

quorvex_result quorvex_attribute_count(quorvex_image* image, uint32_t tag, int32_t* count) {
    if (!AreThere(image, count)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, QVM_ERROR_NO_SOURCE_OBJECT, [&] {
        int values = 0;
        unsigned long length = 0;
        const CDcmObject& header = *image->parser.GetHeader();
        const bool isEmpty = header.GetValueLength(tag, 1, length) == kDcmSuccess && length == 0;
        if (header.GetValueCount(tag, values) != kDcmSuccess || isEmpty) values = 0;
        *count = values;
        return QVM_SUCCESS;
    });
}

quorvex_result quorvex_attribute_text(quorvex_image* image, uint32_t tag, int32_t index, char* text,
                                      size_t capacity, size_t* length) {
    if (!AreThere(image)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, QVM_ERROR_NO_SOURCE_OBJECT, [&] {
        const auto value = ValueAt<CString>(*image->parser.GetHeader(), tag, index);
        if (!value) return QVM_ERROR_NO_SOURCE_OBJECT;
        return GiveText(value->ToValidUtf8(), text, capacity, length);
    });
}

quorvex_result quorvex_attribute_number(quorvex_image* image, uint32_t tag, int32_t index,
                                        double* number) {
    if (!AreThere(image, number)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, QVM_ERROR_NO_SOURCE_OBJECT, [&] {
        const auto value = ValueAt<double>(*image->parser.GetHeader(), tag, index);
        if (value) *number = *value;
        return value ? QVM_SUCCESS : QVM_ERROR_NO_SOURCE_OBJECT;
    });
}
