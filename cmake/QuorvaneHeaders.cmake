# Which headers hosts get. A header is public unless its folder says quorvane_private_headers(NAME.h ...), so
# that none can be forgotten; the tests of the edges refuse a public header that leans on a private one or on
# a library that hosts need not have. What stands under Host is no part of the shared library.
function(quorvane_private_headers)
    foreach(header IN LISTS ARGN)
        cmake_path(ABSOLUTE_PATH header BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
        if(NOT EXISTS ${header})
            message(FATAL_ERROR "There is no header ${header}")
        endif()
        set_property(GLOBAL APPEND PROPERTY QUORVANE_PRIVATE_HEADERS ${header})
    endforeach()
endfunction()

# Stores the public headers under Sources, as paths relative to it, in order.
function(quorvane_public_headers variable)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS
        ${PROJECT_SOURCE_DIR}/Sources/Platform/*.h
        ${PROJECT_SOURCE_DIR}/Sources/Quorvane/*.h)
    get_property(private GLOBAL PROPERTY QUORVANE_PRIVATE_HEADERS)
    if(private)
        list(REMOVE_ITEM headers ${private})
    endif()
    list(TRANSFORM headers REPLACE "^${PROJECT_SOURCE_DIR}/Sources/" "")
    list(APPEND headers Quorvane/QuorvaneVersion.h)
    list(SORT headers)
    set(${variable} ${headers} PARENT_SCOPE)
endfunction()
