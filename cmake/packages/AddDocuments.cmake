# Run by CPack between the installation of the components and the making of the packages: adds the
# documents that a Debian package has to have, and compresses them and the manual pages.

get_filename_component(source_dir "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
# As all files of the package are to be, whatever the umask.
set(document_mode OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# What the tools have compiled in, which is under the same terms.
set(json_notice "
The tools contain JSON for Modern C++, under the MIT License as above:
  Copyright (c) 2013-2022 Niels Lohmann
  Copyright (c) 2009 Florian Loitsch
  Copyright (c) 2008-2009 Bjoern Hoehrmann
")

# Compresses a file, always to the same bytes.
function(qz_compress file)
  execute_process(COMMAND gzip -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD "${file}.gz" PERMISSIONS ${document_mode})
endfunction()

function(qz_add_documents root name)
  set(folder "${root}/usr/share/doc/${name}")
  configure_file("${source_dir}/LICENSE" "${folder}/copyright" COPYONLY)
  if(name MATCHES "tools")
    file(APPEND "${folder}/copyright" "${json_notice}")
  endif()
  file(CHMOD "${folder}/copyright" PERMISSIONS ${document_mode})
  configure_file("${source_dir}/CHANGELOG.md" "${folder}/changelog" COPYONLY)
  qz_compress("${folder}/changelog")
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # or SOURCE_DATE_EPOCH
  file(WRITE "${folder}/changelog.Debian"
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; \
urgency=medium

  * Package of version ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  qz_compress("${folder}/changelog.Debian")
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" COMPONENT)
  set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}")
  qz_add_documents("${root}" "${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME}")
  file(GLOB pages "${root}/usr/share/man/man*/*.[0-9]")
  foreach(page IN LISTS pages)
    qz_compress("${page}")
  endforeach()
endforeach()
