#ifndef ASSERTION_H
#define ASSERTION_H

#include <gmock/gmock.h>

#include <string>

/** For death tests: what the C library says when an assertion with this very text fails. */
inline testing::Matcher<const std::string&> assertionFailed( const std::string& expression ) {
   return testing::HasSubstr( "Assertion `" + expression + "' failed" );
}

#endif
