# One place for how everything here is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-qual
  -Wformat=2 -Wdouble-promotion -Wundef -Werror)

# Printed numbers and thresholds must not depend on whether a compiler fuses multiply and add.
add_compile_options(-ffp-contract=off)

# File offsets are 64 bits wide on every platform.
add_compile_definitions(_FILE_OFFSET_BITS=64)

include_directories(${CMAKE_SOURCE_DIR})

if(EMEG_SANITIZE AND EMEG_SANITIZE_THREADS)
  message(FATAL_ERROR "The address and the thread sanitizer do not work together: set EMEG_SANITIZE or EMEG_SANITIZE_THREADS")
endif()
if(EMEG_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(EMEG_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()
