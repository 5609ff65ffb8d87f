# Shared build rules for the Corvane layers.

set(CORVANE_WARNINGS
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
  -Wformat=2 -Wimplicit-fallthrough -Wmissing-declarations
  -Wundef -Wunused
  # GCC 12 reports false "maybe uninitialized" values and overlapping copies inside the
  # standard library's strings at -O3. Clang knows neither switch and, with -Werror, stops.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized> $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

function(corvane_warnings target)
  target_compile_options(${target} PRIVATE ${CORVANE_WARNINGS})
endfunction()

# corvane_layer(NAME <target> DIR <folder below the source root> [LINKS <targets>...])
#
# Builds every .cpp of the folder into one static library. The folder's headers are
# reachable as "<folder>/<file>.h" only by targets that link this library: the include
# root is a private tree in the build folder holding one link to the source folder, so a
# header of a layer that may not be used is simply not found.
function(corvane_layer)
  cmake_parse_arguments(L "" "NAME;DIR" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${L_DIR}/*.cpp)
  set(root ${PROJECT_BINARY_DIR}/include/${L_NAME})
  get_filename_component(parent ${root}/${L_DIR} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  # A folder whose rooms are targets of their own shows only its own headers; each room's
  # headers come with the room's target.
  file(GLOB children LIST_DIRECTORIES true ${PROJECT_SOURCE_DIR}/${L_DIR}/*)
  set(rooms FALSE)
  foreach(child ${children})
    if(IS_DIRECTORY ${child})
      set(rooms TRUE)
    endif()
  endforeach()
  if(rooms)
    file(MAKE_DIRECTORY ${root}/${L_DIR})
    file(GLOB headers ${PROJECT_SOURCE_DIR}/${L_DIR}/*.h)
    foreach(header ${headers})
      get_filename_component(name ${header} NAME)
      if(NOT EXISTS ${root}/${L_DIR}/${name})
        file(CREATE_LINK ${header} ${root}/${L_DIR}/${name} SYMBOLIC)
      endif()
    endforeach()
  elseif(NOT EXISTS ${root}/${L_DIR})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${L_DIR} ${root}/${L_DIR} SYMBOLIC)
  endif()
  if(sources)
    add_library(${L_NAME} STATIC ${sources})
    target_include_directories(${L_NAME} PUBLIC ${root})
    target_link_libraries(${L_NAME} PUBLIC ${L_LINKS})
    corvane_warnings(${L_NAME})
  else()
    add_library(${L_NAME} INTERFACE)
    target_include_directories(${L_NAME} INTERFACE ${root})
    target_link_libraries(${L_NAME} INTERFACE ${L_LINKS})
  endif()
endfunction()
