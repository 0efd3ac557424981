# Where everything lies below the prefix; the build tree has the same folders.

include( GNUInstallDirs )

# What a host loads is a matter of this system alone: its names carry no versions and are not for the folder
# that all programs share.
set( QUILLON_LIBDIR ${CMAKE_INSTALL_LIBDIR}/quillon )
set( QUILLON_DATADIR ${CMAKE_INSTALL_DATADIR}/quillon )

# Programs find the rest from their own folder, so that the whole may be moved.
file( RELATIVE_PATH QUILLON_PROGRAM_TO_LIBRARIES
   ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/quillon )
file( RELATIVE_PATH QUILLON_PROGRAM_TO_DATA
   ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/quillon )

# Component of whatever names no other; hosts are built with the component "development".
set( CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime )
