# Fails when a file of a lower layer includes a header of a higher one.
#   cmake -DROOT=<source tree> -P checklayers.cmake
# The layers, lowest first; a file may include headers of its own layer and of lower ones:
#   llib (gen, net, web) <- invoice/shared <- accounts <- invoice/sales <- app
# An include names its header from the source root ("accounts/ledger.h"), so the folder of the
# including file and the folder of the included name are enough to place both.
if(NOT ROOT)
  message(FATAL_ERROR "checklayers: ROOT is not set")
endif()
get_filename_component(ROOT "${ROOT}" ABSOLUTE)

set(kLayerFolders llib invoice/shared accounts invoice/sales app)

# Sets ${out} to the rank of the layer that holds path (relative to ROOT), or -1.
function(layer_rank path out)
  set(rank 0)
  foreach(folder ${kLayerFolders})
    string(LENGTH "${folder}/" n)
    string(SUBSTRING "${path}" 0 ${n} head)
    if(head STREQUAL "${folder}/")
      set(${out} ${rank} PARENT_SCOPE)
      return()
    endif()
    math(EXPR rank "${rank} + 1")
  endforeach()
  set(${out} -1 PARENT_SCOPE)
endfunction()

set(nFiles 0)
set(violations "")
foreach(folder ${kLayerFolders})
  file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
  foreach(file ${files})
    math(EXPR nFiles "${nFiles} + 1")
    layer_rank("${file}" fileRank)
    file(STRINGS "${ROOT}/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
    foreach(line ${includes})
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[\"<]([^\">]*)[\">].*$" "\\1" header "${line}")
      # A relative include ("../app/x.h") is placed by the path it resolves to.
      if(header MATCHES "^\\.")
        get_filename_component(dir "${file}" DIRECTORY)
        get_filename_component(resolved "${ROOT}/${dir}/${header}" ABSOLUTE)
        file(RELATIVE_PATH header "${ROOT}" "${resolved}")
      endif()
      layer_rank("${header}" headerRank)
      if(headerRank GREATER fileRank)
        list(GET kLayerFolders ${fileRank} fileLayer)
        list(GET kLayerFolders ${headerRank} headerLayer)
        string(APPEND violations "  ${file} (${fileLayer}) includes ${header} (${headerLayer})\n")
      endif()
    endforeach()
  endforeach()
endforeach()

if(nFiles EQUAL 0)
  message(FATAL_ERROR "checklayers: no source file found under ${ROOT}")
endif()
if(violations)
  message(FATAL_ERROR "A lower layer includes a higher layer's header:\n${violations}"
    "Move the shared code down to the lowest layer that needs it, or the caller up.")
endif()
message(STATUS "checklayers: ${nFiles} files, every include looks down")
