/* Draws a frame in a window into a picture: render FILE CENTRE WIDTH PICTURE.ppm */
#include "common.h"

enum { WIDTH = 640, HEIGHT = 480 };

static void write_picture(const char* path, const unsigned char* bgr) {
    FILE* file = fopen(path, "wb");
    size_t i = 0;
    if (file == NULL) {
        fprintf(stderr, "%s cannot be written\n", path);
        exit(1);
    }
    fprintf(file, "P6\n%d %d\n255\n", WIDTH, HEIGHT);
    for (i = 0; i < (size_t)WIDTH * HEIGHT; ++i) {
        fputc(bgr[3 * i + 2], file);
        fputc(bgr[3 * i + 1], file);
        fputc(bgr[3 * i], file);
    }
    if (fclose(file) != 0) exit(1);
}

int main(int argc, char** argv) {
    unsigned char* pixels = memory((size_t)WIDTH * HEIGHT * 3);
    quorvex_target target = {.struct_size = sizeof target};
    quorvex_context* context = NULL;
    quorvex_image* image = NULL;
    quorvex_view* view = NULL;
    if (argc != 5) return 2;
    target.pixels = pixels;
    target.width = WIDTH;
    target.height = HEIGHT;
    target.stride = WIDTH * 3;
    target.format = QUORVEX_PIXELS_BGR24;
    require(quorvex_context_new(&context), "context");
    image = open_image(context, argv[1]);
    require(quorvex_view_new(context, WIDTH, HEIGHT, &view), "view");
    require(quorvex_view_show(view, image, 0), argv[1]);
    require(quorvex_view_set_layers(view, QUORVEX_LAYER_OVERLAYS | QUORVEX_LAYER_SHUTTER),
            "layers");
    require(quorvex_view_set_window(view, atof(argv[2]), atof(argv[3]), QUORVEX_VOI_AS_IT_IS),
            "window");
    require(quorvex_view_render(view, &target), "render");
    write_picture(argv[4], pixels);
    quorvex_view_free(view);
    quorvex_image_free(image);
    quorvex_context_free(context);
    free(pixels);
    return 0;
}
