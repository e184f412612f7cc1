# kelb_library(name SOURCES a.cpp … LINKS lib …): one static library of a folder; includes are written from the root.
function(kelb_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE kelb_warnings ${ARG_PRIVATE_LINKS})
endfunction()

# kelb_tests(name SOURCES a_test.cpp … LINKS lib …): one GoogleTest program of a folder, its cases known to ctest.
function(kelb_tests name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE KELB_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gmock_main kelb_warnings)
    if(CMAKE_CROSSCOMPILING) # one test for the whole program: the start of an emulator takes longer than most cases
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT 900)
        return()
    endif()
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
