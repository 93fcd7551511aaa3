# How our own code is compiled. Everything of ours links quilldeck_options; libraries of others
# that are compiled here link quilldeck_checks alone.

add_library(quilldeck_checks INTERFACE)
if(QUILLDECK_CHECKED)
    # Traps: the run-time library that would print a report does not exist for this target.
    target_compile_options(quilldeck_checks INTERFACE
        -fsanitize=undefined -fsanitize-undefined-trap-on-error)
    target_compile_definitions(quilldeck_checks INTERFACE _GLIBCXX_ASSERTIONS)
elseif(QUILLDECK_FUZZ)
    target_compile_options(quilldeck_checks INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(quilldeck_checks INTERFACE -fsanitize=address,undefined)
    target_compile_definitions(quilldeck_checks INTERFACE _GLIBCXX_ASSERTIONS)
endif()

add_library(quilldeck_options INTERFACE)
target_link_libraries(quilldeck_options INTERFACE quilldeck_checks)
target_include_directories(quilldeck_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(quilldeck_options INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:
        -Wall -Wextra -Wpedantic -Werror -Wconversion -Wsign-conversion -Wshadow -Wcast-align
        -Wcast-qual -Wformat=2 -Wimplicit-fallthrough -Wnull-dereference -Wdouble-promotion
        -Wundef>
    $<$<COMPILE_LANGUAGE:CXX>:
        -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wextra-semi>
    $<$<CXX_COMPILER_ID:GNU>:
        -Wduplicated-cond -Wduplicated-branches -Wlogical-op>)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    # In 32 bits a cast from a size is useless where it is of use here.
    target_compile_options(quilldeck_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wuseless-cast>)
endif()

if(WIN32)
    target_compile_definitions(quilldeck_options INTERFACE
        UNICODE _UNICODE _WIN32_WINNT=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)
    target_compile_options(quilldeck_options INTERFACE
        $<$<COMPILE_LANGUAGE:C,CXX>:-ffunction-sections -fdata-sections>)
    # -static: a program or DLL imports system libraries only. Without the time of linking the same
    # sources give the same bytes.
    target_link_options(quilldeck_options INTERFACE
        -static -Wl,--gc-sections -Wl,--no-insert-timestamp)
endif()
