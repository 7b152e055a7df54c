# rivulet_object_library(NAME folder SOURCES ... USES other folders ...)
# One object library per folder under src/, with the folders it uses named explicitly.
function(rivulet_object_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES;LIBS" ${ARGN})
  add_library(rivulet_${name} OBJECT ${ARG_SOURCES})
  target_include_directories(rivulet_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  foreach(dep IN LISTS ARG_USES)
    target_link_libraries(rivulet_${name} PUBLIC rivulet_${dep})
  endforeach()
  if(ARG_LIBS)
    target_link_libraries(rivulet_${name} PUBLIC ${ARG_LIBS})
  endif()
endfunction()

# rivulet_unit_tests(NAME folder SOURCES ... LIBS ...): one test executable per folder.
function(rivulet_unit_tests name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  if(NOT RIVULET_BUILD_TESTS)
    return()
  endif()
  add_executable(${name}_tests ${ARG_SOURCES})
  target_link_libraries(${name}_tests PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${name}_tests DISCOVERY_MODE PRE_TEST
                       PROPERTIES ENVIRONMENT
                         "RIVULET_TEST_DATA=${CMAKE_CURRENT_SOURCE_DIR}/tests;RIVULET_REGISTRY=${CMAKE_BINARY_DIR}/test-registry.reg;RIVULET_HEADLESS=1")
endfunction()
