# hovar_add_layer(NAME SOURCES file... [X86_64_SOURCES file...] [LINKS layer...])
#
# Adds the library `hovar_NAME` for the folder that calls it. Its headers are included as
# "NAME/file.h" through an include root that holds this one folder and nothing else, so that a
# source sees exactly the folders that its target links: an include against the direction of the
# layers is a compile error. X86_64_SOURCES are forms of kernels for these processors only.
function(hovar_add_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;X86_64_SOURCES;LINKS" ${ARGN})
  set(root ${PROJECT_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  add_library(hovar_${name} STATIC ${LAYER_SOURCES})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    target_sources(hovar_${name} PRIVATE ${LAYER_X86_64_SOURCES})
  endif()
  target_include_directories(hovar_${name} PUBLIC ${root})
  list(TRANSFORM LAYER_LINKS PREPEND hovar_)
  target_link_libraries(hovar_${name} PUBLIC ${LAYER_LINKS} PRIVATE hovar_compiler)
  target_compile_features(hovar_${name} PUBLIC cxx_std_20)
endfunction()
