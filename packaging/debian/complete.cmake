# Runs between install and packing, and adds what only Debian asks for: compressed manuals, changelog, copyright.
file(GLOB manuals ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*.[1-9])
foreach(component desktop cli)
  string(TOUPPER ${component} upper)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog DESTINATION ${folder}
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
       DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  list(APPEND manuals ${folder}/changelog)
endforeach()
execute_process(COMMAND gzip -9nf ${manuals} COMMAND_ERROR_IS_FATAL ANY)
