# Flags that hold for every target of ours.

find_program( CCACHE ccache )
if( CCACHE )
   set( CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE} )
   set( CMAKE_C_COMPILER_LAUNCHER ${CCACHE} )
endif()

# assert is part of the library's behaviour: NDEBUG is never defined, in no build type.
foreach( type RELEASE RELWITHDEBINFO MINSIZEREL )
   foreach( language C CXX )
      string( REPLACE "-DNDEBUG" "" CMAKE_${language}_FLAGS_${type} "${CMAKE_${language}_FLAGS_${type}}" )
   endforeach()
endforeach()

# What is given to others is the same wherever it was built: assertions and debug information name sources from the
# root of the tree on.
foreach( type RELEASE RELWITHDEBINFO MINSIZEREL )
   foreach( language C CXX )
      string( APPEND CMAKE_${language}_FLAGS_${type} " -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=" )
   endforeach()
endforeach()

set( QUILLON_SANITIZE "" CACHE STRING "Sanitizers for all targets, as given to -fsanitize=" )
option( QUILLON_COVERAGE "Instrument for gcov" OFF )
option( QUILLON_WERROR "Treat warnings as errors" ON )

if( QUILLON_SANITIZE )
   # The check of vptrs probes memory through a pipe, and cries wolf where a test leaves no descriptor for one.
   add_compile_options( -fsanitize=${QUILLON_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                        -fno-omit-frame-pointer )
   add_link_options( -fsanitize=${QUILLON_SANITIZE} )
   if( CMAKE_CXX_COMPILER_ID STREQUAL Clang )
      add_compile_options( -fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitize-ignore.txt )
   endif()
endif()
if( QUILLON_COVERAGE )
   add_compile_options( --coverage -fprofile-update=atomic )
   add_link_options( --coverage )
endif()

# Warnings for our own code; generated code stays outside.
function( quillon_warnings target )
   target_compile_options( ${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion
                           $<$<BOOL:${QUILLON_WERROR}>:-Werror> )
endfunction()
