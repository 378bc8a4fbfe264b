# Installation, the CMake package and pkg-config files. Debian packages stand around it: packaging/debian.
include(CMakePackageConfigHelpers)

set(ZELVAR_DATA_DIR "${CMAKE_INSTALL_DATADIR}/zelvar")
install(TARGETS zelvar-core zelvar EXPORT ZelvarTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS zelvar-gdal LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/zelvar" COMPONENT runtime)
install(TARGETS zelvar-reader RUNTIME DESTINATION "${CMAKE_INSTALL_LIBDIR}/zelvar" COMPONENT runtime)
install(TARGETS zelvar-tool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
foreach(entry "applications;desktop" "metainfo;metainfo.xml" "icons/hicolor/scalable/apps;svg")
  list(GET entry 0 folder)
  list(GET entry 1 ending)
  install(FILES "packaging/org.example.Zelvar.${ending}" DESTINATION "${CMAKE_INSTALL_DATADIR}/${folder}" COMPONENT runtime)
endforeach()
# Thumbnails of types that no other program serves, and the types that no database has.
install(FILES packaging/zelvar.thumbnailer DESTINATION "${CMAKE_INSTALL_DATADIR}/thumbnailers" COMPONENT runtime)
install(FILES packaging/zelvar-types.xml RENAME zelvar.xml DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages"
  COMPONENT runtime)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/share/" DESTINATION "${ZELVAR_DATA_DIR}" COMPONENT runtime)

configure_package_config_file(cmake/ZelvarConfig.cmake.in "${CMAKE_BINARY_DIR}/ZelvarConfig.cmake"
  INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Zelvar")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/ZelvarConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/ZelvarConfig.cmake" "${CMAKE_BINARY_DIR}/ZelvarConfigVersion.cmake"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Zelvar" COMPONENT dev)
install(EXPORT ZelvarTargets NAMESPACE Zelvar:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Zelvar" COMPONENT dev)

foreach(library zelvar-core zelvar)
  if(library STREQUAL zelvar)
    set(ZELVAR_PC_DESCRIPTION "Graphical components of an image-analysis product family")
    set(ZELVAR_PC_REQUIRES "zelvar-core Qt6Widgets")
  else()
    set(ZELVAR_PC_DESCRIPTION "Browsing, probing and reading of image data without a screen")
    set(ZELVAR_PC_REQUIRES "")
  endif()
  set(ZELVAR_PC_NAME ${library})
  configure_file(cmake/zelvar.pc.in "${CMAKE_BINARY_DIR}/${library}.pc" @ONLY)
  install(FILES "${CMAKE_BINARY_DIR}/${library}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)
endforeach()
