# Install rules: headers, the library with its CMake package and pkg-config file, shared data.
include(CMakePackageConfigHelpers)

install(TARGETS wavex_library EXPORT wavex-targets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/wavex ${CMAKE_BINARY_DIR}/include/wavex
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.hpp")
install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/wavex)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/wavex/examples PATTERN __pycache__ EXCLUDE)

set(WAVEX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/wavex)
install(EXPORT wavex-targets NAMESPACE wavex:: DESTINATION ${WAVEX_CMAKE_DIR})
configure_package_config_file(cmake/wavex-config.cmake.in ${CMAKE_BINARY_DIR}/wavex-config.cmake
  INSTALL_DESTINATION ${WAVEX_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/wavex-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/wavex-config.cmake ${CMAKE_BINARY_DIR}/wavex-config-version.cmake
  DESTINATION ${WAVEX_CMAKE_DIR})

# A static wavex brings its libraries into the consumer's link; a shared one keeps them private.
if(BUILD_SHARED_LIBS)
  set(WAVEX_PC_REQUIRES Requires.private)
else()
  set(WAVEX_PC_REQUIRES Requires)
endif()
# The prefix is written at install time, so that `cmake --install --prefix DIR` gets it right.
set(WAVEX_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
configure_file(cmake/wavex.pc.in ${CMAKE_BINARY_DIR}/wavex.pc.in @ONLY)
install(CODE "
  configure_file(${CMAKE_BINARY_DIR}/wavex.pc.in \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/wavex.pc @ONLY)
  message(STATUS \"Installing: \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/wavex.pc\")")
