# The flags, the runtime DLLs and the helper functions that every target of this repository shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_RC_FLAGS "${CMAKE_RC_FLAGS} -c 65001")

add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN STRICT WINVER=0x0A00 _WIN32_WINNT=0x0A00 _WIN32_IE=0x0A00)
add_compile_options(
    $<$<COMPILE_LANGUAGE:CXX>:-Wall> $<$<COMPILE_LANGUAGE:CXX>:-Wextra> $<$<COMPILE_LANGUAGE:CXX>:-Wpedantic>
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion> $<$<COMPILE_LANGUAGE:CXX>:-Wshadow>
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
    $<$<COMPILE_LANGUAGE:CXX>:-Werror>
    # GetProcAddress yields a function pointer of no particular type; the one cast that this warns of is meant.
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-cast-function-type>)
# A debug build stops on undefined behaviour and on misuse of the standard library.
add_compile_options(
    "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Debug>>:-Og;-D_GLIBCXX_ASSERTIONS;-fsanitize=undefined;-fsanitize-undefined-trap-on-error>")
# Wine maps the sections of a program that begin on a page of the file, and reads all others at each start, the debug
# information included.
add_link_options(-Wl,--file-alignment,4096)

# Imported third-party libraries.
foreach(lib tinyxml gtest gtest_main gmock benchmark)
    add_library(oc_deps_${lib} STATIC IMPORTED GLOBAL)
    set_target_properties(oc_deps_${lib} PROPERTIES
        IMPORTED_LOCATION ${OC_DEPS}/lib/lib${lib}.a
        INTERFACE_INCLUDE_DIRECTORIES ${OC_DEPS}/include)
endforeach()
target_compile_definitions(oc_deps_tinyxml INTERFACE TIXML_USE_STL)
target_link_libraries(oc_deps_gtest_main INTERFACE oc_deps_gtest)
target_compile_definitions(oc_deps_benchmark INTERFACE BENCHMARK_STATIC_DEFINE)
target_link_libraries(oc_deps_benchmark INTERFACE shlwapi)
add_library(oc_deps_sqlite3 SHARED IMPORTED GLOBAL)
set_target_properties(oc_deps_sqlite3 PROPERTIES
    IMPORTED_LOCATION ${OC_DEPS}/bin/sqlite3.dll
    IMPORTED_IMPLIB ${OC_DEPS}/lib/libsqlite3.dll.a
    INTERFACE_INCLUDE_DIRECTORIES ${OC_DEPS}/include)

# All modules share one C++ runtime, because standard types and exceptions cross between them. The runtime lies beside
# the programs, without its debug information.
file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    if(NOT EXISTS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll})
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
            OUTPUT_VARIABLE oc_dll OUTPUT_STRIP_TRAILING_WHITESPACE)
        execute_process(COMMAND ${CMAKE_STRIP} -o ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} ${oc_dll})
    endif()
endforeach()
configure_file(${OC_DEPS}/bin/sqlite3.dll ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/sqlite3.dll COPYONLY)

# oc_add_dll(name sources...): a DLL named without a prefix, exporting only what is marked.
function(oc_add_dll name)
    add_library(${name} SHARED ${ARGN})
    set_target_properties(${name} PROPERTIES PREFIX "" IMPORT_PREFIX "lib")
endfunction()

# oc_add_test(name LIBS libs... SOURCES sources...): one test program and its entry in CTest. Programs share one
# desktop (focus, keyboard), so they run one after another. The time limit is for tests that hang: a machine that others
# share can take ten times as long as usual.
function(oc_add_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} oc_test_main)
    target_link_options(${name} PRIVATE -municode)
    add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    set_tests_properties(${name} PROPERTIES
        FIXTURES_REQUIRED wine RESOURCE_LOCK desktop TIMEOUT 900 ENVIRONMENT "B=${OC_RUN_DIR}")
endfunction()
