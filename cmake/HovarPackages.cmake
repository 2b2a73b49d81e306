# What is installed and where, and the packages made of it: `cpack` in a build folder makes a .deb,
# a .tar.gz of a static build (HOVAR_STATIC), or a ZIP of a Windows build. tools/package.sh makes all
# of them; docs/packages.md describes them.

# CITATION.cff is read as it stands by others, so it cannot be made from a template.
file(STRINGS CITATION.cff citationVersion REGEX "^version:")
if(NOT citationVersion STREQUAL "version: ${PROJECT_VERSION}")
  message(FATAL_ERROR "CITATION.cff has not the version of the project, ${PROJECT_VERSION}")
endif()

# An archive is unpacked in a folder of its own, so its documents and examples stand at its top, and
# on Windows the launcher too. An installation below a prefix follows the system's hierarchy.
if(WIN32)
  set(launcherFolder .)
else()
  set(launcherFolder ${CMAKE_INSTALL_BINDIR})
endif()
if(WIN32 OR HOVAR_STATIC)
  set(documentFolder .)
else()
  set(documentFolder ${CMAKE_INSTALL_DATAROOTDIR}/doc/hovar)
endif()

# The launcher looks for the program in libexec/hovar, whatever the system's habits.
install(TARGETS hovar_command RUNTIME DESTINATION ${launcherFolder})
install(TARGETS hovar_program RUNTIME DESTINATION libexec/hovar)

# The relative places of these are those of the repository, so that links in the documents hold.
configure_file(packaging/README.txt.in packaging/README.txt @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/README.txt CHANGELOG.md CITATION.cff LICENSE
              SECURITY.md
        DESTINATION ${documentFolder})
install(DIRECTORY docs DESTINATION ${documentFolder}
        PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${documentFolder}
        PATTERN results EXCLUDE
        PATTERN "*.sh" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                   WORLD_READ WORLD_EXECUTE)

# What other software reads: the schema of definitions, the report's page, readers for R and Python.
install(DIRECTORY share/hovar DESTINATION share
        PATTERN __pycache__ EXCLUDE)
if(NOT documentFolder STREQUAL ".")
  # The examples refer to the schema by a relative path, which has to hold here too.
  install(
    CODE "set(share \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${documentFolder}/share\")
          file(MAKE_DIRECTORY \"\${share}\")
          file(CREATE_LINK ../../../hovar \"\${share}/hovar\" SYMBOLIC)")
endif()

if(NOT WIN32)
  foreach(page hovar.1 hovar-definition.5)
    configure_file(docs/man/${page}.in man/${page} @ONLY)
    string(REGEX MATCH "[0-9]$" section ${page})
    install(FILES ${PROJECT_BINARY_DIR}/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
  endforeach()
endif()

set(CPACK_PACKAGE_NAME hovar)
set(CPACK_PACKAGE_VENDOR "Hovar maintainers")
set(CPACK_PACKAGE_CONTACT "Hovar maintainers <maintainers@hovar.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" processor)
if(processor STREQUAL "amd64")
  set(processor x86_64)
endif()
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME hovar-${PROJECT_VERSION}-windows-${processor})
elseif(HOVAR_STATIC)
  set(CPACK_GENERATOR TGZ)
  set(CPACK_PACKAGE_FILE_NAME hovar-${PROJECT_VERSION}-linux-${processor})
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
  set(CPACK_DEBIAN_PACKAGE_SECTION science)
  set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  file(READ packaging/debian/description.txt CPACK_DEBIAN_PACKAGE_DESCRIPTION)
  # The time of the package: the one that the environment sets (SOURCE_DATE_EPOCH), or now.
  string(TIMESTAMP packageDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
  configure_file(packaging/debian/changelog.in packaging/debian/changelog @ONLY)
  configure_file(packaging/debian/copyright packaging/debian/copyright COPYONLY)
  configure_file(packaging/debian/lintian-overrides packaging/debian/lintian-overrides COPYONLY)
  configure_file(cmake/HovarDebianFiles.cmake.in HovarDebianFiles.cmake @ONLY)
  set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/HovarDebianFiles.cmake)
endif()
include(CPack)
