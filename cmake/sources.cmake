# The library's source files: every *.cpp of its rooms.
set(QUORVEX_ROOMS foundation presentation codec windowing parser render maker states pipeline c)

# Rooms of foundation/ that need a library, or that leave a file out, say so in a CMakeLists.txt.
set(QUORVEX_ROOMS_WITH_LIBRARIES foundation/platform foundation/raster foundation/engines)

list(TRANSFORM QUORVEX_ROOMS PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE QUORVEX_PATTERNS)
list(TRANSFORM QUORVEX_PATTERNS APPEND /*.cpp)
file(GLOB_RECURSE QUORVEX_SOURCES CONFIGURE_DEPENDS ${QUORVEX_PATTERNS})

# Leaves files of the present folder out of this build.
function(quorvex_leave_out)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_source_files_properties(${ARGN} TARGET_DIRECTORY quorvex_objects PROPERTIES HEADER_FILE_ONLY ON)
endfunction()

set_source_files_properties(${PROJECT_SOURCE_DIR}/c/results.cpp
    PROPERTIES COMPILE_DEFINITIONS QUORVEX_VERSION="${PROJECT_VERSION}")

# Loops over pixels that are written for vector units, which -O2 leaves idle.
set(QUORVEX_VECTOR_LOOPS
    foundation/engines/jpeg2000/decoder/band_rows.cpp
    foundation/engines/jpeg2000/decoder/blocks/mq_passes.cpp
    foundation/engines/jpeg2000/decoder/wavelet/lifting.cpp
    foundation/engines/jpeg2000/decoder/wavelet/synthesis.cpp
    foundation/engines/jpeg2000/decoder/samples/colour.cpp
    foundation/engines/jpeg2000/decoder/samples/output_plane.cpp
    foundation/engines/jpegxl/jpegxl_samples.cpp
    foundation/raster/bits.cpp foundation/raster/mirror.cpp foundation/raster/scaling/resize_16u.cpp
    foundation/raster/scaling/scale_taps.cpp windowing/display_function.cpp
    foundation/raster/turn_kernels.cpp foundation/raster/ycbcr.cpp
    pipeline/intake/modality_stage.cpp pipeline/intake/stored_elements.cpp)
set_source_files_properties(${QUORVEX_VECTOR_LOOPS}
    PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:Release,RelWithDebInfo>:-O3>")
