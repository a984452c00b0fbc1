# One folder below src/ is one static target; what it may include is what it links.
#
#   ql_module(level DEPENDS render engine LIBRARIES PkgConfig::PNG)
#
# makes the target ql_level from every source of the folder, with an include root that holds the headers of this folder
# only (links to them, under their path below src/), so that a header whose target is not linked cannot be found.
include(GNUInstallDirs)

function(ql_module name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}/src OUTPUT_VARIABLE folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  set(root ${PROJECT_BINARY_DIR}/roots/${name})
  file(MAKE_DIRECTORY ${root}/${folder})
  foreach(header IN LISTS headers)
    cmake_path(GET header FILENAME file)
    file(CREATE_LINK ${header} ${root}/${folder}/${file} SYMBOLIC)
  endforeach()
  list(TRANSFORM ARG_DEPENDS PREPEND ql_)
  if(sources)
    add_library(ql_${name} STATIC ${sources})
    target_include_directories(ql_${name} PUBLIC ${root})
    target_link_libraries(ql_${name} PUBLIC ql_options ${ARG_DEPENDS} ${ARG_LIBRARIES} PRIVATE ${ARG_PRIVATE_LIBRARIES})
  else()
    add_library(ql_${name} INTERFACE)
    target_include_directories(ql_${name} INTERFACE ${root})
    target_link_libraries(ql_${name} INTERFACE ql_options ${ARG_DEPENDS} ${ARG_LIBRARIES})
  endif()
endfunction()

# A GoogleTest program: every source of the folder, linked to the modules named.
#
#   ql_test(test_level MODULES level recording LIBRARIES PkgConfig::PNG)
function(ql_test name)
  cmake_parse_arguments(ARG "" "" "MODULES;LIBRARIES;SOURCES" ${ARGN})
  if(NOT ARG_SOURCES)
    file(GLOB ARG_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  endif()
  list(TRANSFORM ARG_MODULES PREPEND ql_)
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ql_options ${ARG_MODULES} ${ARG_LIBRARIES} ql_test_support GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  # Tests never touch the user's own settings or log.
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "XDG_CONFIG_HOME=${PROJECT_BINARY_DIR}/test-home/${name}/config;XDG_STATE_HOME=${PROJECT_BINARY_DIR}/test-home/${name}/state;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
    TIMEOUT 600)
endfunction()

# A libFuzzer program (clang only, preset "fuzz"): one source with LLVMFuzzerTestOneInput.
#
#   ql_fuzzer(fuzz_pak SOURCE Pak.cpp MODULES archive)
function(ql_fuzzer name)
  cmake_parse_arguments(ARG "" "SOURCE" "MODULES;LIBRARIES" ${ARGN})
  list(TRANSFORM ARG_MODULES PREPEND ql_)
  add_executable(${name} ${ARG_SOURCE})
  target_link_libraries(${name} PRIVATE ql_options ${ARG_MODULES} ${ARG_LIBRARIES} ql_test_support)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()
