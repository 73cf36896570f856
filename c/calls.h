/// How a call of the C interface begins and ends.
#pragma once

#include "c/handles.h"
#include "foundation/types/answer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace quorvex::c {

template <class... Pointer>
[[nodiscard]] bool AreThere(const Pointer*... pointers) noexcept {
    return ((pointers != nullptr) && ...);
}

/// Runs the work of a call under the token of its context; no exception leaves it.
template <class Work>
quorvex_result Call(const Settings& settings, QUORVEX_MESSAGE failure, Work work) noexcept {
    const CxCancelScope scope(settings.token);
    return Answer(failure, work);
}

/// A caller's structure, of whatever release: fields that it does not have are 0. Nothing without a
/// structure, or for one that cannot hold its own size.
template <class Structure>
[[nodiscard]] std::optional<Structure> Taken(const Structure* given) noexcept {
    if (given == nullptr || given->struct_size < sizeof(std::size_t)) return std::nullopt;
    Structure taken{};
    std::memcpy(&taken, given, std::min(given->struct_size, sizeof taken));
    return taken;
}

/// Fills a caller's structure as far as it goes.
template <class Structure>
[[nodiscard]] QUORVEX_MESSAGE Give(Structure result, Structure* receiver) noexcept {
    if (receiver == nullptr || receiver->struct_size < sizeof(std::size_t))
        return QVM_ERROR_NULL_SOURCE;
    result.struct_size = receiver->struct_size;
    std::memcpy(receiver, &result, std::min(receiver->struct_size, sizeof result));
    return QVM_SUCCESS;
}

/// A text for a caller, as quorvex_attribute_text() tells.
[[nodiscard]] QUORVEX_MESSAGE GiveText(const std::string& text, char* receiver,
                                       std::size_t capacity, std::size_t* length) noexcept;

}  // namespace quorvex::c
