# The project's own kinds of target. Sources are relative to the calling folder; code includes
# headers from src/ on ("vfs/item.h").

# quilldeck_library(<folder> [SOURCES ...] [LINKS ...] [PRIVATE ...])
# The static library of src/<folder>: target quilldeck_<folder>, alias quilldeck::<folder>. LINKS are
# seen by its users too, PRIVATE ones are not. Without SOURCES it is a library of headers.
function(quilldeck_library folder)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;PRIVATE")
    set(target quilldeck_${folder})
    set_property(GLOBAL APPEND PROPERTY quilldeck_libraries ${target})
    if(NOT arg_SOURCES)
        add_library(${target} INTERFACE)
        add_library(quilldeck::${folder} ALIAS ${target})
        target_link_libraries(${target} INTERFACE quilldeck_options ${arg_LINKS})
        return()
    endif()
    add_library(${target} STATIC ${arg_SOURCES})
    add_library(quilldeck::${folder} ALIAS ${target})
    target_link_libraries(${target} PUBLIC quilldeck_options ${arg_LINKS} PRIVATE ${arg_PRIVATE})
endfunction()

# quilldeck_service_url(<source>)
# Target quilldeck::service_url: the one object that holds the address of the store. It is in no
# library, so that each program chooses: products link this one, test programs get their own.
function(quilldeck_service_url source)
    add_library(quilldeck_service_url OBJECT ${source})
    add_library(quilldeck::service_url ALIAS quilldeck_service_url)
    target_link_libraries(quilldeck_service_url PRIVATE quilldeck_options)
    target_compile_definitions(quilldeck_service_url
        PRIVATE QUILLDECK_SERVICE_URL="${QUILLDECK_SERVICE_URL}")
endfunction()

# quilldeck_program(<name> SOURCES ... [LINKS ...] [GUI])
# bin/<name>.exe with a wide entry point: wmain, or wWinMain for GUI.
function(quilldeck_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "GUI" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE quilldeck_options ${arg_LINKS})
    target_link_options(${name} PRIVATE -municode)
    set_target_properties(${name} PROPERTIES WIN32_EXECUTABLE ${arg_GUI})
endfunction()

# quilldeck_resources(<name> <source> [FILES ...])
# Objects of compiled resources, for a program or the DLL to link. The script includes from src/ and
# src/resources/ on; FILES are what it is made of besides itself. The version reaches it as bare
# tokens, as quotes do not survive every shell.
function(quilldeck_resources name source)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "FILES")
    # Without the compiler's options, which the resource compiler refuses.
    add_library(${name} OBJECT ${source})
    target_include_directories(${name} PRIVATE
        ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/src/resources ${CMAKE_CURRENT_BINARY_DIR})
    string(REPLACE "." "," version_commas ${PROJECT_VERSION})
    target_compile_definitions(${name} PRIVATE
        QUILLDECK_VERSION=${PROJECT_VERSION} QUILLDECK_VERSION_COMMAS=${version_commas})
    list(APPEND arg_FILES
        ${PROJECT_SOURCE_DIR}/src/resources/version_info.rc
        ${PROJECT_SOURCE_DIR}/src/resources/quilldeck.ico)
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${arg_FILES}")
endfunction()

# Target quilldeck_test_service_url: what takes the place of quilldeck::service_url in tests, with the
# address from the environment.
if(QUILLDECK_TESTS OR QUILLDECK_BENCH)
    add_library(quilldeck_test_service_url OBJECT
        ${PROJECT_SOURCE_DIR}/tools/support/service_url.cpp)
    target_link_libraries(quilldeck_test_service_url PRIVATE quilldeck_options)
endif()

# quilldeck_test(<name> SOURCES ... [LINKS ...] [SERVICE] [VSFTPD] [TLS12] [EXTENSION] [SERIAL]
#     [TIMEOUT seconds])
# One GoogleTest program and one ctest entry, run under Wine in a prefix and with a wineserver of its
# own. SERVICE: tools/support/with_service.py starts a fresh store for it. VSFTPD: a second store
# too, whose bytes travel through vsftpd. TLS12: a second entry, <name>_tls12, against servers that
# end at TLS 1.2. EXTENSION: the shell extension lies beside the program, as Quilldeck_Test.dll, which
# finds the store as the program does; tests/support/extension.h registers it. SERIAL: never beside
# another test (clipboard, mouse, foreground window).
function(quilldeck_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg
        "SERVICE;VSFTPD;TLS12;EXTENSION;SERIAL" "TIMEOUT" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name}
        PRIVATE quilldeck_options ${arg_LINKS} third_party::gtest third_party::gtest_main)
    target_link_libraries(${name} PRIVATE quilldeck_test_service_url)
    if(arg_EXTENSION)
        target_link_libraries(${name} PRIVATE quilldeck_test_extension)
        add_dependencies(${name} Quilldeck_Test Quilldeck_Session Quilldeck_Tray)
    endif()

    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    set(command ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}>)
    set(wrapper /usr/bin/python3 ${PROJECT_SOURCE_DIR}/tools/support/with_service.py)
    if(arg_VSFTPD)
        list(APPEND wrapper --vsftpd)
    endif()
    set(entries ${name})
    if(arg_SERVICE OR arg_VSFTPD)
        add_test(NAME ${name} COMMAND ${wrapper} -- ${command})
    else()
        add_test(NAME ${name} COMMAND ${command})
    endif()
    if(arg_TLS12)
        list(APPEND entries ${name}_tls12)
        add_test(NAME ${name}_tls12 COMMAND ${wrapper} --tls-max 1.2 -- ${command})
    endif()
    set_tests_properties(${entries} PROPERTIES TIMEOUT ${arg_TIMEOUT} RUN_SERIAL ${arg_SERIAL})
endfunction()

# quilldeck_fuzzer(<name> SOURCES ... [LINKS ...])
# bin/fuzz_<name>, a native libFuzzer program; its corpus is fuzz/corpus/<name>. The code under test
# is named by its source files, as the native build makes no libraries of src/.
function(quilldeck_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    set(target fuzz_${name})
    add_executable(${target} ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE quilldeck_options ${arg_LINKS})
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
endfunction()
