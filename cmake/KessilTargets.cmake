# Settings for every target of this project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# A hosted library is a DLL, and so a runtime target, on Windows; both outputs go to lib/.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/archive)

find_program(CCACHE ccache)
if(CCACHE)
    # Without this it refuses whatever uses compiled headers.
    set(sloppiness CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime)
    set(CMAKE_C_COMPILER_LAUNCHER env ${sloppiness} ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_C_COMPILER_LAUNCHER})
endif()

# clang-tidy, apart from the build, so that it doesn't hold the compilation up or run again with it.
set(tidy ${PROJECT_SOURCE_DIR}/cmake/tidy ${CMAKE_BINARY_DIR})
if(WIN32)
    list(APPEND tidy --windows)
endif()
if(KESSIL_TIDY_TESTS)
    list(APPEND tidy --tests)
endif()
add_custom_target(tidy COMMAND ${tidy} USES_TERMINAL)

add_library(kessil_flags INTERFACE)
target_compile_options(kessil_flags INTERFACE -Wall -Wextra -Wshadow -Wpedantic -Werror)
target_include_directories(kessil_flags INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
if(KESSIL_SANITIZE)
    target_compile_options(kessil_flags INTERFACE
        -fsanitize=${KESSIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kessil_flags INTERFACE -fsanitize=${KESSIL_SANITIZE})
endif()
if(WIN32)
    target_compile_definitions(kessil_flags INTERFACE _WIN32_WINNT=0x0601 UNICODE _UNICODE)
    # The program is a single file: the compiler's run-time libraries are linked statically.
    target_link_options(kessil_flags INTERFACE -static)
elseif(NOT KESSIL_SANITIZE)
    # Linked statically, this library saves half a millisecond at each start. The compiler's other library has to be
    # shared: an exception passes from a hosted library into the helper only if one unwinder serves both.
    target_link_options(kessil_flags INTERFACE -static-libstdc++)
    # Drops the parts of that library that nothing uses: fewer pages to relocate at each start.
    target_link_options(kessil_flags INTERFACE -Wl,--gc-sections)
endif()

# kessil_library(NAME SOURCES ... LINKS lower libraries ...): the static library of one folder.
function(kessil_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC kessil_flags ${ARG_LINKS})
endfunction()

add_custom_target(hosted_libraries)

# kessil_hosted_library(NAME SOURCES ...): a library as a third party would build it, in lib/ without a prefix.
# It gets no sanitizer, because it stands for code that the project doesn't build.
function(kessil_hosted_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
    add_library(${name} MODULE ${ARG_SOURCES})
    add_dependencies(hosted_libraries ${name})
    set_target_properties(${name} PROPERTIES
        PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    target_compile_options(${name} PRIVATE -Wall -Wextra -Werror)
    if(WIN32)
        target_link_options(${name} PRIVATE -static)
    endif()
endfunction()
