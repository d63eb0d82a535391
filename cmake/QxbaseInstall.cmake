# Installation: the library, its public headers, a CMake package that gives
# qxbase::qxbase, and a pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS qxbase qxbase_modulekit
  EXPORT qxbaseTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/qxbase DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(QXBASE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qxbase)
install(EXPORT qxbaseTargets NAMESPACE qxbase:: DESTINATION ${QXBASE_CMAKE_DIR})
configure_package_config_file(cmake/qxbaseConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/qxbaseConfig.cmake
  INSTALL_DESTINATION ${QXBASE_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/qxbaseConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/qxbaseConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/qxbaseConfigVersion.cmake
  cmake/QxbaseModule.cmake
  cmake/qxbase_module.map
  DESTINATION ${QXBASE_CMAKE_DIR})

file(RELATIVE_PATH QXBASE_PC_PREFIX_FROM_PCDIR "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" QXBASE_PC_PREFIX_FROM_PCDIR "${QXBASE_PC_PREFIX_FROM_PCDIR}")
configure_file(cmake/qxbase.pc.in ${CMAKE_CURRENT_BINARY_DIR}/qxbase.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qxbase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
