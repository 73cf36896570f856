/* Plays a loop into memory and says how fast: cine FILE */
#include "common.h"

#include <time.h>

enum { SIDE = 512, ROUNDS = 5 };

int main(int argc, char** argv) {
    quorvex_facts facts = {.struct_size = sizeof facts};
    quorvex_target target = {.struct_size = sizeof target};
    quorvex_context* context = NULL;
    quorvex_image* image = NULL;
    quorvex_view* view = NULL;
    clock_t start = 0;
    double seconds = 0.0;
    int frame = 0;
    if (argc != 2) return 2;
    target.pixels = memory((size_t)SIDE * SIDE * 4);
    target.width = target.height = SIDE;
    target.stride = SIDE * 4;
    target.format = QUORVEX_PIXELS_BGRA32;
    require(quorvex_context_new(&context), "context");
    image = open_image(context, argv[1]);
    require(quorvex_image_facts(image, &facts), argv[1]);
    require(quorvex_view_new(context, SIDE, SIDE, &view), "view");
    start = clock();
    for (frame = 0; frame < ROUNDS * facts.frames; ++frame) {
        require(quorvex_view_show(view, image, frame % facts.frames), "frame");
        require(quorvex_view_render(view, &target), "render");
    }
    seconds = (double)(clock() - start) / CLOCKS_PER_SEC;
    printf("%d frames, %.0f a second\n", frame, seconds > 0.0 ? frame / seconds : 0.0);
    quorvex_view_free(view);
    quorvex_image_free(image);
    quorvex_context_free(context);
    free(target.pixels);
    return 0;
}
