# What every target of ours is compiled with.
set(QUORVEX_WARNINGS
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wcast-align=strict
    -Wnon-virtual-dtor -Woverloaded-virtual -Wdouble-promotion -Wformat=2)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND QUORVEX_WARNINGS -Wuseless-cast -Wduplicated-cond -Wlogical-op)
else()
    list(REMOVE_ITEM QUORVEX_WARNINGS -Wcast-align=strict)
endif()
