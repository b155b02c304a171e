# How the libraries are found by other programs: by CMake as components of the package eqconvert, and
# by pkg-config as eqconvert-LIBRARY. Each is a component of the installation too, so that
# cmake --install --component takes one without the rest.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Writes and installs the version file of a package. A program that asks for 1.0 takes any 1.x: what
# it was written against stays.
function(install_version package)
    set(file ${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake)
    write_basic_package_version_file(${file} COMPATIBILITY SameMajorVersion)
    install(FILES ${file} COMPONENT ${package} DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
endfunction()

# Installs a library with the headers of its file set. The targets of each stand in a file of their
# own, as a package may be installed without some of them.
function(install_library library description)
    install(TARGETS ${library} EXPORT eqconvert-${library} COMPONENT ${library}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/eqconvert)
    install(EXPORT eqconvert-${library} NAMESPACE eqconvert:: COMPONENT ${library}
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/eqconvert)
    # Relative, so that it is right wherever the files are installed in the end.
    file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" to_prefix ${to_prefix})
    set(file ${PROJECT_BINARY_DIR}/eqconvert-${library}.pc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${file} @ONLY)
    install(FILES ${file} COMPONENT ${library} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# Installs what finds the libraries.
function(install_package)
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/eqconvertConfig.cmake COMPONENT eqconvert
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/eqconvert)
    install_version(eqconvert)
endfunction()
