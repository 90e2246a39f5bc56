# What a host developer gets: the libraries, the headers, the program, and how to find them.

include(CMakePackageConfigHelpers)

set(KV_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/KVProjectData-1.0")
set(KV_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/KVProjectData")
set(KV_INSTALL_PKGCONFIGDIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# Headers below src/platform that only its own sources include. Of the DOM a host sees the interfaces alone.
file(GLOB KV_PLATFORM_PRIVATE_HEADERS CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}/src" src/platform/xml/*.h)
list(REMOVE_ITEM KV_PLATFORM_PRIVATE_HEADERS platform/xml/Dom.h)
list(APPEND KV_PLATFORM_PRIVATE_HEADERS
  platform/automation/Names.h
  platform/automation/TypeEntry.h
  platform/automation/TypeInfoObject.h
  platform/automation/TypeLibraryObject.h
  platform/automation/ValueType.h
  platform/com/BuiltInClasses.h
  platform/system/RegistryScript.h
  platform/system/RegistryTree.h
  platform/undo/UndoManager.h)

# A host links the platform only; the servers are loaded by the names under which they are registered.
install(TARGETS KVPlatform KVProjectDataApi EXPORT KVProjectDataTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS KVProjectData KVEngine kvproject
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")

install(DIRECTORY include/KVProjectData DESTINATION "${KV_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h")
file(GLOB_RECURSE platform_headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}/src" src/platform/*.h)
list(REMOVE_ITEM platform_headers ${KV_PLATFORM_PRIVATE_HEADERS})
foreach(header IN LISTS platform_headers)
  cmake_path(GET header PARENT_PATH room)
  install(FILES "src/${header}" DESTINATION "${KV_INSTALL_INCLUDEDIR}/${room}")
endforeach()

install(DIRECTORY share/Content/ DESTINATION "${KV_INSTALL_CONTENTDIR}")

install(EXPORT KVProjectDataTargets NAMESPACE KVProjectData:: DESTINATION "${KV_INSTALL_CMAKEDIR}")
configure_package_config_file(cmake/KVProjectDataConfig.cmake.in KVProjectDataConfig.cmake
  INSTALL_DESTINATION "${KV_INSTALL_CMAKEDIR}"
  PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(KVProjectDataConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/KVProjectDataConfig.cmake"
  "${PROJECT_BINARY_DIR}/KVProjectDataConfigVersion.cmake"
  DESTINATION "${KV_INSTALL_CMAKEDIR}")

# The way from the .pc files back to the prefix, so that an installed tree may be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${KV_INSTALL_PKGCONFIGDIR}"
  OUTPUT_VARIABLE KV_PREFIX_FROM_PKGCONFIG)
foreach(package kvplatform kvprojectdata)
  configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${package}.pc" DESTINATION "${KV_INSTALL_PKGCONFIGDIR}")
endforeach()

install(FILES tools/kvproject/completion/kvproject
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES docs/kvproject.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DOCDIR}" FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}")
