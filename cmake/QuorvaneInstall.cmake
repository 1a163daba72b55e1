# What `cmake --install` gives a host: the shared library, the public headers, a CMake package and a file for
# pkg-config. Headers stand in a folder of their own (include/quorvane), which is the include path, so that
# they find one another by the names that they have here.
include(CMakePackageConfigHelpers)

set(QUORVANE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/quorvane)
set(QUORVANE_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvane)

quorvane_public_headers(QUORVANE_PUBLIC_HEADERS)
foreach(header IN LISTS QUORVANE_PUBLIC_HEADERS)
    cmake_path(GET header PARENT_PATH folder)
    if(EXISTS ${PROJECT_SOURCE_DIR}/Sources/${header})
        set(file ${PROJECT_SOURCE_DIR}/Sources/${header})
    else()
        set(file ${PROJECT_BINARY_DIR}/generated/${header})
    endif()
    install(FILES ${file} DESTINATION ${QUORVANE_INSTALL_INCLUDEDIR}/${folder} COMPONENT Development)
endforeach()

# The umbrella, written here so that it is always complete.
list(TRANSFORM QUORVANE_PUBLIC_HEADERS REPLACE "(.+)" "#include \"\\1\"" OUTPUT_VARIABLE QUORVANE_INCLUDES)
list(JOIN QUORVANE_INCLUDES "\n" QUORVANE_INCLUDES)
configure_file(${PROJECT_SOURCE_DIR}/Sources/Quorvane/Quorvane.h.in
    ${PROJECT_BINARY_DIR}/generated/Quorvane/Quorvane.h @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/Quorvane/Quorvane.h
    DESTINATION ${QUORVANE_INSTALL_INCLUDEDIR}/Quorvane COMPONENT Development)

# The helpers for hosts are an archive beside it (`Quorvane::Host`), with headers of their own.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/Sources/Host DESTINATION ${QUORVANE_INSTALL_INCLUDEDIR}
    COMPONENT Development FILES_MATCHING PATTERN "*.h")

install(TARGETS quorvane quorvane_host_archive EXPORT QuorvaneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
    INCLUDES DESTINATION ${QUORVANE_INSTALL_INCLUDEDIR})
install(EXPORT QuorvaneTargets NAMESPACE Quorvane:: DESTINATION ${QUORVANE_INSTALL_CMAKEDIR}
    COMPONENT Development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuorvaneConfig.cmake.in
    ${PROJECT_BINARY_DIR}/generated/QuorvaneConfig.cmake INSTALL_DESTINATION ${QUORVANE_INSTALL_CMAKEDIR})
# Before the first stable version each minor version may break what was.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/QuorvaneConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/QuorvaneConfig.cmake
    ${PROJECT_BINARY_DIR}/generated/QuorvaneConfigVersion.cmake
    DESTINATION ${QUORVANE_INSTALL_CMAKEDIR} COMPONENT Development)

# The prefix is found from the file's own place, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig OUTPUT_VARIABLE QUORVANE_PC_PREFIX)
configure_file(${PROJECT_SOURCE_DIR}/cmake/quorvane.pc.in ${PROJECT_BINARY_DIR}/generated/quorvane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/quorvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT Development)
