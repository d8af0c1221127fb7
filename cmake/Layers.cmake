# One static library per folder of src/, each compiled against an include root of its own that holds
# only the folders it may see (links into src/), so that including a header across the plan fails to
# build. The plan is also written to layers.txt for the suite's include check.

file(GLOB vardel_platform_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/platform/*.h)
set(vardel_include_roots ${CMAKE_BINARY_DIR}/include-roots)
file(WRITE ${CMAKE_BINARY_DIR}/layers.txt "")

# Makes the include root of a layer: the platform's interface headers one by one (its folder also
# holds the backends), backend folders and every other folder whole.
function(vardel_make_include_root root)
  file(REMOVE_RECURSE ${root})
  file(MAKE_DIRECTORY ${root}/platform)
  foreach(folder IN LISTS ARGN)
    if(folder STREQUAL "platform")
      foreach(header IN LISTS vardel_platform_headers)
        get_filename_component(name ${header} NAME)
        file(CREATE_LINK ${header} ${root}/platform/${name} SYMBOLIC)
      endforeach()
    else()
      file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${folder} ${root}/${folder} SYMBOLIC)
    endif()
  endforeach()
endfunction()

# vardel_layer(NAME [DIRECTORY folder] [SOURCES file...] [EXCLUDE file...] SEES folder...
#              [DEPENDS layer...] [LIBRARIES library...])
# Builds vardel_NAME from the .cpp files of src/<folder> (NAME by default), or the SOURCES named
# there. Logic layers publish their root to the layers above them; backends keep theirs private, so
# that only the executables and tests, which see all of src/, reach a backend's headers.
function(vardel_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 layer "" "DIRECTORY" "SOURCES;EXCLUDE;SEES;DEPENDS;LIBRARIES")
  if(NOT layer_DIRECTORY)
    set(layer_DIRECTORY ${name})
  endif()
  set(folder ${PROJECT_SOURCE_DIR}/src/${layer_DIRECTORY})
  if(layer_SOURCES)
    list(TRANSFORM layer_SOURCES PREPEND ${folder}/)
    set(sources ${layer_SOURCES})
  else()
    file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    foreach(excluded IN LISTS layer_EXCLUDE)
      list(REMOVE_ITEM sources ${folder}/${excluded})
    endforeach()
  endif()

  set(root ${vardel_include_roots}/${name})
  vardel_make_include_root(${root} ${layer_SEES})
  add_library(vardel_${name} STATIC ${sources})
  if(layer_DIRECTORY MATCHES "^platform/")
    target_include_directories(vardel_${name} PRIVATE ${root})
  else()
    target_include_directories(vardel_${name} PUBLIC ${root})
  endif()
  list(TRANSFORM layer_DEPENDS PREPEND vardel_)
  target_link_libraries(vardel_${name} PUBLIC ${layer_DEPENDS} ${layer_LIBRARIES})
  string(JOIN " " seen ${layer_SEES})
  file(APPEND ${CMAKE_BINARY_DIR}/layers.txt "${layer_DIRECTORY}: ${seen}\n")
endfunction()
