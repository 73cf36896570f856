# `make packages`: a Debian package for each component, by CPack.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvexu)
set(CPACK_PACKAGE_VENDOR "The QuorvexU developers")
set(CPACK_PACKAGE_CONTACT "The QuorvexU developers <developers@quorvexu.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development command python)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(library libquorvexu${QUORVEX_ABI})
set(same "(= ${PROJECT_VERSION}-1)")
set(about "
QuorvexU reads DICOM files and objects, decodes their frames, turns stored
values into display images with window, zoom, pan, rotation, flip and
presentation states, and makes new objects, compressed or not.

")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/packaging/shlibs ${PROJECT_BINARY_DIR}/packaging/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "medical images for workstations and viewers (shared library)${about}This package has the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libquorvexu-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${same}")
string(CONCAT CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "medical images for workstations and viewers (development files)${about}This package has the\n"
    "headers for C++ and C, and the files by which CMake and pkg-config find them.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME quorvex)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${library} ${same}")
set(CPACK_COMPONENT_COMMAND_DESCRIPTION
    "looks at, renders and converts medical images${about}This package has the quorvex command.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-quorvex)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${library} (>= ${PROJECT_VERSION}), python3, python3-cffi, python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pydicom")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "medical images as NumPy arrays${about}This package has the Python 3 package.")

# What Debian asks of every package.
set(QUORVEX_PAPERS ${PROJECT_BINARY_DIR}/packaging)
file(READ LICENSE license)
file(WRITE ${QUORVEX_PAPERS}/copyright "QuorvexU\n\n${license}")
string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${QUORVEX_PAPERS}/changelog "quorvexu (${PROJECT_VERSION}-1) unstable; urgency=medium

  * Built from the sources: CHANGELOG.md there tells what has changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${today}
")
file(WRITE ${QUORVEX_PAPERS}/shlibs "libQuorvexU ${QUORVEX_ABI} ${library} (>= ${PROJECT_VERSION})\n")
file(WRITE ${QUORVEX_PAPERS}/triggers "activate-noawait ldconfig\n")
find_program(QUORVEX_GZIP gzip)
if(QUORVEX_GZIP)
    execute_process(COMMAND ${QUORVEX_GZIP} -9nkf ${QUORVEX_PAPERS}/changelog)
endif()
foreach(paper library:${library} development:libquorvexu-dev command:quorvex python:python3-quorvex)
    string(REPLACE ":" ";" paper ${paper})
    list(GET paper 0 component)
    list(GET paper 1 package)
    install(FILES ${QUORVEX_PAPERS}/copyright DESTINATION share/doc/${package} COMPONENT ${component})
    install(FILES ${QUORVEX_PAPERS}/changelog.gz DESTINATION share/doc/${package}
        RENAME changelog.Debian.gz COMPONENT ${component} OPTIONAL)
endforeach()

# A package's command finds the library where the loader looks, and its manual is compressed.
file(WRITE ${QUORVEX_PAPERS}/as_debian_has_it.cmake [=[
file(GLOB_RECURSE all "${CPACK_TEMPORARY_DIRECTORY}/*")
set(commands ${all})
list(FILTER commands INCLUDE REGEX "/usr/bin/quorvex$")
foreach(command ${commands})
    file(RPATH_REMOVE FILE "${command}")
endforeach()
set(pages ${all})
list(FILTER pages INCLUDE REGEX "/man/man1/[^/]*[.]1$")
if(pages)
    execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
]=])
set(CPACK_PRE_BUILD_SCRIPTS ${QUORVEX_PAPERS}/as_debian_has_it.cmake)
include(CPack)
