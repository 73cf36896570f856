/* Brings a file into another coding: convert FILE TARGET OUTPUT */
#include "common.h"

static int32_t show(int32_t done, int32_t all, void* user) {
    (void)user;
    fprintf(stderr, "\r%d of %d frames", done, all);
    return 1;
}

int main(int argc, char** argv) {
    quorvex_conversion conversion = {.struct_size = sizeof conversion};
    quorvex_context* context = NULL;
    quorvex_image* image = NULL;
    if (argc != 4) return 2;
    conversion.target = argv[2];
    conversion.progress = show;
    require(quorvex_context_new(&context), "context");
    image = open_image(context, argv[1]);
    require(quorvex_convert(image, &conversion, argv[3]), argv[3]);
    fprintf(stderr, "\n");
    quorvex_image_free(image);
    quorvex_context_free(context);
    return 0;
}
