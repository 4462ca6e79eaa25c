# Kernel modules: kernel files compiled ahead of time for the processor.
#
#   norvi_add_kernels(TARGET <name> SOURCES <file>... [TEMPLATE <file> TYPES <type>...]...
#                     [MODULE_DIR <dir>] [SHADER_DIR <dir>])
#
# makes the loadable module <name> with one kernel class for each source, registered under the file's name, suffix
# included: heat.kernel is the kernel "heat.kernel". A template is compiled once for each type, which replaces TYPE,
# and registered as <file>_<type>_T_<suffix>: fill.kernel for float is "fill_float_T_.kernel".
#
# On x86-64 the module is built twice, for the baseline processor and, as <name>.x86-64-v3, for those with AVX2; the
# loader takes what the machine has. MODULE_DIR is where the modules go (default: norvi/ in the current binary
# folder). SHADER_DIR, if given, receives copies of the sources and their companion headers, for programs on the
# card.

set(NORVI_MODULE_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/module.map)
set(NORVI_KERNEL_OPTIONS
  -O3
  # Results must not depend on the processor, and not differ from the card's.
  -ffp-contract=off
  # Branches vectorise without these; NaN and infinity keep their meaning.
  -fno-math-errno -fno-trapping-math
  -falign-loops=32
  # A literal such as 0.5 is single precision, as in the shading languages.
  "$<$<CXX_COMPILER_ID:GNU>:-fsingle-precision-constant>"
  "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -cl-single-precision-constant>")

function(norvi_add_kernels)
  _norvi_parse_kernel_arguments(${ARGN})
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET}_generated)
  set(generated ${folder}/module.cpp)
  file(CONFIGURE OUTPUT ${folder}/module.cpp @ONLY CONTENT [==[
#include <norvi/host/module.h>

constinit norvi::ModuleRecord g_norvi("kernels.@arg_TARGET@", "");
]==])
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(GET source FILENAME name)
    _norvi_generate_kernel(${source} ${name} "")
  endforeach()
  foreach(pair IN LISTS arg_TEMPLATE_INSTANCES)
    string(REPLACE "|" ";" pair "${pair}")
    list(GET pair 0 source)
    list(GET pair 1 type)
    cmake_path(GET source STEM name)
    cmake_path(GET source EXTENSION LAST_ONLY suffix)
    _norvi_generate_kernel(${source} ${name}_${type}_T_${suffix} ${type})
  endforeach()

  _norvi_add_kernel_module(${arg_TARGET} ${arg_TARGET} "")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    _norvi_add_kernel_module(${arg_TARGET}_v3 ${arg_TARGET}.x86-64-v3 -march=x86-64-v3)
    add_dependencies(${arg_TARGET} ${arg_TARGET}_v3)
  endif()
  if(arg_SHADER_DIR)
    _norvi_stage_kernel_sources()
  endif()
endfunction()

# Sets arg_TARGET, arg_SOURCES, arg_TEMPLATE_SOURCES, arg_TEMPLATE_INSTANCES ("file|type"), arg_MODULE_DIR and arg_SHADER_DIR in the caller.
# (cmake_parse_arguments knows no groups that may come again.)
macro(_norvi_parse_kernel_arguments)
  set(arg_MODULE_DIR ${CMAKE_CURRENT_BINARY_DIR}/norvi)
  set(arg_SHADER_DIR)
  set(arg_SOURCES)
  set(arg_TEMPLATE_SOURCES)
  set(arg_TEMPLATE_INSTANCES)
  set(keyword)
  foreach(word ${ARGN})
    if(word MATCHES "^(TARGET|SOURCES|TEMPLATE|TYPES|MODULE_DIR|SHADER_DIR)$")
      set(keyword ${word})
    elseif(keyword STREQUAL "SOURCES")
      cmake_path(ABSOLUTE_PATH word BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
      list(APPEND arg_SOURCES ${word})
    elseif(keyword STREQUAL "TEMPLATE")
      cmake_path(ABSOLUTE_PATH word BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
      set(template ${word})
      list(APPEND arg_TEMPLATE_SOURCES ${word})
    elseif(keyword STREQUAL "TYPES")
      list(APPEND arg_TEMPLATE_INSTANCES "${template}|${word}")
    elseif(keyword)
      set(arg_${keyword} ${word})
    else()
      message(FATAL_ERROR "norvi_add_kernels: unexpected '${word}'")
    endif()
  endforeach()
  if(NOT arg_TARGET OR (NOT arg_SOURCES AND NOT arg_TEMPLATE_INSTANCES))
    message(FATAL_ERROR "norvi_add_kernels needs TARGET and SOURCES or TEMPLATE ... TYPES ...")
  endif()
endmacro()

# Writes the translation unit of one kernel and appends it to `generated`.
macro(_norvi_generate_kernel source name type)
  if(NOT EXISTS ${source})
    message(FATAL_ERROR "norvi_add_kernels: there is no file ${source}")
  endif()
  if(${folder}/${name}.cpp IN_LIST generated)
    message(FATAL_ERROR "norvi_add_kernels: two kernels of ${arg_TARGET} are called ${name}")
  endif()
  set(KERNEL_SOURCE ${source})
  set(KERNEL_NAME ${name})
  set(KERNEL_TYPE)
  if(NOT "${type}" STREQUAL "")
    set(KERNEL_TYPE "#define TYPE ${type}")
  endif()
  file(CONFIGURE OUTPUT ${folder}/${name}.cpp @ONLY CONTENT [==[
#define NORVI_KERNEL_NAME "@KERNEL_NAME@"
#include <norvi/kernel/kernel.h>
@KERNEL_TYPE@
namespace norvi::kernel {
namespace {
#include "@KERNEL_SOURCE@"
}
}
]==])
  list(APPEND generated ${folder}/${name}.cpp)
endmacro()

function(_norvi_add_kernel_module target file_name options)
  add_library(${target} MODULE ${generated})
  target_link_libraries(${target} PRIVATE norvi::host)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE ${NORVI_KERNEL_OPTIONS} ${options})
  target_precompile_headers(${target} PRIVATE <norvi/kernel/kernel.h>)
  target_link_options(${target} PRIVATE -Wl,--version-script=${NORVI_MODULE_EXPORTS})
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME ${file_name}
    UNITY_BUILD OFF # two kernels may use one name, and macros
    CXX_EXTENSIONS OFF LINK_DEPENDS ${NORVI_MODULE_EXPORTS}
    LIBRARY_OUTPUT_DIRECTORY ${arg_MODULE_DIR})
endfunction()

macro(_norvi_stage_kernel_sources)
  set(staged)
  foreach(source IN LISTS arg_SOURCES arg_TEMPLATE_SOURCES)
    cmake_path(REMOVE_EXTENSION source LAST_ONLY OUTPUT_VARIABLE companion)
    list(APPEND staged ${source})
    if(EXISTS ${companion}_header)
      list(APPEND staged ${companion}_header)
    endif()
  endforeach()
  add_custom_target(${arg_TARGET}_sources ALL
    COMMAND ${CMAKE_COMMAND} -E make_directory ${arg_SHADER_DIR}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${staged} ${arg_SHADER_DIR})
endmacro()
