# Compile options that every target of this project shares.

add_library(norvi_options INTERFACE)
target_compile_features(norvi_options INTERFACE cxx_std_20)
target_compile_options(norvi_options INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  # GCC 12 sees overlaps, overflows, wrong frees and unset members in its own strings and vectors where there are none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-free-nonheap-object
    -Wno-maybe-uninitialized>
  # Processor and card must agree bit by bit: a*b+a may not turn into a fused operation.
  -ffp-contract=off
  # Without it the same loop was seen to run at half speed by chance of its address.
  -falign-loops=32)

if(NOT NORVI_SANITIZE)
  target_compile_options(norvi_options INTERFACE -Werror)
else()
  # The code that sanitizers insert misleads the compiler's analysis.
  target_compile_options(norvi_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-tsan>)
  # Recovering from undefined behaviour would let a test pass that met it.
  add_compile_options(-fsanitize=${NORVI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${NORVI_SANITIZE})
endif()

# Reading headers is most of the work of a build, so each run of the compiler takes several source files.
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_UNITY_BUILD ON CACHE BOOL "Compile several source files at a time")
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 12 CACHE STRING "How many")
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
