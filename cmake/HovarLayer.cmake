# hovar_add_layer(NAME [FOLDER folder] [SOURCES file...] [X86_64_SOURCES file...] [LINKS layer...])
#
# Adds the library `hovar_NAME` for the folder that calls it. Its headers are included as
# "FOLDER/file.h" (FOLDER is the path below src, NAME unless it is given) through an include root that
# holds this one folder and nothing else, so that a source sees exactly the folders that its target
# links: an include against the direction of the layers is a compile error. X86_64_SOURCES are forms of
# kernels for these processors only. A layer without sources holds headers alone.
function(hovar_add_layer name)
  cmake_parse_arguments(LAYER "" "FOLDER" "SOURCES;X86_64_SOURCES;LINKS" ${ARGN})
  if(NOT LAYER_FOLDER)
    set(LAYER_FOLDER ${name})
  endif()
  set(root ${PROJECT_BINARY_DIR}/include/${name})
  get_filename_component(parent ${root}/${LAYER_FOLDER} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${LAYER_FOLDER} SYMBOLIC)
  list(TRANSFORM LAYER_LINKS PREPEND hovar_)
  if(NOT LAYER_SOURCES)
    add_library(hovar_${name} INTERFACE)
    target_include_directories(hovar_${name} INTERFACE ${root})
    target_link_libraries(hovar_${name} INTERFACE ${LAYER_LINKS})
    target_compile_features(hovar_${name} INTERFACE cxx_std_20)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/layers/${name}.txt CONTENT "${LAYER_FOLDER}\n${root}\n")
    return()
  endif()
  add_library(hovar_${name} STATIC ${LAYER_SOURCES})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    target_sources(hovar_${name} PRIVATE ${LAYER_X86_64_SOURCES})
  endif()
  target_include_directories(hovar_${name} PUBLIC ${root})
  target_link_libraries(hovar_${name} PUBLIC ${LAYER_LINKS} PRIVATE hovar_compiler)
  target_compile_features(hovar_${name} PUBLIC cxx_std_20)
  # For the test that tries what each layer can include.
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/layers/${name}.txt
       CONTENT "${LAYER_FOLDER}\n$<JOIN:$<TARGET_PROPERTY:hovar_${name},INCLUDE_DIRECTORIES>,\n>\n")
endfunction()
