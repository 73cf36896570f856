#include "c/calls.h"
#include "quorvex/Limits.h"
#include "quorvex/ResultCodes.h"

namespace quorvex {

namespace {

constexpr bool IsSame(std::int32_t number, QUORVEX_MESSAGE result) {
    return number == static_cast<std::int32_t>(result);
}

static_assert(IsSame(QUORVEX_SUCCESS, QVM_SUCCESS) &&
              IsSame(QUORVEX_ERROR_FAILED_TO_DECOMPRESS, QVM_ERROR_FAILED_TO_DECOMPRESS) &&
              IsSame(QUORVEX_ERROR_NOT_COLOR_IMAGE, QVM_ERROR_NOT_COLOR_IMAGE) &&
              IsSame(QUORVEX_ERROR_FAILED_TO_SET_PIXEL_DATA, QVM_ERROR_FAILED_TO_SET_PIXEL_DATA) &&
              IsSame(QUORVEX_ERROR_INVALID_JPEG_STREAM, QVM_ERROR_INVALID_JPEG_STREAM) &&
              IsSame(QUORVEX_ERROR_INVALID_HIGH_BIT, QVM_ERROR_INVALID_HIGH_BIT) &&
              IsSame(QUORVEX_ERROR_INVALID_PHOTOMETRIC, QVM_ERROR_INVALID_PHOTOMETRIC) &&
              IsSame(QUORVEX_ERROR_INVALID_MAKER_PARAM, QVM_ERROR_INVALID_MAKER_PARAM) &&
              IsSame(QUORVEX_ERROR_NO_PIXEL_INFO, QVM_ERROR_NO_PIXEL_INFO) &&
              IsSame(QUORVEX_ERROR_INVALID_IMAGE_FORMAT, QVM_ERROR_INVALID_IMAGE_FORMAT) &&
              IsSame(QUORVEX_ERROR_INVALID_OUTPUT_SIZE, QVM_ERROR_INVALID_OUTPUT_SIZE) &&
              IsSame(QUORVEX_ERROR_INVALID_TARGET_SYNTAX, QVM_ERROR_INVALID_TARGET_SYNTAX) &&
              IsSame(QUORVEX_FRAME_COPIED, QVM_FRAME_COPIED) &&
              IsSame(QUORVEX_ERROR_CANCELLED, QVM_ERROR_CANCELLED));

}  // namespace

namespace c {

QUORVEX_MESSAGE GiveText(const std::string& text, char* receiver, std::size_t capacity,
                         std::size_t* length) noexcept {
    if (receiver == nullptr && capacity != 0) return QVM_ERROR_NULL_SOURCE;
    if (length != nullptr) *length = text.size();
    if (capacity == 0) return QVM_SUCCESS;
    if (capacity <= text.size()) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    std::memcpy(receiver, text.c_str(), text.size() + 1);
    return QVM_SUCCESS;
}

}  // namespace c
}  // namespace quorvex

using namespace quorvex;

const char* quorvex_result_sentence(quorvex_result result) {
    return ResultSentence(static_cast<QUORVEX_MESSAGE>(result));
}

const char* quorvex_result_name(quorvex_result result) {
    return ResultName(static_cast<QUORVEX_MESSAGE>(result));
}

const char* quorvex_version(void) {
    return QUORVEX_VERSION;
}

const char* quorvex_limit_sentence(void) {
    return LimitSentence(LatestLimit());
}

void quorvex_forget_limit(void) {
    ForgetLimit();
}

quorvex_result quorvex_context_new(quorvex_context** context) {
    if (context == nullptr) return QVM_ERROR_NULL_SOURCE;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        *context = std::make_unique<quorvex_context>().release();
        return QVM_SUCCESS;
    });
}

void quorvex_context_free(quorvex_context* context) {
    delete context;
}

quorvex_result quorvex_context_set_rules(quorvex_context* context, int32_t rules) {
    if (context == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (rules != QUORVEX_RULES_STANDARD && rules != QUORVEX_RULES_ESTABLISHED)
        return QVM_ERROR_INVALID_IMAGE_FORMAT;
    context->settings->rules =
        rules == QUORVEX_RULES_STANDARD ? Rules::kStandard : Rules::kEstablished;
    return QVM_SUCCESS;
}

void quorvex_context_cancel(quorvex_context* context) {
    if (context != nullptr) context->settings->token.Cancel();
}

void quorvex_context_resume(quorvex_context* context) {
    if (context != nullptr) context->settings->token.Reset();
}
