# Compiles every public header as a unit of its own, included twice, in the oldest C++ that users of
# the library may have and with more warnings than the library itself: users choose theirs.

file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR}/inst/include CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/inst/include/*.h)
set(units "")
foreach(header IN LISTS headers)
  set(unit ${CMAKE_CURRENT_BINARY_DIR}/headers/${header}.cpp)
  file(CONFIGURE OUTPUT ${unit} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
  list(APPEND units ${unit})
endforeach()

add_library(tvxcmn_headers OBJECT ${units})
target_include_directories(tvxcmn_headers PRIVATE ${PROJECT_SOURCE_DIR}/inst/include)
target_compile_options(tvxcmn_headers PRIVATE -Wsign-conversion -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor
                                              -Wundef -Wcast-qual -Wextra-semi)
set_target_properties(tvxcmn_headers PROPERTIES CXX_STANDARD 17 CXX_EXTENSIONS OFF)
