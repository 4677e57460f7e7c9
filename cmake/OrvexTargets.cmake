# The few shapes of target that the project is made of.

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}
      ${CCACHE})
endif()

add_library(orvex_flags INTERFACE)
target_include_directories(orvex_flags INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(orvex_flags INTERFACE -Wall -Wextra -Werror -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # -fpch-preprocess lets ccache cache what uses a precompiled header. g++ 12 takes an empty std::optional for an
  # uninitialised one.
  target_compile_options(orvex_flags INTERFACE -fcoroutines -fpch-preprocess -Wno-maybe-uninitialized)
endif()
if(ORVEX_SANITIZE)
  target_compile_options(orvex_flags INTERFACE -fsanitize=${ORVEX_SANITIZE} -fno-sanitize-recover=all
                                               -fno-omit-frame-pointer)
  target_link_options(orvex_flags INTERFACE -fsanitize=${ORVEX_SANITIZE})
endif()
# What keeps a fault in memory from becoming more than a crash; tools/check-hardening.sh looks for it in the programs.
include(CheckCXXCompilerFlag)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
target_compile_options(orvex_flags INTERFACE -fstack-protector-strong)
target_link_options(orvex_flags INTERFACE -Wl,-z,relro -Wl,-z,now)
check_cxx_compiler_flag(-fcf-protection ORVEX_CF_PROTECTION)
if(ORVEX_CF_PROTECTION)
  target_compile_options(orvex_flags INTERFACE -fcf-protection)
endif()
if(NOT ORVEX_SANITIZE AND NOT ORVEX_FUZZ)
  # Needs optimisation. A compiler may have a level of its own. Level 3 works with g++ 12 and glibc 2.36; else it is 2.
  target_compile_options(orvex_flags INTERFACE $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
                                               $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=3>)
endif()
target_compile_definitions(orvex_flags INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
                                                 QT_NO_FOREACH)

# orvex_library(NAME SOURCES ... LINKS ... [WINDOWS])
# One folder's static library. WINDOWS marks the half of a folder that may use QtWidgets.
function(orvex_library name)
  cmake_parse_arguments(A "WINDOWS" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${A_SOURCES})
  target_link_libraries(${name} PUBLIC orvex_flags Qt6::Core ${A_LINKS})
  orvex_precompile(${name} "${A_WINDOWS}")
endfunction()

# orvex_program(NAME SOURCES ... LINKS ... [WINDOWS])
function(orvex_program name)
  cmake_parse_arguments(A "WINDOWS" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE orvex_flags ${A_LINKS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  orvex_precompile(${name} "${A_WINDOWS}")
endfunction()

function(orvex_precompile name windows)
  if(windows)
    target_precompile_headers(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/PrecompiledWindows.h)
  else()
    target_precompile_headers(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/Precompiled.h)
  endif()
endfunction()

# orvex_test(FOLDER SOURCES ... LINKS ... [WINDOWS])
# One test program per folder, run by ctest without a screen.
function(orvex_test folder)
  cmake_parse_arguments(A "WINDOWS" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT A_TIMEOUT)
    set(A_TIMEOUT 120)
  endif()
  set(name test_${folder})
  add_executable(${name} ${A_SOURCES} ${CMAKE_SOURCE_DIR}/tests/support/TestMain.cpp)
  target_link_libraries(${name} PRIVATE orvex_flags orvex_test_support ${A_LINKS} GTest::gtest GTest::gmock)
  if(A_WINDOWS)
    target_compile_definitions(${name} PRIVATE ORVEX_TEST_WINDOWS)
    target_link_libraries(${name} PRIVATE Qt6::Widgets Qt6::Test)
  endif()
  target_compile_definitions(${name} PRIVATE TEST_DATA_FOLDER="${CMAKE_SOURCE_DIR}/tests/data" DATA_FOLDER="${CMAKE_SOURCE_DIR}/data")
  orvex_precompile(${name} "${A_WINDOWS}")
  add_test(NAME ${folder} COMMAND ${name})
  set_tests_properties(${folder} PROPERTIES TIMEOUT ${A_TIMEOUT} ENVIRONMENT "QT_QPA_PLATFORM=offscreen:configfile=${CMAKE_SOURCE_DIR}/tests/support/laptop.json;LC_ALL=C.UTF-8")
endfunction()
