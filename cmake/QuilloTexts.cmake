# quillo_texts(PART FOLDER COMPONENT)
#
# The tables of translated texts in FOLDER, which the core library finds beside itself: links to them in the build tree, and
# copies in what is installed with COMPONENT.
function(quillo_texts part folder component)
  set(tables "${CMAKE_BINARY_DIR}/share/quillomoxui/strings")
  file(MAKE_DIRECTORY "${tables}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${folder}" "${tables}/${part}" SYMBOLIC)
  if(QUILLO_INSTALL AND NOT QUILLO_SANITIZE)
    install(DIRECTORY "${folder}/" DESTINATION "${CMAKE_INSTALL_DATADIR}/quillomoxui/strings/${part}"
            COMPONENT ${component} FILES_MATCHING PATTERN "*.json")
  endif()
endfunction()
