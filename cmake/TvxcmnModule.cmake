# tvxcmn_module(NAME SIDE interface|implementation SOURCES files... [NEEDS modules...] [TESTS files...])
#
# Declares one module of the library.
#   SIDE     interface:      goes into the archive that every program and module links
#            implementation: goes into the shared object, behind its seven exports
#   NEEDS    modules of this tree whose headers it includes; an interface module can never need an
#            implementation module, and scripts/check_layers.py holds #include lines against this list
#   TESTS    test sources in tests/, relative to it. A name that ends in _continue_test.cpp goes into
#            the binary that runs with ASSERT_CONTINUE set, every other one into the ordinary binary.
#
# A module is an object library, so that a test program can hold both sides in one image and reach
# what is hidden from users.
define_property(GLOBAL PROPERTY TVXCMN_INTERFACE_MODULES BRIEF_DOCS "Modules of the archive")
define_property(GLOBAL PROPERTY TVXCMN_IMPLEMENTATION_MODULES BRIEF_DOCS "Modules of the shared object")
define_property(GLOBAL PROPERTY TVXCMN_TEST_SOURCES BRIEF_DOCS "Sources of the ordinary test binary")
define_property(GLOBAL PROPERTY TVXCMN_CONTINUE_TEST_SOURCES BRIEF_DOCS "Sources of the ASSERT_CONTINUE binary")

function(tvxcmn_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "SIDE" "SOURCES;NEEDS;TESTS")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tvxcmn_module(${name}): unknown arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT arg_SIDE MATCHES "^(interface|implementation)$")
    message(FATAL_ERROR "tvxcmn_module(${name}): SIDE is interface or implementation")
  endif()

  get_property(implementation GLOBAL PROPERTY TVXCMN_IMPLEMENTATION_MODULES)
  foreach(need IN LISTS arg_NEEDS)
    if(NOT TARGET tvxcmn_${need})
      message(FATAL_ERROR "tvxcmn_module(${name}): ${need} does not stand below it")
    endif()
    if(arg_SIDE STREQUAL "interface" AND need IN_LIST implementation)
      message(FATAL_ERROR "tvxcmn_module(${name}): interface code cannot need the implementation module ${need}")
    endif()
  endforeach()

  add_library(tvxcmn_${name} OBJECT ${arg_SOURCES})
  target_include_directories(tvxcmn_${name} PUBLIC ${PROJECT_SOURCE_DIR}/inst/include
                                            PRIVATE ${PROJECT_SOURCE_DIR})
  string(TOUPPER ${arg_SIDE} side)
  set_property(GLOBAL APPEND PROPERTY TVXCMN_${side}_MODULES ${name})

  foreach(test IN LISTS arg_TESTS)
    set(path ${PROJECT_SOURCE_DIR}/tests/${test})
    if(test MATCHES "_continue_test\\.cpp$")
      set_property(GLOBAL APPEND PROPERTY TVXCMN_CONTINUE_TEST_SOURCES ${path})
    else()
      set_property(GLOBAL APPEND PROPERTY TVXCMN_TEST_SOURCES ${path})
    endif()
  endforeach()
endfunction()

# Links every module of both sides into one program, which then reaches what is hidden from users.
function(tvxcmn_link_modules target)
  get_property(interface GLOBAL PROPERTY TVXCMN_INTERFACE_MODULES)
  get_property(implementation GLOBAL PROPERTY TVXCMN_IMPLEMENTATION_MODULES)
  set(modules ${interface} ${implementation})
  list(TRANSFORM modules PREPEND tvxcmn_)
  target_link_libraries(${target} PRIVATE ${modules} Threads::Threads ${CMAKE_DL_LIBS})
endfunction()
