#ifndef SMBUSD_LOG_H
#define SMBUSD_LOG_H

#include <fmt/format.h>

#include <string_view>
#include <utility>

/** Lines for the operator, on the standard error output. Under the journal each carries its priority. */
namespace Smbusd::Log {

enum class Level { Error, Warning, Info, Debug };

/** Lines of a level above this one are dropped. */
extern Level threshold;

void write( Level level, std::string_view text );

template <typename... Args>
void line( Level level, fmt::format_string<Args...> format, Args&&... args ) {
   if ( level <= threshold ) {
      write( level, fmt::format( format, std::forward<Args>( args )... ) );
   }
}

template <typename... Args>
void error( fmt::format_string<Args...> format, Args&&... args ) {
   line( Level::Error, format, std::forward<Args>( args )... );
}

template <typename... Args>
void warning( fmt::format_string<Args...> format, Args&&... args ) {
   line( Level::Warning, format, std::forward<Args>( args )... );
}

template <typename... Args>
void info( fmt::format_string<Args...> format, Args&&... args ) {
   line( Level::Info, format, std::forward<Args>( args )... );
}

template <typename... Args>
void debug( fmt::format_string<Args...> format, Args&&... args ) {
   line( Level::Debug, format, std::forward<Args>( args )... );
}

} // namespace Smbusd::Log

#endif
