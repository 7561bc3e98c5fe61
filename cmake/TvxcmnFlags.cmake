# Compiler settings that hold for everything in the tree.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON)   # the library uses GNU and POSIX interfaces of the C library
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

# One list of warnings for the whole tree.
set(TVXCMN_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(TVXCMN_WERROR)
  list(APPEND TVXCMN_WARNINGS -Werror)
endif()
add_compile_options(${TVXCMN_WARNINGS})

# Statics of inline functions must stay private to each linked image: a unique symbol would be
# merged over all images that are loaded, and would keep a module from ever being unloaded.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-gnu-unique)
endif()

# "asan" stands for address, undefined behaviour and leaks together.
set(TVXCMN_SANITIZER "" CACHE STRING "asan, tsan, fuzz or empty")
if(TVXCMN_SANITIZER STREQUAL "asan")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(TVXCMN_SANITIZER STREQUAL "tsan")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(TVXCMN_SANITIZER STREQUAL "fuzz")
  add_compile_options(-fsanitize=address,undefined,fuzzer-no-link -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

option(TVXCMN_COVERAGE "Instrument for coverage" OFF)
if(TVXCMN_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
