#include <quorvex/quorvex.h>
#include <stdio.h>

int main(int argc, char** argv) {
    quorvex_facts facts = {.struct_size = sizeof facts};
    quorvex_context* context = NULL;
    quorvex_image* image = NULL;
    if (argc != 2 || quorvex_context_new(&context) != 0) return 2;
    if (quorvex_open_file(context, argv[1], &image) != 0) return 1;
    if (quorvex_image_facts(image, &facts) != 0) return 1;
    printf("C %s: %d x %d\n", quorvex_version(), facts.columns, facts.rows);
    quorvex_image_free(image);
    quorvex_context_free(context);
    return 0;
}
