# What is installed beside the programs and libraries, which their own folders install.

include( CMakePackageConfigHelpers )

install( DIRECTORY boards schemas DESTINATION ${QUILLON_DATADIR} )

# For those who build a host: the header, and how CMake and pkg-config find it and the plug-in.
install( DIRECTORY include/quillon DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development )

set( config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Quillon )
set( plugin ${QUILLON_LIBDIR}/libQuillonDriversSelvane.so )
set( boards ${QUILLON_DATADIR}/boards )
configure_package_config_file( cmake/QuillonConfig.cmake.in ${CMAKE_BINARY_DIR}/QuillonConfig.cmake
   INSTALL_DESTINATION ${config_folder}
   PATH_VARS CMAKE_INSTALL_INCLUDEDIR plugin boards )
# Before 1.0, a minor version may change the interface.
write_basic_package_version_file( ${CMAKE_BINARY_DIR}/QuillonConfigVersion.cmake
   COMPATIBILITY SameMinorVersion )
install( FILES ${CMAKE_BINARY_DIR}/QuillonConfig.cmake ${CMAKE_BINARY_DIR}/QuillonConfigVersion.cmake
   DESTINATION ${config_folder} COMPONENT development )

set( pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig )
file( RELATIVE_PATH PREFIX_OF_PKGCONFIG /${pkgconfig_folder} / )
string( REGEX REPLACE "/$" "" PREFIX_OF_PKGCONFIG ${PREFIX_OF_PKGCONFIG} )
configure_file( cmake/quillon.pc.in ${CMAKE_BINARY_DIR}/quillon.pc @ONLY )
install( FILES ${CMAKE_BINARY_DIR}/quillon.pc DESTINATION ${pkgconfig_folder} COMPONENT development )
