# Everything comes from Debian 12 packages; scripts/setup installs them.

find_package( Protobuf REQUIRED )
find_package( fmt REQUIRED )
find_package( CLI11 REQUIRED )
find_package( RapidJSON REQUIRED )

add_library( rapidjson INTERFACE )
target_include_directories( rapidjson SYSTEM INTERFACE ${RapidJSON_INCLUDE_DIRS} ${RAPIDJSON_INCLUDE_DIRS} )

find_package( PkgConfig REQUIRED )
pkg_check_modules( systemd REQUIRED IMPORTED_TARGET libsystemd )
pkg_check_modules( prometheus REQUIRED IMPORTED_TARGET prometheus-cpp-core )
pkg_check_modules( microhttpd REQUIRED IMPORTED_TARGET libmicrohttpd )
