/* What the examples share: a failure ends them with a sentence. */
#ifndef EXAMPLES_COMMON_H
#define EXAMPLES_COMMON_H

#include <quorvex/quorvex.h>
#include <stdio.h>
#include <stdlib.h>

static inline void require(quorvex_result result, const char* what) {
    if (result == QUORVEX_SUCCESS || result == QUORVEX_FRAME_COPIED) return;
    fprintf(stderr, "%s: %s\n", what, quorvex_result_sentence(result));
    exit(1);
}

static inline void* memory(size_t bytes) {
    void* block = malloc(bytes > 0 ? bytes : 1);
    if (block != NULL) return block;
    fprintf(stderr, "no memory for %lu bytes\n", (unsigned long)bytes);
    exit(1);
}

static inline quorvex_image* open_image(quorvex_context* context, const char* path) {
    quorvex_image* image = NULL;
    require(quorvex_open_file(context, path, &image), path);
    return image;
}

#endif
