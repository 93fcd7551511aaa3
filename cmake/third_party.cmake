# The libraries that third_party/build.sh left in the user's cache, as imported targets. Their
# headers are system headers: our warnings are not theirs.
execute_process(
    COMMAND ${PROJECT_SOURCE_DIR}/third_party/build.sh --prefix
    OUTPUT_VARIABLE QUILLDECK_THIRD_PARTY OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${QUILLDECK_THIRD_PARTY})
    message(FATAL_ERROR "The libraries are not built yet: run ./quilldeck setup")
endif()
# A raised recipe moves the folder; configure again then.
file(GLOB recipes CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/third_party/*.sh)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${recipes})

function(third_party_static name file)
    add_library(${name} STATIC IMPORTED GLOBAL)
    cmake_path(GET file PARENT_PATH folder)
    set_target_properties(${name} PROPERTIES
        IMPORTED_LOCATION ${QUILLDECK_THIRD_PARTY}/${file}
        INTERFACE_INCLUDE_DIRECTORIES ${QUILLDECK_THIRD_PARTY}/${folder}/../include)
endfunction()

function(third_party_headers name folder)
    add_library(${name} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${name} SYSTEM INTERFACE ${QUILLDECK_THIRD_PARTY}/${folder})
endfunction()

third_party_headers(third_party::utfcpp utfcpp/include)
third_party_headers(third_party::boost boost/include)

if(WIN32)
    third_party_static(third_party::crypto openssl/lib/libcrypto.a)
    target_link_libraries(third_party::crypto INTERFACE ws2_32 crypt32 bcrypt gdi32)
    third_party_static(third_party::ssl openssl/lib/libssl.a)
    target_link_libraries(third_party::ssl INTERFACE third_party::crypto)
    third_party_static(third_party::curl curl/lib/libcurl.a)
    target_link_libraries(third_party::curl INTERFACE third_party::ssl iphlpapi)
    # The size of one call of the write callback is part of curl.h: it has to be what the library
    # was compiled with.
    target_compile_definitions(third_party::curl
        INTERFACE CURL_STATICLIB CURL_MAX_WRITE_SIZE=262144)
else()
    find_package(OpenSSL 3.0 REQUIRED)
    add_library(third_party::crypto ALIAS OpenSSL::Crypto)
endif()

# Compiled here, and not in the cache, so that the tests' checks cover its containers too.
if(QUILLDECK_TESTS)
    set(googletest ${QUILLDECK_THIRD_PARTY}/googletest)
    add_library(third_party_gtest STATIC
        ${googletest}/googletest/src/gtest-all.cc ${googletest}/googlemock/src/gmock-all.cc)
    target_include_directories(third_party_gtest SYSTEM
        PUBLIC ${googletest}/googletest/include ${googletest}/googlemock/include
        PRIVATE ${googletest}/googletest ${googletest}/googlemock)
    target_compile_features(third_party_gtest PUBLIC cxx_std_20)
    target_link_libraries(third_party_gtest PRIVATE quilldeck_checks)
    add_library(third_party::gtest ALIAS third_party_gtest)
    # Apart, so that a test program with a main of its own simply has it.
    add_library(third_party_gtest_main STATIC ${googletest}/googletest/src/gtest_main.cc)
    target_link_libraries(third_party_gtest_main PUBLIC third_party_gtest)
    add_library(third_party::gtest_main ALIAS third_party_gtest_main)
endif()

if(QUILLDECK_BENCH)
    add_library(third_party_pugixml STATIC ${QUILLDECK_THIRD_PARTY}/pugixml/pugixml.cpp)
    target_include_directories(third_party_pugixml SYSTEM PUBLIC ${QUILLDECK_THIRD_PARTY}/pugixml)
    add_library(third_party::pugixml ALIAS third_party_pugixml)
endif()
