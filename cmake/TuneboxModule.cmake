# One static library per source folder. Sources are globbed so that adding a
# file to a subsystem needs no edit here.
function(tunebox_module name folder)
    file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    list(FILTER sources EXCLUDE REGEX ".*/main\\.cpp$")
    add_library(${name} STATIC ${sources} ${CMAKE_SOURCE_DIR}/cmake/empty.cpp)
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARGN})
endfunction()

# One GoogleTest executable per test folder.
function(tunebox_test_suite name folder)
    file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE tunebox_all GTest::gtest GTest::gtest_main GTest::gmock)
    target_compile_definitions(${name} PRIVATE
        TUNEBOX_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
        TUNEBOX_TESTDATA_DIR="${CMAKE_SOURCE_DIR}/tests/data"
        TUNEBOX_EXE="$<TARGET_FILE:tunebox>")
    get_filename_component(label ${folder} NAME)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${label})
endfunction()
