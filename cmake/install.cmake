# What `make install` lays down: the library, its headers, and the files by which a host finds them.
# Each component is a package of its own (packages.cmake).
install(TARGETS QuorvexU EXPORT QuorvexUTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT library NAMELINK_COMPONENT development)
if(TARGET quorvex)
    install(TARGETS quorvex RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()
install(DIRECTORY include/quorvex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
# Where Debian's Python looks below /usr; elsewhere PYTHONPATH names it.
install(DIRECTORY python/quorvex DESTINATION lib/python3/dist-packages COMPONENT python
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)

set(QUORVEX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QuorvexU)
install(EXPORT QuorvexUTargets NAMESPACE QuorvexU:: DESTINATION ${QUORVEX_CMAKE_DIR}
    COMPONENT development)
configure_package_config_file(cmake/QuorvexUConfig.cmake.in
    ${PROJECT_BINARY_DIR}/QuorvexUConfig.cmake INSTALL_DESTINATION ${QUORVEX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorvexUConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuorvexUConfig.cmake
              ${PROJECT_BINARY_DIR}/QuorvexUConfigVersion.cmake DESTINATION ${QUORVEX_CMAKE_DIR}
    COMPONENT development)
# Relative, so that it holds wherever `cmake --install --prefix` puts the files.
file(RELATIVE_PATH QUORVEX_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/quorvexu.pc.in ${PROJECT_BINARY_DIR}/quorvexu.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quorvexu.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

include(cmake/packages.cmake)
