/* Opens a file and says what it is: open FILE */
#include "common.h"

static void print_attribute(quorvex_image* image, const char* name, uint32_t tag) {
    char text[256];
    if (quorvex_attribute_text(image, tag, 0, text, sizeof text, NULL) == QUORVEX_SUCCESS)
        printf("%-20s %s\n", name, text);
}

/* The range of the first frame in modality units. */
static void print_range(quorvex_image* image, const quorvex_facts* facts) {
    size_t count = (size_t)facts->rows * (size_t)facts->columns;
    float* values = memory(count * sizeof *values);
    float least = 0.0F;
    float most = 0.0F;
    size_t i = 0;
    require(quorvex_read_values(image, 0, values, count), "values");
    least = most = values[0];
    for (i = 1; i < count; ++i) {
        if (values[i] < least) least = values[i];
        if (values[i] > most) most = values[i];
    }
    printf("%-20s %g to %g\n", "values", (double)least, (double)most);
    free(values);
}

int main(int argc, char** argv) {
    quorvex_facts facts = {.struct_size = sizeof facts};
    quorvex_context* context = NULL;
    quorvex_image* image = NULL;
    if (argc != 2) return 2;
    require(quorvex_context_new(&context), "context");
    image = open_image(context, argv[1]);
    require(quorvex_image_facts(image, &facts), argv[1]);
    print_attribute(image, "modality", 0x00080060);
    print_attribute(image, "patient", 0x00100010);
    print_attribute(image, "transfer syntax", 0x00020010);
    printf("%-20s %d of %d x %d, %d bits stored\n", "frames", facts.frames, facts.columns,
           facts.rows, facts.bits_stored);
    if (facts.samples == 1) print_range(image, &facts);
    quorvex_image_free(image);
    quorvex_context_free(context);
    return 0;
}
